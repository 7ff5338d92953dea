#pragma once

// The pieces the Get Info window lays its texts out with: a font's proportions, a text style at a
// size, and where the three texts go in a view of a given height. Every size and position is a
// fraction of the height, so the texts scale with the window.

#include <QColor>
#include <QFont>
#include <QRawFont>

namespace sylvora::app {

// Ascent, descent and leading of a font per unit of its size. The descent is positive (below the
// baseline), so a line of size s is s * (ascent + descent + leading) high.
struct FontRatios {
    double ascent = 0.0;
    double descent = 0.0;
    double leading = 0.0;
};

// Read at the font's units per em, where hinting cannot bend the design metrics.
FontRatios fontRatiosOf(const QRawFont& font);

// A text's look at one size. Qt lays text out at whole pixel sizes, so the font is set at a fixed
// reference size and `scale` brings it to the wanted size when drawing; wrapping and positions then
// vary continuously with the window instead of jumping from one pixel size to the next.
struct InfoTextStyle {
    QFont font;
    double scale = 1.0;
    QColor color;
};

// Where the texts go in a view `height` pixels high; y is measured down from the top edge.
struct InfoTextMetrics {
    double nameSize = 0.0;
    double authorSize = 0.0;
    double descriptionSize = 0.0;
    double lineHeight = 0.0;      // of the description
    double nameBaseline = 0.0;
    double authorBaseline = 0.0;
    double descriptionCentre = 0.0;
    FontRatios ratios;

    // Baseline of description line `line` (0-based) of `lineCount`, the block centred on
    // descriptionCentre.
    double descriptionBaseline(int line, int lineCount) const;
};

}  // namespace sylvora::app
