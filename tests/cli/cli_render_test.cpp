// `sylvora-cli render`: one seed, one file; the file holds what was asked for.

#include <gtest/gtest.h>

#include <sndfile.h>

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QThread>
#include <csignal>
#include <cmath>
#include <vector>

#include "clirunner.h"
#include "support/signalanalysis.h"
#include "support/tempdir.h"
#include "worldpackages.h"

using namespace sylvora::test;

namespace {

QByteArray digestOf(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return {};
    return QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha256);
}

struct Decoded {
    int rate = 0;
    int channels = 0;
    std::vector<float> samples;
};

Decoded decode(const QString& path) {
    Decoded decoded;
    SF_INFO info{};
    SNDFILE* file = sf_open(path.toLocal8Bit().constData(), SFM_READ, &info);
    if (!file) return decoded;
    decoded.rate = info.samplerate;
    decoded.channels = info.channels;
    decoded.samples.resize(static_cast<std::size_t>(info.frames * info.channels));
    sf_readf_float(file, decoded.samples.data(), info.frames);
    sf_close(file);
    return decoded;
}

// Two loop sounds of different pitch and a noise burst with a wide interval and volume range:
// every random choice of the scheduler changes what is heard.
class RenderWorld : public ::testing::Test {
protected:
    void SetUp() override {
        ToneSpec low;
        low.frequency = 330.0;
        low.seconds = 3.0;
        low.amplitude = 0.3;
        ToneSpec high = low;
        high.frequency = 550.0;
        ToneSpec burst;
        burst.waveform = Waveform::Noise;
        burst.seconds = 0.4;
        burst.amplitude = 0.3;
        ASSERT_TRUE(addSound(package, QStringLiteral("Loop Sounds"), QStringLiteral("low.flac"), low));
        ASSERT_TRUE(addSound(package, QStringLiteral("Loop Sounds"), QStringLiteral("high.ogg"), high));
        ASSERT_TRUE(addSound(package, QStringLiteral("Environment Sounds"), QStringLiteral("burst.wav"), burst));
        temp.writeFile(QStringLiteral("Tones.sylvora/data.plist"),
                       xmlPlist(QStringLiteral("<key>Name</key><string>Tones</string>"
                                               "<key>Loop Sounds Crossfade Duration</key><integer>1</integer>"
                                               "<key>Loop Sounds</key><array>") +
                                loopEntry(QStringLiteral("low.flac")) + loopEntry(QStringLiteral("high.ogg")) +
                                QStringLiteral("</array><key>Environment Sounds</key><array>") +
                                environmentEntry(QStringLiteral("burst.wav"), 0.1, 1.0, 1, 4) + QStringLiteral("</array>")));
    }

    CliResult render(const QString& output, const QString& seed, const QString& duration = QStringLiteral("20s")) {
        return runCli({"render", package, "-o", output, "--duration", duration, "--seed", seed});
    }

    TempDir temp;
    QString package = temp.makeDir(QStringLiteral("Tones.sylvora"));
};

}  // namespace

TEST_F(RenderWorld, SameSeedGivesTheSameFileAndAnotherSeedAnotherOne) {
    const QString first = temp.filePath(QStringLiteral("first.flac"));
    const QString again = temp.filePath(QStringLiteral("again.flac"));
    const QString other = temp.filePath(QStringLiteral("other.flac"));
    ASSERT_EQ(render(first, QStringLiteral("7")).exitCode, 0);
    ASSERT_EQ(render(again, QStringLiteral("7")).exitCode, 0);
    ASSERT_EQ(render(other, QStringLiteral("8")).exitCode, 0);
    ASSERT_FALSE(digestOf(first).isEmpty());
    EXPECT_EQ(digestOf(first), digestOf(again));
    EXPECT_NE(digestOf(first), digestOf(other));
}

TEST_F(RenderWorld, FileHasTheAskedLengthRateAndSound) {
    const QString output = temp.filePath(QStringLiteral("out.wav"));
    const CliResult result = runCli({"render", package, "-o", output, "--duration", "1m", "--rate", "44100"});
    ASSERT_EQ(result.exitCode, 0) << result.err.toStdString();
    // Not a terminal: no progress bar, so nothing on the error stream, and one summary line.
    EXPECT_TRUE(result.err.isEmpty()) << result.err.toStdString();
    EXPECT_FALSE(result.out.contains(u'\r'));
    EXPECT_TRUE(result.out.startsWith(QStringLiteral("Rendered 1:00 of 'Tones' into ")));

    const Decoded decoded = decode(output);
    ASSERT_EQ(decoded.rate, 44100);
    ASSERT_EQ(decoded.channels, 2);
    EXPECT_EQ(decoded.samples.size(), std::size_t{60 * 44100 * 2});
    // The loops play without a gap from the first second to the last.
    for (std::size_t second = 1; second < 60; ++second) {
        const std::size_t from = second * 44100 * 2;
        EXPECT_GT(rms(decoded.samples, from, 44100), 0.05) << "silent at " << second << " s";
    }
}

TEST_F(RenderWorld, UnwritableOutputFailsWithoutLeavingAFile) {
    const QString output = temp.filePath(QStringLiteral("no such folder/out.flac"));
    const CliResult result = render(output, QStringLiteral("1"), QStringLiteral("2"));
    EXPECT_EQ(result.exitCode, 1);
    const QStringList lines = nonEmptyLines(result.err);
    ASSERT_EQ(lines.size(), 1);
    EXPECT_TRUE(lines[0].contains(QStringLiteral("cannot create '") + output + u'\''));
    EXPECT_FALSE(QFile::exists(output));
}

// Ctrl+C or SIGTERM stops a render: it says so, exits 128 plus the signal, and leaves what was at
// the output as it was, with no half-written file anywhere.
TEST_F(RenderWorld, InterruptedRenderLeavesTheOutputAsItWas) {
    const QString output = temp.filePath(QStringLiteral("kept.wav"));
    for (const int signalNumber : {SIGINT, SIGTERM}) {
        SCOPED_TRACE(signalNumber);
        temp.writeFile(QStringLiteral("kept.wav"), "an earlier recording");
        QProcess process;
        process.start(QStringLiteral(SYLVORA_CLI_PATH), {"render", package, "-o", output, "--duration", "1000h"});
        ASSERT_TRUE(process.waitForStarted(-1));
        // Under way once its hidden output appears beside the destination.
        const auto partials = [&] {
            return QDir(temp.path()).entryList({QStringLiteral(".kept.wav-partial-*")}, QDir::Files | QDir::Hidden);
        };
        while (partials().isEmpty() && process.state() == QProcess::Running) QThread::msleep(20);
        ::kill(static_cast<pid_t>(process.processId()), signalNumber);
        ASSERT_TRUE(process.waitForFinished(-1));
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(process.exitCode(), 128 + signalNumber);
        EXPECT_TRUE(QString::fromUtf8(process.readAllStandardError()).contains(QStringLiteral("interrupted")));
        QFile kept(output);
        ASSERT_TRUE(kept.open(QIODevice::ReadOnly));
        EXPECT_EQ(kept.readAll(), QByteArray("an earlier recording"));
        EXPECT_TRUE(partials().isEmpty());
    }
}
