// Reading sound files: every supported container and codec, exact lengths, conversion to the
// engine's rate and channel layout, and the statuses of files that cannot be played.

#include <gtest/gtest.h>

#include <QFile>

#include <cmath>

#include "encodedfile.h"
#include "enginetestsupport.h"

namespace sylvora::test {
namespace {

using audio::Engine;

struct FileCase {
    const char* name;
    int sampleRate;
    int channels;
    bool lossy = false;  // a lossy codec rings a little at the edges
};

class DecodingByFormat : public testing::TestWithParam<FileCase> {};

TEST_P(DecodingByFormat, ReportsExactLengthAndRateAndPlaysToItsEnd) {
    const FileCase c = GetParam();
    TempDir dir;
    ToneSpec tone;
    tone.seconds = 0.75;
    tone.sampleRate = c.sampleRate;
    tone.channels = c.channels;
    const std::string path = makeSound(dir, QString::fromLatin1(c.name), tone);
    Engine engine;
    auto sound = openOrFail(engine, path);
    ASSERT_TRUE(sound);
    EXPECT_EQ(sound->timeScale(), c.sampleRate);
    EXPECT_EQ(sound->duration(), std::llround(0.75 * c.sampleRate));

    std::vector<float> out;
    sound->start();
    renderUntilDone(engine, *sound, 96000, &out);
    EXPECT_TRUE(sound->isDone());
    EXPECT_EQ(sound->time(), sound->duration());
    EXPECT_NEAR(peak(out), 0.5, c.lossy ? 0.06 : 0.01);
    // The sound lasts 0.75 s at the engine's rate, at its own pitch, whatever rate it was stored at.
    EXPECT_NEAR(static_cast<double>(lastAudibleFrame(out, 0.01)), 0.75 * Engine::DEFAULT_SAMPLE_RATE,
                c.lossy ? 256.0 : 24.0);
    EXPECT_NEAR(frequency(out, 0, 1000, 30000, Engine::DEFAULT_SAMPLE_RATE), tone.frequency, 2.0);
}

INSTANTIATE_TEST_SUITE_P(Containers, DecodingByFormat,
                         testing::Values(FileCase{"tone.wav", 48000, 2}, FileCase{"tone.flac", 44100, 2},
                                         FileCase{"tone.aiff", 22050, 1}, FileCase{"tone.caf", 96000, 2},
                                         FileCase{"tone.ogg", 44100, 2, true}),
                         [](const auto& testCase) {
                             std::string name = testCase.param.name;
                             return name.substr(name.find('.') + 1);
                         });

TEST(Decoding, MonoPlaysOnBothSidesAndSurroundFoldsToStereo) {
    TempDir dir;
    ToneSpec mono;
    mono.channels = 1;
    ToneSpec quad;
    quad.channels = 4;
    for (const auto& [name, tone] :
         {std::pair{QStringLiteral("mono.wav"), mono}, std::pair{QStringLiteral("quad.wav"), quad}}) {
        Engine engine;
        auto sound = openOrFail(engine, makeSound(dir, name, tone));
        ASSERT_TRUE(sound);
        sound->start();
        const std::vector<float> out = renderFrames(engine, 24000);
        EXPECT_NEAR(peak(out), 0.5, 0.01) << name.toStdString();
        for (std::size_t i = 0; i < 24000; ++i)
            ASSERT_FLOAT_EQ(out[2 * i], out[2 * i + 1]) << name.toStdString();
    }
}

struct EncodedCase {
    const char* name;
    const char* codec;
    int sampleRate;
    bool lengthHeader;
    bool lengthIsSource;  // the container says exactly how many frames were encoded
};

class DecodingCompressed : public testing::TestWithParam<EncodedCase> {};

TEST_P(DecodingCompressed, LengthMatchesWhatPlays) {
    const EncodedCase c = GetParam();
    TempDir dir;
    const long frames = c.sampleRate * 2 + 321;
    const std::string path = dir.filePath(QString::fromLatin1(c.name)).toStdString();
    const std::string error = writeEncodedFile(path, {c.codec, c.sampleRate, 2, c.lengthHeader},
                                               sineFrames(440.0, 0.5, frames, c.sampleRate, 2));
    if (error.find("no encoder") == 0)
        GTEST_SKIP() << error;
    ASSERT_EQ(error, "");

    Engine engine;
    auto sound = openOrFail(engine, path);
    ASSERT_TRUE(sound);
    EXPECT_EQ(sound->timeScale(), c.sampleRate);
    if (c.lengthIsSource) {
        EXPECT_EQ(sound->duration(), frames);
    }
    // Whatever the codec adds, the stated length is the length played.
    EXPECT_NEAR(static_cast<double>(sound->duration()), static_cast<double>(frames), 2048.0);
    std::vector<float> out;
    sound->start();
    renderUntilDone(engine, *sound, 4 * 48000, &out, 64);
    ASSERT_TRUE(sound->isDone());
    const double played =
        audio::Engine::DEFAULT_SAMPLE_RATE * static_cast<double>(sound->duration()) / c.sampleRate;
    EXPECT_NEAR(static_cast<double>(out.size() / 2), played, 64.0);
    EXPECT_NEAR(frequency(out, 0, 4800, 48000, 48000), 440.0, 2.0);
}

INSTANTIATE_TEST_SUITE_P(Codecs, DecodingCompressed,
                         testing::Values(EncodedCase{"mp3.mp3", "libmp3lame", 44100, true, true},
                                         EncodedCase{"mp3nohdr.mp3", "libmp3lame", 44100, false, false},
                                         EncodedCase{"opus.opus", "libopus", 48000, true, true},
                                         EncodedCase{"aac.m4a", "aac", 44100, true, false},
                                         EncodedCase{"alac.m4a", "alac", 44100, true, true}),
                         [](const auto& testCase) {
                             std::string name = testCase.param.name;
                             return name.substr(0, name.find('.'));
                         });

// A file cut short whose index still promises the whole sound (an MP4 with its index first, as
// streaming tools write it) is as long as what it holds, and plays that to its end without failing.
TEST(Decoding, ACutShortFileIsAsLongAsWhatItHolds) {
    TempDir dir;
    const long frames = 4 * 48000;
    const std::string path = dir.filePath(QStringLiteral("cut.m4a")).toStdString();
    EncodeSettings settings{"aac", 48000, 2, true, true};
    ASSERT_EQ(writeEncodedFile(path, settings, sineFrames(440.0, 0.5, frames, 48000, 2)), "");
    QFile file(QString::fromStdString(path));
    ASSERT_TRUE(file.resize(file.size() * 6 / 10));

    Engine engine;
    auto sound = openOrFail(engine, path);
    ASSERT_TRUE(sound);
    EXPECT_GT(sound->duration(), frames * 4 / 10);
    EXPECT_LT(sound->duration(), frames * 7 / 10);
    std::vector<float> out;
    sound->start();
    renderUntilDone(engine, *sound, frames, &out, 512);
    ASSERT_TRUE(sound->isDone());
    EXPECT_FALSE(sound->failedToRead());
    EXPECT_NEAR(static_cast<double>(out.size() / 2), static_cast<double>(sound->duration()), 4096.0);
}

TEST(Decoding, FilesThatCannotPlayGiveAStatusAndNoInstance) {
    TempDir dir;
    Engine engine;
    std::unique_ptr<audio::SoundInstance> sound;
    EXPECT_EQ(engine.openInstance(dir.filePath(QStringLiteral("missing.wav")).toStdString(), sound), fnfErr);
    EXPECT_FALSE(sound);
    for (const char* name : {"garbage.wav", "garbage.mp3", "garbage.ogg", "empty.flac"}) {
        const QByteArray bytes = QByteArray(name).startsWith("empty") ? QByteArray() : QByteArray(4000, 'x');
        const QString path = dir.writeFile(QString::fromLatin1(name), bytes);
        const OSStatus status = engine.openInstance(path.toStdString(), sound);
        EXPECT_NE(status, noErr) << name;
        EXPECT_FALSE(sound) << name;
    }
    EXPECT_NE(engine.openInstance(dir.makeDir(QStringLiteral("folder.wav")).toStdString(), sound), noErr);
}

TEST(Decoding, RewoundStreamedOggRestartsAtItsFirstSample) {
    TempDir dir;
    ToneSpec tone;
    tone.waveform = Waveform::Noise;
    tone.seconds = 6.0;
    tone.sampleRate = 44100;
    Engine engine;
    auto sound = openOrFail(engine, makeSound(dir, QStringLiteral("long.ogg"), tone));
    ASSERT_TRUE(sound);
    ASSERT_EQ(engine.decodedBytes(), 0u) << "a 6 s sound is streamed";
    sound->prepareToStart();
    sound->start();
    const std::vector<float> first = renderFrames(engine, 4096);
    renderFrames(engine, 48000);
    sound->stop();
    renderFrames(engine, 2048);
    sound->goToBeginning();
    sound->prepareToStart();
    sound->start();
    const std::vector<float> again = renderFrames(engine, 4096);
    for (std::size_t i = 0; i < first.size(); ++i)
        ASSERT_FLOAT_EQ(first[i], again[i]) << "sample " << i;
    EXPECT_GT(peak(first), 0.1);
    EXPECT_EQ(engine.underruns(), 0u);
}

}  // namespace
}  // namespace sylvora::test
