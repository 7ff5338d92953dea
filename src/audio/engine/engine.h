#pragma once

// The audio engine: mixes every playing sound instance into one stream of 32-bit float stereo at
// the engine's rate. It is pulled: an output (SDL callback, null pacer, offline file writer) calls
// render() and nothing else. It has no device of its own and knows nothing of worlds.
//
// Lifecycle: construct with the output's rate -> openInstance() any number of times [main] ->
// an output calls render() [RT] while the main thread calls service() once per timer tick ->
// destroy instances -> destroy the engine after the output has stopped pulling.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "util/status.h"

namespace sylvora::audio {

class SoundInstance;

// What an output that keeps a queue of rendered audio (a sound server's buffer) and can change its
// length tells the engine and hears from it. [main], and the output outlives its registration.
class OutputLink {
public:
    // Answers Engine::setLowLatency.
    virtual void setLowLatency(bool wanted) = 0;
    // Seconds from now until audio rendered now is heard: what is queued ahead of it.
    virtual double queuedSeconds() const = 0;

protected:
    ~OutputLink() = default;
};

class Engine {
public:
    static constexpr int DEFAULT_SAMPLE_RATE = 48000;

    explicit Engine(int sampleRate = DEFAULT_SAMPLE_RATE);
    ~Engine();
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    int sampleRate() const noexcept;

    // [main] Opens a sound file as a new, independent instance, stopped at its beginning.
    // A file that no decoder reads gives a nonzero status and no instance.
    OSStatus openInstance(const std::string& path, std::unique_ptr<SoundInstance>& out);

    // [RT] Mixes `frames` frames of interleaved stereo into `interleaved` (overwriting it).
    // Never locks, allocates, logs or touches a file.
    void render(float* interleaved, std::size_t frames) noexcept;

    // [main] Services all instances once (the timer's per-tick call): publishes the ends of plays,
    // and frees what the audio thread released.
    void service();
    // [main] Instances disposed of are still waiting for service() to free them.
    bool servicePending() const;

    // [main] Asks the output for short latency: true while a person is changing what plays (the
    // editor or a sound preview is open), false when neither is. The output answers at once to
    // true and returns to its long, cheaper buffer a few seconds after false. Outputs without a
    // choice of latency ignore it; what is rendered does not depend on it.
    void setLowLatency(bool wanted);
    bool lowLatencyWanted() const noexcept;  // [main]
    // [main] An output that keeps a queue registers here to hear setLowLatency() and to say how
    // long its queue is; nullptr unregisters it (the output does so before it goes away).
    void setOutputLink(OutputLink* link);
    // [main] Seconds until audio rendered now is heard; 0 with no queueing output (offline, null,
    // tests), so that what is rendered offline never depends on it.
    double outputDelay() const;

    // [any] Blocks of a streaming instance that were not ready in time (played as silence).
    std::uint64_t underruns() const noexcept;

    // [main] Answers every request for a ring made so far and fills every ring, on the calling
    // thread, before it returns. For offline rendering and tests, which pull faster than real time;
    // what is rendered after it does not depend on thread timing.
    void waitForStreams();
    // [main] Returns once every wanted ring holds the next `frames` frames (or its end), waiting
    // only when one does not; the streaming thread keeps filling meanwhile. Rendering `frames`
    // after it gives the same result as after waitForStreams(), sooner.
    void waitForStreams(std::size_t frames);
    // [main] Bytes of short sounds held decoded in memory (shared by all instances of a file).
    std::size_t decodedBytes();
    // [any] Rings the streaming thread holds for instances that play or are about to.
    std::size_t ringsInUse() const noexcept;

    struct Impl;
    Impl& impl() noexcept { return *impl_; }

private:
    std::unique_ptr<Impl> impl_;
};

}  // namespace sylvora::audio
