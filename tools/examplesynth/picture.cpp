#include "picture.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>
#include <cmath>

#include "noise.h"

namespace sylvora::synth {

namespace {

// A pine: a trunk and stacked, drooping tiers that narrow towards the tip.
void drawPine(QPainter& painter, double x, double baseY, double height, Random& random) {
    const double width = height * random.uniform(0.34, 0.44);
    QPainterPath tree;
    tree.setFillRule(Qt::WindingFill);
    const int tiers = 4 + static_cast<int>(random.unit() * 3.0);
    for (int tier = 0; tier < tiers; ++tier) {
        const double top = baseY - height + height * 0.72 * tier / tiers;
        const double bottom = top + height * 0.34;
        const double half = width * 0.5 * (0.3 + 0.7 * (tier + 1) / tiers);
        tree.moveTo(x, top);
        tree.quadTo(x - half * 0.35, bottom - (bottom - top) * 0.35, x - half, bottom);
        tree.quadTo(x, bottom - height * 0.04, x + half, bottom);
        tree.quadTo(x + half * 0.35, bottom - (bottom - top) * 0.35, x, top);
        tree.closeSubpath();
    }
    tree.addRect(QRectF(x - width * 0.05, baseY - height * 0.2, width * 0.1, height * 0.2));
    painter.drawPath(tree);
}

void drawTreeRow(QPainter& painter, int width, double baseY, double minHeight, double maxHeight,
                 double spacing, const QColor& color, Random& random) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    // The ground under the row, so no sky shows between the trunks.
    painter.drawRect(QRectF(0, baseY - 2.0, width, painter.device()->height() - baseY + 2.0));
    for (double x = -spacing * random.unit(); x < width + spacing; x += spacing * random.uniform(0.55, 1.25)) {
        drawPine(painter, x, baseY + random.uniform(-3.0, 3.0), random.uniform(minHeight, maxHeight), random);
    }
}

}  // namespace

QImage makeEveningForestPicture(int width, int height, unsigned seed) {
    QImage image(width, height, QImage::Format_RGB32);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    Random random(seed);

    QLinearGradient sky(0, 0, 0, height * 0.75);
    sky.setColorAt(0.0, QColor(18, 22, 58));
    sky.setColorAt(0.45, QColor(62, 52, 110));
    sky.setColorAt(0.75, QColor(178, 96, 110));
    sky.setColorAt(1.0, QColor(242, 160, 92));
    painter.fillRect(image.rect(), sky);

    // Stars only where the sky is dark enough to show them.
    for (int i = 0; i < 90; ++i) {
        const double y = height * 0.4 * random.unit() * random.unit();
        const double x = width * random.unit();
        const int alpha = static_cast<int>(random.uniform(70.0, 230.0) * (1.0 - y / (height * 0.4)));
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(255, 250, 235, alpha));
        const double r = random.uniform(0.5, 1.4);
        painter.drawEllipse(QPointF(x, y), r, r);
    }

    // A low moon with a soft halo.
    const QPointF moon(width * 0.74, height * 0.3);
    QRadialGradient halo(moon, height * 0.18);
    halo.setColorAt(0.0, QColor(255, 236, 200, 120));
    halo.setColorAt(1.0, QColor(255, 236, 200, 0));
    painter.setBrush(halo);
    painter.drawEllipse(moon, height * 0.18, height * 0.18);
    painter.setBrush(QColor(250, 238, 212));
    painter.drawEllipse(moon, height * 0.045, height * 0.045);

    // Far hills, then three rows of pines, each nearer one darker and taller.
    QPainterPath hills;
    hills.moveTo(0, height);
    for (int x = 0; x <= width; x += 8) {
        const double y = height * 0.62 - 18.0 * std::sin(x * 0.007 + 1.1) - 9.0 * std::sin(x * 0.019);
        hills.lineTo(x, y);
    }
    hills.lineTo(width, height);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(92, 70, 112));
    painter.drawPath(hills);

    drawTreeRow(painter, width, height * 0.70, height * 0.10, height * 0.18, 14.0, QColor(62, 48, 86), random);
    drawTreeRow(painter, width, height * 0.80, height * 0.18, height * 0.30, 26.0, QColor(36, 30, 58), random);
    drawTreeRow(painter, width, height * 0.95, height * 0.35, height * 0.62, 60.0, QColor(14, 12, 26), random);
    painter.end();
    return image;
}

}  // namespace sylvora::synth
