#include "worldtestfixture.h"

#include <algorithm>
#include <cmath>

#include <QDir>
#include <QFileInfo>

#include "support/soundfiles.h"

namespace sylvora::test {

QString WorldTest::writeSound(const QString& name, double seconds, double frequency) {
    const QString path = dir.filePath(name);
    QDir().mkpath(QFileInfo(path).absolutePath());
    ToneSpec spec;
    spec.seconds = seconds;
    spec.frequency = frequency;
    spec.sampleRate = SAMPLE_RATE;
    EXPECT_TRUE(writeSoundFile(path, spec)) << path.toStdString();
    return path;
}

AliasHandle WorldTest::aliasOf(const QString& path) {
    FSRef ref;
    AliasHandle alias;
    EXPECT_EQ(FSPathMakeRef(path, ref), noErr) << path.toStdString();
    EXPECT_EQ(FSNewAlias(ref, alias), noErr) << path.toStdString();
    return alias;
}

AliasHandle WorldTest::soundAlias(const QString& name, double seconds, double frequency) {
    return aliasOf(writeSound(name, seconds, frequency));
}

QString WorldTest::makePackage(const QString& plistEntries) {
    const QString package = dir.makeDir(QStringLiteral("World %1.sylvora").arg(++packages_));
    const QString xml = QStringLiteral(
                            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                            "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                            "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                            "<plist version=\"1.0\"><dict>%1</dict></plist>\n")
                            .arg(plistEntries);
    dir.writeFile(package.mid(dir.path().size() + 1) + QStringLiteral("/data.plist"), xml.toUtf8());
    return package;
}

void WorldTest::loadPackage(const QString& packagePath) {
    FSRef ref;
    ASSERT_EQ(FSPathMakeRef(packagePath, ref), noErr);
    ASSERT_EQ(world.loadFromPackage(ref), noErr);
    ASSERT_FALSE(world.getModified());
}

void WorldTest::loadUnmodifiedWorld(const QString& name) {
    loadPackage(makePackage(QStringLiteral("<key>Name</key><string>%1</string>"
                                           "<key>Author</key><string>%1</string>"
                                           "<key>Description</key><string>%1</string>")
                                .arg(name)));
}

float WorldTest::play(double seconds) {
    float peak = 0.0f;
    renderer.renderSeconds(seconds, [&peak](const float* interleaved, std::size_t frames, std::uint64_t) {
        for (std::size_t i = 0; i < frames * 2; ++i) {
            peak = std::max(peak, std::fabs(interleaved[i]));
        }
    });
    return peak;
}

std::vector<int> WorldTest::entriesOf(SoundID id) const {
    std::vector<int> indices;
    for (int i = 0; i < world.getNumMovies(); ++i) {
        if (world.getMovieEntry(i).soundID == id) {
            indices.push_back(i);
        }
    }
    return indices;
}

int WorldTest::scheduledCount(SoundID id) const {
    int count = 0;
    for (const int i : entriesOf(id)) {
        count += world.getMovieEntry(i).startTime > 0.0 ? 1 : 0;
    }
    return count;
}

bool WorldTest::isAudible(SoundID id) const {
    for (const int i : entriesOf(id)) {
        if (world.getMovieEntry(i).movie->rate() != 0.0) {
            return true;
        }
    }
    return false;
}

double WorldTest::pendingStartOf(SoundID id) const {
    for (const int i : entriesOf(id)) {
        const MovieEntry& entry = world.getMovieEntry(i);
        if (entry.startTime > 0.0 && entry.movie->rate() == 0.0) {
            return entry.startTime;
        }
    }
    return -1.0;
}

}  // namespace sylvora::test
