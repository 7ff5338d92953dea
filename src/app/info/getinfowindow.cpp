#include "app/info/getinfowindow.h"

#include <QAbstractButton>
#include <QFile>
#include <QIcon>
#include <QPainter>
#include <QPainterPath>
#include <QTimer>

#include "app/info/controlstrip.h"
#include "app/info/getinfowindowfont.h"
#include "app/info/infoimageview.h"
#include "app/info/infooverlay.h"
#include "app/resources/appresources.h"
#include "app/shell/globals.h"
#include "app/shell/menus.h"
#include "core/picture/pictureutils.h"
#include "core/strings/stringresources.h"

namespace sylvora::app {

namespace {
// Shown where a world has no picture, dark so that the white texts stay readable.
const QColor EMPTY_PICTURE_COLOR(0x26, 0x2a, 0x2e);
}  // namespace

GetInfoWindow::GetInfoWindow() : MyCarbonWindow(QStringLiteral("GetInfoWindow")) {
    initApplicationResources();
    getGetInfoWindowFontRef(&fontRef, nullptr);
    fontRatios = fontRatiosOf(fontRef);
    if (window == nullptr) return;
    attachMenuBar(*window);
    imageView = qobject_cast<InfoImageView*>(myGetControlByID(CONTROLS_SIGNATURE, IMAGE_VIEW_ID));
    toggleInfoButton = qobject_cast<QAbstractButton*>(myGetControlByID(CONTROLS_SIGNATURE, TOGGLE_INFO_BUTTON_ID));
    controlStrip = qobject_cast<ControlStrip*>(myGetControlByID(CONTROLS_SIGNATURE, CONTROL_STRIP_ID));
    if (toggleInfoButton != nullptr) {
        if (QFile::exists(QString::fromLatin1(INFO_BUTTON_ICON_FILENAME))) {
            toggleInfoButton->setIcon(QIcon(QString::fromLatin1(INFO_BUTTON_ICON_FILENAME)));
            toggleInfoButton->setText(QString());
        }
        // Round for the mouse too: a click just outside the disc belongs to the picture.
        toggleInfoButton->setMask(QRegion(toggleInfoButton->rect(), QRegion::Ellipse));
        QObject::connect(toggleInfoButton, &QAbstractButton::clicked, toggleInfoButton,
                         [this] { handleCommand(command::TOGGLE_INFO); });
    }
    if (imageView != nullptr) {
        imageView->setMinimumSize(MINIMUM_SIZE);
        window->installEventFilter(imageView);
        resizeImageViewTo(getIdealWindowSize());
    }
}

GetInfoWindow::~GetInfoWindow() {
    stopSlide();
    if (window != nullptr && imageView != nullptr) window->removeEventFilter(imageView);
    delete overlayWindow;
    overlayWindow = nullptr;
}

void GetInfoWindow::show() {
    // The person may have changed the application font since the last time.
    getGetInfoWindowFontRef(&fontRef, nullptr);
    fontRatios = fontRatiosOf(fontRef);
    discardTextCache();
    stopSlide();
    updateDisplay();
    if (overlayWindow == nullptr) createOverlayWindow();
    MyCarbonWindow::show();
}

void GetInfoWindow::hide() {
    stopSlide();
    delete overlayWindow;
    overlayWindow = nullptr;
    MyCarbonWindow::hide();
}

void GetInfoWindow::createOverlayWindow() {
    if (overlayWindow != nullptr || imageView == nullptr) return;
    overlayWindow = new InfoOverlay(*this, *imageView);
    overlayWindow->show();
    if (toggleInfoButton != nullptr) toggleInfoButton->raise();
}

void GetInfoWindow::updateDisplay() {
    const QString newName = gCurrentWorld->getName();
    const QString newAuthor = gCurrentWorld->getAuthor();
    const QString newDescription = gCurrentWorld->getDescription();
    if (newName != name || newAuthor != author || newDescription != description) {
        name = newName;
        author = newAuthor;
        description = newDescription;
        discardTextCache();
    }
    const QImage current = gCurrentWorld->getPicture();
    if (current.cacheKey() != picture.cacheKey()) {
        picture = current;
        scaledPicture = QPixmap();
        const QSize ideal = getIdealWindowSize();
        resizeImageViewTo(ideal);
        userState = ideal;  // so that the maximize button comes back to the picture's size
    }
    if (imageView != nullptr) imageView->update();
    if (overlayWindow != nullptr) overlayWindow->update();
    if (window == nullptr) return;
    // "[*]" is where the desktop marks unsaved changes (setWindowModified).
    window->setWindowTitle(
        (name.isEmpty() ? copyLocalizedString(GET_INFO_WINDOW_UNTITLED_TITLE_STRING_KEY, MISC_STRINGS_FILE)
                        : copyLocalizedString(GET_INFO_WINDOW_TITLE_FORMAT_STRING_KEY, MISC_STRINGS_FILE).arg(name)) +
        QStringLiteral("[*]"));
}

void GetInfoWindow::drawImageView(QPainter& painter, const QRect& rect) {
    if (picture.isNull()) {
        painter.fillRect(rect, EMPTY_PICTURE_COLOR);
    } else {
        const qreal ratio = painter.device()->devicePixelRatioF();
        const QSize pixels = (QSizeF(rect.size()) * ratio).toSize();
        if (scaledPicture.size() != pixels) {
            // Opaque, in the screen's own format, so every later paint is a plain copy.
            QImage opaque(pixels, QImage::Format_RGB32);
            opaque.fill(EMPTY_PICTURE_COLOR);
            QPainter onto(&opaque);
            // The window keeps the picture's proportions, give or take a pixel of rounding, except
            // at its minimum size: there the picture keeps them inside bands of the background.
            const QSize fitted = picture.size().scaled(pixels, Qt::KeepAspectRatio);
            const bool letterbox = pixels.width() - fitted.width() > 1 || pixels.height() - fitted.height() > 1;
            onto.drawImage(0, 0, createResizedCGImage(picture, pixels.width(), pixels.height(), letterbox));
            onto.end();
            scaledPicture = QPixmap::fromImage(std::move(opaque));
            scaledPicture.setDevicePixelRatio(ratio);
        }
        painter.drawPixmap(rect.topLeft(), scaledPicture);
    }
    if (infoShown && overlayWindow == nullptr) drawText(painter, rect);
}

void GetInfoWindow::overlayRootViewEventHandler(QPainter& painter, const QRect& rect, const QRect& dirty) {
    if (!infoShown) return;
    // A clip path makes every blend go span by span, and most slide steps never come near the
    // button, so the texts are clipped only where they would cover it.
    const QPainterPath keptClear = overlayKeptClear(rect);
    if (dirty.intersects(keptClear.boundingRect().toAlignedRect())) {
        QPainterPath clip;
        clip.addRect(rect);
        painter.setClipPath(clip.subtracted(keptClear), Qt::IntersectClip);
    }
    drawText(painter, rect.translated(0, -slideOffset()));
}

QPainterPath GetInfoWindow::overlayKeptClear(const QRect& rect) const {
    QPainterPath keptClear;
    keptClear.addRect(rect.right() + 1 - SIZE_BOX_SIZE, rect.bottom() + 1 - SIZE_BOX_SIZE, SIZE_BOX_SIZE, SIZE_BOX_SIZE);
    // A round hole over the button, so that the texts never cover it as they slide past.
    if (toggleInfoButton != nullptr && toggleInfoButton->isVisible()) {
        keptClear.addEllipse(QRectF(toggleInfoButton->geometry()).adjusted(1.5, 1.5, -1.5, -1.5));
    }
    return keptClear;
}

}  // namespace sylvora::app
