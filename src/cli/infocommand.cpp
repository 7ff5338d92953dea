#include "cli/infocommand.h"

#include <QJsonDocument>
#include <cstdio>

#include "audio/engine/engine.h"
#include "cli/skippedentries.h"
#include "cli/worldjson.h"
#include "cli/worldloading.h"
#include "cli/worldsummary.h"
#include "cli/worldtext.h"
#include "core/time/virtualeventloop.h"
#include "core/world/world.h"

namespace sylvora::cli {

int runInfo(const CliOptions& options) {
    // Nothing plays: the world only needs an engine to load its sounds (for their lengths) and a
    // loop that never turns.
    audio::Engine engine;
    VirtualEventLoop loop;
    World world(engine, loop);

    const OSStatus status = loadWorldFromPath(world, options.world);
    WorldSummary summary = summarizeWorld(world, status);
    summary.warnings = findSkippedEntries(options.world, world);

    if (status != noErr) {
        std::fprintf(stderr, "sylvora-cli: %s\n", describeLoadFailure(options.world, status).toLocal8Bit().constData());
    }
    if (options.json) {
        const QByteArray json = QJsonDocument(worldSummaryToJson(summary)).toJson(QJsonDocument::Indented);
        std::fwrite(json.constData(), 1, static_cast<std::size_t>(json.size()), stdout);
    } else {
        std::fputs(worldSummaryToText(summary).toLocal8Bit().constData(), stdout);
    }
    std::fflush(stdout);
    return status == noErr ? 0 : 1;
}

}  // namespace sylvora::cli
