#include "audio/engine/limiter.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace sylvora::audio {

Limiter::Limiter(int sampleRate)
    : lookahead_(std::max<std::size_t>(1, static_cast<std::size_t>(std::lround(sampleRate * LOOKAHEAD_SECONDS)))),
      releaseCoefficient_(1.0 - std::exp(-1.0 / (RELEASE_SECONDS * std::max(1, sampleRate)))),
      delay_(2 * lookahead_, 0.0f),
      spare_(2 * lookahead_, 0.0f),
      queueGain_(lookahead_ + 2, 1.0),
      queueFrame_(lookahead_ + 2, 0),
      box_(lookahead_, 1.0),
      boxSum_(static_cast<double>(lookahead_)) {}

double Limiter::wantedGain(float left, float right) const noexcept {
    const double peak = std::max(std::fabs(left), std::fabs(right));
    return peak > CEILING ? CEILING / peak : 1.0;
}

double Limiter::windowMinimum(double wanted) noexcept {
    const std::size_t capacity = queueGain_.size();
    // Later frames that want no less than older ones make those older ones irrelevant.
    while (queueSize_ > 0) {
        const std::size_t back = (queueHead_ + queueSize_ - 1) % capacity;
        if (queueGain_[back] < wanted)
            break;
        --queueSize_;
    }
    const std::size_t slot = (queueHead_ + queueSize_) % capacity;
    queueGain_[slot] = wanted;
    queueFrame_[slot] = frame_;
    ++queueSize_;
    // The window holds this frame and the look-ahead before it.
    while (frame_ - queueFrame_[queueHead_] > lookahead_) {
        queueHead_ = (queueHead_ + 1) % capacity;
        --queueSize_;
    }
    return queueGain_[queueHead_];
}

void Limiter::process(float* interleaved, std::size_t frames) noexcept {
    // While nothing in the window wants the gain lowered and the block stays under the ceiling,
    // the limiter is a plain delay: the usual case, and the cheap one.
    // Counted rather than compared into a running maximum, so that the scan vectorises.
    int over = 0;
    for (std::size_t i = 0; i < 2 * frames; ++i)
        over |= std::fabs(interleaved[i]) > static_cast<float>(CEILING) ? 1 : 0;
    if (over == 0 && gain_ == 1.0 && boxBelow_ == 0 && queueSize_ == 1 && queueGain_[queueHead_] == 1.0) {
        delayOnly(interleaved, frames);
        return;
    }
    const auto length = static_cast<double>(lookahead_);
    for (std::size_t i = 0; i < frames; ++i) {
        float* sample = interleaved + 2 * i;
        const double minimum = windowMinimum(wantedGain(sample[0], sample[1]));
        ++frame_;
        boxBelow_ += (minimum < 1.0 ? 1 : 0) - (box_[boxAt_] < 1.0 ? 1 : 0);
        boxSum_ += minimum - box_[boxAt_];
        box_[boxAt_] = minimum;
        boxAt_ = boxAt_ + 1 == lookahead_ ? 0 : boxAt_ + 1;
        // Once the window is clear the sum is reset, so rounding left by a loud passage cannot keep
        // a quiet world a hair below its level; the release then lands on exactly 1.
        if (boxBelow_ == 0)
            boxSum_ = length;
        const double target = std::min(1.0, boxSum_ / length);
        gain_ = target < gain_ ? target : gain_ + (target - gain_) * releaseCoefficient_;
        if (target == 1.0 && gain_ > 1.0 - 1e-4)  // the last step is 0.001 dB
            gain_ = 1.0;
        float* delayed = delay_.data() + 2 * delayAt_;
        const float left = delayed[0];
        const float right = delayed[1];
        delayed[0] = sample[0];
        delayed[1] = sample[1];
        delayAt_ = delayAt_ + 1 == lookahead_ ? 0 : delayAt_ + 1;
        const auto g = static_cast<float>(gain_);
        sample[0] = left * g;
        sample[1] = right * g;
    }
}

void Limiter::delayOnly(float* interleaved, std::size_t frames) noexcept {
    if (frames < lookahead_) {
        for (std::size_t i = 0; i < frames; ++i) {
            float* sample = interleaved + 2 * i;
            float* delayed = delay_.data() + 2 * delayAt_;
            std::swap(sample[0], delayed[0]);
            std::swap(sample[1], delayed[1]);
            delayAt_ = delayAt_ + 1 == lookahead_ ? 0 : delayAt_ + 1;
        }
    } else {
        // A block at least as long as the delay: the block's tail becomes the delay line and
        // everything else moves up, in three copies rather than a swap per frame.
        const std::size_t held = 2 * lookahead_;
        const std::size_t oldest = 2 * delayAt_;
        std::copy_n(interleaved + 2 * frames - held, held, spare_.data());
        std::copy_backward(interleaved, interleaved + 2 * frames - held, interleaved + 2 * frames);
        std::copy(delay_.begin() + static_cast<std::ptrdiff_t>(oldest), delay_.end(), interleaved);
        std::copy_n(delay_.begin(), oldest, interleaved + held - oldest);
        delay_.swap(spare_);
        delayAt_ = 0;
    }
    // Every frame wanted a gain of 1: the window's queue keeps only the newest.
    frame_ += frames;
    queueFrame_[queueHead_] = frame_ - 1;
}

}  // namespace sylvora::audio
