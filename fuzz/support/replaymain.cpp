// Runs a fuzz target over files instead of under libFuzzer: every file named on the command line,
// and every file inside every folder named, is given to the target once. This is how the
// regression inputs and the seeds replay in ordinary (gcc, sanitizer) builds under CTest.

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" __attribute__((weak)) int LLVMFuzzerInitialize(int* argc, char*** argv);

namespace fs = std::filesystem;

namespace {

int replay(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in) {
        std::fprintf(stderr, "cannot read %s\n", file.c_str());
        return 1;
    }
    const std::vector<char> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (LLVMFuzzerInitialize) LLVMFuzzerInitialize(&argc, &argv);
    int failures = 0;
    int replayed = 0;
    for (int i = 1; i < argc; ++i) {
        const fs::path target(argv[i]);
        if (fs::is_directory(target)) {
            for (const fs::directory_entry& entry : fs::recursive_directory_iterator(target))
                if (entry.is_regular_file()) {
                    failures += replay(entry.path());
                    ++replayed;
                }
        } else {
            failures += replay(target);
            ++replayed;
        }
    }
    std::printf("replayed %d inputs\n", replayed);
    return failures == 0 ? 0 : 1;
}
