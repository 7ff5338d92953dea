#pragma once

// The About window: the application's graphic, its version and two links.

#include "app/windows/mycarbonwindow.h"

namespace sylvora::app {

class AboutWindow : public MyCarbonWindow {
public:
    AboutWindow();
    void show() override;
};

}  // namespace sylvora::app
