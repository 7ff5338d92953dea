#pragma once

// The window that presents the current world. Its picture fills the area below the menu bar, and
// the world's name, author and description are drawn over it in white with a soft shadow. The
// texts live on a transparent overlay above the picture, so that the round button can slide them
// up and out, and back, without the picture being redrawn for its own sake. The window keeps the
// picture's proportions when resized and zooms to the picture's own size. Below the picture, as the
// menu bar is above it, a strip plays and pauses the world and sets its volume and sleep timer; the
// window's sizes are the picture's plus the two.
//
// Lifecycle: constructed once at start-up -> show() / updateDisplay() / hide() any number of times
// -> destroyed at shut-down. The overlay exists only while the window is shown. Main thread only.

#include <QElapsedTimer>
#include <QImage>
#include <QPixmap>
#include <QRawFont>
#include <QRect>
#include <QRegion>
#include <QSize>
#include <QString>
#include <memory>
#include <vector>

#include "app/info/infotext.h"
#include "app/windows/mycarbonwindow.h"

class QAbstractButton;
class QEvent;
class QPainter;
class QPainterPath;
class QTimer;
class QTextLayout;

namespace sylvora::app {

class ControlStrip;
class InfoImageView;
class InfoOverlay;

class GetInfoWindow : public MyCarbonWindow {
public:
    static constexpr CommandID CONTROLS_SIGNATURE = fourCharCode("INFO");
    static constexpr int IMAGE_VIEW_ID = 1;
    static constexpr int TOGGLE_INFO_BUTTON_ID = 2;
    static constexpr int CONTROL_STRIP_ID = 3;
    static constexpr const char* INFO_BUTTON_ICON_FILENAME = ":/info/info.svg";
    static constexpr CommandID TOGGLE_INFO_BUTTON_ICON_TYPE = command::TOGGLE_INFO;
    static constexpr QSize DEFAULT_IDEAL_SIZE{500, 300};  // without a picture
    static constexpr QSize MINIMUM_SIZE{150, 150};
    static constexpr int SIZE_BOX_SIZE = 16;  // the corner kept clear of text for a size grip

    // Fractions of the view's height.
    static constexpr double NAME_FONT_SIZE_PERCENTAGE = 0.15;
    static constexpr double AUTHOR_FONT_SIZE_PERCENTAGE = 0.09;
    static constexpr double DESCRIPTION_FONT_SIZE_PERCENTAGE = 0.088;
    static constexpr double NAME_DISTANCE_FROM_TOP = 0.07;
    static constexpr double AUTHOR_DISTANCE_FROM_TOP = 0.25;
    static constexpr float SHADOW_OFFSET_PERCENTAGE[2] = {0.006f, -0.006f};  // right and down
    static constexpr double SHADOW_BLUR_PERCENTAGE = 0.008;
    static constexpr float SHADOW_COLOR[4] = {0.0f, 0.0f, 0.0f, 1.0f};
    static constexpr quint16 TEXT_COLOR[3] = {65535, 65535, 65535};
    static constexpr int MAX_DESCRIPTION_SOFT_BREAKS = 5;  // so at most six lines
    static constexpr int REFERENCE_PIXEL_SIZE = 100;       // texts are laid out at this size, then scaled

    static constexpr int SCROLL_TEXT_NUM_FRAMES = 30;
    static constexpr double SCROLL_TEXT_DURATION = 1.0 / 3.0;  // seconds

    GetInfoWindow();
    ~GetInfoWindow() override;

    void show() override;
    void hide() override;
    // [main] Re-reads the world's texts and picture and redraws; a new picture resizes the window to
    // the picture's size, new texts alone do not.
    void updateDisplay();
    // "TINF" starts or reverses the slide.
    OSStatus handleCommand(CommandID command) override;

    // The picture's pixel size, or 500 x 300 without one, scaled down to fit the screen's free area.
    QSize getIdealWindowSize() const;
    // The size the picture area takes when the person proposes `proposed`: the picture's
    // proportions kept by shrinking one direction, then no smaller than 150 x 150.
    static QSize constrain(QSize proposed, QSize ideal);
    void createOverlayWindow();

    // Drawing, called by the image view and the overlay with painters on them.
    void drawImageView(QPainter& painter, const QRect& rect);
    // `dirty`: the part of `rect` to paint again.
    void overlayRootViewEventHandler(QPainter& painter, const QRect& rect, const QRect& dirty);
    // The three texts with their shadow, in place, into a rectangle of a painter.
    void drawText(QPainter& painter, const QRect& rect);
    // The window's own events: its resizes and the maximize button.
    void windowEventHandler(QEvent& event);
    void imageViewResized();

    // Text layout.
    static InfoTextMetrics getTextMetrics(double height, const FontRatios& ratios);
    std::unique_ptr<InfoTextStyle> createATSUIStyle(double size) const;
    // A layout of the whole text, every line `lineWidth` wide and placed by `flush` (0 left,
    // 0.5 centred, 1 right); null without a style or text.
    static std::unique_ptr<QTextLayout> createATSUILayout(const InfoTextStyle* style, double lineWidth,
                                                          double flush, const QString& text);
    // Breaks `layout` into at most six lines of `lineWidth`; returns how many it made.
    static int breakDescriptionLines(QTextLayout& layout, double lineWidth);

    // The slide.
    void scrollTextTimer();
    bool isInfoShown() const { return infoShown; }
    double getScrollProgress() const { return scrollProgress; }
    int getScrollDirection() const { return scrollDirection; }
    bool isSliding() const { return scrollTextTimerRef != nullptr; }
    ControlStrip* getControlStrip() const { return controlStrip; }

private:
    void stopSlide();
    void removeScrollTextTimer();
    void armScrollTextTimer();
    int slideOffset() const;  // how far up the texts are, in pixels
    QSize chromeSize() const;  // what the window adds around the picture
    void resizeImageViewTo(QSize size);
    void applyBounds();
    void zoom();
    void discardTextCache();
    void renderTextImage(QSize size, qreal pixelRatio);
    std::vector<QRectF> paintTexts(QPainter& painter, double width, double height);
    QPainterPath overlayKeptClear(const QRect& rect) const;

    QRawFont fontRef;
    FontRatios fontRatios;
    InfoOverlay* overlayWindow = nullptr;  // a child of the image view while shown
    QImage picture;
    QString name;
    QString author;
    QString description;
    std::unique_ptr<InfoTextStyle> nameStyle;
    std::unique_ptr<InfoTextStyle> authorStyle;
    std::unique_ptr<InfoTextStyle> descriptionStyle;
    bool infoShown = true;
    QTimer* scrollTextTimerRef = nullptr;  // a child of the window while sliding
    double scrollProgress = 0.0;
    int scrollDirection = 0;

    InfoImageView* imageView = nullptr;
    QAbstractButton* toggleInfoButton = nullptr;
    ControlStrip* controlStrip = nullptr;
    QElapsedTimer slideClock;
    int slideTicks = 0;
    // Drawn once per size, text or font, so the 90-per-second slide only copies pixels.
    QPixmap scaledPicture;
    QImage textImage;  // the texts and their shadow, covering textBounds of the view
    QRect textBounds;
    QRegion textRegion;  // the parts of textBounds that the lines and their shadows cover
    QSize textImageSize;
    qreal textImageRatio = 1.0;
    bool textImageValid = false;
    // The size the person last chose, for the maximize button to return to.
    QSize userState;
    QSize normalSize;  // the picture area's size when last neither maximized nor full screen
    QSize requestedBounds;
    bool boundsPending = false;
    bool zoomPending = false;
};

}  // namespace sylvora::app
