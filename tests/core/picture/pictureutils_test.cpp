#include <gtest/gtest.h>

#include <QColor>
#include <QImageWriter>
#include <QPainter>
#include <utility>

#include "core/picture/pictureutils.h"
#include "support/tempdir.h"

namespace sylvora {
namespace {

using test::refOf;
using test::TempDir;

// Left half red, right half blue, fully opaque.
QImage halves(int width, int height) {
    QImage image(width, height, QImage::Format_ARGB32);
    image.fill(Qt::blue);
    QPainter painter(&image);
    painter.fillRect(0, 0, width / 2, height, Qt::red);
    return image;
}

int alphaAt(const QImage& image, int x, int y) {
    return qAlpha(image.pixel(x, y));
}

bool isPremultipliedRgba(const QImage& image) {
    return image.format() == QImage::Format_ARGB32_Premultiplied ||
           image.format() == QImage::Format_RGBA8888_Premultiplied;
}

// A picture of other proportions is scaled to fit and centred between transparent bands: 400×200
// into 100×100 is drawn 50 rows high from y = 25, 200×400 is drawn 50 columns wide from x = 25.
TEST(ResizePicture, OtherProportionsAreCentredBetweenTransparentBands) {
    for (const bool wide : {true, false}) {
        SCOPED_TRACE(wide ? "wider" : "taller");
        const QImage resized = createResizedCGImage(wide ? halves(400, 200) : halves(200, 400), 100, 100, true);
        ASSERT_FALSE(resized.isNull());
        EXPECT_EQ(resized.size(), QSize(100, 100));
        EXPECT_TRUE(isPremultipliedRgba(resized));
        // Across the bands: pixel (across, along) where `along` runs parallel to them.
        const auto alpha = [&](int across, int along) {
            return wide ? alphaAt(resized, along, across) : alphaAt(resized, across, along);
        };
        for (int along : {0, 49, 50, 99}) {
            for (const auto& [across, expected] : {std::pair{0, 0}, {24, 0}, {25, 255}, {74, 255}, {75, 0}, {99, 0}}) {
                EXPECT_EQ(alpha(across, along), expected) << across << " across, " << along << " along";
            }
        }
        EXPECT_EQ(QColor(resized.pixel(wide ? 10 : 30, 50)), QColor(Qt::red));
        EXPECT_EQ(QColor(resized.pixel(wide ? 90 : 70, 50)), QColor(Qt::blue));
    }
}

TEST(ResizePicture, SameProportionsAndStretchingFillTheWholeTarget) {
    const QImage same = createResizedCGImage(halves(300, 150), 60, 30, true);
    const QImage stretched = createResizedCGImage(halves(400, 200), 100, 100, false);
    ASSERT_FALSE(same.isNull());
    ASSERT_FALSE(stretched.isNull());
    EXPECT_EQ(same.size(), QSize(60, 30));
    EXPECT_EQ(stretched.size(), QSize(100, 100));
    for (const QImage* image : {&same, &stretched})
        for (int y = 0; y < image->height(); ++y)
            for (int x = 0; x < image->width(); ++x)
                ASSERT_EQ(alphaAt(*image, x, y), 255) << x << "," << y;
    EXPECT_EQ(QColor(stretched.pixel(5, 0)), QColor(Qt::red));
    EXPECT_EQ(QColor(stretched.pixel(95, 99)), QColor(Qt::blue));
}

TEST(ResizePicture, TransparentSourceStaysTransparent) {
    QImage clear(40, 40, QImage::Format_ARGB32);
    clear.fill(Qt::transparent);
    const QImage resized = createResizedCGImage(clear, 10, 10, false);
    ASSERT_FALSE(resized.isNull());
    EXPECT_EQ(alphaAt(resized, 5, 5), 0);
}

TEST(ResizePicture, NoImageOrNoSizeGivesNull) {
    const QImage image = halves(10, 10);
    EXPECT_TRUE(createResizedCGImage(QImage(), 10, 10, true).isNull());
    EXPECT_TRUE(createResizedCGImage(image, 0, 10, true).isNull());
    EXPECT_TRUE(createResizedCGImage(image, 10, 0, false).isNull());
    EXPECT_TRUE(createResizedCGImage(image, -1, 10, false).isNull());
    EXPECT_TRUE(createResizedCGImage(image, 10, -1, true).isNull());
    EXPECT_FALSE(createResizedCGImage(image, 1, 1, true).isNull());
}

class LoadPicture : public ::testing::Test {
  protected:
    QString save(const QImage& image, const QString& name, const char* format) {
        const QString path = dir_.filePath(name);
        EXPECT_TRUE(image.save(path, format)) << name.toStdString();
        return path;
    }
    TempDir dir_;
};

TEST_F(LoadPicture, CommonFormatsLoadAsPremultipliedRgba) {
    const QImage source = halves(64, 32);
    for (const auto& [name, format] : {std::pair{"picture.png", "PNG"}, std::pair{"picture.jpg", "JPEG"},
                                       std::pair{"picture.xpm", "XPM"}, std::pair{"picture.bmp", "BMP"}}) {
        const QImage loaded = makeCGImageFromImageFileRef(refOf(save(source, name, format)));
        ASSERT_FALSE(loaded.isNull()) << name;
        EXPECT_EQ(loaded.size(), QSize(64, 32)) << name;
        EXPECT_TRUE(isPremultipliedRgba(loaded)) << name;
        const QColor left(loaded.pixel(8, 16));
        const QColor right(loaded.pixel(56, 16));
        EXPECT_GT(left.red(), 230) << name;
        EXPECT_LT(left.blue(), 25) << name;
        EXPECT_GT(right.blue(), 230) << name;
        EXPECT_LT(right.red(), 25) << name;
    }
}

TEST_F(LoadPicture, PluginFormatsLoadWhenInstalled) {
    const QList<QByteArray> formats = QImageWriter::supportedImageFormats();
    int tried = 0;
    for (const char* format : {"tiff", "webp"}) {
        if (!formats.contains(format))
            continue;
        ++tried;
        const QImage loaded =
            makeCGImageFromImageFileRef(refOf(save(halves(20, 10), QStringLiteral("p.") + format, format)));
        EXPECT_EQ(loaded.size(), QSize(20, 10)) << format;
    }
    if (tried == 0)
        GTEST_SKIP() << "no TIFF or WebP plugin installed";
}

TEST_F(LoadPicture, FormatIsChosenByContentNotName) {
    const QString misnamed = save(halves(30, 20), "really-a-png.jpg", "PNG");
    const QImage loaded = makeCGImageFromImageFileRef(refOf(misnamed));
    ASSERT_FALSE(loaded.isNull());
    EXPECT_EQ(QColor(loaded.pixel(2, 2)), QColor(Qt::red));

    const QString text = dir_.writeFile("not-a-picture.png", "This is a text file, not an image.\n");
    EXPECT_TRUE(makeCGImageFromImageFileRef(refOf(text)).isNull());
    const QString empty = dir_.writeFile("empty.jpg", QByteArray());
    EXPECT_TRUE(makeCGImageFromImageFileRef(refOf(empty)).isNull());
    EXPECT_TRUE(makeCGImageFromImageFileRef(FSRef{dir_.filePath("missing.png")}).isNull());
}

TEST_F(LoadPicture, ThroughAnAliasAfterARename) {
    const QString path = save(halves(16, 16), "world.png", "PNG");
    AliasHandle alias;
    ASSERT_EQ(FSNewAlias(refOf(path), alias), noErr);
    ASSERT_EQ(FSRenameUnicode(refOf(path), "renamed.png", nullptr), noErr);
    EXPECT_EQ(makeCGImageFromImageFileAlias(alias.get()).size(), QSize(16, 16));
    EXPECT_TRUE(makeCGImageFromImageFileAlias(nullptr).isNull());
}

TEST(PictureResource, FoundByNameAmongTheApplicationsImages) {
    const QImage image = makeCGImageFromImageResource(QStringLiteral("testpattern.xpm"));
    ASSERT_FALSE(image.isNull());
    EXPECT_EQ(image.size(), QSize(8, 4));
    EXPECT_EQ(QColor(image.pixel(0, 0)), QColor(Qt::red));
    EXPECT_EQ(QColor(image.pixel(7, 3)), QColor(Qt::blue));
    EXPECT_TRUE(makeCGImageFromImageResource(QStringLiteral("AboutWindowGraphic-missing.jpg")).isNull());
    EXPECT_TRUE(makeCGImageFromImageResource(QString()).isNull());
}

}  // namespace
}  // namespace sylvora
