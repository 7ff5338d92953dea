#include "app/editor/worldeditorwindow.h"

#include "app/shell/globals.h"
#include "app/shell/menus.h"

namespace sylvora::app {

WorldEditorWindow::WorldEditorWindow() : MyCarbonWindow(QStringLiteral("WorldEditorWindow")) {
    if (window != nullptr) attachMenuBar(*window);
}

void WorldEditorWindow::startEditing() { show(); }

void WorldEditorWindow::show() {
    if (!gCurrentWorld->isPlaying()) gCurrentWorld->start();
    MyCarbonWindow::show();
}

void WorldEditorWindow::hide() { MyCarbonWindow::hide(); }

}  // namespace sylvora::app
