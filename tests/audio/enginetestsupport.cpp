#include "enginetestsupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "audio/engine/engineimpl.h"

namespace sylvora::test {

std::string makeSound(const TempDir& dir, const QString& name, const ToneSpec& tone) {
    const QString path = dir.filePath(name);
    EXPECT_TRUE(writeSoundFile(path, tone)) << path.toStdString();
    return path.toStdString();
}

std::unique_ptr<audio::SoundInstance> openOrFail(audio::Engine& engine, const std::string& path) {
    std::unique_ptr<audio::SoundInstance> instance;
    const OSStatus status = engine.openInstance(path, instance);
    EXPECT_EQ(status, noErr) << path;
    return instance;
}

std::vector<float> renderFrames(audio::Engine& engine, std::size_t frames, std::size_t block) {
    engine.impl().limit = false;
    std::vector<float> out(frames * 2);
    for (std::size_t done = 0; done < frames; done += block) {
        engine.waitForStreams();
        engine.render(out.data() + 2 * done, std::min(block, frames - done));
    }
    return out;
}

std::size_t renderUntilDone(audio::Engine& engine, audio::SoundInstance& instance, std::size_t limit,
                            std::vector<float>* keep, std::size_t block) {
    engine.impl().limit = false;
    std::vector<float> buffer(2 * block);
    std::size_t frames = 0;
    while (!instance.isDone() && frames < limit) {
        engine.waitForStreams();
        engine.render(buffer.data(), block);
        if (keep)
            keep->insert(keep->end(), buffer.begin(), buffer.end());
        frames += block;
    }
    return frames;
}

double peak(const std::vector<float>& stereo, std::size_t fromFrame, std::size_t toFrame) {
    toFrame = std::min(toFrame, stereo.size() / 2);
    double p = 0.0;
    for (std::size_t i = 2 * fromFrame; i < 2 * toFrame; ++i)
        p = std::max(p, static_cast<double>(std::fabs(stereo[i])));
    return p;
}

double rms(const std::vector<float>& stereo, int channel, std::size_t fromFrame, std::size_t toFrame) {
    double sum = 0.0;
    for (std::size_t i = fromFrame; i < toFrame; ++i) {
        const double v = stereo[2 * i + static_cast<std::size_t>(channel)];
        sum += v * v;
    }
    return std::sqrt(sum / static_cast<double>(toFrame - fromFrame));
}

double largestStep(const std::vector<float>& stereo, int channel) {
    double step = 0.0;
    for (std::size_t i = 1; i < stereo.size() / 2; ++i) {
        const auto c = static_cast<std::size_t>(channel);
        step = std::max(step, static_cast<double>(std::fabs(stereo[2 * i + c] - stereo[2 * (i - 1) + c])));
    }
    return step;
}

double frequency(const std::vector<float>& stereo, int channel, std::size_t fromFrame, std::size_t toFrame,
                 int sampleRate) {
    const auto c = static_cast<std::size_t>(channel);
    std::size_t first = 0;
    std::size_t last = 0;
    int crossings = 0;
    for (std::size_t i = fromFrame + 1; i < toFrame; ++i) {
        if (stereo[2 * (i - 1) + c] < 0.0f && stereo[2 * i + c] >= 0.0f) {
            if (crossings == 0)
                first = i;
            last = i;
            ++crossings;
        }
    }
    if (crossings < 2)
        return 0.0;
    return (crossings - 1) * static_cast<double>(sampleRate) / static_cast<double>(last - first);
}

std::size_t lastAudibleFrame(const std::vector<float>& stereo, double threshold) {
    for (std::size_t i = stereo.size() / 2; i-- > 0;)
        if (std::fabs(stereo[2 * i]) > threshold || std::fabs(stereo[2 * i + 1]) > threshold)
            return i;
    return 0;
}

}  // namespace sylvora::test
