// The desktop application as a person's session runs it: the built sylvora on a private X server
// (Xvfb) and a private PulseAudio server, with its own settings. It opens a world named on the
// command line and is heard, its window shows the icon, a second launch hands its world over and
// exits, SIGTERM ends it with the preferences written, and a launch without arguments plays the
// last world again.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QSettings>
#include <QThread>
#include <cmath>

#include "pulseserver.h"
#include "support/signalanalysis.h"
#include "support/soundfiles.h"
#include "support/tempdir.h"

using namespace sylvora::test;

namespace {

constexpr int RECORD_RATE = 48000;

QString writeToneWorld(const TempDir& temp, const QString& name, double frequency) {
    const QString package = temp.makeDir(name + QStringLiteral(".sylvora"));
    temp.makeDir(name + QStringLiteral(".sylvora/Environment Sounds"));
    temp.makeDir(name + QStringLiteral(".sylvora/Loop Sounds"));
    ToneSpec tone;
    tone.frequency = frequency;
    tone.seconds = 30.0;
    tone.sampleRate = 44100;
    EXPECT_TRUE(writeSoundFile(package + QStringLiteral("/Loop Sounds/tone.flac"), tone));
    QFile plist(package + QStringLiteral("/data.plist"));
    EXPECT_TRUE(plist.open(QIODevice::WriteOnly));
    plist.write(QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
                               "<key>Name</key><string>%1</string>"
                               "<key>Loop Sounds Crossfade Duration</key><integer>0</integer>"
                               "<key>Loop Sounds</key><array><dict><key>File Name</key><string>tone.flac</string>"
                               "<key>Volume</key><real>1.0</real></dict></array>"
                               "<key>Environment Sounds</key><array/></dict></plist>\n")
                    .arg(name)
                    .toUtf8());
    return package;
}

// An X server of the test's own, on the first free display it finds.
class XServer {
public:
    bool start(QString& why) {
        server.start(QStringLiteral(SYLVORA_E2E_SCRIPTS "/private-x.sh"), {QStringLiteral("1024x768")});
        if (!server.waitForStarted(5000)) {
            why = server.errorString();
            return false;
        }
        while (!server.canReadLine() && server.waitForReadyRead(10000)) {
        }
        const QString number = QString::fromLatin1(server.readLine()).trimmed();
        if (number.isEmpty()) {
            why = QStringLiteral("Xvfb named no display: ") + QString::fromLocal8Bit(server.readAllStandardError());
            return false;
        }
        display = QStringLiteral(":") + number;
        return true;
    }
    ~XServer() {
        server.terminate();
        server.waitForFinished(5000);
    }
    QString display;

private:
    QProcess server;
};

class Session {
public:
    Session(const TempDir& folder, const PulseServer& pulse, const QString& display) : temp(folder) {
        environment = pulse.clientEnvironment();
        environment.insert(QStringLiteral("DISPLAY"), display);
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), temp.makeDir(QStringLiteral("session/config")));
        environment.insert(QStringLiteral("XDG_CACHE_HOME"), temp.makeDir(QStringLiteral("session/cache")));
        const QString runtime = temp.makeDir(QStringLiteral("session/runtime"));
        ::chmod(runtime.toLocal8Bit().constData(), 0700);
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime);
        environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), QStringLiteral("unix:path=") + runtime + "/no-bus");
        recorderEnvironment = pulse.clientEnvironment();
    }

    std::unique_ptr<QProcess> launch(const QStringList& arguments, const QString& folder = {}) const {
        auto app = std::make_unique<QProcess>();
        if (!folder.isEmpty()) app->setWorkingDirectory(folder);
        app->setProcessEnvironment(environment);
        app->setProcessChannelMode(QProcess::ForwardedErrorChannel);
        app->start(QStringLiteral(SYLVORA_APP_PATH), arguments);
        EXPECT_TRUE(app->waitForStarted(5000)) << app->errorString().toStdString();
        return app;
    }

    // Whether a window of `app` gives the desktop the application's icon (task list, switcher).
    bool showsTheIcon(const QProcess& app) const {
        QProcess search;
        search.setProcessEnvironment(environment);
        search.start(QStringLiteral("xdotool"), {QStringLiteral("search"), QStringLiteral("--pid"), QString::number(app.processId())});
        search.waitForFinished(5000);
        for (const QByteArray& id : search.readAllStandardOutput().split('\n')) {
            QProcess property;
            property.setProcessEnvironment(environment);
            property.start(QStringLiteral("xprop"), {QStringLiteral("-id"), QString::fromLatin1(id), QStringLiteral("_NET_WM_ICON")});
            property.waitForFinished(5000);
            if (!id.isEmpty() && property.readAllStandardOutput().contains("_NET_WM_ICON(CARDINAL) =")) return true;
        }
        return false;
    }

    // Records the sink for `seconds` and returns the loudest second's level and pitch.
    std::pair<double, double> listen(double seconds) const {
        const QString file = temp.filePath(QStringLiteral("recording-%1.raw").arg(++recordings));
        QProcess recorder;
        recorder.setProcessEnvironment(recorderEnvironment);
        recorder.setStandardOutputFile(file);
        recorder.start(QStringLiteral("parec"), {QStringLiteral("-d"), QStringLiteral("sylvora_test.monitor"),
                                                 QStringLiteral("--raw"), QStringLiteral("--format=s16le"),
                                                 QStringLiteral("--rate=%1").arg(RECORD_RATE),
                                                 QStringLiteral("--channels=2")});
        EXPECT_TRUE(recorder.waitForStarted(5000));
        QThread::msleep(static_cast<unsigned long>(seconds * 1000));
        recorder.terminate();
        recorder.waitForFinished(5000);
        QFile raw(file);
        if (!raw.open(QIODevice::ReadOnly)) return {0.0, 0.0};
        const std::vector<float> samples = monoFromS16Stereo(raw.readAll());
        if (samples.size() < std::size_t{RECORD_RATE}) return {0.0, 0.0};
        const std::size_t loudest = loudestWindow(samples, RECORD_RATE);
        return {rms(samples, loudest, RECORD_RATE),
                dominantFrequency(samples, loudest, RECORD_RATE, RECORD_RATE, 100.0, 8000.0)};
    }

    // Launches with `arguments` while the sink is read as it plays, 5 ms at a time; returns the
    // seconds from the launch to the first block with sound in it, or -1 when `limit` passes first.
    double secondsToFirstSound(const QStringList& arguments, std::unique_ptr<QProcess>& app, double limit) const {
        QProcess recorder;
        recorder.setProcessEnvironment(recorderEnvironment);
        recorder.start(QStringLiteral("parec"), {QStringLiteral("-d"), QStringLiteral("sylvora_test.monitor"),
                                                 QStringLiteral("--raw"), QStringLiteral("--format=s16le"),
                                                 QStringLiteral("--rate=%1").arg(RECORD_RATE),
                                                 QStringLiteral("--channels=2"), QStringLiteral("--latency-msec=5")});
        EXPECT_TRUE(recorder.waitForStarted(5000));
        // A moment of silence first, so the recorder is streaming when the clock starts.
        QElapsedTimer clock;
        clock.start();
        while (clock.elapsed() < 300 && recorder.waitForReadyRead(50)) recorder.readAll();
        recorder.readAll();
        clock.restart();
        app = launch(arguments);
        double heard = -1.0;
        constexpr qint64 BLOCK = RECORD_RATE / 200 * 4;  // 5 ms of 16-bit stereo
        QByteArray pending;
        while (heard < 0.0 && clock.elapsed() < limit * 1000.0) {
            recorder.waitForReadyRead(20);
            pending += recorder.readAll();
            while (pending.size() >= BLOCK && heard < 0.0) {
                const std::vector<float> block = monoFromS16Stereo(pending.left(BLOCK));
                pending.remove(0, BLOCK);
                for (float sample : block) {
                    if (std::fabs(sample) > 0.001f) heard = static_cast<double>(clock.elapsed()) / 1000.0;  // -60 dBFS
                }
            }
        }
        recorder.terminate();
        recorder.waitForFinished(5000);
        return heard;
    }

    QString settingsFile() const {
        return environment.value(QStringLiteral("XDG_CONFIG_HOME")) + QStringLiteral("/Sylvora/Sylvora.ini");
    }

private:
    const TempDir& temp;
    QProcessEnvironment environment;
    QProcessEnvironment recorderEnvironment;
    mutable int recordings = 0;
};

// SIGTERM, or SIGHUP (a closed terminal, an ended session), ends the application as a quit does.
void endWithSignal(QProcess& app, int signalNumber) {
    ::kill(static_cast<pid_t>(app.processId()), signalNumber);
    ASSERT_TRUE(app.waitForFinished(10000)) << "signal " << signalNumber << " did not end the application";
    EXPECT_EQ(app.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(app.exitCode(), 0);
}

}  // namespace

TEST(DesktopApplication, OpensIsHeardHandsOverQuitsOnSigtermOrSighupAndReopensTheLastWorld) {
    TempDir temp;
    PulseServer pulse(temp.makeDir(QStringLiteral("pulse")));
    XServer x;
    QString why;
    if (!pulse.start(why)) GTEST_SKIP() << "No PulseAudio server can run here: " << why.toStdString();
    if (!x.start(why)) GTEST_SKIP() << "No Xvfb can run here: " << why.toStdString();
    const QString low = writeToneWorld(temp, QStringLiteral("Low"), 700.0);
    const QString high = writeToneWorld(temp, QStringLiteral("High"), 1800.0);
    Session session(temp, pulse, x.display);

    const auto first = session.launch({low});
    auto [level, pitch] = session.listen(4.0);
    EXPECT_GT(level, 0.1) << "the world named on the command line is not heard";
    EXPECT_NEAR(pitch, 700.0, 5.0);
    EXPECT_TRUE(session.showsTheIcon(*first));

    // A second launch hands its world over and leaves at once; the first plays it.
    const auto second = session.launch({QStringLiteral("High.sylvora")}, temp.path());  // made absolute
    ASSERT_TRUE(second->waitForFinished(10000));
    EXPECT_EQ(second->exitCode(), 0);
    EXPECT_EQ(first->state(), QProcess::Running);
    QThread::msleep(1000);
    std::tie(level, pitch) = session.listen(3.0);
    EXPECT_GT(level, 0.1);
    EXPECT_NEAR(pitch, 1800.0, 5.0);

    endWithSignal(*first, SIGTERM);
    QSettings stored(session.settingsFile(), QSettings::IniFormat);
    EXPECT_TRUE(QFile::exists(session.settingsFile()));
    EXPECT_TRUE(stored.contains(QStringLiteral("Last Played"))) << stored.allKeys().join(u' ').toStdString();
    EXPECT_TRUE(stored.contains(QStringLiteral("Master Volume")));

    // No arguments: the last world plays again.
    const auto third = session.launch({});
    std::tie(level, pitch) = session.listen(4.0);
    EXPECT_GT(level, 0.1);
    EXPECT_NEAR(pitch, 1800.0, 5.0);
    endWithSignal(*third, SIGHUP);
    pulse.stop();
}

// How soon is for `bench/app_startup.sh --first-run` to say, on a quiet machine; here, that it is
// heard at all, with the time kept in the test's record.
TEST(DesktopApplication, AFirstLaunchWithEmptySettingsPlaysTheBundledWorld) {
    TempDir temp;
    PulseServer pulse(temp.makeDir(QStringLiteral("pulse")));
    XServer x;
    QString why;
    if (!pulse.start(why)) GTEST_SKIP() << "No PulseAudio server can run here: " << why.toStdString();
    if (!x.start(why)) GTEST_SKIP() << "No Xvfb can run here: " << why.toStdString();
    Session session(temp, pulse, x.display);
    ASSERT_FALSE(QFile::exists(session.settingsFile()));

    std::unique_ptr<QProcess> app;
    const double heard = session.secondsToFirstSound({}, app, 10.0);
    EXPECT_GE(heard, 0.0) << "the bundled world is not heard";
    ::testing::Test::RecordProperty("seconds_to_first_sound", QString::number(heard, 'f', 3).toStdString());
    endWithSignal(*app, SIGTERM);
    QSettings stored(session.settingsFile(), QSettings::IniFormat);
    EXPECT_TRUE(stored.contains(QStringLiteral("Last Played"))) << "the bundled world is the last world played";
    pulse.stop();
}
