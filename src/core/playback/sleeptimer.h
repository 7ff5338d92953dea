#pragma once

// A sleep timer: after a chosen time the world fades out over its last FADE_SECONDS, stops, and
// has its volume back for the next play. The desktop app and the live command-line player share it.
//
// The fade goes through World::setVolume, the volume the scheduler applies to every instance on
// every tick, so the glide is heard within a tick of each step and follows crossfades and new plays
// alike. The level the person chose stays here while the fade runs: masterVolume() is what menus
// show and what is stored, and a volume set by hand during the fade becomes the new master level,
// from which the fade goes on. Opening another world leaves the timer running; only cancel() ends it.
//
// Lifecycle: start(seconds) -> nothing ticks until the fade begins -> a tick every 1/15 s on the
// world's event loop lowers the volume -> at the end the world stops, the master volume is put back
// and the listener hears it. cancel() at any moment puts the master volume back. Main thread only.

#include <functional>

#include "core/time/eventloop.h"

namespace sylvora {

class World;

class SleepTimer {
public:
    static constexpr double FADE_SECONDS = 30.0;

    explicit SleepTimer(World& world);
    ~SleepTimer();
    SleepTimer(const SleepTimer&) = delete;
    SleepTimer& operator=(const SleepTimer&) = delete;

    // [main] (Re)starts the timer to run out `seconds` from now; a timer already fading first gives
    // the volume back.
    void start(double seconds);
    // [main] Ends the timer without stopping the world; the master volume is back at once.
    void cancel();

    bool isActive() const { return timer_ != nullptr; }
    bool isFading() const { return fading_; }
    double secondsLeft() const;  // 0 while inactive
    double chosenSeconds() const { return isActive() ? chosenSeconds_ : 0.0; }
    // The level the person chose: the world's volume, except while the fade holds it lower.
    double masterVolume() const;

    // The fade's gain with `secondsLeft` to go: 1 before the fade, then the fade-out half of the
    // loop crossfade, 1 - x^2 with x the part of the fade that has passed, so the glide starts
    // gently and is silent at the end. A timer shorter than FADE_SECONDS fades over all of it.
    static double fadeGain(double secondsLeft, double fadeSeconds = FADE_SECONDS);

    // [main] Called after the timer starts, is cancelled or runs out.
    void setListener(std::function<void()> listener) { listener_ = std::move(listener); }

private:
    void tick();
    void adoptVolumeSetByHand();
    void end(bool stopWorld);

    World& world_;
    EventLoop& loop_;
    EventLoopTimerRef timer_ = nullptr;
    double endTime_ = 0.0;
    double chosenSeconds_ = 0.0;
    double fadeSeconds_ = FADE_SECONDS;
    bool fading_ = false;
    double master_ = 1.0;   // while fading
    double applied_ = 1.0;  // the world's volume after the fade's last step
    std::function<void()> listener_;
};

}  // namespace sylvora
