#include "app/info/linklabel.h"

#include <QMouseEvent>

#include "app/info/aboutwindow.h"

namespace sylvora::app {

LinkLabel::LinkLabel(QWidget* parent) : QLabel(parent) {
    // Plain text: the address is shown as it is, never turned into rich text or a Qt link.
    setTextFormat(Qt::PlainText);
    setCursor(Qt::PointingHandCursor);
    setLinkColor(AboutWindow::NORMAL_LINK_COLOR);
}

void LinkLabel::setLinkColor(QRgb color) {
    QFont underlined = font();
    underlined.setUnderline(true);
    setFont(underlined);
    setAlignment(Qt::AlignCenter);
    QPalette colors = palette();
    colors.setColor(QPalette::WindowText, QColor::fromRgb(color));
    setPalette(colors);
}

QRgb LinkLabel::linkColor() const { return palette().color(QPalette::WindowText).rgb(); }

void LinkLabel::track(bool nowInside) {
    inside = nowInside;
    setLinkColor(inside ? AboutWindow::CLICKED_LINK_COLOR : AboutWindow::NORMAL_LINK_COLOR);
}

void LinkLabel::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) {
        QLabel::mousePressEvent(event);
        return;
    }
    tracking = true;
    track(rect().contains(event->position().toPoint()));
}

void LinkLabel::mouseMoveEvent(QMouseEvent* event) {
    if (!tracking) return;
    const bool nowInside = rect().contains(event->position().toPoint());
    if (nowInside != inside) track(nowInside);
}

void LinkLabel::mouseReleaseEvent(QMouseEvent* event) {
    if (!tracking || event->button() != Qt::LeftButton) return;
    tracking = false;
    const bool released = rect().contains(event->position().toPoint());
    inside = false;
    setLinkColor(AboutWindow::NORMAL_LINK_COLOR);
    if (released) Q_EMIT hit();
}

}  // namespace sylvora::app
