// sylvora-cli: plays, renders and describes Sylvora worlds from a terminal.

#include <unistd.h>

#include <QCoreApplication>
#include <QLocale>
#include <cstdio>

#include "cli/clioptions.h"
#include "cli/infocommand.h"
#include "cli/makecommand.h"
#include "cli/playcommand.h"
#include "cli/rendercommand.h"
#include "core/platform/beep.h"
#include "core/strings/stringresources.h"

using namespace sylvora::cli;

int main(int argc, char** argv) {
    // The player wakes fifteen times a second for its timers alone; Qt's own dispatcher wakes for
    // them more cheaply than GLib's, whose integration nothing here uses.
    if (qEnvironmentVariableIsEmpty("QT_NO_GLIB")) qputenv("QT_NO_GLIB", "1");
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("sylvora-cli"));
    // The command line speaks English only: its own messages are not translated, and a failure
    // half in the desktop's language would read worse than one wholly in English.
    sylvora::installStringTables(QLocale(QLocale::English));
    // The scheduler's diagnostics beep before they print; in a terminal that is the bell, and where
    // standard error goes to a file or a pipe a BEL byte would only be noise in it.
    if (::isatty(STDERR_FILENO)) {
        sylvora::setSysBeepHook([] {
            std::fputc('\a', stderr);
            std::fflush(stderr);
        });
    }

    const ParseResult parsed = parseCommandLine(QCoreApplication::arguments().mid(1));
    const CliOptions& options = parsed.options;
    if (!parsed.error.isEmpty()) {
        std::fprintf(stderr, "sylvora-cli: %s\n", qPrintable(parsed.error));
        std::fprintf(stderr, "Try 'sylvora-cli %s--help' for more information.\n",
                     options.command == Command::Play     ? "play "
                     : options.command == Command::Render ? "render "
                     : options.command == Command::Info   ? "info "
                     : options.command == Command::Make   ? "make "
                                                          : "");
        return EXIT_USAGE;
    }
    if (options.version) {
        std::printf("sylvora-cli %s\n", SYLVORA_VERSION);
        return 0;
    }
    if (options.help) {
        std::fputs(qPrintable(usageText(options.command)), stdout);
        return 0;
    }
    switch (options.command) {
    case Command::Play: return runPlay(options);
    case Command::Render: return runRender(options);
    case Command::Info: return runInfo(options);
    case Command::Make: return runMake(options);
    case Command::None: break;
    }
    return EXIT_USAGE;
}
