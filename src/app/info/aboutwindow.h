#pragma once

// The About window: the application's title graphic, its name and version, and two links, one that
// starts a mail message and one that opens the project's web page.
//
// Lifecycle: constructed once at start-up -> show() any number of times (the graphic is put in
// the first time) -> destroyed at shut-down. Main thread only.

#include <QRgb>

#include "app/windows/mycarbonwindow.h"

namespace sylvora::app {

class AboutWindow : public MyCarbonWindow {
public:
    static constexpr CommandID CONTROLS_SIGNATURE = fourCharCode("ABOU");
    static constexpr int TITLE_GRAPHIC_ID = 1;
    static constexpr int INFO_STRING_ID = 2;
    static constexpr int EMAIL_LINK_ID = 4;
    static constexpr int WEB_LINK_ID = 5;
    static constexpr const char* TITLE_GRAPHIC_IMAGE_FILENAME = "AboutWindowGraphic.svg";
    static constexpr const char* EMAIL_URL_PREFIX = "mailto:";
    static constexpr QRgb NORMAL_LINK_COLOR = 0xff0000ffu;   // blue
    static constexpr QRgb CLICKED_LINK_COLOR = 0xffff0000u;  // red

    AboutWindow();
    void show() override;

    // The application's name and version, the window's second line.
    static QString getInfoString();
    // A link was pressed and released on: the e-mail link starts a message to its address, the web
    // link opens its text as it stands.
    void linkHit(const QWidget& link);

private:
    bool graphicLoaded = false;
};

}  // namespace sylvora::app
