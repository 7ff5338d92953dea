#include "app/desktop/mprisservice.h"

#include <QAction>
#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QFileInfo>
#include <QMenu>
#include <QTimer>
#include <QUrl>
#include <cmath>

#include "app/desktop/mprisplayeradaptor.h"
#include "app/desktop/mprisrootadaptor.h"
#include "app/desktop/sleeptimermenu.h"
#include "app/shell/applicationevents.h"
#include "app/shell/commanddispatch.h"
#include "app/shell/globals.h"
#include "app/shell/menus.h"
#include "app/shell/shellevents.h"

namespace sylvora::app {

namespace {

QString resolvedPath(const Alias* alias) {
    FSRef ref;
    if (alias == nullptr || FSResolveAlias(*alias, ref) != noErr) return {};
    return ref.path;
}

// An object path names the world for as long as it stays where it is.
QDBusObjectPath trackIdFor(const QString& packagePath) {
    if (packagePath.isEmpty()) return QDBusObjectPath(QString::fromLatin1(MprisService::NO_TRACK));
    return QDBusObjectPath(QStringLiteral("/org/sylvora/world/w%1").arg(qHash(packagePath), 0, 16));
}

bool sameValue(const QVariant& a, const QVariant& b) {
    // Object paths are a type the variant cannot compare; the metadata compares them as text.
    if (a.userType() == qMetaTypeId<QDBusObjectPath>() && b.userType() == qMetaTypeId<QDBusObjectPath>()) {
        return a.value<QDBusObjectPath>().path() == b.value<QDBusObjectPath>().path();
    }
    if (a.userType() == QMetaType::QVariantMap && b.userType() == QMetaType::QVariantMap) {
        const QVariantMap left = a.toMap(), right = b.toMap();
        if (left.keys() != right.keys()) return false;
        for (auto it = left.cbegin(); it != left.cend(); ++it) {
            if (!sameValue(it.value(), right.value(it.key()))) return false;
        }
        return true;
    }
    return a == b;
}

}  // namespace

MprisService::MprisService() {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return;  // no session bus: the application runs as it always did
    new MprisRootAdaptor(*this);
    new MprisPlayerAdaptor(*this);
    if (!bus.registerObject(QString::fromLatin1(OBJECT_PATH), this)) return;
    serviceName_ = QString::fromLatin1(SERVICE_NAME);
    // A second Sylvora with settings of its own takes the per-instance name the protocol provides.
    if (!bus.registerService(serviceName_)) {
        serviceName_ += QStringLiteral(".instance%1").arg(QCoreApplication::applicationPid());
        if (!bus.registerService(serviceName_)) {
            bus.unregisterObject(QString::fromLatin1(OBJECT_PATH));
            serviceName_.clear();
            return;
        }
    }
    registered_ = true;
    announceChanges();  // the starting values, without a signal: nobody can have asked yet
    connect(&ShellEvents::instance(), &ShellEvents::stateChanged, this, &MprisService::announceChanges);
}

MprisService::~MprisService() {
    if (!registered_) return;
    QDBusConnection bus = QDBusConnection::sessionBus();
    bus.unregisterService(serviceName_);
    bus.unregisterObject(QString::fromLatin1(OBJECT_PATH));
}

QString MprisService::playbackStatus() const {
    if (gCurrentWorld->isPlaying()) return QStringLiteral("Playing");
    return stoppedByStop_ || !canPlay() ? QStringLiteral("Stopped") : QStringLiteral("Paused");
}

QVariantMap MprisService::metadata() const {
    QVariantMap map;
    map.insert(QStringLiteral("mpris:trackid"),
               QVariant::fromValue(trackIdFor(resolvedPath(gCurrentWorld->getPackageAlias()))));
    if (const QString name = gCurrentWorld->getName(); !name.isEmpty()) map.insert(QStringLiteral("xesam:title"), name);
    if (const QString author = gCurrentWorld->getAuthor(); !author.isEmpty()) {
        map.insert(QStringLiteral("xesam:artist"), QStringList{author});
    }
    if (const QString picture = resolvedPath(gCurrentWorld->getPictureFileAlias()); !picture.isEmpty()) {
        map.insert(QStringLiteral("mpris:artUrl"), QUrl::fromLocalFile(picture).toString());
    }
    return map;
}

double MprisService::volume() const { return masterVolume(); }

bool MprisService::canPlay() const {
    return gCurrentWorld->getNumLoopSounds() > 0 || gCurrentWorld->getNumEnvironmentSounds() > 0;
}

bool MprisService::canGoNext() const { return gPrefs->getNumKnownWorlds() > 0; }

void MprisService::play() {
    if (!canPlay()) return;
    stoppedByStop_ = false;
    gCurrentWorld->start();
    ShellEvents::instance().notifyStateChanged();
}

void MprisService::pause() {
    gCurrentWorld->stop();
    ShellEvents::instance().notifyStateChanged();
}

void MprisService::playPause() {
    if (gCurrentWorld->isPlaying()) pause();
    else play();
}

void MprisService::stop() {
    stoppedByStop_ = true;
    gCurrentWorld->stop();
    ShellEvents::instance().notifyStateChanged();
}

void MprisService::setVolume(double volume) {
    if (std::isnan(volume)) return;
    gCurrentWorld->setVolume(volume);  // the world keeps it within 0 to 1
    ShellEvents::instance().notifyStateChanged();
}

// The calls that may ask a question (unsaved changes) or show an alert run on the loop's next turn,
// so the caller on the bus has its answer at once instead of waiting for the person.
void MprisService::stepKnownWorld(int step) {
    QTimer::singleShot(0, this, [step] {
        if (knownWorldsMenuEventHandler() != noErr) return;  // fills the menu as opening it does
        QList<QAction*> items;
        int current = -1;
        for (QAction* action : getMenu(KNOWN_WORLDS_MENU_ID)->actions()) {
            if (commandOf(*action) == 0) continue;
            if (action->isChecked()) current = static_cast<int>(items.size());
            items << action;
        }
        const int count = static_cast<int>(items.size());
        if (count == 0) return;
        // The known worlds are a ring: after the last comes the first again.
        const int target = current < 0 ? (step > 0 ? 0 : count - 1) : ((current + step) % count + count) % count;
        if (target != current) dispatchCommand(commandOf(*items[target]));
    });
}

void MprisService::openUri(const QString& uri) {
    const QUrl url(uri);
    if (!url.isLocalFile()) return;
    const QString path = QFileInfo(url.toLocalFile()).absoluteFilePath();
    QTimer::singleShot(0, this, [path] { doOpenDocsEvent({path}); });
}

void MprisService::raise() { postCommand(command::GET_INFO); }
void MprisService::quit() { postCommand(command::QUIT); }

void MprisService::announceChanges() {
    if (gCurrentWorld->isPlaying()) stoppedByStop_ = false;  // played again, by whatever means
    const QVariantMap now{
        {QStringLiteral("PlaybackStatus"), playbackStatus()},
        {QStringLiteral("Metadata"), metadata()},
        {QStringLiteral("Volume"), volume()},
        {QStringLiteral("CanPlay"), canPlay()},
        {QStringLiteral("CanGoNext"), canGoNext()},
        {QStringLiteral("CanGoPrevious"), canGoNext()},
    };
    QVariantMap changed;
    for (auto it = now.cbegin(); it != now.cend(); ++it) {
        if (!announced_.contains(it.key()) || !sameValue(announced_.value(it.key()), it.value())) {
            changed.insert(it.key(), it.value());
        }
    }
    const bool first = announced_.isEmpty();
    announced_ = now;
    if (first || changed.isEmpty()) return;
    QDBusMessage signal = QDBusMessage::createSignal(QString::fromLatin1(OBJECT_PATH),
                                                     QStringLiteral("org.freedesktop.DBus.Properties"),
                                                     QStringLiteral("PropertiesChanged"));
    signal << QString::fromLatin1(PLAYER_INTERFACE) << changed << QStringList();
    QDBusConnection::sessionBus().send(signal);
}

}  // namespace sylvora::app
