#include "app/shell/commandline.h"

#include <QCoreApplication>

namespace sylvora::app {

LaunchRequest parseCommandLine(const QStringList& arguments, bool qtHasParsed) {
    LaunchRequest request;
    bool optionsEnded = false;
    for (const QString& argument : arguments) {
        if (optionsEnded || argument == QLatin1String("-") || !argument.startsWith(QLatin1Char('-'))) {
            request.documents << argument;
        } else if (argument == QLatin1String("--")) {
            optionsEnded = true;
        } else if (argument == QLatin1String("--background")) {
            request.background = true;
        } else if (argument == QLatin1String("--help") || argument == QLatin1String("-h")) {
            request.action = LaunchRequest::Action::Help;
            return request;
        } else if (argument == QLatin1String("--version") || argument == QLatin1String("-v")) {
            request.action = LaunchRequest::Action::Version;
            return request;
        } else if (qtHasParsed || argument.startsWith(QLatin1String("--"))) {
            request.action = LaunchRequest::Action::Usage;
            request.unknownOption = argument;
            return request;
        }
    }
    return request;
}

QString usageText() {
    return QCoreApplication::translate("sylvora",
        "Usage: sylvora [--background] [WORLD.sylvora ...]\n"
        "Plays ambient sound worlds and lets you build them. Opens the first world package given,\n"
        "or else the world that was playing when Sylvora last quit.\n"
        "\n"
        "  --background   start in the tray only, as the desktop session's autostart does\n"
        "                 (where the desktop has no tray, the window shows all the same)\n"
        "  -h, --help     print this help and exit\n"
        "  -v, --version  print the version and exit\n"
        "  --             every argument after it is a world package, even one that starts with \"-\"\n");
}

QString versionText() { return QStringLiteral("sylvora %1\n").arg(QStringLiteral(SYLVORA_VERSION)); }

}  // namespace sylvora::app
