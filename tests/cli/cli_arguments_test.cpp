// How sylvora-cli reads what people type: times in the forms they write, and command lines with
// their mistakes.

#include <gtest/gtest.h>

#include <utility>

#include "cli/clioptions.h"
#include "cli/progressbar.h"
#include "cli/timeparsing.h"
#include "clirunner.h"

using namespace sylvora::cli;

TEST(DurationParsing, AcceptsSecondsAndHourMinuteSecondForms) {
    for (const auto& [text, seconds] : {std::pair{"90", 90.0}, {"90s", 90.0}, {"10m", 600.0}, {"1h30m", 5400.0},
                                        {"1h30m15s", 5415.0}, {"2h", 7200.0}, {"1m30s", 90.0}, {"2.5", 2.5},
                                        {"1.5m", 90.0}, {" 10M ", 600.0}})
        EXPECT_EQ(parseDuration(QString::fromLatin1(text)), seconds) << text;
}

TEST(DurationParsing, RefusesWhatIsNotATime) {
    for (const char* text : {"", "abc", "10x", "-5", "1m1h", "1h1h", "1h30", "s", "h30m", "1..5", ".5", "5s5",
                             "1e3", "10 m", "nan", "inf"}) {
        EXPECT_FALSE(parseDuration(QString::fromLatin1(text)).has_value()) << "'" << text << "'";
    }
}

TEST(DurationParsing, ClockFormShowsHoursOnlyWhenThereAreSome) {
    EXPECT_EQ(formatClock(0.0), QStringLiteral("0:00"));
    EXPECT_EQ(formatClock(59.9), QStringLiteral("0:59"));
    EXPECT_EQ(formatClock(605.0), QStringLiteral("10:05"));
    EXPECT_EQ(formatClock(5415.0), QStringLiteral("1:30:15"));
    EXPECT_EQ(formatClock(-3.0), QStringLiteral("0:00"));
}

TEST(CommandLine, ReadsEachCommandWithItsOptions) {
    ParseResult play = parseCommandLine({"play", "Rain.sylvora", "--volume", "0.4", "--duration=10m"});
    ASSERT_TRUE(play.error.isEmpty()) << play.error.toStdString();
    EXPECT_EQ(play.options.command, Command::Play);
    EXPECT_EQ(play.options.world, QStringLiteral("Rain.sylvora"));
    EXPECT_EQ(play.options.volume, 0.4);
    EXPECT_EQ(play.options.duration, 600.0);

    ParseResult render = parseCommandLine({"render", "W.sylvora", "-o", "out.flac", "--duration", "1h30m", "--seed",
                                           "42", "--rate", "44100"});
    ASSERT_TRUE(render.error.isEmpty()) << render.error.toStdString();
    EXPECT_EQ(render.options.command, Command::Render);
    EXPECT_EQ(render.options.output, QStringLiteral("out.flac"));
    EXPECT_EQ(render.options.duration, 5400.0);
    EXPECT_EQ(render.options.seed, 42u);
    EXPECT_EQ(render.options.rate, 44100);

    ParseResult info = parseCommandLine({"info", "--json", "W.sylvora"});
    ASSERT_TRUE(info.error.isEmpty()) << info.error.toStdString();
    EXPECT_TRUE(info.options.json);
    EXPECT_EQ(info.options.world, QStringLiteral("W.sylvora"));

    // "--" ends the options, so a world may be named like one.
    ParseResult dashed = parseCommandLine({"info", "--", "--json.sylvora"});
    ASSERT_TRUE(dashed.error.isEmpty());
    EXPECT_FALSE(dashed.options.json);
    EXPECT_EQ(dashed.options.world, QStringLiteral("--json.sylvora"));
}

TEST(CommandLine, NamesTheMistake) {
    const auto errorOf = [](const QStringList& arguments) { return parseCommandLine(arguments).error; };
    EXPECT_TRUE(errorOf({}).contains(QStringLiteral("no command")));
    EXPECT_TRUE(errorOf({"dance", "W.sylvora"}).contains(QStringLiteral("'dance'")));
    EXPECT_TRUE(errorOf({"play"}).contains(QStringLiteral("no world")));
    EXPECT_TRUE(errorOf({"play", "A.sylvora", "B.sylvora"}).contains(QStringLiteral("'B.sylvora'")));
    EXPECT_TRUE(errorOf({"play", "W.sylvora", "--volume", "1.5"}).contains(QStringLiteral("--volume")));
    EXPECT_TRUE(errorOf({"play", "W.sylvora", "--volume"}).contains(QStringLiteral("needs a value")));
    EXPECT_TRUE(errorOf({"play", "W.sylvora", "--duration", "soon"}).contains(QStringLiteral("'soon'")));
    EXPECT_TRUE(errorOf({"play", "W.sylvora", "--duration", "0"}).contains(QStringLiteral("--duration")));
    EXPECT_TRUE(errorOf({"play", "W.sylvora", "--json"}).contains(QStringLiteral("unknown option")));
    EXPECT_TRUE(errorOf({"render", "W.sylvora", "--duration", "5"}).contains(QStringLiteral("output")));
    EXPECT_TRUE(errorOf({"render", "W.sylvora", "-o", "x.flac"}).contains(QStringLiteral("--duration")));
    EXPECT_TRUE(errorOf({"render", "W.sylvora", "-o", "x.mp3", "--duration", "5"}).contains(QStringLiteral(".wav or .flac")));
    EXPECT_TRUE(errorOf({"render", "W.sylvora", "-o", "x.wav", "--duration", "5", "--rate", "7"}).contains(QStringLiteral("--rate")));
    EXPECT_TRUE(errorOf({"render", "W.sylvora", "-o", "x.wav", "--duration", "5", "--seed", "-1"}).contains(QStringLiteral("--seed")));
    EXPECT_TRUE(errorOf({"--volume", "1", "play", "W.sylvora"}).contains(QStringLiteral("after a command")));
}

TEST(CommandLine, HelpIsAskedForAndNeedsNothingElse) {
    const ParseResult general = parseCommandLine({"--help"});
    EXPECT_TRUE(general.error.isEmpty());
    EXPECT_TRUE(general.options.help);
    const ParseResult render = parseCommandLine({"render", "--help"});
    EXPECT_TRUE(render.error.isEmpty());
    EXPECT_EQ(render.options.command, Command::Render);
    EXPECT_TRUE(usageText(Command::Render).contains(QStringLiteral("--seed")));
    EXPECT_TRUE(usageText(Command::None).contains(QStringLiteral("play")));
    const ParseResult version = parseCommandLine({"--version"});
    EXPECT_TRUE(version.error.isEmpty());
    EXPECT_TRUE(version.options.version);
}

TEST(CommandLine, TheProgramAnswersUsageMistakesWithStatusTwoAndAHint) {
    const sylvora::test::CliResult wrong = sylvora::test::runCli({"render", "W.sylvora", "--duration", "5"});
    EXPECT_EQ(wrong.exitCode, EXIT_USAGE);
    EXPECT_TRUE(wrong.out.isEmpty());
    EXPECT_TRUE(wrong.err.contains(QStringLiteral("sylvora-cli: render needs an output file")));
    EXPECT_TRUE(wrong.err.contains(QStringLiteral("sylvora-cli render --help")));

    const sylvora::test::CliResult help = sylvora::test::runCli({"info", "--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_TRUE(help.out.startsWith(QStringLiteral("Usage: sylvora-cli info")));
}

TEST(ProgressBar, FillsInProportionAndFitsItsWidth) {
    EXPECT_EQ(ProgressBar::render(QStringLiteral("x"), 0.0, 30), QStringLiteral("x [.....................]   0%"));
    EXPECT_EQ(ProgressBar::render(QStringLiteral("x"), 0.5, 30), QStringLiteral("x [##########...........]  50%"));
    EXPECT_EQ(ProgressBar::render(QStringLiteral("x"), 1.0, 30), QStringLiteral("x [#####################] 100%"));
    EXPECT_EQ(ProgressBar::render(QStringLiteral("x"), 7.0, 30).size(), 30);
}
