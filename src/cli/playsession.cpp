#include "cli/playsession.h"

#include <QCoreApplication>
#include <cmath>

#include "audio/engine/engine.h"
#include "audio/outputs/output.h"
#include "cli/timeparsing.h"

namespace sylvora::cli {

PlaySession::PlaySession(World& playing, QString worldName, std::optional<double> seconds)
    : world(playing), name(std::move(worldName)), duration(seconds), line(stdout) {
    fadeTimer.setTimerType(Qt::PreciseTimer);
    fadeTimer.setInterval(static_cast<int>(std::lround(World::MOVIES_TASK_TIMER_INTERVAL * 1000.0)));
    QObject::connect(&fadeTimer, &QTimer::timeout, [this] { fadeStep(); });
    durationTimer.setSingleShot(true);
    durationTimer.setTimerType(Qt::PreciseTimer);
    QObject::connect(&durationTimer, &QTimer::timeout, [this] { finish(false); });
}

double PlaySession::elapsed() const {
    return world.getEventLoop().currentEventTime() - startedAt;
}

void PlaySession::begin() {
    startedAt = world.getEventLoop().currentEventTime();
    // The line changes once a second, at the world's tick that turns its clock over: its ticks fall
    // on whole seconds from the start, and riding on them costs no wake-up of the line's own.
    world.setTickListener([this] { return statusTick(); });
    world.start();
    if (sleepSeconds) {
        sleepTimer = std::make_unique<SleepTimer>(world);
        sleepTimer->setListener([this] {
            if (!sleepTimer->isActive() && fadeTick < 0) finish(true);  // it has run out
        });
        sleepTimer->start(*sleepSeconds);
    }
    if (duration) {
        // The fade ends at the duration rather than a second after it.
        const double fadeStart = std::max(0.0, *duration - 1.0);
        durationTimer.start(static_cast<int>(std::lround(fadeStart * 1000.0)));
    }
    showStatus();
}

double PlaySession::statusTick() {
    const double second = std::floor(elapsed());
    if (second != shownSecond) {
        showStatus();
    }
    return startedAt + shownSecond + 1.0;  // the tick at which the clock turns over next
}

void PlaySession::finish(bool immediately) {
    if (fadeTick < 0 && !immediately) {
        fadeTick = 0;
        volumeBeforeFade = world.getVolume();
        if (sleepTimer) {
            // The one-second fade takes over from wherever the sleep timer's fade has got to.
            sleepTimer->cancel();
            world.setVolume(volumeBeforeFade);
        }
        fadeTimer.start();
        return;
    }
    fadeTimer.stop();
    durationTimer.stop();
    world.setTickListener({});
    world.stop();
    showStatus();
    line.finish();
    QCoreApplication::quit();
}

void PlaySession::fadeStep() {
    ++fadeTick;
    // Equal steps of the volume over fifteen ticks; the engine ramps within each step.
    world.setVolume(volumeBeforeFade * (1.0 - static_cast<double>(fadeTick) / FADE_TICKS));
    if (fadeTick >= FADE_TICKS) {
        finish(true);
    }
}

void PlaySession::showStatus() {
    const double now = world.getEventLoop().currentEventTime();
    shownSecond = std::floor(elapsed());
    observer.poll(world, now);
    // On a terminal the line is rewritten in place; a log gets a line only when something a
    // listener hears changes, so it leaves out what moves by itself (the clock, the volume).
    const bool live = line.onTerminal();
    if (!live && fadeTick >= 0) {
        return;
    }
    QStringList parts;
    parts << (name.isEmpty() ? QStringLiteral("(untitled world)") : name);
    if (live) {
        parts << formatClock(elapsed());
    }
    // The world plays on unheard meanwhile, so what the line says below is still its state.
    if (output != nullptr && output->waitingForServer()) {
        parts << QStringLiteral("No sound server — waiting");
    }
    const QString loops = observer.playingLoops();
    parts << QStringLiteral("loop: %1").arg(loops.isEmpty() ? QStringLiteral("-") : loops);
    if (const QStringList unreadable = world.getUnreadableLoopSounds(); !unreadable.isEmpty()) {
        QStringList names;
        for (const QString& file : unreadable) names << PlaybackObserver::displayName(file);
        parts << QStringLiteral("cannot read: %1").arg(names.join(QStringLiteral(", ")));
    }
    QString heard = observer.lastEnvironmentSound();
    if (heard.isEmpty()) {
        heard = QStringLiteral("-");
    } else if (live) {
        heard += QStringLiteral(" (%1 ago)").arg(formatClock(now - observer.lastEnvironmentSoundTime()));
    }
    parts << QStringLiteral("last heard: %1").arg(heard);
    if (live) {
        parts << QStringLiteral("volume %1%").arg(std::lround(world.getVolume() * 100.0));
        if (sleepTimer && sleepTimer->isActive()) {
            parts << QStringLiteral("sleep in %1").arg(formatClock(std::ceil(sleepTimer->secondsLeft())));
        }
    }
    if (const std::uint64_t underruns = world.getEngine().underruns(); underruns > 0) {
        parts << QStringLiteral("underruns %1").arg(underruns);
    }
    if (live && fadeTick >= 0 && world.isPlaying()) {
        parts << QStringLiteral("fading out");
    }
    line.show(parts.join(QStringLiteral(" | ")));
}

}  // namespace sylvora::cli
