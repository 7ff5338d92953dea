#include "core/render/offlinerenderer.h"

#include <algorithm>
#include <cmath>

#include "audio/engine/engine.h"
#include "core/time/virtualeventloop.h"

namespace sylvora {

OfflineRenderer::OfflineRenderer(audio::Engine& engine, VirtualEventLoop& loop)
    : engine_(engine), loop_(loop), sampleRate_(std::max(1, engine.sampleRate())) {
    // Block boundaries fall on whole frames, up to half a frame from the 1/15-s grid; a timer on
    // the grid fires at the boundary nearest to it.
    loop_.setTolerance(1.0 / sampleRate_);
    block_.resize(2 * (static_cast<std::size_t>(sampleRate_) / TICKS_PER_SECOND + 2));
}

std::uint64_t OfflineRenderer::frameOfTick(std::uint64_t tick) const {
    const auto rate = static_cast<std::uint64_t>(sampleRate_);
    return (2 * tick * rate + TICKS_PER_SECOND) / (2 * TICKS_PER_SECOND);
}

// [main]
void OfflineRenderer::render(std::uint64_t frames, const Sink& sink) {
    const std::uint64_t end = framesRendered_ + frames;
    while (framesRendered_ < end) {
        if (framesRendered_ == frameOfTick(nextTick_)) {
            loop_.setAudioTime(static_cast<double>(framesRendered_) / sampleRate_);
            loop_.processDueTimers();
            if (tickObserver_) {
                tickObserver_(nextTick_);
            }
            ++nextTick_;
        }
        const std::uint64_t blockEnd = std::min(frameOfTick(nextTick_), end);
        const auto count = static_cast<std::size_t>(blockEnd - framesRendered_);
        // Faster than real time the streaming thread would fall behind; making sure the block's
        // frames are there makes a streamed sound play exactly as a preloaded one, and the render
        // repeatable. The streaming thread decodes ahead while this thread mixes and writes.
        engine_.waitForStreams(count);
        engine_.render(block_.data(), count);
        if (sink) {
            sink(block_.data(), count, framesRendered_);
        }
        framesRendered_ = blockEnd;
    }
}

// [main]
void OfflineRenderer::renderSeconds(double seconds, const Sink& sink) {
    if (!(seconds > 0.0)) {
        return;
    }
    render(static_cast<std::uint64_t>(std::llround(seconds * sampleRate_)), sink);
}

}  // namespace sylvora
