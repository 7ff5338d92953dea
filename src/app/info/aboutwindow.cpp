#include "app/info/aboutwindow.h"

namespace sylvora::app {

AboutWindow::AboutWindow() : MyCarbonWindow(QStringLiteral("AboutWindow")) {}

void AboutWindow::show() { MyCarbonWindow::show(); }

}  // namespace sylvora::app
