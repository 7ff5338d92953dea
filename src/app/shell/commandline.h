#pragma once

// What `sylvora` is asked on its command line: world packages to open (plain arguments), whether
// to start in the tray only, or only to print its help or version. Options are read twice: once
// before the application exists, so that --help and --version work without a display, and once
// after Qt has taken its own single-dash options (-platform, -style, ...), so that whatever is left
// and looks like an option is one nobody knows.

#include <QString>
#include <QStringList>

namespace sylvora::app {

struct LaunchRequest {
    enum class Action { Run, Help, Version, Usage };  // Usage: an unknown option, exit status 2
    Action action = Action::Run;
    bool background = false;  // tray only, for the desktop session's autostart
    QStringList documents;    // as given, not yet made absolute
    QString unknownOption;
};

// `arguments` without the program's name. Before Qt has parsed them (`qtHasParsed` false), a
// single-dash argument may still be Qt's own and is let through.
LaunchRequest parseCommandLine(const QStringList& arguments, bool qtHasParsed);
QString usageText();
QString versionText();

}  // namespace sylvora::app
