#include "audio/engine/sourcereader.h"

#include <algorithm>
#include <cstring>

#include "audio/engine/resampler.h"

namespace sylvora::audio {

namespace {
constexpr std::size_t CHUNK_FRAMES = 2048;

// More than two channels: even channels to the left, odd ones to the right, each side averaged,
// which keeps a centre-heavy mix balanced and never clips what the source did not.
void fold(const float* in, int inChannels, float* out, std::size_t frames) {
    const auto ic = static_cast<std::size_t>(inChannels);
    const float leftScale = 1.0f / static_cast<float>((inChannels + 1) / 2);
    const float rightScale = 1.0f / static_cast<float>(inChannels / 2);
    for (std::size_t i = 0; i < frames; ++i) {
        float left = 0.0f;
        float right = 0.0f;
        for (std::size_t c = 0; c < ic; ++c)
            (c % 2 == 0 ? left : right) += in[i * ic + c];
        out[2 * i] = left * leftScale;
        out[2 * i + 1] = right * rightScale;
    }
}
}  // namespace

std::int64_t SourceReader::engineFrames(std::int64_t sourceFrames, int sourceRate, int engineRate) noexcept {
    if (sourceRate == engineRate)
        return sourceFrames;
    return (sourceFrames * engineRate + sourceRate / 2) / sourceRate;
}

SourceReader::SourceReader(std::unique_ptr<Decoder> decoder, std::int64_t sourceFrames, int engineRate)
    : decoder_(std::move(decoder)), engineRate_(engineRate) {
    format_ = decoder_->format();
    channels_ = outputChannels(format_.channels);
    total_ = engineFrames(sourceFrames, format_.sampleRate, engineRate);
    if (format_.channels != channels_)
        raw_.resize(CHUNK_FRAMES * static_cast<std::size_t>(format_.channels));
    folded_.resize(CHUNK_FRAMES * static_cast<std::size_t>(channels_));
    if (format_.sampleRate != engineRate)
        resampler_ = std::make_unique<Resampler>(format_.sampleRate, engineRate, channels_);
}

SourceReader::~SourceReader() = default;

bool SourceReader::valid() const noexcept {
    return !resampler_ || resampler_->valid();
}

bool SourceReader::seek(std::int64_t frame) {
    frame = std::clamp<std::int64_t>(frame, 0, total_);
    const std::int64_t source =
        format_.sampleRate == engineRate_ ? frame : frame * format_.sampleRate / engineRate_;
    if (!decoder_->seek(source))
        return false;
    if (resampler_)
        resampler_ = std::make_unique<Resampler>(format_.sampleRate, engineRate_, channels_);
    produced_ = frame;
    sourceEnded_ = false;
    drained_ = false;
    short_ = false;
    foldedFrames_ = 0;
    foldedOffset_ = 0;
    return valid();
}

bool SourceReader::refill() {
    // A source of the engine's channel count is decoded straight where it is read from.
    const bool folds = format_.channels != channels_;
    const std::size_t got = decoder_->read(folds ? raw_.data() : folded_.data(), CHUNK_FRAMES);
    if (got == 0) {
        sourceEnded_ = true;
        return false;
    }
    if (folds)
        fold(raw_.data(), format_.channels, folded_.data(), got);
    foldedFrames_ = got;
    foldedOffset_ = 0;
    return true;
}

std::size_t SourceReader::read(float* out, std::size_t frames) {
    const auto ch = static_cast<std::size_t>(channels_);
    frames = static_cast<std::size_t>(
        std::min<std::int64_t>(static_cast<std::int64_t>(frames), total_ - produced_));
    std::size_t made = 0;
    while (made < frames && !drained_) {
        if (foldedOffset_ == foldedFrames_ && !sourceEnded_)
            refill();
        const std::size_t inAvailable = foldedFrames_ - foldedOffset_;
        if (!resampler_) {
            if (inAvailable == 0) {
                drained_ = true;
                break;
            }
            const std::size_t n = std::min(inAvailable, frames - made);
            std::memcpy(out + made * ch, folded_.data() + foldedOffset_ * ch, n * ch * sizeof(float));
            foldedOffset_ += n;
            made += n;
            continue;
        }
        std::size_t used = 0;
        std::size_t produced = 0;
        const float* in = inAvailable > 0 ? folded_.data() + foldedOffset_ * ch : nullptr;
        if (!resampler_->process(in, inAvailable, used, out + made * ch, frames - made, produced)) {
            drained_ = true;
            break;
        }
        foldedOffset_ += used;
        made += produced;
        if (!in && produced == 0)
            drained_ = true;
    }
    if (drained_ && made < frames) {
        if (total_ - produced_ - static_cast<std::int64_t>(made) > SHORT_TOLERANCE_FRAMES) {
            // Whatever the file holds now, it is not the sound that was measured: no silence stands in.
            short_ = true;
        } else {
            // The codec or the resampler came up a few frames short of the stated length.
            std::fill(out + made * ch, out + frames * ch, 0.0f);
            made = frames;
        }
    }
    produced_ += static_cast<std::int64_t>(made);
    return made;
}

std::int64_t countFrames(Decoder& decoder) {
    std::vector<float> scratch(4096 * static_cast<std::size_t>(decoder.format().channels));
    std::int64_t total = 0;
    while (const std::size_t n = decoder.read(scratch.data(), 4096))
        total += static_cast<std::int64_t>(n);
    return decoder.seek(0) ? total : -1;
}

}  // namespace sylvora::audio
