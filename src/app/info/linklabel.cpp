#include "app/info/linklabel.h"

#include <QKeyEvent>
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
    // A label never has the focus, so it takes the keys while pressed to hear Escape.
    grabKeyboard();
    track(rect().contains(event->position().toPoint()));
}

void LinkLabel::mouseMoveEvent(QMouseEvent* event) {
    if (!tracking) return;
    const bool nowInside = rect().contains(event->position().toPoint());
    if (nowInside != inside) track(nowInside);
}

void LinkLabel::mouseReleaseEvent(QMouseEvent* event) {
    if (!tracking || event->button() != Qt::LeftButton) return;
    const bool released = rect().contains(event->position().toPoint());
    endTracking();
    if (released) Q_EMIT hit();
}

void LinkLabel::keyPressEvent(QKeyEvent* event) {
    if (tracking && event->key() == Qt::Key_Escape) endTracking();
    else QLabel::keyPressEvent(event);
}

void LinkLabel::endTracking() {
    tracking = false;
    releaseKeyboard();
    inside = false;
    setLinkColor(AboutWindow::NORMAL_LINK_COLOR);
}

}  // namespace sylvora::app
