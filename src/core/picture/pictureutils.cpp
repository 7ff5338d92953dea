#include "core/picture/pictureutils.h"

#include <QFile>
#include <QImageReader>
#include <QPainter>

namespace sylvora {

namespace {

constexpr QImage::Format kPictureFormat = QImage::Format_ARGB32_Premultiplied;

QImage readImage(const QString& path, qreal pixelRatio = 1.0) {
    QImageReader reader(path);
    // The decoder is picked from the bytes, as the original's importers did: a JPEG named .png loads.
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(true);
    // A drawing (SVG) is drawn at the screen's pixels rather than enlarged, which would blur it.
    const bool scalable = pixelRatio != 1.0 && reader.supportsOption(QImageIOHandler::ScaledSize);
    if (scalable && reader.size().isValid())
        reader.setScaledSize(reader.size() * pixelRatio);
    QImage image = reader.read();
    if (image.isNull())
        return QImage();
    if (scalable)
        image.setDevicePixelRatio(pixelRatio);
    return image.convertToFormat(kPictureFormat);
}

}  // namespace

QImage makeCGImageFromImageFileAlias(const Alias* alias) {
    if (!alias)
        return QImage();
    FSRef ref;
    if (FSResolveAlias(*alias, ref) != noErr)
        return QImage();
    return readImage(ref.path);
}

QImage makeCGImageFromImageFileRef(const FSRef& ref) {
    AliasHandle alias;
    if (FSNewAlias(ref, alias) != noErr)
        return QImage();
    return makeCGImageFromImageFileAlias(alias.get());
}

QImage makeCGImageFromImageResource(const QString& fileName, qreal pixelRatio) {
    if (fileName.isEmpty())
        return QImage();
    const QString path = QStringLiteral(":/images/") + fileName;
    if (!QFile::exists(path))
        return QImage();
    return readImage(path, pixelRatio);
}

QImage createResizedCGImage(const QImage& image, int width, int height, bool keepAspectRatio) {
    if (image.isNull() || width < 1 || height < 1)
        return QImage();
    QImage resized(width, height, QImage::Format_RGBA8888_Premultiplied);
    if (resized.isNull())
        return QImage();  // more pixels than can be allocated
    resized.fill(Qt::transparent);

    // Single precision, as the drawing rectangle has always been computed. The original measured y
    // from the bottom edge; centring makes the band above equal the band below, so the same value
    // serves measured from the top.
    const auto targetWidth = static_cast<float>(width);
    const auto targetHeight = static_cast<float>(height);
    float x = 0.0f;
    float y = 0.0f;
    float drawnWidth = targetWidth;
    float drawnHeight = targetHeight;
    if (keepAspectRatio) {
        const double imageAspect = static_cast<double>(image.width()) / static_cast<double>(image.height());
        const double targetAspect = static_cast<double>(width) / static_cast<double>(height);
        if (imageAspect > targetAspect) {
            drawnHeight = static_cast<float>(targetWidth / imageAspect);
            y = (targetHeight - drawnHeight) * 0.5f;
        } else {
            drawnWidth = static_cast<float>(imageAspect * targetHeight);
            x = (targetWidth - drawnWidth) * 0.5f;
        }
    }

    QPainter painter(&resized);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, true);
    painter.drawImage(QRectF(x, y, drawnWidth, drawnHeight), image);
    painter.end();
    return resized;
}

}  // namespace sylvora
