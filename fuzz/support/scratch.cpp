#include "support/scratch.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace sylvora::fuzz {

namespace fs = std::filesystem;

namespace {

// A loop sound small enough to load in microseconds: 64 frames of 16-bit mono silence at 8 kHz.
std::string tinyWave() {
    constexpr unsigned frames = 64;
    constexpr unsigned dataBytes = frames * 2;
    std::string bytes;
    const auto put32 = [&](unsigned v) {
        for (int i = 0; i < 4; ++i) bytes.push_back(static_cast<char>((v >> (8 * i)) & 0xff));
    };
    const auto put16 = [&](unsigned v) {
        bytes.push_back(static_cast<char>(v & 0xff));
        bytes.push_back(static_cast<char>((v >> 8) & 0xff));
    };
    bytes += "RIFF";
    put32(36 + dataBytes);
    bytes += "WAVEfmt ";
    put32(16);
    put16(1);
    put16(1);
    put32(8000);
    put32(16000);
    put16(2);
    put16(16);
    bytes += "data";
    put32(dataBytes);
    bytes.append(dataBytes, '\0');
    return bytes;
}

void makePackage(const fs::path& package, const std::string& name) {
    std::error_code error;
    fs::create_directories(package / "Loop Sounds", error);
    const std::string plist =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict><key>Name</key><string>" + name +
        "</string></dict></plist>\n";
    if (!fs::exists(package / "data.plist"))
        Scratch::writeFile((package / "data.plist").string(), plist.data(), plist.size());
}

}  // namespace

std::string Scratch::root() {
    if (const char* configured = std::getenv("SYLVORA_FUZZ_DIR"); configured && *configured) return configured;
    return fs::is_directory("/dev/shm") ? "/dev/shm/sylvora-fuzz" : (fs::temp_directory_path() / "sylvora-fuzz").string();
}

std::string Scratch::fixtures() { return root() + "/fixtures"; }

void Scratch::makeFixtures() {
    static const bool made = [] {
        const fs::path base = fixtures();
        makePackage(base / "Alps.sylvora", "Alps");
        makePackage(base / "beach.sylvora", "beach");
        makePackage(base / "Unnamed.sylvora", "");
        const std::string wave = tinyWave();
        if (!fs::exists(base / "tone.wav"))
            writeFile((base / "tone.wav").string(), wave.data(), wave.size());
        return true;
    }();
    (void)made;
}

const std::string& Scratch::work() {
    static const std::string folder = [] {
        const std::string path = root() + "/work-" + std::to_string(::getpid());
        std::error_code error;
        fs::create_directories(path, error);
        return path;
    }();
    return folder;
}

void Scratch::clear() {
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(work(), error)) {
        fs::remove_all(entry.path(), error);
    }
}

bool Scratch::writeFile(const std::string& path, const void* bytes, std::size_t size) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    if (!out) return false;
    out.write(static_cast<const char*>(bytes), static_cast<std::streamsize>(size));
    return static_cast<bool>(out);
}

}  // namespace sylvora::fuzz
