#pragma once

// The engine's insides, shared by Engine and its sound instances. The audio thread sees voices
// through a fixed array of atomic slots; everything else here belongs to the main thread except
// where a field says otherwise.

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <vector>

#include "audio/engine/engine.h"
#include "audio/engine/limiter.h"
#include "audio/engine/mixcontext.h"
#include "audio/engine/renderepochs.h"
#include "audio/engine/soundcache.h"
#include "audio/engine/streamer.h"

namespace sylvora::audio {

class Voice;

struct Engine::Impl {
    // Room for a full pool of 100 instances, the editor's preview and every voice still fading out.
    static constexpr std::size_t MAX_VOICES = 512;

    explicit Impl(int rate);
    ~Impl();

    OSStatus open(const std::string& path, std::shared_ptr<Voice>& out);  // [main]
    void dispose(std::shared_ptr<Voice> voice);                           // [main]
    void reclaim();                                                       // [main]
    bool reclaimPending() const { return !dying_.empty(); }              // [main]
    void render(float* interleaved, std::size_t frames) noexcept;         // [RT]

    const int sampleRate;
    RenderEpochs epochs;
    std::atomic<std::uint64_t> underruns{0};  // written by the audio thread

    std::array<std::atomic<Voice*>, MAX_VOICES> slots{};  // written by main, read by the audio thread
    std::atomic<std::size_t> slotsUsed{0};                // high-water mark of slots, written by main

    SoundCache cache;
    Streamer streamer;

    // The master stage every render passes through; audio-thread state once constructed. Tests
    // of the voices' own mix (exact samples at exact frames) switch it off before rendering.
    Limiter limiter;
    bool limit = true;

    bool lowLatency = false;                    // [main]
    OutputLink* outputLink = nullptr;           // [main]

  private:
    using Clock = std::chrono::steady_clock;
    struct Dying {
        std::shared_ptr<Voice> voice;
        std::size_t slot = 0;
        Clock::time_point disposed;
        std::uint64_t stamp = 0;  // set once the slot is emptied
        bool unslotted = false;
    };

    std::vector<std::shared_ptr<Voice>> live_;  // indexed by slot
    std::vector<Dying> dying_;
    std::uint64_t lastFinished_ = 0;
    Clock::time_point lastRender_;  // when reclaim() last saw a render finished

    // Audio-thread scratch, allocated once.
    std::vector<float> gains_;
    std::vector<float> tailGains_;
    MixContext context_;
};

}  // namespace sylvora::audio
