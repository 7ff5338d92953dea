#include "audio/decoders/sndfile/sndfiledecoder.h"

namespace sylvora::audio {

std::unique_ptr<Decoder> SndfileDecoder::open(const std::string& path) {
    SF_INFO info{};
    std::unique_ptr<SNDFILE, Closer> file(sf_open(path.c_str(), SFM_READ, &info));
    if (!file || info.channels < 1 || info.samplerate < 1)
        return nullptr;
    return std::unique_ptr<Decoder>(new SndfileDecoder(std::move(file), info));
}

SndfileDecoder::SndfileDecoder(std::unique_ptr<SNDFILE, Closer> file, const SF_INFO& info)
    : file_(std::move(file)) {
    format_.sampleRate = info.samplerate;
    format_.channels = info.channels;
    format_.frames = info.frames >= 0 ? info.frames : -1;
}

std::size_t SndfileDecoder::read(float* interleaved, std::size_t frames) {
    const sf_count_t got = sf_readf_float(file_.get(), interleaved, static_cast<sf_count_t>(frames));
    return got > 0 ? static_cast<std::size_t>(got) : 0;
}

bool SndfileDecoder::seek(std::int64_t frame) {
    return sf_seek(file_.get(), frame, SEEK_SET) == frame;
}

}  // namespace sylvora::audio
