#pragma once

// The font of the Get Info window's texts: the person's application font, read again whenever the
// window is shown.

#include <QRawFont>

namespace sylvora::app {

// [main] The application font into `outFont`, and its point size into `outPointSize` when given.
void getGetInfoWindowFontRef(QRawFont* outFont, double* outPointSize);

}  // namespace sylvora::app
