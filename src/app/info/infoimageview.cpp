#include "app/info/infoimageview.h"

#include <QAbstractButton>
#include <QContextMenuEvent>
#include <QMenu>
#include <QPaintEvent>
#include <QPainter>

#include "app/info/getinfowindow.h"
#include "app/info/rectbyrect.h"
#include "app/shell/menus.h"

namespace sylvora::app {

InfoImageView::InfoImageView(QWidget* parent) : QWidget(parent) {
    // Every pixel is the picture's, so Qt need not clear the area first.
    setAttribute(Qt::WA_OpaquePaintEvent);
}

GetInfoWindow* InfoImageView::owner() const { return dynamic_cast<GetInfoWindow*>(MyCarbonWindow::fromWidget(this)); }

void InfoImageView::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    GetInfoWindow* window = owner();
    if (window == nullptr) {
        painter.fillRect(rect(), Qt::black);
        return;
    }
    paintRectByRect(painter, event->region(), [&](const QRect&) { window->drawImageView(painter, rect()); });
}

void InfoImageView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    placeButtons();
    if (GetInfoWindow* window = owner()) window->imageViewResized();
}

void InfoImageView::childEvent(QChildEvent* event) {
    QWidget::childEvent(event);
    if (event->added()) placeButtons();
}

void InfoImageView::placeButtons() {
    for (QAbstractButton* button : findChildren<QAbstractButton*>(Qt::FindDirectChildrenOnly)) {
        button->move(width() - BUTTON_MARGIN - button->width(), height() - BUTTON_MARGIN - button->height());
    }
}

void InfoImageView::contextMenuEvent(QContextMenuEvent* event) {
    if (QMenu* menu = getContextMenu()) menu->popup(event->globalPos());
}

bool InfoImageView::eventFilter(QObject* watched, QEvent* event) {
    if (watched == window()) {
        if (GetInfoWindow* info = owner()) info->windowEventHandler(*event);
    }
    return QWidget::eventFilter(watched, event);
}

}  // namespace sylvora::app
