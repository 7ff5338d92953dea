#include "core/playback/sleeptimer.h"

#include <algorithm>
#include <cmath>

#include "core/world/world.h"

namespace sylvora {

SleepTimer::SleepTimer(World& world) : world_(world), loop_(world.getEventLoop()) {}

SleepTimer::~SleepTimer() {
    listener_ = nullptr;  // the owner is going away too
    cancel();
}

double SleepTimer::fadeGain(double secondsLeft, double fadeSeconds) {
    if (secondsLeft >= fadeSeconds) return 1.0;
    if (secondsLeft <= 0.0) return 0.0;
    return equalPowerCrossfade((fadeSeconds - secondsLeft) / fadeSeconds, false);
}

void SleepTimer::start(double seconds) {
    if (isActive()) end(false);
    seconds = std::max(0.0, seconds);
    chosenSeconds_ = seconds;
    fadeSeconds_ = std::min(FADE_SECONDS, seconds);
    endTime_ = loop_.currentEventTime() + seconds;
    // Nothing needs a tick before the fade: the time left is read from the clock.
    timer_ = loop_.installTimer(seconds - fadeSeconds_, World::MOVIES_TASK_TIMER_INTERVAL,
                                [this] { tick(); });
    if (listener_) listener_();
}

void SleepTimer::cancel() {
    if (!isActive()) return;
    end(false);
    if (listener_) listener_();
}

double SleepTimer::secondsLeft() const {
    return isActive() ? std::max(0.0, endTime_ - loop_.currentEventTime()) : 0.0;
}

double SleepTimer::masterVolume() const {
    const double volume = world_.getVolume();
    if (!fading_ || std::abs(volume - applied_) > 0.0) return volume;
    return master_;
}

void SleepTimer::adoptVolumeSetByHand() {
    master_ = masterVolume();
}

void SleepTimer::tick() {
    const double left = endTime_ - loop_.currentEventTime();
    if (!fading_) {
        fading_ = true;
        master_ = applied_ = world_.getVolume();
    }
    adoptVolumeSetByHand();
    if (left <= 0.0) {
        end(true);
        if (listener_) listener_();
        return;
    }
    world_.setVolume(master_ * fadeGain(left, fadeSeconds_));
    applied_ = world_.getVolume();
}

void SleepTimer::end(bool stopWorld) {
    loop_.removeTimer(timer_);
    timer_ = nullptr;
    if (stopWorld) world_.stop();
    if (fading_) {
        adoptVolumeSetByHand();
        fading_ = false;
        world_.setVolume(master_);
    }
}

}  // namespace sylvora
