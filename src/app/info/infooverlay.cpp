#include "app/info/infooverlay.h"

#include <QPaintEvent>
#include <QPainter>

#include "app/info/getinfowindow.h"
#include "app/info/rectbyrect.h"

namespace sylvora::app {

InfoOverlay::InfoOverlay(GetInfoWindow& owner, QWidget& imageView) : QWidget(&imageView), owner_(owner) {
    setObjectName(QStringLiteral("infoOverlay"));
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_NoSystemBackground);
    setGeometry(imageView.rect());
}

void InfoOverlay::paintEvent(QPaintEvent* event) {
    QPainter painter(this);  // Qt clips it to the region to repaint
    paintRectByRect(painter, event->region(),
                    [&](const QRect& dirty) { owner_.overlayRootViewEventHandler(painter, rect(), dirty); });
}

}  // namespace sylvora::app
