#pragma once

// The command line of sylvora-cli: one command, one world package and the command's options.

#include <QString>
#include <QStringList>
#include <optional>

namespace sylvora::cli {

enum class Command { None, Play, Render, Info, Make };

struct CliOptions {
    Command command = Command::None;
    bool help = false;  // --help: print the usage of `command` (or of the tool) and succeed
    bool version = false;
    QString world;
    // play
    std::optional<double> volume;
    std::optional<double> duration;  // seconds; required by render
    std::optional<double> sleep;     // seconds until the sleep timer's fade has ended
    // render
    QString output;
    std::optional<unsigned> seed;
    int rate = 48000;
    // info
    bool json = false;
    // make: `world` is the folder, `output` the package (optional), `name` the world's name
    QString name;
};

struct ParseResult {
    CliOptions options;
    QString error;  // empty when the command line is usable
};

// `arguments` excludes the program name.
ParseResult parseCommandLine(const QStringList& arguments);

// The help text: the tool's overview for Command::None, else that command's usage.
QString usageText(Command command);

inline constexpr int EXIT_USAGE = 2;

}  // namespace sylvora::cli
