#include "audio/engine/resampler.h"

#include <soxr.h>

namespace sylvora::audio {

Resampler::Resampler(int inputRate, int outputRate, int channels) {
    soxr_error_t error = nullptr;
    const soxr_io_spec_t io = soxr_io_spec(SOXR_FLOAT32_I, SOXR_FLOAT32_I);
    // High quality (20-bit, flat to ~20 kHz at 44.1k) costs little more than medium and keeps the
    // upsampled ambience free of audible imaging.
    const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_HQ, 0);
    const soxr_runtime_spec_t runtime = soxr_runtime_spec(1);
    soxr_ =
        soxr_create(inputRate, outputRate, static_cast<unsigned>(channels), &error, &io, &quality, &runtime);
    if (error)
        soxr_ = nullptr;
}

Resampler::~Resampler() {
    if (soxr_)
        soxr_delete(soxr_);
}

bool Resampler::process(const float* in, std::size_t inFrames, std::size_t& inUsed, float* out,
                        std::size_t outFrames, std::size_t& outMade) {
    inUsed = 0;
    outMade = 0;
    return soxr_process(soxr_, in, inFrames, &inUsed, out, outFrames, &outMade) == nullptr;
}

}  // namespace sylvora::audio
