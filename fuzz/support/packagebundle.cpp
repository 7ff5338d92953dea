#include "support/packagebundle.h"

#include <filesystem>
#include <string_view>
#include <system_error>

#include "support/scratch.h"

namespace sylvora::fuzz {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t MAX_NAME_BYTES = 255;

bool isSafeName(std::string_view name) {
    return !name.empty() && name != "." && name != ".." && name.size() <= MAX_NAME_BYTES &&
           name.find('\0') == std::string_view::npos;
}

bool isSafePath(std::string_view path) {
    const std::size_t slash = path.find('/');
    if (slash == std::string_view::npos) return isSafeName(path);
    return isSafeName(path.substr(0, slash)) && isSafeName(path.substr(slash + 1)) &&
           path.substr(slash + 1).find('/') == std::string_view::npos;
}

}  // namespace

std::vector<BundleFile> PackageBundle::unpack(const std::uint8_t* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::string_view marker(FILE_MARKER);
    std::vector<BundleFile> files;
    std::size_t end = input.find(marker);
    files.push_back({"data.plist", std::string(input.substr(0, end))});
    while (end != std::string_view::npos && files.size() <= MAX_FILES) {
        const std::size_t pathStart = end + marker.size();
        const std::size_t newline = input.find('\n', pathStart);
        if (newline == std::string_view::npos) break;
        const std::string_view path = input.substr(pathStart, newline - pathStart);
        end = input.find(marker, newline + 1);
        const std::string_view bytes =
            input.substr(newline + 1, end == std::string_view::npos ? std::string_view::npos : end - newline - 1);
        if (isSafePath(path) && path != "data.plist") files.push_back({std::string(path), std::string(bytes)});
    }
    return files;
}

std::string PackageBundle::pack(const std::vector<BundleFile>& files) {
    std::string out;
    for (std::size_t i = 0; i < files.size(); ++i) {
        if (i > 0) out += FILE_MARKER + files[i].path + "\n";
        out += files[i].bytes;
    }
    return out;
}

bool PackageBundle::write(const std::string& package, const std::vector<BundleFile>& files) {
    std::error_code error;
    if (!fs::create_directories(package, error)) return false;
    for (const BundleFile& file : files) {
        const fs::path target = fs::path(package) / file.path;
        // A name used both as a file and as a folder keeps whichever came first.
        fs::create_directories(target.parent_path(), error);
        if (fs::exists(target, error)) continue;
        Scratch::writeFile(target.string(), file.bytes.data(), file.bytes.size());
    }
    return true;
}

}  // namespace sylvora::fuzz
