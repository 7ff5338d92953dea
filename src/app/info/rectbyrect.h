#pragma once

// Qt's raster painter copies and blends an image at full speed only under a rectangular clip; under
// a region of several rectangles it goes span by span, which costs more than the region saves. A
// region is therefore painted one rectangle at a time, each under its own rectangular clip.

#include <QPainter>
#include <QRegion>

namespace sylvora::app {

template <typename Paint>
void paintRectByRect(QPainter& painter, const QRegion& region, Paint&& paint) {
    if (region.rectCount() <= 1) {
        paint(region.boundingRect());
        return;
    }
    for (const QRect& rect : region) {
        painter.save();
        painter.setClipRect(rect);
        paint(rect);
        painter.restore();
    }
}

}  // namespace sylvora::app
