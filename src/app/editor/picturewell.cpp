#include "app/editor/picturewell.h"

#include <QDragEnterEvent>
#include <QPainter>

#include "app/editor/editordrags.h"
#include "app/shell/appstrings.h"
#include "core/picture/pictureutils.h"
#include "core/strings/stringresources.h"

namespace sylvora::app {

PictureWell::PictureWell(QWidget* parent) : QFrame(parent) {
    setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
    setLineWidth(2);
    setAcceptDrops(true);
    setMinimumSize(120, 90);
}

void PictureWell::setPicture(const QImage& picture) {
    source_ = picture;
    rescale();
}

void PictureWell::rescale() {
    content_ = QImage();
    if (!source_.isNull()) {
        const int frame = frameWidth();
        content_ = createResizedCGImage(source_, width() - 2 * frame, height() - 2 * frame, true);
    }
    update();
}

void PictureWell::paintEvent(QPaintEvent* event) {
    QFrame::paintEvent(event);
    QPainter painter(this);
    if (!content_.isNull()) {
        const int frame = frameWidth();
        painter.drawImage(QPoint(frame, frame), content_);
    } else {
        // An empty well says what it is for; seen empty at a large size it read as a blank panel.
        painter.setPen(palette().color(QPalette::PlaceholderText));
        painter.drawText(contentsRect(), Qt::AlignCenter, copyLocalizedString(DROP_PICTURE_HERE_KEY, MISC_STRINGS_FILE));
    }
    if (highlight_ == 1) {
        const qreal inset = frameWidth() + 1.5;
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(palette().color(QPalette::Highlight), 3.0));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset));
    }
}

void PictureWell::resizeEvent(QResizeEvent* event) {
    QFrame::resizeEvent(event);
    rescale();
}

void PictureWell::dragEnterEvent(QDragEnterEvent* event) {
    if (!doesDragContainFiles(*event->mimeData())) {
        event->ignore();
        return;
    }
    highlight_ = 1;
    update();
    event->setDropAction(Qt::CopyAction);
    event->accept();
}

void PictureWell::dragMoveEvent(QDragMoveEvent* event) {
    if (highlight_ != 1) {
        event->ignore();
        return;
    }
    event->setDropAction(Qt::CopyAction);
    event->accept();
}

void PictureWell::dragLeaveEvent(QDragLeaveEvent* event) {
    highlight_ = 0;
    update();
    event->accept();
}

void PictureWell::dropEvent(QDropEvent* event) {
    highlight_ = 0;
    update();
    if (receiveDrop && receiveDrop(*event->mimeData())) {
        event->setDropAction(Qt::CopyAction);
        event->accept();
    } else {
        event->ignore();
    }
}

}  // namespace sylvora::app
