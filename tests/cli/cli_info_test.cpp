// `sylvora-cli info`: what it reports about the example world and the other bundled worlds, about
// packages with skipped entries, and about packages that cannot be opened.

#include <gtest/gtest.h>

#include <algorithm>

#include <QDir>
#include <QFileInfo>
#include <QFile>
#include <QProcessEnvironment>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include "clirunner.h"
#include "support/tempdir.h"
#include "worldpackages.h"

using namespace sylvora::test;

namespace {

QJsonObject parseJson(const CliResult& result) {
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(result.out.toUtf8(), &error);
    EXPECT_EQ(error.error, QJsonParseError::NoError) << result.out.toStdString();
    return document.object();
}

ToneSpec shortTone(double frequency) {
    ToneSpec tone;
    tone.frequency = frequency;
    tone.seconds = 0.5;
    return tone;
}

}  // namespace

TEST(InfoExampleWorld, JsonDescribesEverySoundWithItsSettings) {
    const CliResult result = runCli({"info", SYLVORA_EXAMPLE_WORLD, "--json"});
    ASSERT_FALSE(result.crashed);
    EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
    EXPECT_TRUE(result.err.isEmpty()) << result.err.toStdString();
    const QJsonObject world = parseJson(result);

    EXPECT_EQ(world["status"].toInt(-99), 0);
    EXPECT_EQ(world["name"].toString(), QStringLiteral("Evening Forest"));
    EXPECT_FALSE(world["author"].toString().isEmpty());
    EXPECT_GT(world["description"].toString().size(), 40);
    EXPECT_EQ(world["crossfade"].toInt(), 5);
    EXPECT_EQ(world["picture"].toString(), QStringLiteral("Evening Forest.png"));
    EXPECT_TRUE(world["warnings"].toArray().isEmpty());

    const QJsonArray groups = world["groups"].toArray();
    ASSERT_EQ(groups.size(), 1);
    EXPECT_EQ(groups[0]["name"].toString(), QStringLiteral("Birds"));
    EXPECT_LE(groups[0]["min_interval"].toInt(), groups[0]["max_interval"].toInt());

    const QJsonArray loops = world["loop_sounds"].toArray();
    ASSERT_EQ(loops.size(), 3);
    for (const QJsonValue loop : loops) {
        EXPECT_TRUE(loop["file"].toString().endsWith(QStringLiteral(".flac")));
        EXPECT_GE(loop["duration"].toDouble(), 30.0);
    }

    const QJsonArray environment = world["environment_sounds"].toArray();
    ASSERT_EQ(environment.size(), 5);
    int inBirdGroup = 0;
    for (const QJsonValue sound : environment) {
        EXPECT_LE(sound["min_volume"].toDouble(), sound["max_volume"].toDouble());
        EXPECT_LE(sound["min_interval"].toInt(), sound["max_interval"].toInt());
        if (sound["group"].isNull()) continue;
        EXPECT_EQ(sound["group"].toInt(-1), 0);
        // A grouped sound carries its group's intervals.
        EXPECT_EQ(sound["min_interval"].toInt(), groups[0]["min_interval"].toInt());
        ++inBirdGroup;
    }
    EXPECT_EQ(inBirdGroup, 3);
}

TEST(InfoExampleWorld, TextNamesTheWorldItsSoundsAndTheStatus) {
    const CliResult result = runCli({"info", SYLVORA_EXAMPLE_WORLD});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_TRUE(result.out.contains(QStringLiteral("Name:        Evening Forest")));
    EXPECT_TRUE(result.out.contains(QStringLiteral("Crossfade:   5 s")));
    EXPECT_TRUE(result.out.contains(QStringLiteral("Environment sounds (5)")));
    EXPECT_TRUE(result.out.contains(QStringLiteral("in group 1 (Birds)")));
    EXPECT_TRUE(result.out.contains(QStringLiteral("Status:      0 (loaded)")));
}

// Every world that ships loads cleanly and has what a world needs to be worth an hour: beds to
// alternate, one-shots (some taking turns in a group), a picture, and texts that fit the Get Info
// window (six lines at its ideal size hold about 200 characters; the longest we ship stays well
// below, whatever font the desktop gives).
TEST(InfoBundledWorlds, EachLoadsWithBedsOneShotsAGroupAPictureAndShortTexts) {
    const QDir folder = QFileInfo(QStringLiteral(SYLVORA_EXAMPLE_WORLD)).absoluteDir();
    for (const char* name : {"Evening Forest", "Rain on a Roof", "Sea Shore", "Fireside", "Night Meadow"}) {
        SCOPED_TRACE(name);
        const CliResult result = runCli({"info", folder.filePath(QString::fromUtf8(name) + QStringLiteral(".sylvora")), "--json"});
        ASSERT_EQ(result.exitCode, 0) << result.err.toStdString();
        const QJsonObject world = parseJson(result);
        EXPECT_EQ(world["status"].toInt(-99), 0);
        EXPECT_TRUE(world["warnings"].toArray().isEmpty());
        EXPECT_EQ(world["name"].toString(), QString::fromUtf8(name));
        EXPECT_FALSE(world["author"].toString().isEmpty());
        const QString description = world["description"].toString();
        EXPECT_GT(description.size(), 60);
        EXPECT_LE(description.size(), 170);
        EXPECT_TRUE(description.endsWith(u'.'));
        EXPECT_EQ(world["picture"].toString(), QString::fromUtf8(name) + QStringLiteral(".png"));

        const QJsonArray loops = world["loop_sounds"].toArray();
        EXPECT_GE(loops.size(), 2);
        for (const QJsonValue loop : loops) EXPECT_GE(loop["duration"].toDouble(), 30.0);
        const QJsonArray environment = world["environment_sounds"].toArray();
        EXPECT_GE(environment.size(), 3);
        EXPECT_GE(world["groups"].toArray().size(), 1);
        EXPECT_TRUE(std::any_of(environment.begin(), environment.end(), [](const QJsonValue& sound) { return !sound["group"].isNull(); }));
    }
}

class InfoOnPackages : public ::testing::Test {
protected:
    TempDir temp;
    QString package = temp.makeDir(QStringLiteral("Brook.sylvora"));
};

TEST_F(InfoOnPackages, SkippedEntriesBecomeWarningsAndTheLoadStillSucceeds) {
    ASSERT_TRUE(addSound(package, QStringLiteral("Loop Sounds"), QStringLiteral("a.wav"), shortTone(440)));
    ASSERT_TRUE(addSound(package, QStringLiteral("Environment Sounds"), QStringLiteral("e.wav"), shortTone(880)));
    temp.writeFile(QStringLiteral("Brook.sylvora/Loop Sounds/garbage.wav"), "not a sound at all");
    temp.writeFile(QStringLiteral("Brook.sylvora/data.plist"),
                   xmlPlist(QStringLiteral("<key>Name</key><string>Brook</string>"
                                           "<key>Picture File Name</key><string>gone.png</string>"
                                           "<key>Environment Sound Groups</key><array>") +
                            groupEntry(QStringLiteral("Frogs"), 5, 9) + QStringLiteral("<string>odd</string></array>"
                                           "<key>Loop Sounds</key><array>") +
                            loopEntry(QStringLiteral("a.wav"), 0.5) + loopEntry(QStringLiteral("missing.wav")) +
                            loopEntry(QStringLiteral("a.wav")) + loopEntry(QStringLiteral("../data.plist")) +
                            loopEntry(QStringLiteral("garbage.wav")) +
                            QStringLiteral("<dict><key>Volume</key><real>1</real></dict></array>"
                                           "<key>Environment Sounds</key><array>") +
                            environmentEntry(QStringLiteral("e.wav"), 0.2, 0.6, 7, 11, 3) + QStringLiteral("</array>")));

    const CliResult result = runCli({"info", package, "--json"});
    EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
    const QJsonObject world = parseJson(result);
    EXPECT_EQ(world["status"].toInt(-99), 0);
    EXPECT_EQ(world["author"], QJsonValue(QJsonValue::Null));
    EXPECT_EQ(world["description"], QJsonValue(QJsonValue::Null));
    EXPECT_EQ(world["picture"], QJsonValue(QJsonValue::Null));

    const QJsonArray loops = world["loop_sounds"].toArray();
    ASSERT_EQ(loops.size(), 1);
    EXPECT_EQ(loops[0]["file"].toString(), QStringLiteral("a.wav"));
    EXPECT_DOUBLE_EQ(loops[0]["volume"].toDouble(), 0.5);
    EXPECT_NEAR(loops[0]["duration"].toDouble(), 0.5, 0.001);

    const QJsonArray environment = world["environment_sounds"].toArray();
    ASSERT_EQ(environment.size(), 1);
    EXPECT_TRUE(environment[0]["group"].isNull());  // index 3 names no group
    EXPECT_EQ(environment[0]["min_interval"].toInt(), 7);
    EXPECT_DOUBLE_EQ(environment[0]["max_volume"].toDouble(), 0.6);

    QStringList warnings;
    for (const QJsonValue warning : world["warnings"].toArray()) warnings << warning.toString();
    for (const char* expected : {"group entry 2 skipped: not a dictionary", "picture 'gone.png' skipped",
                                 "loop sound 'missing.wav' skipped: no such file",
                                 "loop sound 'a.wav' skipped: the same file as an earlier entry",
                                 "loop sound '../data.plist' skipped: not a plain file name",
                                 "loop sound 'garbage.wav' skipped: the file could not be loaded",
                                 "loop sound entry 6 skipped: no \"File Name\"", "\"Group Index\" 3 names no group"}) {
        EXPECT_TRUE(std::any_of(warnings.begin(), warnings.end(), [&](const QString& w) { return w.contains(QLatin1String(expected)); }))
            << expected;
    }
    EXPECT_EQ(warnings.size(), 8) << warnings.join(u'\n').toStdString();
}

// An unreadable description: one line on stderr naming the file, status 1, and the object printed
// even so with the status and nothing loaded.
TEST_F(InfoOnPackages, AnUnreadableDescriptionFailsWithOneLineNamingTheFile) {
    temp.writeFile(QStringLiteral("Brook.sylvora/data.plist"), "<plist><dict><key>Name</key>");
    const CliResult result = runCli({"info", package, "--json"});
    EXPECT_EQ(result.exitCode, 1);
    const QJsonObject world = parseJson(result);
    EXPECT_EQ(world["status"].toInt(), -1);
    EXPECT_TRUE(world["name"].isNull());
    EXPECT_TRUE(world["loop_sounds"].toArray().isEmpty());
    const QStringList lines = nonEmptyLines(result.err);
    ASSERT_EQ(lines.size(), 1) << result.err.toStdString();
    EXPECT_TRUE(lines[0].contains(QStringLiteral("data.plist' is not a readable property list")));
}

TEST_F(InfoOnPackages, MissingSoundFolderFailsNamingTheFolderButKeepsWhatLoaded) {
    ASSERT_TRUE(addSound(package, QStringLiteral("Loop Sounds"), QStringLiteral("a.wav"), shortTone(440)));
    temp.writeFile(QStringLiteral("Brook.sylvora/data.plist"),
                   xmlPlist(QStringLiteral("<key>Name</key><string>Brook</string><key>Loop Sounds</key><array>") +
                            loopEntry(QStringLiteral("a.wav")) + QStringLiteral("</array><key>Environment Sounds</key><array>") +
                            environmentEntry(QStringLiteral("e.wav"), 1, 1, 20, 40) + QStringLiteral("</array>")));
    const CliResult result = runCli({"info", package, "--json"});
    EXPECT_EQ(result.exitCode, 1);
    const QJsonObject world = parseJson(result);
    EXPECT_EQ(world["status"].toInt(), -43);
    EXPECT_EQ(world["name"].toString(), QStringLiteral("Brook"));
    EXPECT_EQ(world["loop_sounds"].toArray().size(), 1);
    const QStringList lines = nonEmptyLines(result.err);
    ASSERT_EQ(lines.size(), 1);
    EXPECT_TRUE(lines[0].contains(QDir(package).filePath(QStringLiteral("Environment Sounds"))));
    EXPECT_TRUE(lines[0].contains(QStringLiteral("a folder it needs is missing (-43)")) ||
                lines[0].contains(QStringLiteral("a file it needs is missing (-43)")))
        << lines[0].toStdString();
    EXPECT_EQ(world["warnings"].toArray().size(), 1);
}

// Whatever the command, a world it cannot load is one line on the error stream naming what is
// wrong, and status 1; nothing is played or written.
TEST_F(InfoOnPackages, EveryCommandRefusesAWorldItCannotLoad) {
    QProcessEnvironment noDevice = QProcessEnvironment::systemEnvironment();
    noDevice.insert(QStringLiteral("SDL_AUDIODRIVER"), QStringLiteral("sylvora-no-such-driver"));
    const QString output = temp.filePath(QStringLiteral("out.flac"));
    const QString nowhere = temp.filePath(QStringLiteral("Nowhere.sylvora"));
    for (const QString& world : {package, nowhere}) {
        for (const QStringList& command : {QStringList{QStringLiteral("info"), world},
                                           QStringList{QStringLiteral("play"), world},
                                           QStringList{QStringLiteral("render"), world, QStringLiteral("-o"), output,
                                                       QStringLiteral("--duration"), QStringLiteral("2")}}) {
            SCOPED_TRACE(command.join(u' ').toStdString());
            const CliResult result = runCli(command, noDevice);
            EXPECT_EQ(result.exitCode, 1);
            const QStringList lines = nonEmptyLines(result.err);
            ASSERT_EQ(lines.size(), 1) << result.err.toStdString();
            EXPECT_TRUE(lines[0].contains(world == package ? QStringLiteral("data.plist' is missing")
                                                           : QStringLiteral("no world package at '") + nowhere + u'\''))
                << lines[0].toStdString();
            EXPECT_EQ(result.out.contains(QStringLiteral("Status:      -43 (failed)")), command[0] == u"info");
            EXPECT_FALSE(QFile::exists(output));
        }
    }
}
