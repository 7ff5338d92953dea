#include "bundledworlds.h"

#include "environmentsounds.h"
#include "loopsounds.h"
#include "packagewriter.h"
#include "picture.h"

namespace sylvora::synth {

namespace {

// Every sound has its own fixed seed, so the example is the same on every build.
constexpr unsigned SEED = 2024;

}  // namespace

QString buildEveningForest(const QString& staging, const QString& packagePath) {
    QString error;
    WorldRecipe world;
    world.name = QStringLiteral("Evening Forest");
    world.author = QStringLiteral("The Sylvora example synthesizer");
    world.description = QStringLiteral(
        "Dusk under tall pines: rain drips from the needles, wind moves in the crowns and a stream "
        "runs nearby. The last birds call, crickets begin, thunder rolls far off.");
    world.crossfade = 5;

    // Loop sounds: one plays at a time, the next crossfaded in five seconds before the end.
    world.loops.push_back({writeSoundInto(staging, QStringLiteral("Rain on the Pines.flac"), makeRain(40.0, SEED + 1), error), 0.84});
    world.loops.push_back({writeSoundInto(staging, QStringLiteral("Wind in the Crowns.flac"), makeWind(44.0, SEED + 2), error), 0.79});
    world.loops.push_back({writeSoundInto(staging, QStringLiteral("Forest Stream.flac"), makeStream(34.0, SEED + 3), error), 0.84});

    // Birds take turns: one of the three is heard every 12 to 30 seconds.
    world.groups.push_back({QStringLiteral("Birds"), 12, 30});
    EnvironmentRecipe bird{{}, 0.45, 0.85, 20, 40, 0};
    bird.file = writeSoundInto(staging, QStringLiteral("Blackbird.flac"), makeBlackbirdCall(SEED + 4), error);
    world.environment.push_back(bird);
    bird.file = writeSoundInto(staging, QStringLiteral("Wren.flac"), makeWrenTrill(SEED + 5), error);
    world.environment.push_back(bird);
    bird.file = writeSoundInto(staging, QStringLiteral("Robin.flac"), makeRobinWhistle(SEED + 6), error);
    world.environment.push_back(bird);

    world.environment.push_back(
        {writeSoundInto(staging, QStringLiteral("Crickets.flac"), makeCrickets(SEED + 7), error), 0.4, 0.75, 18, 40, -1});
    world.environment.push_back(
        {writeSoundInto(staging, QStringLiteral("Distant Thunder.flac"), makeThunder(SEED + 8), error), 0.45, 0.8, 75, 170, -1});

    world.picture = savePictureInto(staging, QStringLiteral("Evening Forest.png"),
                                    makeEveningForestPicture(800, 500, SEED + 9), error);
    if (!error.isEmpty()) return error;
    return writeWorldPackage(world, packagePath);
}

}  // namespace sylvora::synth
