#include "eveningforest.h"

#include <QDir>

#include "environmentsounds.h"
#include "loopsounds.h"
#include "packagewriter.h"
#include "picture.h"

namespace sylvora::synth {

namespace {

// Every sound has its own fixed seed, so the example is the same on every build.
constexpr unsigned SEED = 2024;

QString writeInto(const QString& folder, const QString& name, const StereoBuffer& sound, QString& error) {
    const QString path = QDir(folder).filePath(name);
    std::string why;
    if (error.isEmpty() && !writeSound(path.toStdString(), sound, why)) {
        error = QStringLiteral("cannot write %1: %2").arg(path, QString::fromStdString(why));
    }
    return path;
}

}  // namespace

QString buildEveningForest(const QString& staging, const QString& packagePath) {
    QString error;
    WorldRecipe world;
    world.name = QStringLiteral("Evening Forest");
    world.author = QStringLiteral("The Sylvora example synthesizer");
    world.description = QStringLiteral(
        "Dusk under tall pines. Rain drips from the needles, the wind moves through the crowns and a "
        "stream runs over stones nearby. The last birds call before night, crickets take over, and now "
        "and then thunder rolls somewhere far beyond the hills.");
    world.crossfade = 5;

    // Loop sounds: one plays at a time, the next crossfaded in five seconds before the end.
    world.loops.push_back({writeInto(staging, QStringLiteral("Rain on the Pines.flac"), makeRain(52.0, SEED + 1), error), 0.9});
    world.loops.push_back({writeInto(staging, QStringLiteral("Wind in the Crowns.flac"), makeWind(68.0, SEED + 2), error), 0.85});
    world.loops.push_back({writeInto(staging, QStringLiteral("Forest Stream.flac"), makeStream(45.0, SEED + 3), error), 0.9});

    // Birds take turns: one of the three is heard every 12 to 30 seconds.
    world.groups.push_back({QStringLiteral("Birds"), 12, 30});
    EnvironmentRecipe bird{{}, 0.45, 0.85, 20, 40, 0};
    bird.file = writeInto(staging, QStringLiteral("Blackbird.flac"), makeBlackbirdCall(SEED + 4), error);
    world.environment.push_back(bird);
    bird.file = writeInto(staging, QStringLiteral("Wren.flac"), makeWrenTrill(SEED + 5), error);
    world.environment.push_back(bird);
    bird.file = writeInto(staging, QStringLiteral("Robin.flac"), makeRobinWhistle(SEED + 6), error);
    world.environment.push_back(bird);

    world.environment.push_back(
        {writeInto(staging, QStringLiteral("Crickets.flac"), makeCrickets(SEED + 7), error), 0.4, 0.75, 18, 40, -1});
    world.environment.push_back(
        {writeInto(staging, QStringLiteral("Distant Thunder.flac"), makeThunder(SEED + 8), error), 0.45, 0.8, 75, 170, -1});

    world.picture = QDir(staging).filePath(QStringLiteral("Evening Forest.png"));
    if (error.isEmpty() && !makeEveningForestPicture(800, 500, SEED + 9).save(world.picture, "PNG")) {
        error = QStringLiteral("cannot write %1").arg(world.picture);
    }
    if (!error.isEmpty()) {
        return error;
    }
    return writeWorldPackage(world, packagePath);
}

}  // namespace sylvora::synth
