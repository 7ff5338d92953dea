// The native PulseAudio output in a private server: what it plays is recorded from the sink's
// monitor and measured. A volume change is timed by the server's own clock: from the moment it is
// set to the moment the server plays the first frame rendered after it.

#include <gtest/gtest.h>

#include <QFile>
#include <QProcess>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <future>
#include <thread>
#include <vector>

#include "audio/engine/engine.h"
#include "audio/engine/soundinstance.h"
#include "audio/outputs/pulse/pulseoutput.h"
#include "pulseserver.h"
#include "support/signalanalysis.h"
#include "support/soundfiles.h"
#include "support/tempdir.h"

using namespace sylvora;
using namespace sylvora::test;
using Clock = std::chrono::steady_clock;

namespace {

constexpr int RATE = 48000;  // the test sink's rate, so the server converts nothing
constexpr double TONE_HZ = 1000.0;

// A server, a recorder on its monitor, and an engine playing a steady tone through the output.
class PulseOutputTest : public ::testing::Test {
  protected:
    void SetUp() override {
        server = std::make_unique<PulseServer>(temp.makeDir(QStringLiteral("pulse")));
        QString why;
        if (!server->start(why))
            GTEST_SKIP() << "No PulseAudio server can run here: " << why.toStdString();
        const QProcessEnvironment client = server->clientEnvironment();
        for (const char* name : {"PULSE_SERVER", "PULSE_SINK"})
            qputenv(name, client.value(QLatin1String(name)).toLocal8Bit());
        ToneSpec tone;
        tone.frequency = TONE_HZ;
        tone.seconds = 30.0;
        const QString path = temp.filePath(QStringLiteral("tone.wav"));
        ASSERT_TRUE(writeSoundFile(path, tone));
        ASSERT_EQ(engine.openInstance(path.toStdString(), sound), noErr);

        recorder.setProcessEnvironment(client);
        recorder.setStandardOutputFile(temp.filePath(QStringLiteral("recording.raw")));
        recorder.start(QStringLiteral("parec"), {QStringLiteral("-d"), QStringLiteral("sylvora_test.monitor"),
                                                 QStringLiteral("--raw"), QStringLiteral("--format=float32le"),
                                                 QStringLiteral("--rate=%1").arg(RATE), QStringLiteral("--channels=1"),
                                                 QStringLiteral("--latency-msec=20")});
        ASSERT_TRUE(recorder.waitForStarted(-1));
        std::string error;
        output = audio::PulseOutput::open(engine, error);
        ASSERT_TRUE(output) << error;
        sound->setVolume(256);
        sound->start();
        ASSERT_TRUE(output->start());
    }

    // Stops everything and returns the recording, mono.
    std::vector<float> finish() {
        output->stop();
        output.reset();
        recorder.terminate();
        recorder.waitForFinished(-1);
        QFile file(temp.filePath(QStringLiteral("recording.raw")));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        const QByteArray raw = file.readAll();
        std::vector<float> samples(static_cast<std::size_t>(raw.size()) / sizeof(float));
        std::memcpy(samples.data(), raw.constData(), samples.size() * sizeof(float));
        return samples;
    }

    // Seconds from setting `volume` until the server plays what was rendered after it: from the
    // next block written, or from the end of one being rendered as it was set (which is over
    // within a millisecond or two).
    // Also keeps how far the engine's account of the output's queue, asked just before, was off.
    double heardAfter(std::int16_t volume) {
        const double said = engine.outputDelay();
        const auto set = Clock::now();
        sound->setVolume(volume);
        const std::uint64_t next = output->framesWritten();
        std::this_thread::sleep_for(std::chrono::milliseconds(3));
        const std::uint64_t landed = std::max(next, output->framesWritten());
        while (output->framesPlayed() < landed)
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        const double heard = std::chrono::duration<double>(Clock::now() - set).count();
        queueMisstated.push_back(heard - said);
        return heard;
    }
    std::vector<double> queueMisstated;  // heard later than the engine said, in seconds

    // The longest queue the output reports, asked every 10 ms for `seconds`.
    double longestQueue(double seconds) {
        double longest = 0.0;
        for (const auto end = Clock::now() + std::chrono::duration<double>(seconds); Clock::now() < end;) {
            longest = std::max(longest, output->queuedSeconds());
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return longest;
    }

    // What the world starts a sound early by is what is queued: never so much that it is heard
    // before its time, nor so little that it is heard a long buffer late. The middle two of the
    // measurements, since a busy machine can hold up any one of them.
    void expectQueueTold(const char* mode) {
        std::sort(queueMisstated.begin(), queueMisstated.end());
        ASSERT_EQ(queueMisstated.size(), 4u);
        EXPECT_GT(queueMisstated[1], -0.03) << mode;
        EXPECT_LT(queueMisstated[2], 0.1) << mode;
        queueMisstated.clear();
    }

    TempDir temp;
    std::unique_ptr<PulseServer> server;
    audio::Engine engine{RATE};
    std::unique_ptr<audio::SoundInstance> sound;
    QProcess recorder;
    std::unique_ptr<audio::PulseOutput> output;
};

void pause(double seconds) {
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
}

}  // namespace

TEST_F(PulseOutputTest, ToneIsHeardAtItsPitchAndVolumeChangesWithinTheBound) {
    // Steady play: a fresh server may take a moment before it starts to play.
    while (output->framesPlayed() < RATE)
        pause(0.05);
    double slowest = 0.0;
    for (int i = 0; i < 4; ++i) {
        slowest = std::max(slowest, heardAfter(i % 2 == 0 ? std::int16_t{64} : std::int16_t{256}));
        pause(0.3);
    }
    // Loose bounds that still tell the two buffers apart; bench/output_latency_bench measures the
    // figures themselves on a quiet machine.
    EXPECT_LT(slowest, 0.4) << "steady play";
    expectQueueTold("steady play");
    engine.setLowLatency(true);
    pause(0.5);  // what the long buffer had queued plays out first
    slowest = 0.0;
    for (int i = 0; i < 4; ++i) {
        slowest = std::max(slowest, heardAfter(i % 2 == 0 ? std::int16_t{64} : std::int16_t{256}));
        pause(0.3);
    }
    EXPECT_LT(slowest, 0.12) << "low latency";
    expectQueueTold("low latency");

    const std::vector<float> samples = finish();
    ASSERT_GE(samples.size(), std::size_t{RATE * 3});
    const std::size_t loudest = loudestWindow(samples, RATE / 10);
    EXPECT_NEAR(dominantFrequency(samples, loudest, RATE / 10, RATE, 100.0, 8000.0), TONE_HZ, 10.0);
    // Both levels reached the recording: a 0.5 sine at full volume (RMS 0.35), and at a quarter
    // for four stretches of 0.3 s or more, six windows of 50 ms each at least.
    EXPECT_NEAR(rms(samples, loudest, RATE / 10), 0.354, 0.02);
    int quarterWindows = 0;
    for (std::size_t at = 0; at + RATE / 20 < samples.size(); at += RATE / 20)
        quarterWindows += std::fabs(rms(samples, at, RATE / 20) - 0.354 / 4) < 0.01 ? 1 : 0;
    EXPECT_GE(quarterWindows, 16);
}

TEST_F(PulseOutputTest, SwitchingBetweenLongAndShortBuffersLosesAndRepeatsNothing) {
    for (int round = 0; round < 2; ++round) {
        pause(0.6);
        engine.setLowLatency(true);
        pause(0.6);
        const double shortQueue = longestQueue(0.3);
        engine.setLowLatency(false);
        pause(audio::PulseOutput::LONG_RETURN_SECONDS);
        // The long buffer, and its few wake-ups a second, come back once low latency is no longer asked.
        const double longQueue = longestQueue(0.6);
        EXPECT_GT(longQueue, shortQueue + 0.08) << "round " << round;
    }
    EXPECT_EQ(output->underruns(), 0u);
    const std::vector<float> samples = finish();

    // A pure sine obeys x[n] = 2 cos(w) x[n-1] - x[n-2]: a lost or repeated sample breaks it by
    // about the amplitude times w (0.065 here), far above the 16-bit rounding of the sink.
    const double c = 2.0 * std::cos(2.0 * M_PI * TONE_HZ / RATE);
    std::size_t first = 0;
    while (first < samples.size() && std::fabs(samples[first]) < 0.05)
        ++first;
    std::size_t last = samples.size();
    while (last > first && std::fabs(samples[last - 1]) < 0.05)
        --last;
    first += RATE / 10;  // past the start's fade-in
    last -= std::min(last, std::size_t{RATE / 10});
    ASSERT_GT(last, first + RATE * 6) << "the tone was not heard through all the switches";
    double worst = 0.0;
    for (std::size_t n = first + 2; n < last; ++n)
        worst = std::max(worst, std::fabs(samples[n] - c * samples[n - 1] + samples[n - 2]));
    EXPECT_LT(worst, 0.005);
}

// stop() returns once the server has taken the cork, so that nothing pulls the engine after it: its
// owner may hand the engine to another output, or let it go. A server held still answers nothing.
TEST_F(PulseOutputTest, StopWaitsForTheServerAndNothingPullsTheEngineAfterIt) {
    while (output->framesPlayed() < RATE / 10)
        pause(0.05);
    server->hold(true);
    auto stopped = std::async(std::launch::async, [this] { output->stop(); });
    EXPECT_EQ(stopped.wait_for(std::chrono::milliseconds(500)), std::future_status::timeout);
    server->hold(false);
    stopped.wait();
    const std::uint64_t written = output->framesWritten();
    pause(0.5);
    EXPECT_EQ(output->framesWritten(), written);
}
