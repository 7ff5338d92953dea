#pragma once

// The window in which a person builds or changes the current world while it plays.

#include "app/windows/mycarbonwindow.h"

namespace sylvora::app {

class WorldEditorWindow : public MyCarbonWindow {
public:
    WorldEditorWindow();

    // [main] Fills every control from the current world and shows the window.
    void startEditing();
    void show() override;
    void hide() override;
};

}  // namespace sylvora::app
