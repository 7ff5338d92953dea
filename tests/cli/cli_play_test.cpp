// `sylvora-cli play` without a sound device: it says so once, plays into the silent output, and
// leaves cleanly at the end of the duration or on Ctrl+C. (Worlds it cannot load: cli_info_test.)

#include <gtest/gtest.h>

#include <QProcess>
#include <QRegularExpression>
#include <csignal>

#include "clirunner.h"

using namespace sylvora::test;

namespace {

// SDL is given a driver that does not exist, which is what a machine without sound looks like.
QProcessEnvironment withoutDevice() {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("SDL_AUDIODRIVER"), QStringLiteral("sylvora-no-such-driver"));
    return environment;
}

}  // namespace

TEST(PlayCommand, WithoutADeviceSaysSoOnceAndPlaysForTheDuration) {
    const CliResult result = runCli({"play", SYLVORA_EXAMPLE_WORLD, "--duration", "2.5", "--volume", "0.5"}, withoutDevice());
    ASSERT_FALSE(result.crashed);
    EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
    const QStringList errors = nonEmptyLines(result.err);
    ASSERT_EQ(errors.size(), 1) << result.err.toStdString();
    EXPECT_TRUE(errors[0].contains(QStringLiteral("no sound device")));
    // Not a terminal: plain lines, each naming the world and the wait for a server, and no
    // carriage returns.
    EXPECT_FALSE(result.out.contains(u'\r'));
    EXPECT_TRUE(result.out.contains(QStringLiteral("Evening Forest | No sound server — waiting | loop: ")));
    // It follows the world while it plays, not only at the start and the end (when nothing plays).
    EXPECT_TRUE(result.out.contains(QRegularExpression(QStringLiteral("loop: [^-]")))) << result.out.toStdString();
    EXPECT_TRUE(result.out.contains(QStringLiteral("Played 'Evening Forest' for ")));
}

TEST(PlayCommand, InterruptFadesOutAndExitsCleanly) {
    QProcess player;
    player.setProcessEnvironment(withoutDevice());
    player.start(QStringLiteral(SYLVORA_CLI_PATH), {QStringLiteral("play"), QStringLiteral(SYLVORA_EXAMPLE_WORLD)});
    ASSERT_TRUE(player.waitForStarted(-1));
    // The first status line means the world is loaded and playing.
    while (!player.canReadLine() && player.state() == QProcess::Running) player.waitForReadyRead(-1);
    ASSERT_EQ(player.state(), QProcess::Running) << player.readAllStandardError().toStdString();
    ::kill(static_cast<pid_t>(player.processId()), SIGINT);
    ASSERT_TRUE(player.waitForFinished(-1));
    EXPECT_EQ(player.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(player.exitCode(), 0);
    EXPECT_TRUE(player.readAllStandardOutput().contains("Played 'Evening Forest' for "));
}
