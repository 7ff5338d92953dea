#pragma once

// Where the fuzz targets put the files they make from an input. Everything lives under one root
// ($SYLVORA_FUZZ_DIR, else a folder in /dev/shm so that writing a package per input costs no disk):
//   fixtures/   packages and a sound that exist for every run, so aliases in seeds can resolve
//   work-PID/   this process's own folder, emptied before every input
// The seed maker and every target build the fixtures the same way, so a seed made today resolves in
// a campaign run tomorrow.

#include <string>

namespace sylvora::fuzz {

class Scratch {
public:
    static std::string root();
    static std::string fixtures();
    // The fixtures are made once per process; existing ones are left as they are.
    static void makeFixtures();
    // This process's folder, made on first use and emptied by clear().
    static const std::string& work();
    static void clear();
    // Writes `bytes` to `path` (the folder must exist); false when it cannot.
    static bool writeFile(const std::string& path, const void* bytes, std::size_t size);
};

}  // namespace sylvora::fuzz
