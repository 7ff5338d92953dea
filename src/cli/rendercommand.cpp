#include "cli/rendercommand.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>

#include "audio/engine/engine.h"
#include "audio/outputs/file/audiofilewriter.h"
#include "cli/progressbar.h"
#include "cli/stopsignals.h"
#include "cli/timeparsing.h"
#include "cli/worldloading.h"
#include "core/render/offlinerenderer.h"
#include "core/strings/stringresources.h"
#include "core/time/virtualeventloop.h"
#include "core/world/world.h"

namespace sylvora::cli {

namespace {

constexpr unsigned DEFAULT_SEED = 1;

void printError(const QString& message) {
    std::fprintf(stderr, "sylvora-cli: %s\n", qPrintable(message));
}

}  // namespace

int runRender(const CliOptions& options) {
    audio::Engine engine(options.rate);
    VirtualEventLoop loop;
    World world(engine, loop, options.seed.value_or(DEFAULT_SEED));

    const OSStatus status = loadWorldFromPath(world, options.world);
    if (status != noErr) {
        printError(describeLoadFailure(options.world, status));
        return 1;
    }

    // The sound is written under a hidden name beside the output and renamed into place only when it
    // is complete: an interrupted or failed render leaves nothing at the output and never destroys
    // what was there. The hidden name keeps the output's extension, which chooses the format.
    const QFileInfo output(options.output);
    const QString partial = output.dir().filePath(QStringLiteral(".%1-partial-%2.%3")
                                                      .arg(output.fileName())
                                                      .arg(QCoreApplication::applicationPid())
                                                      .arg(output.suffix()));
    const StopSignals stopSignals;
    std::string error;
    std::unique_ptr<audio::AudioFileWriter> writer =
        audio::AudioFileWriter::create(QFile::encodeName(partial).toStdString(), options.rate, error);
    if (!writer) {
        printError(QStringLiteral("cannot create '%1': %2").arg(options.output, QString::fromStdString(error)));
        return 1;
    }

    OfflineRenderer renderer(engine, loop);

    const QString label = world.getName().isEmpty() ? QStringLiteral("Rendering")
                                                    : QStringLiteral("Rendering %1").arg(world.getName());
    ProgressBar bar(stderr, label);
    QElapsedTimer clock;
    clock.start();
    world.start();

    const auto total = static_cast<std::uint64_t>(std::llround(*options.duration * options.rate));
    const auto chunk = static_cast<std::uint64_t>(options.rate);  // one second between progress updates
    OSStatus writeStatus = noErr;
    const OfflineRenderer::Sink sink = [&](const float* interleaved, std::size_t frames, std::uint64_t) {
        if (writeStatus == noErr) writeStatus = writer->write(interleaved, frames);
    };
    while (renderer.framesRendered() < total && writeStatus == noErr && stopSignals.caught() == 0) {
        renderer.render(std::min(chunk, total - renderer.framesRendered()), sink);
        bar.update(static_cast<double>(renderer.framesRendered()) / static_cast<double>(total));
    }
    world.stop();
    if (stopSignals.caught() != 0) writeStatus = userCanceledErr;
    if (writeStatus == noErr) writeStatus = writer->close();
    bar.finish();
    writer.reset();
    if (writeStatus == noErr && std::rename(QFile::encodeName(partial).constData(), QFile::encodeName(options.output).constData()) != 0)
        writeStatus = statusFromErrno(errno);

    if (writeStatus != noErr) {
        QFile::remove(partial);
        if (stopSignals.caught() != 0) {
            printError(QStringLiteral("interrupted: nothing was written to '%1'").arg(options.output));
            return stopSignals.exitCode();
        }
        printError(QStringLiteral("writing '%1' failed: %2").arg(options.output, copyStatusDescription(writeStatus)));
        return 1;
    }
    const double seconds = std::max(clock.elapsed(), qint64{1}) / 1000.0;
    std::printf("Rendered %s of %s into %s (%d Hz) in %.1f s, %.0fx real time.\n",
                qPrintable(formatClock(*options.duration)),
                world.getName().isEmpty() ? "the world" : qPrintable(QStringLiteral("'%1'").arg(world.getName())),
                qPrintable(options.output), options.rate, seconds, *options.duration / seconds);
    if (const std::uint64_t underruns = engine.underruns(); underruns > 0) {
        std::printf("%llu blocks were not ready in time and were rendered as silence.\n",
                    static_cast<unsigned long long>(underruns));
    }
    std::fflush(stdout);
    return 0;
}

}  // namespace sylvora::cli
