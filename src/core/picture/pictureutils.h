#pragma once

// Loading pictures of any format Qt's image readers understand (chosen by content, not by name),
// and making resized copies for fixed-size displays. A null QImage stands for "no image".

#include <QImage>
#include <QString>

#include "core/files/alias.h"

namespace sylvora {

QImage makeCGImageFromImageFileAlias(const Alias* alias);
QImage makeCGImageFromImageFileRef(const FSRef& ref);
// `fileName` names an image among the application's resources (":/images/<fileName>"). A drawing
// is drawn `pixelRatio` times its size, with that device pixel ratio, for a sharp picture on a
// screen that scales.
QImage makeCGImageFromImageResource(const QString& fileName, qreal pixelRatio = 1.0);

// Exactly width x height pixels, premultiplied RGBA, transparent where the image does not cover;
// null for a null image or a size below 1.
QImage createResizedCGImage(const QImage& image, int width, int height, bool keepAspectRatio);

}  // namespace sylvora
