#include "audio/decoders/decoder.h"

#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <cerrno>

#include "audio/decoders/ffmpeg/ffmpegdecoder.h"
#include "audio/decoders/sndfile/sndfiledecoder.h"

namespace sylvora::audio {

namespace {

std::string lowerExtension(const std::string& path) {
    const auto dot = path.find_last_of('.');
    const auto slash = path.find_last_of('/');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash))
        return {};
    std::string ext = path.substr(dot + 1);
    std::transform(ext.begin(), ext.end(), ext.begin(), [](unsigned char c) { return std::tolower(c); });
    return ext;
}

// Compressed formats go to FFmpeg first: it decodes Vorbis and Opus several times faster than
// libsndfile and seeks Ogg reliably, and libsndfile does not read MP4 at all.
bool prefersFfmpeg(const std::string& extension) {
    static constexpr const char* kinds[] = {"ogg", "oga", "opus", "mp3", "m4a",  "m4b",
                                            "mp4", "aac", "alac", "wma", "webm", "mka"};
    return std::any_of(std::begin(kinds), std::end(kinds), [&](const char* k) { return extension == k; });
}

}  // namespace

OSStatus openDecoder(const std::string& path, std::unique_ptr<Decoder>& out) {
    out.reset();
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0)
        return statusFromErrno(errno);
    if (S_ISDIR(info.st_mode))
        return ioErr;
    // A FIFO would block the open and every read after it, a device would be read without end:
    // only a regular file holds a sound.
    if (!S_ISREG(info.st_mode))
        return fnfErr;
    if (prefersFfmpeg(lowerExtension(path))) {
        out = FfmpegDecoder::open(path);
        if (!out)
            out = SndfileDecoder::open(path);
    } else {
        out = SndfileDecoder::open(path);
        if (!out)
            out = FfmpegDecoder::open(path);
    }
    return out ? noErr : ioErr;
}

int probeSampleRate(const std::string& path) {
    std::unique_ptr<Decoder> decoder;
    if (openDecoder(path, decoder) != noErr)
        return 0;
    return decoder->format().sampleRate;
}

}  // namespace sylvora::audio
