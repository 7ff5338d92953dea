#include "cli/makecommand.h"

#include <QDir>
#include <QFileInfo>
#include <cstdio>

#include "audio/engine/engine.h"
#include "cli/stopsignals.h"
#include "cli/timeparsing.h"
#include "core/package/worldfromfolder.h"
#include "core/time/virtualeventloop.h"
#include "core/world/world.h"

namespace sylvora::cli {

namespace {

using Role = FolderWorldItem::Role;

QString roleText(Role role) {
    switch (role) {
    case Role::LoopSound: return QStringLiteral("loop sound");
    case Role::EnvironmentSound: return QStringLiteral("environment sound");
    case Role::Picture: return QStringLiteral("picture");
    case Role::Skipped: break;
    }
    return QStringLiteral("skipped");
}

QString lengthText(double seconds) {
    return seconds < 60.0 ? QStringLiteral("%1 s").arg(seconds, 0, 'f', 1) : formatClock(seconds);
}

QString countText(int count, const char* one, const char* many) {
    return count == 1 ? QStringLiteral("1 %1").arg(QLatin1String(one))
                      : QStringLiteral("%1 %2").arg(count).arg(QLatin1String(many));
}

void printItems(const FolderWorldReport& report) {
    for (const FolderWorldItem& item : report.items) {
        QString file = item.fileName;
        if (item.role == Role::LoopSound || item.role == Role::EnvironmentSound) {
            file += QStringLiteral(" (%1)").arg(lengthText(item.seconds));
        }
        std::printf("  %-18s %s: %s\n", qPrintable(roleText(item.role)), qPrintable(file), qPrintable(item.reason));
    }
}

}  // namespace

int runMake(const CliOptions& options) {
    const QFileInfo folder(options.world);
    if (!folder.isDir()) {
        std::fprintf(stderr, "sylvora-cli: '%s' is not a folder\n", qPrintable(options.world));
        return 1;
    }
    const QString name = options.name.isEmpty() ? QDir(folder.absoluteFilePath()).dirName() : options.name;
    const QString output = options.output.isEmpty()
                               ? QDir::current().filePath(name + QStringLiteral(".") +
                                                          QLatin1String(World::PACKAGENAME_EXTENSION))
                               : options.output;

    // Nothing plays: the engine only opens the files to measure and check them, and the loop's
    // clock is never asked to run.
    audio::Engine engine;
    VirtualEventLoop loop;
    World world(engine, loop, 1u);
    // Ctrl+C or SIGTERM stops the save before its next file; the unfinished package, written under
    // a temporary name, is deleted, so nothing is left at the destination.
    const StopSignals stopSignals;
    world.setSaveCanceller([&stopSignals] { return stopSignals.caught() != 0; });
    FolderWorldReport report;
    const OSStatus status = WorldFromFolder::makePackage(world, folder.absoluteFilePath(),
                                                         QFileInfo(output).absoluteFilePath(), name, report);
    if (!report.items.isEmpty()) {
        std::printf("Making the world '%s' from %s:\n", qPrintable(report.name), qPrintable(folder.absoluteFilePath()));
        printItems(report);
    }
    if (status != noErr) {
        std::fflush(stdout);
        if (stopSignals.caught() != 0) {
            std::fprintf(stderr, "sylvora-cli: interrupted: nothing was made at '%s'\n",
                         qPrintable(QFileInfo(output).absoluteFilePath()));
            return stopSignals.exitCode();
        }
        std::fprintf(stderr, "sylvora-cli: %s\n", qPrintable(report.error));
        return 1;
    }
    const int pictures = report.count(Role::Picture);
    std::printf("Saved %s: %s, %s, %s.\n", qPrintable(QFileInfo(output).absoluteFilePath()),
                qPrintable(countText(report.count(Role::LoopSound), "loop sound", "loop sounds")),
                qPrintable(countText(report.count(Role::EnvironmentSound), "environment sound", "environment sounds")),
                pictures > 0 ? "a picture" : "no picture");
    if (const int skipped = report.count(Role::Skipped); skipped > 0) {
        std::printf("%s skipped.\n", qPrintable(countText(skipped, "file", "files")));
    }
    return 0;
}

}  // namespace sylvora::cli
