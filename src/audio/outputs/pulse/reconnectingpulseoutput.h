#pragma once

// The sound server as a desktop gives it: killed, restarted, replaced under a running player, or
// not there yet when the player starts. While a connection lasts, a PulseOutput plays; when it
// fails, a null pacer pulls the engine at real-time pace (so the world's time runs on, unheard)
// while a supervisor thread connects again, first after RETRY_FIRST_SECONDS, then at twice the
// wait each time up to RETRY_LONGEST_SECONDS. A new connection is made held (answering the server
// with silence) while the pacer still pulls; the pacer then stops and the connection takes the
// engine over where the pacer left it, so nothing is replayed or skipped but a moment of silence.
//
// It speaks for whichever output plays to the engine (OutputLink): the queue is that of the
// connection, none while waiting.
//
// Lifecycle: open() or waitForServer() -> setServerListener() -> start() -> stop() -> destroy,
// all [main]. The supervisor runs between start() and stop().

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "audio/engine/engine.h"
#include "audio/outputs/output.h"

namespace sylvora::audio {

class NullOutput;
class PulseOutput;

class ReconnectingPulseOutput final : public AudioOutput, private OutputLink {
  public:
    static constexpr double RETRY_FIRST_SECONDS = 0.1;
    static constexpr double RETRY_LONGEST_SECONDS = 0.5;

    // Connected now, or null with `error` filled when no server answers.
    static std::unique_ptr<ReconnectingPulseOutput> open(Engine& engine, std::string& error);
    // No server now: paced until one answers.
    static std::unique_ptr<ReconnectingPulseOutput> waitForServer(Engine& engine);
    ~ReconnectingPulseOutput() override;

    bool start() override;  // [main]
    void stop() override;   // [main]
    std::string description() const override;
    bool waitingForServer() const noexcept override { return waiting_.load(std::memory_order_acquire); }
    void setServerListener(std::function<void()> changed) override { listener_ = std::move(changed); }

    void setLowLatency(bool wanted) override;  // [main]
    double queuedSeconds() const override;     // [main]

  private:
    explicit ReconnectingPulseOutput(Engine& engine);
    std::unique_ptr<PulseOutput> connect(std::string& error);  // [supervisor] or [main] before start()
    void supervise();                                           // [supervisor]
    void serverLost();                                          // [audio] of the lost connection
    void setWaiting(bool waiting);                              // [supervisor]
    void wakeSupervisor();                                      // [any]
    // [supervisor] Until woken or `seconds` have passed (negative: until woken).
    void sleep(double seconds);

    Engine& engine_;
    std::unique_ptr<NullOutput> pacer_;
    std::function<void()> listener_;  // set before start()
    std::thread supervisor_;
    std::atomic<bool> waiting_{false};
    std::atomic<bool> lowLatency_{false};  // what the engine last asked for; written [main]

    // The playing connection, if any: replaced by the supervisor, read by the main thread. Never
    // held while the wake-up lock below is taken, nor while a connection is made or torn down.
    mutable std::mutex outputMutex_;
    std::unique_ptr<PulseOutput> pulse_;
    bool paced_ = false;  // the pacer pulls; [main] before start() and after stop(), else [supervisor]

    // What wakes the supervisor: a lost connection or stop(), each setting its flag and then
    // counting up an eventfd, so that libpulse's loop thread (which also renders) never takes a lock.
    int wakeFd_ = -1;
    std::atomic<bool> lostSeen_{false};  // set by a connection's loop thread, cleared by the supervisor
    std::atomic<bool> stopping_{false};  // written by the main thread; also ends a connection attempt
};

}  // namespace sylvora::audio
