#pragma once

// One fuzz input as a whole package folder. The input is data.plist's bytes, optionally followed by
// more files, each introduced by a line "%%FILE relative/path":
//
//   <data.plist bytes>\n%%FILE Loop Sounds/Rain.wav\n<bytes>\n%%FILE Picture.png\n<bytes>
//
// Text stays text, so seeds can be read, and the fuzzer's dictionary can splice the marker in.
// Paths are at most two names deep and every name must be one a package could hold; others are
// dropped, so no input writes outside its package.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace sylvora::fuzz {

struct BundleFile {
    std::string path;  // relative to the package
    std::string bytes;
};

class PackageBundle {
public:
    static constexpr const char* FILE_MARKER = "\n%%FILE ";
    static constexpr std::size_t MAX_FILES = 16;

    static std::vector<BundleFile> unpack(const std::uint8_t* data, std::size_t size);
    static std::string pack(const std::vector<BundleFile>& files);
    // Makes `package` and writes the files into it; false when the folder cannot be made.
    static bool write(const std::string& package, const std::vector<BundleFile>& files);
};

}  // namespace sylvora::fuzz
