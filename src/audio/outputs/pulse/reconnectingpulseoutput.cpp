#include "audio/outputs/pulse/reconnectingpulseoutput.h"

#include <algorithm>
#include <chrono>

#include "audio/outputs/null/nulloutput.h"
#include "audio/outputs/pulse/pulseoutput.h"

namespace sylvora::audio {

ReconnectingPulseOutput::ReconnectingPulseOutput(Engine& engine)
    : engine_(engine), pacer_(std::make_unique<NullOutput>(engine)) {
    lowLatency_.store(engine.lowLatencyWanted(), std::memory_order_relaxed);
    engine_.setOutputLink(this);
}

std::unique_ptr<ReconnectingPulseOutput> ReconnectingPulseOutput::open(Engine& engine, std::string& error) {
    std::unique_ptr<ReconnectingPulseOutput> output(new ReconnectingPulseOutput(engine));
    output->pulse_ = output->connect(error);
    if (!output->pulse_)
        return nullptr;
    // Nothing else pulls the engine before start().
    output->pulse_->pullEngine();
    return output;
}

std::unique_ptr<ReconnectingPulseOutput> ReconnectingPulseOutput::waitForServer(Engine& engine) {
    std::unique_ptr<ReconnectingPulseOutput> output(new ReconnectingPulseOutput(engine));
    output->waiting_.store(true, std::memory_order_release);
    return output;
}

ReconnectingPulseOutput::~ReconnectingPulseOutput() {
    stop();
    engine_.setOutputLink(nullptr);
}

std::unique_ptr<PulseOutput> ReconnectingPulseOutput::connect(std::string& error) {
    return PulseOutput::openHeld(engine_, lowLatency_.load(std::memory_order_relaxed), [this] { serverLost(); }, error);
}

bool ReconnectingPulseOutput::start() {
    if (supervisor_.joinable())
        return true;
    {
        const std::lock_guard<std::mutex> lock(wakeMutex_);
        stopping_ = false;
    }
    if (pulse_ && !pulse_->start()) {
        const std::lock_guard<std::mutex> lock(outputMutex_);
        pulse_.reset();
        waiting_.store(true, std::memory_order_release);
    }
    if (!pulse_) {
        pacer_->start();
        paced_ = true;
    }
    supervisor_ = std::thread([this] { supervise(); });
    return true;
}

void ReconnectingPulseOutput::stop() {
    if (!supervisor_.joinable())
        return;
    {
        const std::lock_guard<std::mutex> lock(wakeMutex_);
        stopping_ = true;
    }
    wake_.notify_all();
    supervisor_.join();
    if (pulse_)
        pulse_->stop();
    if (paced_) {
        pacer_->stop();
        paced_ = false;
    }
}

std::string ReconnectingPulseOutput::description() const {
    const std::lock_guard<std::mutex> lock(outputMutex_);
    return pulse_ ? pulse_->description() : std::string("no sound server (waiting for one)");
}

void ReconnectingPulseOutput::setLowLatency(bool wanted) {
    lowLatency_.store(wanted, std::memory_order_relaxed);
    const std::lock_guard<std::mutex> lock(outputMutex_);
    if (pulse_)
        pulse_->setLowLatency(wanted);
}

double ReconnectingPulseOutput::queuedSeconds() const {
    const std::lock_guard<std::mutex> lock(outputMutex_);
    return pulse_ ? pulse_->queuedSeconds() : 0.0;
}

void ReconnectingPulseOutput::serverLost() {
    {
        const std::lock_guard<std::mutex> lock(wakeMutex_);
        lostSeen_ = true;
    }
    wake_.notify_all();
}

void ReconnectingPulseOutput::setWaiting(bool waiting) {
    if (waiting_.exchange(waiting, std::memory_order_acq_rel) != waiting && listener_)
        listener_();
}

void ReconnectingPulseOutput::supervise() {
    double retryIn = RETRY_FIRST_SECONDS;
    for (;;) {
        std::unique_lock<std::mutex> lock(wakeMutex_);
        if (!paced_) {
            // Playing through the server: sleep until it goes away.
            wake_.wait(lock, [this] { return stopping_ || lostSeen_; });
            if (stopping_)
                return;
            lostSeen_ = false;
            lock.unlock();
            // A connection that failed before it took over was seen losing too.
            if (!pulse_->lost())
                continue;
            std::unique_ptr<PulseOutput> gone;
            {
                const std::lock_guard<std::mutex> outputLock(outputMutex_);
                gone = std::move(pulse_);
            }
            // Torn down first: its thread must have stopped pulling before the pacer begins.
            gone.reset();
            pacer_->start();
            paced_ = true;
            retryIn = RETRY_FIRST_SECONDS;
            setWaiting(true);
            continue;
        }
        if (wake_.wait_for(lock, std::chrono::duration<double>(retryIn), [this] { return stopping_; }))
            return;
        lock.unlock();
        std::string error;
        std::unique_ptr<PulseOutput> fresh = connect(error);
        if (!fresh) {
            retryIn = std::min(retryIn * 2.0, RETRY_LONGEST_SECONDS);
            continue;
        }
        // The handover: the pacer lets go of the engine, and the connection, whose queue holds
        // silence so far, takes it from the same frame on.
        pacer_->stop();
        paced_ = false;
        fresh->pullEngine();
        if (!fresh->start() || fresh->lost()) {
            fresh.reset();
            pacer_->start();
            paced_ = true;
            continue;
        }
        {
            const std::lock_guard<std::mutex> outputLock(outputMutex_);
            pulse_ = std::move(fresh);
            pulse_->setLowLatency(lowLatency_.load(std::memory_order_relaxed));
        }
        setWaiting(false);
    }
}

}  // namespace sylvora::audio
