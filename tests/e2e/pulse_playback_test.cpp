// The whole road of a sound, end to end: a world package on disk, loaded and played by the built
// sylvora-cli through its native output into a real PulseAudio server, recorded from the server's
// sink and measured. Only a machine where no PulseAudio can run skips it.

#include <gtest/gtest.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QThread>
#include <algorithm>
#include <memory>

#include "pulseserver.h"
#include "support/signalanalysis.h"
#include "support/soundfiles.h"
#include "support/tempdir.h"

using namespace sylvora::test;

namespace {

constexpr int RECORD_RATE = 48000;
constexpr double TONE_HZ = 1000.0;

// A world whose one loop sound is a steady 1 kHz tone.
QString writeToneWorld(const TempDir& temp) {
    const QString package = temp.makeDir(QStringLiteral("Tone.sylvora"));
    temp.makeDir(QStringLiteral("Tone.sylvora/Loop Sounds"));
    temp.makeDir(QStringLiteral("Tone.sylvora/Environment Sounds"));
    ToneSpec tone;
    tone.frequency = TONE_HZ;
    tone.amplitude = 0.5;
    tone.seconds = 20.0;
    tone.sampleRate = 44100;  // the player opens the device at the world's rate; the server converts
    EXPECT_TRUE(writeSoundFile(QDir(package).filePath(QStringLiteral("Loop Sounds/tone.flac")), tone));
    temp.writeFile(QStringLiteral("Tone.sylvora/data.plist"),
                   "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
                   "<key>Name</key><string>Tone</string>"
                   "<key>Loop Sounds Crossfade Duration</key><integer>0</integer>"
                   "<key>Loop Sounds</key><array><dict><key>File Name</key><string>tone.flac</string>"
                   "<key>Volume</key><real>1.0</real></dict></array>"
                   "<key>Environment Sounds</key><array/></dict></plist>\n");
    return package;
}

// Records what reaches the test sink into `path`, from now until it is ended or the server goes.
std::unique_ptr<QProcess> startRecorder(const PulseServer& server, const QString& path) {
    auto recorder = std::make_unique<QProcess>();
    recorder->setProcessEnvironment(server.clientEnvironment());
    recorder->setStandardOutputFile(path);
    recorder->start(QStringLiteral("parec"), {QStringLiteral("-d"), QStringLiteral("sylvora_test.monitor"),
                                              QStringLiteral("--raw"), QStringLiteral("--format=s16le"),
                                              QStringLiteral("--rate=%1").arg(RECORD_RATE), QStringLiteral("--channels=2"),
                                              QStringLiteral("--latency-msec=50")});
    EXPECT_TRUE(recorder->waitForStarted(-1)) << recorder->errorString().toStdString();
    return recorder;
}

std::vector<float> stopRecording(QProcess& recorder, const QString& path) {
    recorder.terminate();
    recorder.waitForFinished(-1);
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return monoFromS16Stereo(file.readAll());
}

// sylvora-cli playing `package` for `seconds` into the server's sink.
void startPlayer(QProcess& player, const PulseServer& server, const QString& package, int seconds) {
    QProcessEnvironment playerEnvironment = server.clientEnvironment();
    const QString lsan = playerEnvironment.value(QStringLiteral("LSAN_OPTIONS"));
    playerEnvironment.insert(QStringLiteral("LSAN_OPTIONS"),
                             (lsan.isEmpty() ? QString() : lsan + u':') +
                                 QStringLiteral("suppressions=" SYLVORA_E2E_LEAK_SUPPRESSIONS ":print_suppressions=0"));
    player.setProcessEnvironment(playerEnvironment);
    player.start(QStringLiteral(SYLVORA_CLI_PATH),
                 {QStringLiteral("play"), package, QStringLiteral("--duration"), QString::number(seconds)});
    ASSERT_TRUE(player.waitForStarted(-1));
}

// CPU seconds (user and system) process `pid` has used so far.
double cpuSeconds(qint64 pid) {
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly)) return 0.0;
    const QByteArray line = stat.readAll();
    const QList<QByteArray> fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
    // utime and stime, fields 14 and 15 of the whole line.
    return fields.size() > 12 ? (fields[11].toDouble() + fields[12].toDouble()) / static_cast<double>(sysconf(_SC_CLK_TCK)) : 0.0;
}

// The tone at full volume and at its pitch in the loudest second of `samples`.
void expectTone(const std::vector<float>& samples) {
    ASSERT_GE(samples.size(), std::size_t{RECORD_RATE * 2}) << "the recording holds less than two seconds";
    const std::size_t window = RECORD_RATE;  // one second
    const std::size_t loudest = loudestWindow(samples, window);
    // A 0.5 peak sine at full volume has an RMS of 0.35; well above the floor, whatever the mixing.
    EXPECT_GT(rms(samples, loudest, window), 0.15);
    EXPECT_NEAR(dominantFrequency(samples, loudest, window, RECORD_RATE, 100.0, 8000.0), TONE_HZ, 3.0);
}

}  // namespace

TEST(PulseAudioPlayback, ToneWorldReachesTheSoundServerAtItsPitch) {
    TempDir temp;
    PulseServer server(temp.makeDir(QStringLiteral("pulse")));
    QString why;
    if (!server.start(why)) {
        GTEST_SKIP() << "No PulseAudio server can run here: " << why.toStdString();
    }
    const QString package = writeToneWorld(temp);

    // Record what reaches the sink, from before the player starts until after it ends.
    const QString recording = temp.filePath(QStringLiteral("recording.raw"));
    const auto recorder = startRecorder(server, recording);
    QProcess player;
    startPlayer(player, server, package, 4);
    ASSERT_TRUE(player.waitForFinished(-1));
    const QString playerErrors = QString::fromLocal8Bit(player.readAllStandardError());
    EXPECT_EQ(player.exitCode(), 0) << playerErrors.toStdString();
    // It played into the device, not into the silent fallback.
    EXPECT_FALSE(playerErrors.contains(QStringLiteral("no sound device"))) << playerErrors.toStdString();
    EXPECT_TRUE(QString::fromLocal8Bit(player.readAllStandardOutput()).contains(QStringLiteral("Played 'Tone'")));
    expectTone(stopRecording(*recorder, recording));
}

// A sound server that goes away while the player plays (killed) or is not there yet when it starts:
// the player waits, says so, and is heard again once a server answers, without being restarted.
// The server's playback streams, by index: a client that connects again gets a new one.
QString sinkInputs(const PulseServer& server) {
    QProcess pactl;
    pactl.setProcessEnvironment(server.clientEnvironment());
    pactl.start(QStringLiteral("pactl"), {QStringLiteral("list"), QStringLiteral("short"), QStringLiteral("sink-inputs")});
    pactl.waitForFinished(-1);
    return QString::fromUtf8(pactl.readAllStandardOutput()).section(u'\t', 0, 0);
}

TEST(PulseAudioPlayback, PlayerIsHeardAgainOnceTheSoundServerIsBack) {
    struct Case {
        const char* name;
        bool serverAtStart;
    };
    for (const Case& c : {Case{"killed while playing", true}, Case{"absent at the start", false}}) {
        SCOPED_TRACE(c.name);
        TempDir temp;
        PulseServer server(temp.makeDir(QStringLiteral("pulse")));
        QString why;
        if (c.serverAtStart && !server.start(why)) {
            GTEST_SKIP() << "No PulseAudio server can run here: " << why.toStdString();
        }
        const QString package = writeToneWorld(temp);
        QProcess player;
        startPlayer(player, server, package, 10);
        QThread::msleep(1500);
        if (c.serverAtStart) {
            server.kill();
            QThread::msleep(2000);
        }
        if (!server.start(why)) {
            GTEST_SKIP() << "No PulseAudio server can run here: " << why.toStdString();
        }
        // From the server's return on: the tone, from the same player.
        const QString recording = temp.filePath(QStringLiteral("after.raw"));
        const auto recorder = startRecorder(server, recording);
        QThread::msleep(2500);
        const QString stream = sinkInputs(server);
        const double cpuBefore = cpuSeconds(player.processId());
        QThread::msleep(2000);
        // Back on the server, the player stays with the one connection instead of making new ones,
        // and waits for the next loss rather than looking for one: a thread that spins takes most
        // of the two seconds even on a busy machine, where the player takes a few hundredths.
        EXPECT_LT(cpuSeconds(player.processId()) - cpuBefore, 0.5);
        EXPECT_EQ(sinkInputs(server), stream);
        EXPECT_FALSE(stream.isEmpty());
        const std::vector<float> after = stopRecording(*recorder, recording);
        ASSERT_TRUE(player.waitForFinished(-1));
        EXPECT_EQ(player.exitCode(), 0) << player.readAllStandardError().toStdString();
        expectTone(after);
        // A log gets each change of the line: the wait, then the world heard again.
        const QString output = QString::fromUtf8(player.readAllStandardOutput());
        const QStringList lines = output.split(u'\n');
        const auto waits = [](const QString& line) { return line.contains(QStringLiteral("No sound server — waiting")); };
        const auto waiting = std::find_if(lines.begin(), lines.end(), waits);
        EXPECT_NE(waiting, lines.end()) << output.toStdString();
        EXPECT_TRUE(std::any_of(waiting, lines.end(), [&](const QString& line) {
            return !waits(line) && line.contains(QStringLiteral("loop: tone"));
        })) << output.toStdString();
        server.stop();
    }
}
