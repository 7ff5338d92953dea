#include "infofixture.h"

#include <QCoreApplication>
#include <QImage>

#include "app/shell/globals.h"
#include "core/files/alias.h"

namespace sylvora::test {

void InfoAppTest::setWorldPicture(QSize size, QColor color) {
    QImage image(size, QImage::Format_RGB32);
    image.fill(color);
    const QString path = dir.filePath(QStringLiteral("picture%1.png").arg(++pictures));
    ASSERT_TRUE(image.save(path));
    AliasHandle alias;
    ASSERT_EQ(FSNewAlias(refOf(path), alias), 0);
    app::gCurrentWorld->setPictureFileAlias(alias.get());
}

void InfoAppTest::settle() {
    for (int i = 0; i < 5; ++i) QCoreApplication::processEvents();
}

}  // namespace sylvora::test
