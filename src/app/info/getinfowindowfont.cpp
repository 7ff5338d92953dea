#include "app/info/getinfowindowfont.h"

#include <QApplication>

#include "app/info/infotext.h"

namespace sylvora::app {

void getGetInfoWindowFontRef(QRawFont* outFont, double* outPointSize) {
    const QFont font = QApplication::font();
    if (outFont != nullptr) *outFont = QRawFont::fromFont(font);
    if (outPointSize != nullptr) *outPointSize = font.pointSizeF();
}

FontRatios fontRatiosOf(const QRawFont& font) {
    if (!font.isValid() || font.unitsPerEm() <= 0) {
        return FontRatios{0.8, 0.2, 0.0};  // a typical face, so that a missing font still lays out
    }
    QRawFont unit(font);
    unit.setPixelSize(unit.unitsPerEm());
    const double em = unit.unitsPerEm();
    return FontRatios{unit.ascent() / em, unit.descent() / em, unit.leading() / em};
}

double InfoTextMetrics::descriptionBaseline(int line, int lineCount) const {
    // The block of lineCount lines, each lineHeight high with its descent and leading below the
    // baseline, has its middle on descriptionCentre.
    return descriptionCentre - lineCount * lineHeight * 0.5 + lineHeight -
           (ratios.leading + ratios.descent) * descriptionSize + line * lineHeight;
}

}  // namespace sylvora::app
