// The Get Info window's size: the picture's own size when a picture arrives, the picture's
// proportions whatever size the person drags it to, and the maximize button as a toggle between
// the picture's size and the person's.

#include <QEvent>
#include <QLayout>
#include <QScreen>
#include <QTimer>

#include "app/info/controlstrip.h"
#include "app/info/getinfowindow.h"
#include "app/info/infoimageview.h"
#include "app/info/infooverlay.h"

namespace sylvora::app {

QSize GetInfoWindow::getIdealWindowSize() const {
    QSize ideal = picture.isNull() ? DEFAULT_IDEAL_SIZE : picture.size();
    if (window == nullptr || imageView == nullptr || window->screen() == nullptr) return ideal;
    const QSize chrome = (window->frameGeometry().size() - window->geometry().size()) + chromeSize();
    const QSize room = window->screen()->availableGeometry().size() - chrome;
    if (room.isValid() && (ideal.width() > room.width() || ideal.height() > room.height())) {
        ideal = ideal.scaled(room, Qt::KeepAspectRatio);
    }
    return ideal.expandedTo(MINIMUM_SIZE);
}

QSize GetInfoWindow::constrain(QSize proposed, QSize ideal) {
    QSize result = proposed;
    if (!ideal.isEmpty() && !proposed.isEmpty()) {
        const double aspect = static_cast<double>(ideal.width()) / ideal.height();
        const double width = proposed.width();
        const double height = proposed.height();
        if (aspect > width / height) result.setHeight(static_cast<int>(width / aspect));
        else result.setWidth(static_cast<int>(aspect * height));
    }
    return result.expandedTo(MINIMUM_SIZE);
}

QSize GetInfoWindow::chromeSize() const {
    if (window->isVisible()) {
        if (QLayout* layout = window->layout()) layout->activate();
        return window->size() - imageView->size();
    }
    // A hidden window has not laid out its children: only the menu bar above the picture and the
    // control strip below it add to its height.
    int height = 0;
    for (const QWidget* bar : {static_cast<const QWidget*>(window->menuWidget()), static_cast<const QWidget*>(controlStrip)}) {
        if (bar != nullptr && !bar->isHidden()) height += bar->sizeHint().height();
    }
    return QSize(0, height);
}

void GetInfoWindow::resizeImageViewTo(QSize size) {
    if (window == nullptr || imageView == nullptr) return;
    window->resize(size + chromeSize());
}

void GetInfoWindow::windowEventHandler(QEvent& event) {
    if (event.type() != QEvent::WindowStateChange || window == nullptr) return;
    if (!window->isMaximized() || zoomPending) return;
    // The maximize button is the zoom box here: back to a normal window, then toggle.
    zoomPending = true;
    QTimer::singleShot(0, window, [this] {
        zoomPending = false;
        window->showNormal();
        zoom();
    });
}

void GetInfoWindow::zoom() {
    if (imageView == nullptr) return;
    const QSize ideal = getIdealWindowSize();
    // The size before the maximize request, not the maximized one it may still have now.
    const QSize current = normalSize.isValid() ? normalSize : imageView->size();
    if (current == ideal) {
        if (userState.isValid() && userState != ideal) resizeImageViewTo(userState);
        return;
    }
    userState = current;
    resizeImageViewTo(ideal);
}

void GetInfoWindow::imageViewResized() {
    // The text sizes follow the height and the line breaks the width.
    discardTextCache();
    if (overlayWindow != nullptr) overlayWindow->setGeometry(imageView->rect());
    if (!(window->windowState() & (Qt::WindowMaximized | Qt::WindowFullScreen))) normalSize = imageView->size();
    // Qt tells of a resize only once it is made, so the proportions are put back right after it.
    if (boundsPending || window == nullptr) return;
    boundsPending = true;
    QTimer::singleShot(0, window, [this] { applyBounds(); });
}

void GetInfoWindow::applyBounds() {
    boundsPending = false;
    if (imageView == nullptr || (window->windowState() & (Qt::WindowMaximized | Qt::WindowFullScreen))) return;
    const QSize proposed = imageView->size();
    const QSize target = constrain(proposed, picture.isNull() ? DEFAULT_IDEAL_SIZE : picture.size());
    if (target == proposed) {
        requestedBounds = QSize();
        return;
    }
    // Asked already and not given: the window manager holds the size, and fighting it would loop.
    if (target == requestedBounds) return;
    requestedBounds = target;
    resizeImageViewTo(target);
}

}  // namespace sylvora::app
