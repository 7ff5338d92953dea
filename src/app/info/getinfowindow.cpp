#include "app/info/getinfowindow.h"

#include "app/shell/globals.h"
#include "app/shell/menus.h"
#include "core/strings/stringresources.h"

namespace sylvora::app {

GetInfoWindow::GetInfoWindow() : MyCarbonWindow(QStringLiteral("GetInfoWindow")) {
    if (window != nullptr) attachMenuBar(*window);
}

void GetInfoWindow::show() {
    updateDisplay();
    MyCarbonWindow::show();
}

void GetInfoWindow::hide() { MyCarbonWindow::hide(); }

void GetInfoWindow::updateDisplay() {
    if (window == nullptr) return;
    const QString name = gCurrentWorld->getName();
    window->setWindowTitle(name.isEmpty()
                               ? copyLocalizedString(GET_INFO_WINDOW_UNTITLED_TITLE_STRING_KEY, MISC_STRINGS_FILE)
                               : copyLocalizedString(GET_INFO_WINDOW_TITLE_FORMAT_STRING_KEY, MISC_STRINGS_FILE).arg(name));
}

}  // namespace sylvora::app
