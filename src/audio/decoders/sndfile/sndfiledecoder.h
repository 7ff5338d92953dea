#pragma once

// libsndfile backend: WAV, AIFF/AIFF-C, CAF and FLAC, whose headers state the exact length and
// whose seeks are sample-exact.

#include <sndfile.h>

#include <memory>

#include "audio/decoders/decoder.h"

namespace sylvora::audio {

class SndfileDecoder final : public Decoder {
  public:
    // Null when libsndfile does not read the file.
    static std::unique_ptr<Decoder> open(const std::string& path);

    SoundFormat format() const override { return format_; }
    std::size_t read(float* interleaved, std::size_t frames) override;
    bool seek(std::int64_t frame) override;

  private:
    struct Closer {
        void operator()(SNDFILE* file) const noexcept { sf_close(file); }
    };
    SndfileDecoder(std::unique_ptr<SNDFILE, Closer> file, const SF_INFO& info);

    std::unique_ptr<SNDFILE, Closer> file_;
    SoundFormat format_;
};

}  // namespace sylvora::audio
