#include "audio/outputs/pulse/reconnectingpulseoutput.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "audio/outputs/null/nulloutput.h"
#include "audio/outputs/pulse/pulseoutput.h"

namespace sylvora::audio {

ReconnectingPulseOutput::ReconnectingPulseOutput(Engine& engine)
    : engine_(engine), pacer_(std::make_unique<NullOutput>(engine)), wakeFd_(::eventfd(0, EFD_CLOEXEC)) {
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
    if (wakeFd_ >= 0)
        ::close(wakeFd_);
}

std::unique_ptr<PulseOutput> ReconnectingPulseOutput::connect(std::string& error) {
    return PulseOutput::openHeld(engine_, lowLatency_.load(std::memory_order_relaxed), [this] { serverLost(); }, stopping_,
                                 error);
}

bool ReconnectingPulseOutput::start() {
    if (supervisor_.joinable())
        return true;
    stopping_.store(false, std::memory_order_release);
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
    // Also ends a connection attempt in progress: a server that takes the connection and never
    // answers does not hold up a quit.
    stopping_.store(true, std::memory_order_release);
    wakeSupervisor();
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
    lostSeen_.store(true, std::memory_order_release);
    wakeSupervisor();
}

void ReconnectingPulseOutput::wakeSupervisor() {
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(wakeFd_, &one, sizeof one);
}

void ReconnectingPulseOutput::sleep(double seconds) {
    pollfd wake{wakeFd_, POLLIN, 0};
    const int ms = seconds < 0.0 ? -1 : static_cast<int>(std::ceil(seconds * 1000.0));
    if (::poll(&wake, 1, ms) > 0) {
        std::uint64_t count = 0;
        [[maybe_unused]] const ssize_t read = ::read(wakeFd_, &count, sizeof count);
    }
}

void ReconnectingPulseOutput::setWaiting(bool waiting) {
    if (waiting_.exchange(waiting, std::memory_order_acq_rel) != waiting && listener_)
        listener_();
}

void ReconnectingPulseOutput::supervise() {
    double retryIn = RETRY_FIRST_SECONDS;
    for (;;) {
        if (!paced_) {
            // Playing through the server: sleep until it goes away.
            while (!stopping_.load(std::memory_order_acquire) && !lostSeen_.load(std::memory_order_acquire))
                sleep(-1.0);
            if (stopping_.load(std::memory_order_acquire))
                return;
            lostSeen_.store(false, std::memory_order_relaxed);
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
        sleep(retryIn);
        if (stopping_.load(std::memory_order_acquire))
            return;
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
