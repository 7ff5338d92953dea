#pragma once

// Renders a world as fast as the machine allows, with no device: the audio engine is pulled in
// blocks that end on the world's 1/15-s ticks, and before each block the virtual event loop's clock
// is set to the audio rendered so far and its due timers run. The world's timer therefore sees the
// same clock on every run, and with a seeded world a render is the same sound, sample for sample.
//
// Lifecycle: build the engine, the VirtualEventLoop and the World on them -> World::start() ->
// render() as often as wanted, each call carrying on where the last ended -> destroy the renderer,
// then the world, then the engine.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

namespace sylvora {

namespace audio {
class Engine;
}
class VirtualEventLoop;

class OfflineRenderer {
public:
    static constexpr int TICKS_PER_SECOND = 15;

    // One block of interleaved stereo, `frames` frames long, whose first frame is `firstFrame`
    // frames into the render. The pointer is valid only during the call.
    using Sink = std::function<void(const float* interleaved, std::size_t frames, std::uint64_t firstFrame)>;

    // Called at every tick after the timers have run and before the tick's block is rendered:
    // the moment the world's state is what the next block will sound like.
    using TickObserver = std::function<void(std::uint64_t tick)>;

    OfflineRenderer(audio::Engine& engine, VirtualEventLoop& loop);

    void setTickObserver(TickObserver observer) { tickObserver_ = std::move(observer); }

    // [main] Renders exactly `frames` more frames, handing them to `sink` block by block.
    void render(std::uint64_t frames, const Sink& sink);
    // [main] The same for a duration, rounded to the nearest frame.
    void renderSeconds(double seconds, const Sink& sink);

    int sampleRate() const { return sampleRate_; }
    std::uint64_t framesRendered() const { return framesRendered_; }
    double secondsRendered() const { return static_cast<double>(framesRendered_) / sampleRate_; }

    // The frame at which tick `tick` runs: round(tick × rate / 15), exact in integers, so the
    // blocks never drift from the grid however long the render.
    std::uint64_t frameOfTick(std::uint64_t tick) const;

private:
    audio::Engine& engine_;
    VirtualEventLoop& loop_;
    int sampleRate_;
    std::uint64_t framesRendered_ = 0;
    std::uint64_t nextTick_ = 0;
    std::vector<float> block_;
    TickObserver tickObserver_;
};

}  // namespace sylvora
