#include <gtest/gtest.h>

#include <QColor>
#include <QPainter>
#include <QRect>

#include "core/picture/pictureutils.h"
#include "support/tempdir.h"

namespace sylvora {
namespace {

using test::refOf;

// Left half red, right half blue, fully opaque.
QImage halves(int width, int height) {
    QImage image(width, height, QImage::Format_ARGB32);
    image.fill(Qt::blue);
    QPainter painter(&image);
    painter.fillRect(0, 0, width / 2, height, Qt::red);
    return image;
}

bool isPremultipliedRgba(const QImage& image) {
    return image.format() == QImage::Format_ARGB32_Premultiplied ||
           image.format() == QImage::Format_RGBA8888_Premultiplied;
}

// Other proportions are scaled to fit and centred between transparent bands; the same proportions,
// or stretching, cover the whole target.
TEST(ResizePicture, CoversExactlyTheFittedRectangle) {
    struct Case {
        QSize source;
        QSize target;
        bool keepAspectRatio;
        QRect opaque;
    };
    for (const Case& c : {Case{{400, 200}, {100, 100}, true, {0, 25, 100, 50}},
                          Case{{200, 400}, {100, 100}, true, {25, 0, 50, 100}},
                          Case{{300, 150}, {60, 30}, true, {0, 0, 60, 30}},
                          Case{{400, 200}, {100, 100}, false, {0, 0, 100, 100}}}) {
        SCOPED_TRACE(testing::Message() << c.source.width() << "x" << c.source.height() << " keep " << c.keepAspectRatio);
        const QImage resized = createResizedCGImage(halves(c.source.width(), c.source.height()), c.target.width(),
                                                    c.target.height(), c.keepAspectRatio);
        ASSERT_EQ(resized.size(), c.target);
        EXPECT_TRUE(isPremultipliedRgba(resized));
        for (int y = 0; y < c.target.height(); ++y)
            for (int x = 0; x < c.target.width(); ++x)
                ASSERT_EQ(qAlpha(resized.pixel(x, y)), c.opaque.contains(x, y) ? 255 : 0) << x << "," << y;
        const QPoint middle = c.opaque.center();
        EXPECT_EQ(QColor(resized.pixel(c.opaque.left() + 2, middle.y())), QColor(Qt::red));
        EXPECT_EQ(QColor(resized.pixel(c.opaque.right() - 2, middle.y())), QColor(Qt::blue));
    }
}

TEST(ResizePicture, NoImageOrNoSizeGivesNull) {
    const QImage image = halves(10, 10);
    EXPECT_TRUE(createResizedCGImage(QImage(), 10, 10, true).isNull());
    for (const auto& [width, height] : {std::pair{0, 10}, {10, 0}, {-1, 10}, {10, -1}})
        EXPECT_TRUE(createResizedCGImage(image, width, height, width > 0).isNull()) << width << "x" << height;
    EXPECT_FALSE(createResizedCGImage(image, 1, 1, true).isNull());
}

// The format is the content's, whatever the name says; what is not a picture gives no image.
TEST(LoadPicture, ByContentThroughAReferenceOrAnAlias) {
    test::TempDir dir;
    const QString misnamed = dir.filePath(QStringLiteral("really-a-png.jpg"));
    ASSERT_TRUE(halves(30, 20).save(misnamed, "PNG"));
    const QImage loaded = makeCGImageFromImageFileRef(refOf(misnamed));
    EXPECT_EQ(loaded.size(), QSize(30, 20));
    EXPECT_TRUE(isPremultipliedRgba(loaded));
    EXPECT_EQ(QColor(loaded.pixel(2, 2)), QColor(Qt::red));

    EXPECT_TRUE(makeCGImageFromImageFileRef(refOf(dir.writeFile("text.png", "not an image\n"))).isNull());
    EXPECT_TRUE(makeCGImageFromImageFileRef(refOf(dir.writeFile("empty.jpg", QByteArray()))).isNull());
    EXPECT_TRUE(makeCGImageFromImageFileRef(FSRef{dir.filePath("missing.png")}).isNull());

    AliasHandle alias;
    ASSERT_EQ(FSNewAlias(refOf(misnamed), alias), noErr);
    ASSERT_EQ(FSRenameUnicode(refOf(misnamed), "renamed.png", nullptr), noErr);
    EXPECT_EQ(makeCGImageFromImageFileAlias(alias.get()).size(), QSize(30, 20));
    EXPECT_TRUE(makeCGImageFromImageFileAlias(nullptr).isNull());
}

TEST(PictureResource, FoundByNameAmongTheApplicationsImages) {
    const QImage image = makeCGImageFromImageResource(QStringLiteral("testpattern.xpm"));
    ASSERT_EQ(image.size(), QSize(8, 4));
    EXPECT_EQ(QColor(image.pixel(0, 0)), QColor(Qt::red));
    EXPECT_EQ(QColor(image.pixel(7, 3)), QColor(Qt::blue));
    EXPECT_TRUE(makeCGImageFromImageResource(QStringLiteral("AboutWindowGraphic-missing.jpg")).isNull());
    EXPECT_TRUE(makeCGImageFromImageResource(QString()).isNull());
}

}  // namespace
}  // namespace sylvora
