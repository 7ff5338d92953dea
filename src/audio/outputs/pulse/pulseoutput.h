#pragma once

// A native PulseAudio client (which PipeWire's PulseAudio service serves too): float stereo at the
// engine's rate, written from the write requests of libpulse's threaded main loop, whose thread is
// the audio thread and only calls Engine::render().
//
// Latency follows the need. A change is heard after what is queued, and the process wakes once
// per request of the server. While a world just plays, the queue is at most LONG_BUFFER_SECONDS,
// within the quarter second a person notices, and each request takes LONG_REQUEST_SECONDS, so
// the server asks about six times a second and the thread wakes as often. (Blocks go through the
// socket, not shared memory: with shared memory the server hands back each block once played,
// which wakes the thread a second time per request and costs more than the copy it saves.)
// While the app asks for low latency
// (Engine::setLowLatency), the queue is at most SHORT_BUFFER_SECONDS; when it stops asking, the
// long buffer returns LONG_RETURN_SECONDS later, so that closing and reopening a window does not
// make the next change wait a long buffer.
// The server never asks for less than it would let the queue hold beyond one request, so in the
// long buffer the queue it is given (tlength) is larger by LONG_HELD_BACK_SECONDS, a credit this
// client leaves unused. (Kept in the short buffer, it would be taken for the sink's latency.)
// The engine hears from it how much is queued (OutputLink::queuedSeconds), so that a sound due at
// a given time can be started that much earlier and be heard on time: counted from the writes and
// corrected by the server's own count every TIMING_CHECK_SECONDS.
// Switching never drops or repeats audio: what is queued plays out and the server then asks for
// more by the new measure; right after a switch to short, the long queue still plays first (a
// rewrite of the queue would need an engine that can render again from an earlier frame).
//
// Lifecycle: open() -> start() -> stop() -> destroy, all [main].

#include <pulse/pulseaudio.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "audio/engine/engine.h"
#include "audio/outputs/output.h"

namespace sylvora::audio {

class PulseOutput final : public AudioOutput, private OutputLink {
  public:
    static constexpr double LONG_BUFFER_SECONDS = 0.23;
    static constexpr double LONG_REQUEST_SECONDS = 0.17;
    static constexpr double LONG_HELD_BACK_SECONDS = 0.12;
    static constexpr double SHORT_BUFFER_SECONDS = 0.04;
    static constexpr double SHORT_REQUEST_SECONDS = 0.015;
    static constexpr double LONG_RETURN_SECONDS = 3.0;
    static constexpr double TIMING_CHECK_SECONDS = 5.0;
    static constexpr double TIMING_SETTLE_SECONDS = 0.3;
    // libpulse waits for a server's answer without end; a socket that takes the connection and
    // never answers (a hung or half-started server) is given up after this long, and looked at
    // every CONNECT_CHECK_SECONDS meanwhile for an owner that no longer wants the connection.
    static constexpr double CONNECT_TIMEOUT_SECONDS = 3.0;
    static constexpr double CONNECT_CHECK_SECONDS = 0.05;

    // Null with `error` filled when no sound server answers or it refuses the stream.
    static std::unique_ptr<PulseOutput> open(Engine& engine, std::string& error);
    // For an owner that speaks for it to the engine (OutputLink) and hands the engine over to it:
    // not registered with the engine, and until pullEngine() the server's requests are answered
    // with silence, so the engine is never pulled by two outputs at once. `lost` is called [audio]
    // when the connection, once made, fails (the server went away); it must not call back in.
    // `abandon` set (from any thread) ends a connection attempt early, as a failure.
    static std::unique_ptr<PulseOutput> openHeld(Engine& engine, bool lowLatency, std::function<void()> lost,
                                                 const std::atomic<bool>& abandon, std::string& error);
    ~PulseOutput() override;

    bool start() override;  // [main]
    void stop() override;   // [main]
    std::string description() const override { return description_; }

    // [main] What the engine forwards from Engine::setLowLatency.
    void setLowLatency(bool wanted) override;
    // [any] Seconds until what is rendered now is heard, as of the last write: the queue then,
    // less the time since.
    double queuedSeconds() const override;
    // [any] Times the server ran out of audio to play.
    std::uint64_t underruns() const noexcept { return underruns_.load(std::memory_order_relaxed); }
    // [any] Engine frames rendered into the stream so far.
    std::uint64_t framesWritten() const noexcept { return written_.load(std::memory_order_acquire); }
    // [main] Engine frames the server has played so far, as of now; asks the server, so it waits
    // one round trip. For measurements.
    std::uint64_t framesPlayed();
    // [main] of its owner, before start(): from now on the server's requests are answered by the
    // engine, and the silence written before is dropped, so the engine is heard as soon as it plays.
    void pullEngine();
    // [any] The connection failed after it was made; nothing is played any more.
    bool lost() const noexcept { return lost_.load(std::memory_order_acquire); }

  private:
    explicit PulseOutput(Engine& engine);
    bool connect(bool lowLatency, std::string& error);
    void connectionFailed();  // [audio]
    std::size_t bytes(double seconds) const;
    pa_buffer_attr bufferAttr(bool shortBuffer) const;
    void applyBuffer(bool shortBuffer);  // [audio] under the loop's lock

    static void contextChanged(pa_context* context, void* self);               // [audio]
    static void streamChanged(pa_stream* stream, void* self);                  // [audio]
    static void writeRequested(pa_stream* stream, std::size_t writable, void* self);  // [RT]
    static void underflowed(pa_stream* stream, void* self);                    // [RT]
    static void operationDone(pa_stream* stream, int success, void* self);     // [audio]
    static void timingUpdated(pa_stream* stream, int success, void* self);     // [audio]
    void askTiming();      // [audio] under the loop's lock
    void askTimingSoon();  // [audio] under the loop's lock
    static void timingCheckDue(pa_mainloop_api* api, pa_time_event* event, const struct timeval* when,
                               void* self);  // [audio]
    static void longReturnDue(pa_mainloop_api* api, pa_time_event* event, const struct timeval* when,
                              void* self);  // [audio]
    static void connectCheckDue(pa_mainloop_api* api, pa_time_event* event, const struct timeval* when,
                                void* self);  // [audio]
    bool givenUp(std::string& error) const;  // under the loop's lock

    Engine& engine_;
    std::size_t heldBack_ = 0;             // bytes; under the loop's lock
    pa_threaded_mainloop* loop_ = nullptr;
    pa_context* context_ = nullptr;
    pa_stream* stream_ = nullptr;
    pa_time_event* longReturn_ = nullptr;  // under the loop's lock
    pa_time_event* timingCheck_ = nullptr;  // under the loop's lock
    pa_time_event* connectCheck_ = nullptr;  // while connecting; under the loop's lock
    std::int64_t connectDeadlineNs_ = 0;     // set before the loop starts
    const std::atomic<bool>* abandon_ = nullptr;
    bool connectGivenUp_ = false;            // under the loop's lock
    bool shortBuffer_ = false;             // under the loop's lock
    bool started_ = false;                 // written by the main thread under the loop's lock
    std::int64_t corkedNs_ = 0;            // what the queue holds while corked; under the loop's lock
    std::string description_;
    bool linked_ = false;       // registered with the engine; [main]
    bool connected_ = false;    // context and stream were ready once; under the loop's lock
    std::function<void()> lostListener_;  // set before connect(), cleared before the teardown

    std::atomic<bool> pulling_{true};
    std::atomic<bool> lost_{false};

    std::atomic<std::uint64_t> written_{0};    // written by the audio thread
    std::atomic<std::uint64_t> underruns_{0};  // written by the audio thread
    // When the server's queue, as of the last write, runs dry (CLOCK_MONOTONIC, ns); written by
    // the audio thread, read by the main thread.
    std::atomic<std::int64_t> dryAtNs_{0};
    // How long the sound server's device side holds a sample before it is heard, in ns, as the
    // server last said. The server is asked TIMING_SETTLE_SECONDS after a start or a change of
    // buffer (the device side follows the streams' needs), then every TIMING_CHECK_SECONDS; its
    // answer also corrects dryAtNs_.
    std::atomic<std::int64_t> sinkLatencyNs_{0};
};

}  // namespace sylvora::audio
