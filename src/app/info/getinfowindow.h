#pragma once

// The window that presents the current world: its picture with its name, author and description.

#include "app/windows/mycarbonwindow.h"

namespace sylvora::app {

class GetInfoWindow : public MyCarbonWindow {
public:
    GetInfoWindow();

    void show() override;
    void hide() override;
    // [main] Shows the current world's title, picture and texts.
    void updateDisplay();
};

}  // namespace sylvora::app
