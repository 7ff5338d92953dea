#include "cli/clioptions.h"

#include "cli/timeparsing.h"

namespace sylvora::cli {

namespace {

constexpr int MIN_RATE = 8000;
constexpr int MAX_RATE = 192000;

Command commandNamed(const QString& name) {
    if (name == u"play") return Command::Play;
    if (name == u"render") return Command::Render;
    if (name == u"info") return Command::Info;
    if (name == u"make") return Command::Make;
    return Command::None;
}

bool commandTakes(Command command, const QString& option) {
    switch (command) {
    case Command::Play: return option == u"--volume" || option == u"--duration" || option == u"--sleep";
    case Command::Render:
        return option == u"--output" || option == u"-o" || option == u"--duration" ||
               option == u"--seed" || option == u"--rate";
    case Command::Info: return option == u"--json";
    case Command::Make: return option == u"--output" || option == u"-o" || option == u"--name";
    case Command::None: return false;
    }
    return false;
}

// Applies one option with its value; returns an error text or an empty string.
QString applyOption(CliOptions& options, const QString& option, const QString& value) {
    if (option == u"--volume") {
        bool ok = false;
        const double volume = value.toDouble(&ok);
        if (!ok || !(volume >= 0.0 && volume <= 1.0)) {
            return QStringLiteral("--volume wants a number from 0 to 1, not '%1'").arg(value);
        }
        options.volume = volume;
    } else if (option == u"--duration") {
        const std::optional<double> seconds = parseDuration(value);
        if (!seconds || *seconds <= 0.0) {
            return QStringLiteral("--duration wants a time such as 90, 90s, 10m or 1h30m, not '%1'").arg(value);
        }
        options.duration = seconds;
    } else if (option == u"--sleep") {
        const std::optional<double> seconds = parseDuration(value);
        if (!seconds || *seconds <= 0.0) {
            return QStringLiteral("--sleep wants a time such as 30m, 1h or 90, not '%1'").arg(value);
        }
        options.sleep = seconds;
    } else if (option == u"--name") {
        if (value.trimmed().isEmpty()) {
            return QStringLiteral("--name wants the world's name");
        }
        options.name = value.trimmed();
    } else if ((option == u"--output" || option == u"-o") && options.command == Command::Make) {
        if (!value.endsWith(u".sylvora", Qt::CaseInsensitive)) {
            return QStringLiteral("the world package's name must end in .sylvora: '%1'").arg(value);
        }
        options.output = value;
    } else if (option == u"--output" || option == u"-o") {
        const QString lower = value.toLower();
        if (!lower.endsWith(u".wav") && !lower.endsWith(u".flac")) {
            return QStringLiteral("the output file must end in .wav or .flac: '%1'").arg(value);
        }
        options.output = value;
    } else if (option == u"--seed") {
        bool ok = false;
        const uint seed = value.toUInt(&ok);
        if (!ok) {
            return QStringLiteral("--seed wants a whole number from 0 to 4294967295, not '%1'").arg(value);
        }
        options.seed = seed;
    } else if (option == u"--rate") {
        bool ok = false;
        const int rate = value.endsWith(u'k', Qt::CaseInsensitive)
                             ? static_cast<int>(value.chopped(1).toDouble(&ok) * 1000.0)
                             : value.toInt(&ok);
        if (!ok || rate < MIN_RATE || rate > MAX_RATE) {
            return QStringLiteral("--rate wants a sample rate from %1 to %2 Hz, not '%3'")
                .arg(MIN_RATE).arg(MAX_RATE).arg(value);
        }
        options.rate = rate;
    }
    return {};
}

}  // namespace

ParseResult parseCommandLine(const QStringList& arguments) {
    ParseResult result;
    CliOptions& options = result.options;
    QStringList positional;
    bool optionsEnded = false;

    for (qsizetype i = 0; i < arguments.size(); ++i) {
        QString argument = arguments[i];
        if (optionsEnded || !argument.startsWith(u'-') || argument == u"-") {
            if (options.command == Command::None && positional.isEmpty()) {
                options.command = commandNamed(argument);
                if (options.command == Command::None) {
                    result.error = QStringLiteral("unknown command '%1'").arg(argument);
                    return result;
                }
            } else {
                positional << argument;
            }
            continue;
        }
        if (argument == u"--") {
            optionsEnded = true;
            continue;
        }
        if (argument == u"--help" || argument == u"-h") {
            options.help = true;
            continue;
        }
        if (argument == u"--version") {
            options.version = true;
            continue;
        }
        if (argument == u"--json" && options.command == Command::Info) {
            options.json = true;
            continue;
        }
        // "--name=value" and "--name value" are both accepted.
        QString value;
        bool hasInlineValue = false;
        if (const qsizetype eq = argument.indexOf(u'='); argument.startsWith(u"--") && eq > 0) {
            value = argument.mid(eq + 1);
            argument = argument.left(eq);
            hasInlineValue = true;
        }
        if (options.command == Command::None) {
            result.error = QStringLiteral("'%1' must come after a command").arg(argument);
            return result;
        }
        if (!commandTakes(options.command, argument) || argument == u"--json") {
            result.error = QStringLiteral("unknown option '%1'").arg(argument);
            return result;
        }
        if (!hasInlineValue) {
            if (i + 1 >= arguments.size()) {
                result.error = QStringLiteral("%1 needs a value").arg(argument);
                return result;
            }
            value = arguments[++i];
        }
        result.error = applyOption(options, argument, value);
        if (!result.error.isEmpty()) {
            return result;
        }
    }

    if (options.help || options.version) {
        return result;
    }
    if (options.command == Command::None) {
        result.error = QStringLiteral("no command given");
        return result;
    }
    if (positional.isEmpty() && options.command == Command::Make) {
        result.error = QStringLiteral("no folder of sounds given");
        return result;
    }
    if (positional.isEmpty()) {
        result.error = QStringLiteral("no world package given");
        return result;
    }
    if (positional.size() > 1) {
        result.error = QStringLiteral("one world at a time: unexpected '%1'").arg(positional[1]);
        return result;
    }
    options.world = positional.front();
    if (options.command == Command::Render) {
        if (options.output.isEmpty()) {
            result.error = QStringLiteral("render needs an output file (-o FILE.wav or FILE.flac)");
        } else if (!options.duration) {
            result.error = QStringLiteral("render needs --duration");
        }
    }
    return result;
}

QString usageText(Command command) {
    switch (command) {
    case Command::Play:
        return QStringLiteral(
            "Usage: sylvora-cli play WORLD [--volume 0..1] [--duration TIME] [--sleep TIME]\n"
            "\n"
            "Plays a world on the default sound device until Ctrl+C or the duration, with a live\n"
            "status line. Ctrl+C fades out over one second. Without a device the world plays into\n"
            "a silent output.\n"
            "\n"
            "  --volume V      master volume from 0 to 1 (default 1)\n"
            "  --duration TIME stop after TIME: seconds, or forms like 90s, 10m, 1h30m\n"
            "  --sleep TIME    a sleep timer: the world fades out over the last 30 s of TIME,\n"
            "                  then stops; the status line shows the time left\n");
    case Command::Render:
        return QStringLiteral(
            "Usage: sylvora-cli render WORLD -o FILE.wav|FILE.flac --duration TIME [--seed N] [--rate HZ]\n"
            "\n"
            "Renders a world into a sound file as fast as the machine allows. The same seed gives\n"
            "the same file.\n"
            "\n"
            "  -o, --output FILE  the file to write; .wav (32-bit float) or .flac (24-bit)\n"
            "  --duration TIME    length: seconds, or forms like 90s, 10m, 1h30m\n"
            "  --seed N           random seed for the world's choices (default 1)\n"
            "  --rate HZ          sample rate of the file (default 48000)\n");
    case Command::Info:
        return QStringLiteral(
            "Usage: sylvora-cli info WORLD [--json]\n"
            "\n"
            "Loads a world package as the application does and describes what it holds: name,\n"
            "author, description, crossfade, picture, groups, loop sounds, environment sounds,\n"
            "entries the loader skipped, and the load status. Exits with 1 when the load failed.\n"
            "\n"
            "  --json  one JSON object instead of text\n");
    case Command::Make:
        return QStringLiteral(
            "Usage: sylvora-cli make FOLDER [-o WORLD.sylvora] [--name NAME]\n"
            "\n"
            "Makes a world package from a folder of sound files: sounds of 20 s or more become\n"
            "loop sounds, shorter ones environment sounds heard again after intervals that grow\n"
            "with their length, the first picture becomes the world's picture, and the folder's\n"
            "name the world's name. Says what went where and why; files that cannot be decoded\n"
            "are listed and skipped. An existing package is never replaced.\n"
            "\n"
            "  -o, --output WORLD.sylvora  the package to write (default: NAME.sylvora here)\n"
            "  --name NAME                 the world's name (default: the folder's name)\n");
    case Command::None: break;
    }
    return QStringLiteral(
        "Usage: sylvora-cli COMMAND WORLD|FOLDER [OPTIONS]\n"
        "\n"
        "Plays, renders, describes and makes Sylvora worlds (.sylvora packages) without a window.\n"
        "\n"
        "Commands:\n"
        "  play WORLD [--volume 0..1] [--duration TIME] [--sleep TIME]\n"
        "                                                     play on the default sound device\n"
        "  render WORLD -o FILE --duration TIME [--seed N] [--rate HZ]\n"
        "                                                     render into a .wav or .flac file\n"
        "  info WORLD [--json]                                describe a world package\n"
        "  make FOLDER [-o WORLD.sylvora] [--name NAME]       make a world from sound files\n"
        "\n"
        "Run 'sylvora-cli COMMAND --help' for a command's options, 'sylvora-cli --version' for the\n"
        "version.\n");
}

}  // namespace sylvora::cli
