// A plain folder of sounds dropped on a window: the offer, the world made beside the
// folder, and that world opened and playing. With no session bus at all, as on a bare machine.

#include <gtest/gtest.h>

#include <QApplication>
#include <QFileInfo>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>
#include <QUrl>

#include "app/info/getinfowindow.h"
#include "app/shell/globals.h"
#include "app/shell/startup.h"
#include "app/windows/packagedrops.h"
#include "support/worldfixture.h"

namespace sylvora::test {
namespace {

class FolderDropTest : public ::testing::Test, public WorldFixture {
protected:
    void SetUp() override {
        qputenv("XDG_CONFIG_HOME", settings.path().toUtf8());
        qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/sylvora-test-bus");
        app::startUp(app::StartUpOptions{.audioDevice = false, .tray = false});
    }
    void TearDown() override { app::shutDown(); }

    QTemporaryDir settings;
};

TEST_F(FolderDropTest, APlainFolderIsOfferedMadeIntoAWorldBesideItAndOpened) {
    writeSound(QStringLiteral("Sea Shore/waves.wav"), 21.0);
    writeSound(QStringLiteral("Sea Shore/gull.wav"), 1.0);
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(dir.filePath(QStringLiteral("Sea Shore")))});

    QString question;
    QTimer answer;
    QObject::connect(&answer, &QTimer::timeout, [&question] {
        if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
            question = box->text();
            box->button(QMessageBox::Yes)->click();
        }
    });
    answer.start(20);

    // What a window does with folders dropped on it.
    app::gGetInfoWindow->show();
    ASSERT_TRUE(app::folderDropHandler());
    app::folderDropHandler()(app::droppedFolders(data));
    for (int turn = 0; turn < 500 && app::gCurrentWorld->getName() != QLatin1String("Sea Shore"); ++turn) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    }

    EXPECT_TRUE(question.contains(QLatin1String("Sea Shore"))) << question.toStdString();
    EXPECT_TRUE(QFileInfo(dir.filePath(QStringLiteral("Sea Shore.sylvora"))).isDir());
    ASSERT_EQ(app::gCurrentWorld->getName(), QStringLiteral("Sea Shore"));
    EXPECT_EQ(app::gCurrentWorld->getNumLoopSounds(), 1);
    EXPECT_EQ(app::gCurrentWorld->getNumEnvironmentSounds(), 1);
    EXPECT_TRUE(app::gCurrentWorld->isPlaying());
}

}  // namespace
}  // namespace sylvora::test
