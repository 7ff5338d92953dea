#include "infofixture.h"

#include <QCoreApplication>
#include <QImage>

#include "app/info/aboutwindow.h"
#include "app/info/getinfowindow.h"
#include "app/shell/globals.h"
#include "app/shell/startup.h"
#include "core/files/alias.h"

namespace sylvora::test {

std::unique_ptr<TempDir> InfoAppTest::folder;

void InfoAppTest::SetUpTestSuite() {
    folder = std::make_unique<TempDir>();
    qputenv("XDG_CONFIG_HOME", folder->makeDir(QStringLiteral("config")).toUtf8());
    app::startUp({.audioDevice = false, .tray = false});
}

void InfoAppTest::TearDownTestSuite() {
    app::shutDown();
    folder.reset();
}

void InfoAppTest::SetUp() { app::gCurrentWorld->resetToInitialState(); }

void InfoAppTest::TearDown() {
    app::gGetInfoWindow->hide();
    app::gAboutWindow->hide();
    app::gCurrentWorld->resetToInitialState();
    settle();
}

void InfoAppTest::setWorldPicture(QSize size, QColor color) {
    QImage image(size, QImage::Format_RGB32);
    image.fill(color);
    const QString path = folder->filePath(QStringLiteral("picture%1.png").arg(++pictures));
    ASSERT_TRUE(image.save(path));
    AliasHandle alias;
    ASSERT_EQ(FSNewAlias(refOf(path), alias), 0);
    app::gCurrentWorld->setPictureFileAlias(alias.get());
}

void InfoAppTest::settle() {
    for (int i = 0; i < 5; ++i) QCoreApplication::processEvents();
}

}  // namespace sylvora::test
