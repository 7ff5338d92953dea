#include "worldfixture.h"

#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <algorithm>
#include <cmath>

#include "support/soundfiles.h"

namespace sylvora::test {

QByteArray xmlPlistWithRoot(const QString& rootElement) {
    return QStringLiteral(
               "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
               "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
               "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
               "<plist version=\"1.0\">\n%1\n</plist>\n")
        .arg(rootElement)
        .toUtf8();
}

QByteArray xmlPlist(const QString& dictEntries) {
    return xmlPlistWithRoot(QStringLiteral("<dict>\n%1\n</dict>").arg(dictEntries));
}

WorldFixture::WorldFixture(unsigned seed, int rateHz) : sampleRate(rateHz), engine(rateHz), world(engine, eventLoop, seed) {}

WorldFixture::~WorldFixture() { world.resetToInitialState(); }

QString WorldFixture::writeSound(const QString& relative, double seconds, double frequency, double amplitude) {
    const QString path = dir.filePath(relative);
    QDir().mkpath(QFileInfo(path).absolutePath());
    ToneSpec tone;
    tone.seconds = seconds;
    tone.frequency = frequency;
    tone.amplitude = amplitude;
    tone.sampleRate = sampleRate;
    EXPECT_TRUE(writeSoundFile(path, tone)) << path.toStdString();
    return path;
}

QString WorldFixture::writePicture(const QString& relative, int width, int height) {
    const QString path = dir.filePath(relative);
    QDir().mkpath(QFileInfo(path).absolutePath());
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::darkGreen);
    EXPECT_TRUE(image.save(path, "PNG")) << path.toStdString();
    return path;
}

FSRef WorldFixture::ref(const QString& path) {
    FSRef out;
    EXPECT_EQ(FSPathMakeRef(path, out), noErr) << path.toStdString();
    return out;
}

AliasHandle WorldFixture::aliasOf(const QString& path) {
    AliasHandle alias;
    EXPECT_EQ(FSNewAlias(ref(path), alias), noErr) << path.toStdString();
    return alias;
}

AliasHandle WorldFixture::soundAlias(const QString& relative, double seconds, double frequency) {
    return aliasOf(writeSound(relative, seconds, frequency));
}

SoundID WorldFixture::addLoop(const QString& path) {
    const AliasHandle alias = aliasOf(path);
    return alias ? world.addLoopSound(*alias) : 0;
}

SoundID WorldFixture::addEnvironment(const QString& path) {
    const AliasHandle alias = aliasOf(path);
    return alias ? world.addEnvironmentSound(*alias) : 0;
}

QString WorldFixture::makePackage(const QString& name, const QByteArray& plistBytes, const QStringList& loopFiles,
                                  const QStringList& environmentFiles) {
    const QString package = dir.makeDir(name);
    dir.writeFile(name + QStringLiteral("/data.plist"), plistBytes);
    double frequency = 300.0;
    for (const QString& file : loopFiles) writeSound(name + QStringLiteral("/Loop Sounds/") + file, 0.1, frequency += 20);
    for (const QString& file : environmentFiles)
        writeSound(name + QStringLiteral("/Environment Sounds/") + file, 0.1, frequency += 20);
    return package;
}

OSStatus WorldFixture::load(const QString& packagePath) { return world.loadFromPackage(ref(packagePath)); }

void WorldFixture::runTicks(int ticks, const std::function<void(int)>& onTick, const OfflineRenderer::Sink& sink) {
    // Carry on from wherever play() left the render.
    while (renderer.frameOfTick(static_cast<std::uint64_t>(ticksRun_)) < renderer.framesRendered()) ++ticksRun_;
    renderer.setTickObserver([&onTick](std::uint64_t tick) {
        if (onTick) onTick(static_cast<int>(tick));
    });
    const auto target = renderer.frameOfTick(static_cast<std::uint64_t>(ticksRun_ + ticks));
    renderer.render(target - renderer.framesRendered(), sink);
    renderer.setTickObserver({});
    ticksRun_ += ticks;
}

void WorldFixture::runSeconds(double seconds, const std::function<void(int)>& onTick,
                              const OfflineRenderer::Sink& sink) {
    runTicks(static_cast<int>(std::lround(seconds * OfflineRenderer::TICKS_PER_SECOND)), onTick, sink);
}

float WorldFixture::play(double seconds) {
    float peak = 0.0f;
    renderer.renderSeconds(seconds, [&peak](const float* interleaved, std::size_t frames, std::uint64_t) {
        for (std::size_t i = 0; i < frames * 2; ++i) peak = std::max(peak, std::fabs(interleaved[i]));
    });
    return peak;
}

double WorldFixture::timeOfTick(int tick) const {
    const double audio = static_cast<double>(renderer.frameOfTick(static_cast<std::uint64_t>(tick))) / sampleRate;
    return eventLoop.clockOrigin() + audio * (1.0 + VirtualEventLoop::CLOCK_SKEW);
}

std::vector<int> WorldFixture::entriesOf(SoundID sound) const {
    std::vector<int> found;
    for (int i = 0; i < world.getNumMovies(); ++i) {
        if (entry(i).soundID == sound) found.push_back(i);
    }
    return found;
}

std::vector<int> WorldFixture::scheduledEntries() const {
    std::vector<int> found;
    for (int i = 0; i < world.getNumMovies(); ++i) {
        if (entry(i).startTime > 0.0) found.push_back(i);
    }
    return found;
}

double WorldFixture::positionOf(int index) const {
    const audio::SoundInstance& movie = *entry(index).movie;
    return static_cast<double>(movie.time()) / movie.timeScale();
}

int WorldFixture::scheduledCount(SoundID sound) const {
    int count = 0;
    for (const int i : entriesOf(sound)) count += entry(i).startTime > 0.0 ? 1 : 0;
    return count;
}

bool WorldFixture::isAudible(SoundID sound) const {
    const std::vector<int> entries = entriesOf(sound);
    return std::any_of(entries.begin(), entries.end(), [this](int i) { return entry(i).movie->rate() != 0.0; });
}

double WorldFixture::pendingStartOf(SoundID sound) const {
    for (const int i : entriesOf(sound)) {
        if (entry(i).startTime > 0.0 && entry(i).movie->rate() == 0.0) return entry(i).startTime;
    }
    return -1.0;
}

int StartLog::onTick(const WorldFixture& w, int tick) {
    playing_.resize(static_cast<std::size_t>(w.world.getNumMovies()), false);
    int playing = 0;
    for (int i = 0; i < w.world.getNumMovies(); ++i) {
        // A loop instance due now and cued on the one before it starts in the block after this
        // tick, on its sample: the handover belongs to this tick.
        const MovieEntry& entry = w.entry(i);
        const bool handedOver = entry.startTime > 0.0 && w.now() >= entry.startTime && entry.movie->isCued();
        const bool now = entry.movie->rate() != 0.0 || handedOver;
        if (now && !playing_[static_cast<std::size_t>(i)]) starts.push_back({w.entry(i).soundID, tick});
        playing_[static_cast<std::size_t>(i)] = now;
        playing += now ? 1 : 0;
    }
    return playing;
}

int StartLog::countOf(SoundID sound) const {
    return static_cast<int>(std::count_if(starts.begin(), starts.end(), [sound](const Start& s) { return s.sound == sound; }));
}

int expectedVolume(double gain, double volume, double worldVolume) {
    return static_cast<int>(std::trunc(gain * volume * 256.0 * worldVolume));
}

}  // namespace sylvora::test
