#pragma once

// The started application with a way to give the current world a picture.

#include <QColor>
#include <QSize>

#include "app/support/appfixture.h"

namespace sylvora::test {

class InfoAppTest : public AppTest {
protected:
    // Writes a picture of one colour and makes it the world's picture.
    void setWorldPicture(QSize size, QColor color);
    static void settle();  // runs what the event loop has queued

    int pictures = 0;
};

}  // namespace sylvora::test
