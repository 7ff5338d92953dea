#include "app/desktop/sleeptimermenu.h"

#include <QAction>
#include <QActionGroup>
#include <QMenu>
#include <cmath>

#include "app/shell/globals.h"
#include "app/shell/menus.h"
#include "app/shell/shellevents.h"

namespace sylvora::app {

namespace {
SleepTimerMenu* gSleepTimerMenu = nullptr;
constexpr int CLOCK_INTERVAL_MS = 1000;
}  // namespace

SleepTimerMenu::SleepTimerMenu(World& world) : timer_(world), menu_(std::make_unique<QMenu>(tr("Sleep Timer"))) {
    group_ = new QActionGroup(menu_.get());
    for (std::size_t i = 0; i < CHOICES_MINUTES.size(); ++i) {
        const int minutes = CHOICES_MINUTES[i];
        QAction* item = menu_->addAction(minutes == 0 ? tr("Off") : tr("%1 Minutes").arg(minutes));
        item->setCheckable(true);
        group_->addAction(item);
        connect(item, &QAction::triggered, this, [this, minutes] { choose(minutes); });
        items_[i] = item;
        if (minutes == 0) menu_->addSeparator();
    }
    if (QMenu* volume = getMenu(VOLUME_MENU_ID)) {
        separator_ = volume->addSeparator();
        volume->addMenu(menu_.get());
    }
    timer_.setListener([] { ShellEvents::instance().notifyStateChanged(); });
    clock_.setInterval(CLOCK_INTERVAL_MS);
    connect(&clock_, &QTimer::timeout, this, &SleepTimerMenu::refresh);
    connect(&ShellEvents::instance(), &ShellEvents::stateChanged, this, &SleepTimerMenu::refresh);
    gSleepTimerMenu = this;
    refresh();
}

SleepTimerMenu::~SleepTimerMenu() {
    gSleepTimerMenu = nullptr;
    timer_.setListener(nullptr);
    timer_.cancel();
    if (QMenu* volume = getMenu(VOLUME_MENU_ID)) {
        volume->removeAction(separator_);
        volume->removeAction(menu_->menuAction());
    }
    if (dockMenu != nullptr) dockMenu->removeAction(menu_->menuAction());
}

SleepTimerMenu* SleepTimerMenu::instance() { return gSleepTimerMenu; }

void SleepTimerMenu::choose(int minutes) {
    if (minutes > 0) timer_.start(60.0 * minutes);
    else timer_.cancel();
    refresh();
}

QString SleepTimerMenu::statusText() const {
    if (!timer_.isActive()) return {};
    const double left = timer_.secondsLeft();
    if (timer_.isFading()) return tr("Sleep timer: fading out");
    if (left < 60.0) return tr("Sleep timer: %1 s left").arg(static_cast<int>(std::ceil(left)));
    return tr("Sleep timer: %1 min left").arg(static_cast<int>(std::ceil(left / 60.0)));
}

void SleepTimerMenu::refresh() {
    const int chosen = static_cast<int>(std::lround(timer_.chosenSeconds() / 60.0));
    for (std::size_t i = 0; i < CHOICES_MINUTES.size(); ++i) items_[i]->setChecked(CHOICES_MINUTES[i] == chosen);
    if (timer_.isActive() && !clock_.isActive()) clock_.start();
    if (!timer_.isActive()) clock_.stop();
    const QString status = statusText();
    if (status != lastStatus_) {
        lastStatus_ = status;
        Q_EMIT statusTextChanged();
    }
}

double masterVolume() {
    if (gSleepTimerMenu != nullptr) return gSleepTimerMenu->timer().masterVolume();
    return gCurrentWorld != nullptr ? gCurrentWorld->getVolume() : 1.0;
}

}  // namespace sylvora::app
