#include "app/info/softshadow.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace sylvora::app {

namespace {

// One box pass along every row (step 1) or every column (step = width), outside counting as empty.
void boxBlur(std::vector<int>& alpha, int width, int height, int radius, bool alongRows, std::vector<int>& line) {
    const int length = alongRows ? width : height;
    const int lines = alongRows ? height : width;
    const int step = alongRows ? 1 : width;
    const int lineStep = alongRows ? width : 1;
    const int span = 2 * radius + 1;
    line.resize(static_cast<std::size_t>(length));
    for (int l = 0; l < lines; ++l) {
        int* at = alpha.data() + static_cast<std::ptrdiff_t>(l) * lineStep;
        for (int i = 0; i < length; ++i) line[static_cast<std::size_t>(i)] = at[i * step];
        int sum = 0;
        for (int i = 0; i <= radius && i < length; ++i) sum += line[static_cast<std::size_t>(i)];
        for (int i = 0; i < length; ++i) {
            at[i * step] = (sum + span / 2) / span;
            if (i + radius + 1 < length) sum += line[static_cast<std::size_t>(i + radius + 1)];
            if (i - radius >= 0) sum -= line[static_cast<std::size_t>(i - radius)];
        }
    }
}

// Three boxes of width d approximate a Gaussian of deviation s when d = s * 3 * sqrt(2 pi) / 4.
int boxRadius(double blurRadius) {
    const double deviation = blurRadius * 0.5;
    return static_cast<int>(std::floor(deviation * 3.0 * std::sqrt(2.0 * M_PI) / 4.0 + 0.5)) / 2;
}

// One pass of the kernel (w, 1 - 2w, w) along every row or column. Three passes of it have the
// variance 6w, so a blur too small for a whole box still spreads each edge, by a third of a pixel
// or less, instead of leaving the shadow hard.
void narrowBlur(std::vector<int>& alpha, int width, int height, double weight, bool alongRows, std::vector<int>& line) {
    const int length = alongRows ? width : height;
    const int lines = alongRows ? height : width;
    const int step = alongRows ? 1 : width;
    const int lineStep = alongRows ? width : 1;
    line.resize(static_cast<std::size_t>(length));
    for (int l = 0; l < lines; ++l) {
        int* at = alpha.data() + static_cast<std::ptrdiff_t>(l) * lineStep;
        for (int i = 0; i < length; ++i) line[static_cast<std::size_t>(i)] = at[i * step];
        for (int i = 0; i < length; ++i) {
            const int before = i > 0 ? line[static_cast<std::size_t>(i - 1)] : 0;
            const int after = i + 1 < length ? line[static_cast<std::size_t>(i + 1)] : 0;
            const double mixed = weight * (before + after) + (1.0 - 2.0 * weight) * line[static_cast<std::size_t>(i)];
            at[i * step] = static_cast<int>(std::lround(mixed));
        }
    }
}

double narrowWeight(double blurRadius) {
    const double deviation = blurRadius * 0.5;
    return std::min(deviation * deviation / 6.0, 1.0 / 3.0);
}

}  // namespace

int softShadowReach(double blurRadius) {
    if (boxRadius(blurRadius) == 0) return blurRadius > 0.0 ? 3 : 0;
    return 3 * boxRadius(blurRadius);
}

QImage makeSoftShadow(const QImage& source, double blurRadius, const QColor& color) {
    const QImage input = source.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    const int width = input.width();
    const int height = input.height();
    std::vector<int> alpha(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    for (int y = 0; y < height; ++y) {
        const auto* row = reinterpret_cast<const QRgb*>(input.constScanLine(y));
        for (int x = 0; x < width; ++x) alpha[static_cast<std::size_t>(y) * width + x] = qAlpha(row[x]);
    }
    const int radius = boxRadius(blurRadius);
    if (radius > 0) {
        std::vector<int> line;
        for (int pass = 0; pass < 3; ++pass) boxBlur(alpha, width, height, radius, true, line);
        for (int pass = 0; pass < 3; ++pass) boxBlur(alpha, width, height, radius, false, line);
    } else if (blurRadius > 0.0) {
        std::vector<int> line;
        const double weight = narrowWeight(blurRadius);
        for (int pass = 0; pass < 3; ++pass) narrowBlur(alpha, width, height, weight, true, line);
        for (int pass = 0; pass < 3; ++pass) narrowBlur(alpha, width, height, weight, false, line);
    }
    QImage shadow(width, height, QImage::Format_ARGB32_Premultiplied);
    const QRgb opaque = color.rgba();
    for (int y = 0; y < height; ++y) {
        auto* row = reinterpret_cast<QRgb*>(shadow.scanLine(y));
        for (int x = 0; x < width; ++x) {
            const int a = alpha[static_cast<std::size_t>(y) * width + x] * qAlpha(opaque) / 255;
            row[x] = qPremultiply(qRgba(qRed(opaque), qGreen(opaque), qBlue(opaque), a));
        }
    }
    shadow.setDevicePixelRatio(source.devicePixelRatio());
    return shadow;
}

}  // namespace sylvora::app
