#include "app/info/controlstrip.h"

#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QSignalBlocker>
#include <QSlider>
#include <QStyle>
#include <QToolButton>
#include <cmath>

#include "app/desktop/sleeptimermenu.h"
#include "app/editor/worldeditorwindow.h"
#include "app/shell/applicationevents.h"
#include "app/shell/commanddispatch.h"
#include "app/shell/globals.h"
#include "app/shell/shellevents.h"
#include "app/shell/startup.h"
#include "audio/engine/engine.h"

namespace sylvora::app {

namespace {
constexpr int SLIDER_WIDTH = 120;

QString minutesLeft(const SleepTimer& timer) {
    const double left = timer.secondsLeft();
    if (left < 60.0) return ControlStrip::tr("%1 s").arg(static_cast<int>(std::ceil(left)));
    return ControlStrip::tr("%1 min").arg(static_cast<int>(std::ceil(left / 60.0)));
}
}  // namespace

ControlStrip::ControlStrip(QWidget* parent) : QWidget(parent) {
    setAutoFillBackground(true);  // the desktop's window colour, not the picture's
    // Never wider than the picture asks: at the window's minimum size the strip gives way.
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    auto* layout = new QHBoxLayout(this);

    playPause_ = new QToolButton(this);
    playPause_->setAutoRaise(true);
    connect(playPause_, &QToolButton::clicked, this, [] { dispatchCommand(command::PLAY_PAUSE); });
    layout->addWidget(playPause_);

    auto* speaker = new QLabel(this);
    speaker->setPixmap(style()->standardIcon(QStyle::SP_MediaVolume).pixmap(style()->pixelMetric(QStyle::PM_SmallIconSize)));
    layout->addWidget(speaker);
    volume_ = new QSlider(Qt::Horizontal, this);
    volume_->setRange(0, VOLUME_STEPS);
    volume_->setMaximumWidth(SLIDER_WIDTH);
    volume_->setToolTip(tr("Volume"));
    connect(volume_, &QSlider::valueChanged, this, &ControlStrip::volumeMoved);
    connect(volume_, &QSlider::sliderPressed, this, [this] { holdLowLatency(true); });
    connect(volume_, &QSlider::sliderReleased, this, [this] { holdLowLatency(false); });
    layout->addWidget(volume_);

    sleep_ = new QToolButton(this);
    sleep_->setPopupMode(QToolButton::InstantPopup);
    sleep_->setToolTip(tr("Sleep Timer"));
    layout->addWidget(sleep_);

    layout->addStretch(1);
    state_ = new QLabel(this);
    layout->addWidget(state_);

    connect(&ShellEvents::instance(), &ShellEvents::stateChanged, this, &ControlStrip::refresh);
    refresh();
}

QString ControlStrip::stateText() {
    // Said first: whatever the world does, nobody hears it.
    if (soundServerMissing()) return tr("No sound server — waiting");
    if (gCurrentWorld == nullptr || !gCurrentWorld->isPlaying()) return tr("Paused");
    const SleepTimerMenu* sleep = SleepTimerMenu::instance();
    const QString state = sleep != nullptr && sleep->timer().isActive() ? tr("Sleeping in %1").arg(minutesLeft(sleep->timer()))
                                                                        : tr("Playing");
    const QString unreadable = unreadableText();
    return unreadable.isEmpty() ? state : state + QStringLiteral(" — ") + unreadable;
}

QString ControlStrip::unreadableText() {
    if (gCurrentWorld == nullptr) return {};
    QStringList names;
    for (const QString& file : gCurrentWorld->getUnreadableLoopSounds()) names << QFileInfo(file).completeBaseName();
    return names.isEmpty() ? QString() : tr("cannot read: %1").arg(names.join(QStringLiteral(", ")));
}

void ControlStrip::refresh() {
    if (gCurrentWorld == nullptr) return;
    SleepTimerMenu* sleep = SleepTimerMenu::instance();
    if (sleep != nullptr && !listeningToSleepTimer_) {
        listeningToSleepTimer_ = true;
        sleep_->setMenu(sleep->menu());
        connect(sleep, &SleepTimerMenu::statusTextChanged, this, &ControlStrip::refresh);
        connect(sleep, &QObject::destroyed, this, [this] {
            listeningToSleepTimer_ = false;
            sleep_->setMenu(nullptr);
        });
    }
    const bool playing = gCurrentWorld->isPlaying();
    playPause_->setIcon(style()->standardIcon(playing ? QStyle::SP_MediaPause : QStyle::SP_MediaPlay));
    playPause_->setToolTip(playing ? tr("Pause") : tr("Play"));
    playPause_->setEnabled(playing || worldHasSounds());
    if (!volume_->isSliderDown()) {
        const QSignalBlocker quiet(volume_);
        volume_->setValue(static_cast<int>(std::lround(masterVolume() * VOLUME_STEPS)));
    }
    const bool sleeping = sleep != nullptr && sleep->timer().isActive();
    sleep_->setText(sleeping ? minutesLeft(sleep->timer()) : tr("Sleep"));
    sleep_->setEnabled(sleep != nullptr);
    state_->setText(stateText());
}

void ControlStrip::volumeMoved(int value) {
    gCurrentWorld->setVolume(static_cast<double>(value) / VOLUME_STEPS);
    ShellEvents::instance().notifyStateChanged();  // the menus' check marks and the media-player interface
}

void ControlStrip::holdLowLatency(bool held) {
    // While the pointer is down a person listens for each step; the editor wants the same while open.
    applicationEngine().setLowLatency(held || gWorldEditorWindow->isVisible());
}

}  // namespace sylvora::app
