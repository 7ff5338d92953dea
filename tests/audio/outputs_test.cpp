// The file writer that offline renders go through. (The null output is what the memory tests and
// sylvora-cli without a device play through; a real device is the end-to-end test's.)

#include <gtest/gtest.h>

#include <sndfile.h>

#include "audio/outputs/file/audiofilewriter.h"
#include "enginetestsupport.h"

namespace sylvora::test {
namespace {

using audio::AudioFileWriter;
using audio::Engine;

std::vector<float> readBack(const std::string& path, SF_INFO& info) {
    info = SF_INFO{};
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
    if (!file)
        return {};
    std::vector<float> samples(static_cast<std::size_t>(info.frames * info.channels));
    sf_readf_float(file, samples.data(), info.frames);
    sf_close(file);
    return samples;
}

TEST(Outputs, FileWriterWritesTheRenderedMixAsWavOrFlac) {
    TempDir dir;
    ToneSpec tone;
    tone.channels = 1;
    Engine engine;
    auto sound = openOrFail(engine, makeSound(dir, QStringLiteral("tone.wav"), tone));
    ASSERT_TRUE(sound);
    sound->start();
    const std::vector<float> mix = renderFrames(engine, 12000);
    for (const char* name : {"out.wav", "out.flac"}) {
        const std::string path = dir.filePath(QString::fromLatin1(name)).toStdString();
        std::string error;
        auto writer = AudioFileWriter::create(path, engine.sampleRate(), error);
        ASSERT_TRUE(writer) << error;
        ASSERT_EQ(writer->write(mix.data(), 5000), noErr);
        ASSERT_EQ(writer->write(mix.data() + 10000, 7000), noErr);
        ASSERT_EQ(writer->close(), noErr);
        SF_INFO info;
        const std::vector<float> back = readBack(path, info);
        EXPECT_EQ(info.frames, 12000) << name;
        EXPECT_EQ(info.samplerate, 48000);
        EXPECT_EQ(info.channels, 2);
        EXPECT_EQ(info.format & SF_FORMAT_TYPEMASK,
                  std::string(name).ends_with("flac") ? SF_FORMAT_FLAC : SF_FORMAT_WAV);
        ASSERT_EQ(back.size(), mix.size());
        for (std::size_t i = 0; i < mix.size(); ++i)
            ASSERT_NEAR(back[i], mix[i], 1e-6) << name << " sample " << i;
    }
}

}  // namespace
}  // namespace sylvora::test
