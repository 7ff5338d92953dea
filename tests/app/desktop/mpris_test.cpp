// The media-player interface as a desktop panel or playerctl uses it: through a bus connection of
// its own on a private session bus, against the application started as main() starts it.

#include <gtest/gtest.h>

#include <QAction>
#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusInterface>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QDBusVariant>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QMenu>
#include <QProcess>
#include <QTemporaryDir>
#include <QUrl>
#include <functional>
#include <memory>

#include "app/desktop/mprisservice.h"
#include "app/desktop/sleeptimermenu.h"
#include "app/shell/applicationevents.h"
#include "app/shell/commanddispatch.h"
#include "app/shell/globals.h"
#include "app/shell/menus.h"
#include "app/shell/startup.h"
#include "support/worldfixture.h"

namespace sylvora::test {

// Collects the PropertiesChanged signals of the player interface.
class ChangeRecorder : public QObject {
    Q_OBJECT
public:
    QList<QVariantMap> changes;
public Q_SLOTS:
    void propertiesChanged(const QString& interface, const QVariantMap& changed, const QStringList&) {
        if (interface == QLatin1String(app::MprisService::PLAYER_INTERFACE)) changes << changed;
    }
};

namespace {

const QString SERVICE = QString::fromLatin1(app::MprisService::SERVICE_NAME);
const QString PATH = QString::fromLatin1(app::MprisService::OBJECT_PATH);
const QString PLAYER = QString::fromLatin1(app::MprisService::PLAYER_INTERFACE);
const QString PROPERTIES = QStringLiteral("org.freedesktop.DBus.Properties");

bool waitUntil(const std::function<bool()>& condition, int milliseconds = 5000) {
    QElapsedTimer clock;
    clock.start();
    while (!condition()) {
        if (clock.elapsed() > milliseconds) return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    }
    return true;
}

QVariantMap asMap(const QVariant& value) {
    return value.canConvert<QDBusArgument>() ? qdbus_cast<QVariantMap>(value.value<QDBusArgument>()) : value.toMap();
}

class MprisTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        settings = new QTemporaryDir;
        qputenv("XDG_CONFIG_HOME", settings->path().toUtf8());
        bus = new QProcess;
        bus->start(QStringLiteral("dbus-daemon"), {"--session", "--nofork", "--print-address"});
        ASSERT_TRUE(bus->waitForReadyRead(10000)) << "dbus-daemon did not start";
        address = QString::fromUtf8(bus->readLine()).trimmed();
        // Before anything asks for the session bus: Qt connects to it once per process.
        qputenv("DBUS_SESSION_BUS_ADDRESS", address.toUtf8());
    }
    static void TearDownTestSuite() {
        bus->kill();
        bus->waitForFinished();
        delete bus;
        delete settings;
    }

    void SetUp() override {
        app::startUp(app::StartUpOptions{.audioDevice = false, .tray = false});
        client = std::make_unique<QDBusConnection>(QDBusConnection::connectToBus(address, QStringLiteral("client")));
        ASSERT_TRUE(client->isConnected());
    }
    void TearDown() override {
        client.reset();
        QDBusConnection::disconnectFromBus(QStringLiteral("client"));
        app::shutDown();
    }

    // The client waits with an event loop of its own, so the service in this same thread answers.
    QDBusMessage call(const QString& interface, const QString& method, const QVariantList& arguments = {}) {
        QDBusMessage message = QDBusMessage::createMethodCall(SERVICE, PATH, interface, method);
        message.setArguments(arguments);
        return client->call(message, QDBus::BlockWithGui, 5000);
    }
    QVariant property(const QString& name) {
        const QDBusMessage reply = call(PROPERTIES, QStringLiteral("Get"), {PLAYER, name});
        EXPECT_EQ(reply.type(), QDBusMessage::ReplyMessage) << reply.errorMessage().toStdString();
        return reply.arguments().value(0).value<QDBusVariant>().variant();
    }
    void setProperty(const QString& name, const QVariant& value) {
        const QDBusMessage reply =
            call(PROPERTIES, QStringLiteral("Set"), {PLAYER, name, QVariant::fromValue(QDBusVariant(value))});
        EXPECT_EQ(reply.type(), QDBusMessage::ReplyMessage) << reply.errorMessage().toStdString();
    }

    // A saved world made with the editor's operations.
    QString makeWorld(const QString& name, const QString& author, bool withPicture) {
        maker.world.resetToInitialState();
        maker.world.setName(name);
        maker.world.setAuthor(author);
        maker.addLoop(maker.writeSound(name + QStringLiteral(".wav"), 1.0));
        if (withPicture) maker.world.setPictureFileAlias(WorldFixture::aliasOf(maker.writePicture(QStringLiteral("cover.png"))).get());
        const QString file = name + QStringLiteral(".sylvora");
        EXPECT_EQ(maker.world.doSaveAs(maker.dir.ref(), file), noErr);
        return maker.dir.filePath(file);
    }

    static inline QTemporaryDir* settings = nullptr;
    static inline QProcess* bus = nullptr;
    static inline QString address;
    std::unique_ptr<QDBusConnection> client;
    WorldFixture maker;
};

TEST_F(MprisTest, PlayPauseStopAndVolumeReachTheWorldAndTheMenus) {
    app::doOpenDocsEvent({makeWorld(QStringLiteral("Alpha"), QString(), false)});
    ASSERT_TRUE(app::gCurrentWorld->isPlaying());
    EXPECT_EQ(property(QStringLiteral("PlaybackStatus")).toString(), QStringLiteral("Playing"));

    struct Step {
        const char* method;
        bool playing;
        const char* status;
    };
    for (const Step& step : {Step{"Pause", false, "Paused"}, Step{"PlayPause", true, "Playing"},
                             Step{"PlayPause", false, "Paused"}, Step{"Play", true, "Playing"},
                             Step{"Stop", false, "Stopped"}, Step{"Play", true, "Playing"}}) {
        SCOPED_TRACE(step.method);
        EXPECT_EQ(call(PLAYER, QLatin1String(step.method)).type(), QDBusMessage::ReplyMessage);
        EXPECT_EQ(app::gCurrentWorld->isPlaying(), step.playing);
        EXPECT_EQ(property(QStringLiteral("PlaybackStatus")).toString(), QLatin1String(step.status));
    }

    // The application's own Play / Pause (menu, strip, Space, tray) and the interface agree: played
    // again after a Stop, a pause is a pause.
    EXPECT_EQ(call(PLAYER, QStringLiteral("Stop")).type(), QDBusMessage::ReplyMessage);
    for (const Step& step : {Step{"app", true, "Playing"}, Step{"app", false, "Paused"}, Step{"app", true, "Playing"}}) {
        app::dispatchCommand(app::command::PLAY_PAUSE);
        EXPECT_EQ(app::gCurrentWorld->isPlaying(), step.playing);
        EXPECT_EQ(property(QStringLiteral("PlaybackStatus")).toString(), QLatin1String(step.status));
    }

    setProperty(QStringLiteral("Volume"), 0.5);
    EXPECT_DOUBLE_EQ(app::gCurrentWorld->getVolume(), 0.5);
    const QList<QAction*> items = app::getMenu(app::VOLUME_MENU_ID)->actions();
    EXPECT_TRUE(items[3 + 4]->isChecked());  // 0.5 is level 4, item 8 of the Volume menu
    app::dispatchCommand(app::command::VOLUME_LEVEL_0 + 2);
    EXPECT_DOUBLE_EQ(property(QStringLiteral("Volume")).toDouble(), 2.0 / 7.0);
    setProperty(QStringLiteral("Volume"), 3.0);
    EXPECT_DOUBLE_EQ(app::gCurrentWorld->getVolume(), 1.0);
    EXPECT_FALSE(property(QStringLiteral("CanSeek")).toBool());
}

TEST_F(MprisTest, PropertiesChangedFollowOpensNextAndAStopInsideTheApp) {
    const QString alpha = makeWorld(QStringLiteral("Alpha"), QStringLiteral("Ann"), false);
    const QString beta = makeWorld(QStringLiteral("Beta"), QStringLiteral("Bo"), true);
    ChangeRecorder recorder;
    ASSERT_TRUE(client->connect(SERVICE, PATH, PROPERTIES, QStringLiteral("PropertiesChanged"), &recorder,
                                SLOT(propertiesChanged(QString, QVariantMap, QStringList))));
    const auto lastMetadata = [&recorder] {
        for (qsizetype i = recorder.changes.size() - 1; i >= 0; --i) {
            if (recorder.changes[i].contains(QStringLiteral("Metadata"))) return asMap(recorder.changes[i][QStringLiteral("Metadata")]);
        }
        return QVariantMap();
    };
    const auto lastStatus = [&recorder] {
        for (qsizetype i = recorder.changes.size() - 1; i >= 0; --i) {
            if (recorder.changes[i].contains(QStringLiteral("PlaybackStatus"))) return recorder.changes[i][QStringLiteral("PlaybackStatus")].toString();
        }
        return QString();
    };
    const auto title = [&] { return lastMetadata().value(QStringLiteral("xesam:title")).toString(); };

    app::doOpenDocsEvent({alpha});
    ASSERT_TRUE(waitUntil([&] { return title() == QLatin1String("Alpha"); }));
    app::doOpenDocsEvent({beta});
    ASSERT_TRUE(waitUntil([&] { return title() == QLatin1String("Beta"); }));
    const QVariantMap metadata = lastMetadata();
    EXPECT_EQ(metadata.value(QStringLiteral("xesam:artist")).toStringList(), QStringList{QStringLiteral("Bo")});
    const QUrl art(metadata.value(QStringLiteral("mpris:artUrl")).toString());
    EXPECT_TRUE(art.isLocalFile());
    EXPECT_TRUE(art.toLocalFile().startsWith(beta)) << art.toString().toStdString();
    EXPECT_TRUE(QFileInfo::exists(art.toLocalFile()));
    const QString track = metadata.value(QStringLiteral("mpris:trackid")).value<QDBusObjectPath>().path();
    EXPECT_TRUE(track.startsWith(QLatin1String("/org/sylvora/world/"))) << track.toStdString();
    EXPECT_EQ(lastStatus(), QStringLiteral("Playing"));

    // The known worlds by name are Alpha, Beta, and then Alpha again.
    EXPECT_EQ(call(PLAYER, QStringLiteral("Next")).type(), QDBusMessage::ReplyMessage);
    ASSERT_TRUE(waitUntil([&] { return title() == QLatin1String("Alpha"); }));
    EXPECT_EQ(app::gCurrentWorld->getName(), QStringLiteral("Alpha"));
    EXPECT_FALSE(lastMetadata().contains(QStringLiteral("mpris:artUrl")));
    EXPECT_EQ(call(PLAYER, QStringLiteral("Previous")).type(), QDBusMessage::ReplyMessage);
    ASSERT_TRUE(waitUntil([&] { return title() == QLatin1String("Beta"); }));

    // A sleep timer running out stops the world from inside the application.
    app::SleepTimerMenu::instance()->timer().start(0.0);
    ASSERT_TRUE(waitUntil([&] { return lastStatus() == QLatin1String("Paused"); }));
    EXPECT_FALSE(app::gCurrentWorld->isPlaying());
}

}  // namespace
}  // namespace sylvora::test

#include "mpris_test.moc"
