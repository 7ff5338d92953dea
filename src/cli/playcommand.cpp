#include "cli/playcommand.h"

#include <QCoreApplication>
#include <cstdio>

#include "audio/engine/engine.h"
#include "audio/outputs/output.h"
#include "cli/playbackrate.h"
#include "cli/playsession.h"
#include "cli/signalpipe.h"
#include "cli/timeparsing.h"
#include "cli/worldloading.h"
#include "core/time/qteventloop.h"
#include "core/world/world.h"

namespace sylvora::cli {

int runPlay(const CliOptions& options) {
    QtEventLoop loop;
    // The rate is fixed with the engine, and the world takes the engine as it is, so it is chosen
    // from the package before the world loads.
    audio::Engine engine(choosePlaybackRate(options.world));
    World world(engine, loop);

    const OSStatus status = loadWorldFromPath(world, options.world);
    if (status != noErr) {
        std::fprintf(stderr, "sylvora-cli: %s\n", describeLoadFailure(options.world, status).toLocal8Bit().constData());
        return 1;
    }
    if (world.getNumLoopSounds() == 0 && world.getNumEnvironmentSounds() == 0) {
        std::fprintf(stderr, "sylvora-cli: the world '%s' holds no sounds; it will play silence\n",
                     options.world.toLocal8Bit().constData());
    }

    // Says so on the standard error stream itself when there is no device.
    const std::unique_ptr<audio::AudioOutput> output = audio::openDefaultOutput(engine);
    if (!output || !output->start()) {
        std::fprintf(stderr, "sylvora-cli: cannot start the audio output\n");
        return 1;
    }
    world.setVolume(options.volume.value_or(1.0));

    PlaySession session(world, world.getName(), options.duration);
    session.setSleep(options.sleep);
    session.setOutput(output.get());
    const SignalPipe interrupts([&session](int) {
        // Ctrl+C fades out; a second one, or SIGTERM during the fade, stops at once.
        static int received = 0;
        session.finish(++received > 1);
    });
    session.begin();
    QCoreApplication::exec();

    output->stop();
    world.stop();
    std::printf("Played %s for %s.\n",
                world.getName().isEmpty() ? "the world" : qPrintable(QStringLiteral("'%1'").arg(world.getName())),
                qPrintable(formatClock(session.elapsed())));
    std::fflush(stdout);
    return 0;
}

}  // namespace sylvora::cli
