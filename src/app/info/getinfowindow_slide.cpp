// The Get Info window's slide: the round button sends the texts up and out of the window, and back
// down, in 30 equal steps over a third of a second; pressing it again midway turns them round.

#include <QTimer>
#include <algorithm>
#include <cmath>

#include "app/info/getinfowindow.h"
#include "app/info/infoimageview.h"
#include "app/info/infooverlay.h"

namespace sylvora::app {

OSStatus GetInfoWindow::handleCommand(CommandID command) {
    if (command != command::TOGGLE_INFO) return MyCarbonWindow::handleCommand(command);
    if (scrollTextTimerRef == nullptr) {
        if (infoShown) {
            scrollDirection = 1;
            scrollProgress = 0.0;
        } else {
            infoShown = true;
            scrollDirection = -1;
            scrollProgress = 1.0;
        }
        scrollTextTimerRef = new QTimer(window);
        scrollTextTimerRef->setSingleShot(true);
        scrollTextTimerRef->setTimerType(Qt::PreciseTimer);
        QObject::connect(scrollTextTimerRef, &QTimer::timeout, scrollTextTimerRef, [this] {
            scrollTextTimer();
            ++slideTicks;
            if (scrollTextTimerRef != nullptr) armScrollTextTimer();
        });
        slideClock.start();
        slideTicks = 0;
        scrollTextTimerRef->start(0);  // the first step at once
    } else {
        scrollDirection = scrollDirection == 1 ? -1 : 1;
    }
    return noErr;
}

// Qt's timers count whole milliseconds, so each step is timed from the start of the slide to keep
// the rate at exactly 90 a second rather than 1000 / 11.
void GetInfoWindow::armScrollTextTimer() {
    const double step = SCROLL_TEXT_DURATION / SCROLL_TEXT_NUM_FRAMES * 1e9;
    const auto due = static_cast<qint64>(std::llround(slideTicks * step));
    const qint64 waitNs = due - slideClock.nsecsElapsed();
    scrollTextTimerRef->start(static_cast<int>(std::max<qint64>(0, (waitNs + 999999) / 1000000)));
}

void GetInfoWindow::scrollTextTimer() {
    const int before = slideOffset();
    constexpr double step = 1.0 / SCROLL_TEXT_NUM_FRAMES;
    if (scrollDirection < 1) {
        scrollProgress -= step;
        if (!(scrollProgress > 0.0)) {
            scrollProgress = 0.0;
            removeScrollTextTimer();
            scrollDirection = 0;
        }
    } else {
        scrollProgress += step;
        if (scrollProgress >= 1.0) {
            scrollProgress = 1.0;
            removeScrollTextTimer();
            scrollDirection = 0;
            infoShown = false;
        }
    }
    if (overlayWindow != nullptr) {
        // Only where the texts were and where they are now, so a still picture is not copied again.
        if (textImageValid) {
            const QRegion moved = textRegion.translated(0, -before) + textRegion.translated(0, -slideOffset());
            overlayWindow->update(moved & overlayWindow->rect());
        } else {
            overlayWindow->update();
        }
    } else if (imageView != nullptr) {
        imageView->update();
    }
}

int GetInfoWindow::slideOffset() const {
    const int height = imageView != nullptr ? imageView->height() : 0;
    return static_cast<int>(std::lround(height * scrollProgress));
}

void GetInfoWindow::removeScrollTextTimer() {
    if (scrollTextTimerRef == nullptr) return;
    scrollTextTimerRef->stop();
    scrollTextTimerRef->deleteLater();  // it may be the timer whose signal is running now
    scrollTextTimerRef = nullptr;
}

void GetInfoWindow::stopSlide() {
    removeScrollTextTimer();
    scrollProgress = 0.0;
    scrollDirection = 0;
    infoShown = true;
}

}  // namespace sylvora::app
