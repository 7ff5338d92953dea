#pragma once

// The one streaming thread: it opens, decodes and resamples every streamed instance that is
// playing or about to, into a ring of its own, and frees rings that are no longer wanted once the
// audio thread cannot be reading them. It never blocks the audio thread; the audio thread never
// waits for it (a ring that runs dry plays silence and is counted).

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "audio/engine/renderepochs.h"

namespace sylvora::audio {

class StreamRing;
class Voice;

class Streamer {
  public:
    // 16384 frames is 0.34 s at 48 kHz (128 KiB of stereo float). The thread tops rings up every
    // 10 ms and a pass over 100 voices takes a few ms, so a ring rides out a stall of 300 ms (a busy
    // core, a slow disk) before anything is heard. Rings are a third of what a streamed instance
    // costs (the decoder, FFmpeg's Vorbis above all, and the resampler are the rest), and a ring
    // exists only while its instance plays or is about to.
    static constexpr std::size_t RING_FRAMES = 16384;
    static constexpr int PERIOD_MS = 10;

    Streamer(int engineRate, const RenderEpochs& epochs);
    ~Streamer();
    Streamer(const Streamer&) = delete;
    Streamer& operator=(const Streamer&) = delete;

    void add(std::shared_ptr<Voice> voice);  // [main]
    void remove(const Voice* voice);         // [main]
    void wake();                             // [main]
    // [main] Returns once a full pass that began after the call has served every request.
    void waitUntilServed();
    std::size_t ringsInUse() const noexcept { return rings_.load(std::memory_order_relaxed); }  // [any]

  private:
    void run();                                       // [stream]
    void serve(Voice& voice, bool stalled);           // [stream]
    void openRing(Voice& voice, std::uint64_t want);  // [stream]
    void fill(Voice& voice);                          // [stream]
    void retire(std::unique_ptr<StreamRing> ring);    // [stream]

    const int engineRate_;
    const RenderEpochs& epochs_;

    std::mutex mutex_;
    std::condition_variable wake_;
    std::condition_variable served_;
    std::vector<std::shared_ptr<Voice>> voices_;  // guarded by mutex_
    std::uint64_t requests_ = 0;                  // guarded by mutex_
    std::uint64_t passesDone_ = 0;                // guarded by mutex_
    bool stopping_ = false;                       // guarded by mutex_
    bool nudged_ = false;                         // guarded by mutex_

    // Streaming-thread state.
    std::vector<std::pair<std::unique_ptr<StreamRing>, std::uint64_t>> graveyard_;
    std::uint64_t lastFinished_ = 0;
    int idlePasses_ = 0;
    std::atomic<std::size_t> rings_{0};

    std::thread thread_;
};

}  // namespace sylvora::audio
