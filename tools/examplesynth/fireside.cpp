// "Fireside": an evening by the hearth. The beds are the fire itself (a lively crackle, or embers
// hissing low); a log settles, sap pops and knots crack, and the wind goes round the house outside.

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>
#include <cmath>
#include <numbers>

#include "bundledworlds.h"
#include "drift.h"
#include "filters.h"
#include "packagewriter.h"
#include "scatter.h"

namespace sylvora::synth {

namespace {

constexpr unsigned SEED = 5100;
constexpr double FOLD_SECONDS = 4.0;

// One crackle: a burst of a few milliseconds, bright, its level spread wide (most are small).
std::vector<double> makeCrackle(Random& random) {
    const double decay = random.uniform(0.0006, 0.003);
    const auto n = static_cast<std::size_t>(decay * 7.0 * SAMPLE_RATE);
    Biquad bright(Biquad::Kind::HighPass, random.uniform(900.0, 3000.0), 0.8, SAMPLE_RATE);
    std::vector<double> crackle(n);
    for (std::size_t i = 0; i < n; ++i) {
        crackle[i] = bright.process(random.bipolar()) * std::exp(-static_cast<double>(i) / SAMPLE_RATE / decay);
    }
    return crackle;
}

// Crackles come in little clusters, as a split in the wood opens.
std::vector<double> makeCrackleCluster(Random& random) {
    const int count = 1 + static_cast<int>(random.unit() * random.unit() * 9.0);
    std::vector<double> cluster(static_cast<std::size_t>(0.25 * SAMPLE_RATE), 0.0);
    for (int c = 0; c < count; ++c) {
        const auto at = static_cast<std::size_t>(random.uniform(0.0, 0.18) * SAMPLE_RATE);
        const std::vector<double> crackle = makeCrackle(random);
        const double gain = std::pow(random.unit(), 2.0);
        for (std::size_t i = 0; i < crackle.size() && at + i < cluster.size(); ++i) cluster[at + i] += gain * crackle[i];
    }
    return cluster;
}

// The fire: the soft roar of the flames, a hiss of steam from damp wood, and crackles.
StereoBuffer makeFire(double seconds, double liveliness, unsigned seed) {
    StereoBuffer fire(seconds + FOLD_SECONDS);
    for (int side = 0; side < 2; ++side) {
        std::vector<double>& out = side == 0 ? fire.left : fire.right;
        Random noise(seed * 19 + static_cast<unsigned>(side) + 2);
        PinkNoise pink;
        Biquad roar(Biquad::Kind::LowPass, 420.0, 0.7, SAMPLE_RATE);
        Biquad roarFloor(Biquad::Kind::HighPass, 50.0, 0.7, SAMPLE_RATE);
        Biquad hiss(Biquad::Kind::BandPass, 5200.0, 1.2, SAMPLE_RATE);
        Drift flicker(0.6, SAMPLE_RATE, seed + 3);  // the flames' flutter, the same on both sides
        Drift draw(6.0, SAMPLE_RATE, seed + 4);
        Drift steam(4.0, SAMPLE_RATE, seed + 5 + static_cast<unsigned>(side));
        for (double& sample : out) {
            const double f = flicker.next();
            const double d = draw.next();
            const double s = steam.next();
            const double flames = (0.6 + 0.25 * f + 0.3 * d) * roarFloor.process(roar.process(pink.process(noise.bipolar())));
            sample = 1.2 * flames + (0.05 + 0.35 * (1.0 - liveliness) * s * s) * hiss.process(noise.bipolar());
        }
    }
    Random random(seed);
    Drift activity(3.0, SAMPLE_RATE, seed + 6);
    std::vector<double> busy(static_cast<std::size_t>(fire.seconds() * 100.0) + 1);
    for (std::size_t i = 0; i < busy.size(); ++i) {
        for (int k = 0; k < SAMPLE_RATE / 100; ++k) busy[i] = activity.next();
    }
    scatter(fire, 4.0 + 10.0 * liveliness, 0.8, 0.05, 0.5, random, makeCrackleCluster,
            [&](double t) { return 0.3 + 0.7 * busy[static_cast<std::size_t>(t * 100.0)]; });
    fire.foldIntoLoop(FOLD_SECONDS);
    fire.normalize(-21.9, -3.5);
    return fire;
}

// A burst with a ring: the crack of a knot or the pop of a sap pocket, then a breath of steam.
std::vector<double> makePop(Random& random, double ringHz, double ringSeconds, double steamSeconds) {
    const auto n = static_cast<std::size_t>((steamSeconds + 0.1) * SAMPLE_RATE);
    Biquad ring(Biquad::Kind::BandPass, ringHz, 4.0, SAMPLE_RATE);
    Biquad steamBand(Biquad::Kind::HighPass, 3500.0, 0.7, SAMPLE_RATE);
    std::vector<double> pop(n);
    for (std::size_t i = 0; i < n; ++i) {
        const double t = static_cast<double>(i) / SAMPLE_RATE;
        const double white = random.bipolar();
        const double click = white * std::exp(-t / 0.0015);
        const double x = t / steamSeconds;
        const double steam = x < 1.0 ? 0.12 * std::sin(std::numbers::pi * x) * steamBand.process(random.bipolar()) : 0.0;
        pop[i] = click + 3.0 * ring.process(white) * std::exp(-t / ringSeconds) + steam;
    }
    return pop;
}

StereoBuffer makeSapPop(unsigned seed) {
    Random random(seed);
    StereoBuffer pop(1.6);
    pop.addMono(makePop(random, 900.0, 0.02, 1.1), static_cast<std::ptrdiff_t>(0.05 * SAMPLE_RATE), -0.2, 1.0);
    pop.addAmbience(0.25, seed + 1);
    pop.fadeOut(0.3);
    pop.normalize(-28.0, -9.0);
    return pop;
}

StereoBuffer makeKnotCracks(unsigned seed) {
    Random random(seed);
    StereoBuffer cracks(1.8);
    double t = 0.05;
    for (int i = 0; i < 3; ++i) {
        cracks.addMono(makePop(random, random.uniform(1400.0, 2200.0), 0.008, 0.15), static_cast<std::ptrdiff_t>(t * SAMPLE_RATE),
                       random.uniform(-0.3, 0.3), random.uniform(0.5, 1.0));
        t += random.uniform(0.12, 0.4);
    }
    cracks.addAmbience(0.25, seed + 1);
    cracks.fadeOut(0.3);
    cracks.normalize(-28.0, -9.0);
    return cracks;
}

// A log settling: a dull knock, embers sliding and a shower of crackles that dies away.
StereoBuffer makeLogShift(unsigned seed) {
    constexpr double SECONDS = 3.5;
    StereoBuffer shift(SECONDS);
    Random random(seed);
    for (int side = 0; side < 2; ++side) {
        std::vector<double>& out = side == 0 ? shift.left : shift.right;
        Random noise(seed * 13 + static_cast<unsigned>(side));
        BrownNoise brown;
        Biquad thud(Biquad::Kind::LowPass, 180.0, 0.9, SAMPLE_RATE);
        Biquad slide(Biquad::Kind::BandPass, 1400.0, 0.8, SAMPLE_RATE);
        for (std::size_t i = 0; i < out.size(); ++i) {
            const double t = static_cast<double>(i) / SAMPLE_RATE - 0.1;
            if (t < 0.0) continue;
            const double white = noise.bipolar();
            out[i] = 4.0 * thud.process(brown.process(white)) * std::exp(-t / 0.12) * std::min(1.0, t / 0.004) +
                     0.5 * slide.process(white) * std::exp(-t / 0.5) * std::min(1.0, t / 0.08);
        }
    }
    scatter(shift, 60.0, 0.5, 0.05, 0.5, random, makeCrackle, [](double t) { return t < 0.1 ? 0.0 : std::exp(-(t - 0.1) / 0.7); });
    shift.addAmbience(0.2, seed + 1);
    shift.fadeOut(0.8);
    shift.normalize(-24.0, -8.0);
    return shift;
}

// The wind outside, heard through the walls and down the chimney: dull, with a low moan.
StereoBuffer makeWindOutside(unsigned seed) {
    constexpr double SECONDS = 12.0;
    StereoBuffer wind(SECONDS);
    for (int side = 0; side < 2; ++side) {
        std::vector<double>& out = side == 0 ? wind.left : wind.right;
        Random noise(seed * 7 + static_cast<unsigned>(side));
        PinkNoise pink;
        Biquad moan(Biquad::Kind::BandPass, 220.0, 5.0, SAMPLE_RATE);
        Biquad wall(Biquad::Kind::LowPass, 500.0, 0.7, SAMPLE_RATE);
        Drift waver(1.5, SAMPLE_RATE, seed + 2);
        for (std::size_t i = 0; i < out.size(); ++i) {
            const double x = static_cast<double>(i) / static_cast<double>(out.size());
            const double e = std::pow(std::sin(std::numbers::pi * x), 1.5);
            const double w = waver.next();
            if (i % 32 == 0) moan.set(180.0 + 90.0 * e + 40.0 * w, 5.0);
            const double p = pink.process(noise.bipolar());
            out[i] = e * (0.6 + 0.4 * w) * (2.5 * moan.process(p) + 0.8 * wall.process(p));
        }
    }
    wind.normalize(-25.0, -12.0);
    return wind;
}

// A flame: a tongue of light drawn as a curved teardrop.
void drawFlame(QPainter& painter, QPointF base, double width, double height, double lean, const QColor& color) {
    QPainterPath flame;
    flame.moveTo(base.x() - width / 2, base.y());
    flame.cubicTo(base.x() - width * 0.6, base.y() - height * 0.5, base.x() + lean - width * 0.1, base.y() - height * 0.7,
                  base.x() + lean, base.y() - height);
    flame.cubicTo(base.x() + lean + width * 0.15, base.y() - height * 0.6, base.x() + width * 0.6, base.y() - height * 0.45,
                  base.x() + width / 2, base.y());
    flame.closeSubpath();
    painter.setBrush(color);
    painter.drawPath(flame);
}

QImage makeFiresidePicture(int width, int height, unsigned seed) {
    QImage image(width, height, QImage::Format_RGB32);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    Random random(seed);
    const QPointF hearth(width * 0.5, height * 0.86);
    // A dark room lit from the hearth.
    QRadialGradient room(hearth, width * 0.8);
    room.setColorAt(0.0, QColor(120, 56, 24));
    room.setColorAt(0.4, QColor(52, 26, 16));
    room.setColorAt(1.0, QColor(14, 9, 8));
    painter.fillRect(image.rect(), room);
    // The stone arch of the fireplace and its dark opening.
    for (int i = 0; i < 26; ++i) {
        const double angle = std::numbers::pi * (i + 0.5) / 26.0;
        const QPointF at(hearth.x() - std::cos(angle) * width * 0.3, hearth.y() - std::sin(angle) * height * 0.55);
        const int shade = static_cast<int>(random.uniform(60.0, 95.0));
        painter.setBrush(QColor(shade, shade * 3 / 4, shade / 2));
        painter.drawRoundedRect(QRectF(at.x() - 22, at.y() - 15, 44, 30), 6, 6);
    }
    QPainterPath opening;
    opening.moveTo(hearth.x() - width * 0.26, height);
    opening.lineTo(hearth.x() - width * 0.26, hearth.y());
    opening.arcTo(QRectF(hearth.x() - width * 0.26, hearth.y() - height * 0.48, width * 0.52, height * 0.96), 180, -180);
    opening.lineTo(hearth.x() + width * 0.26, height);
    painter.setBrush(QColor(20, 10, 6));
    painter.drawPath(opening);
    // Glow, flames from red to yellow, then the logs across them.
    QRadialGradient glow(QPointF(hearth.x(), hearth.y() - 20), width * 0.22);
    glow.setColorAt(0.0, QColor(255, 150, 40, 190));
    glow.setColorAt(1.0, QColor(255, 120, 30, 0));
    painter.setBrush(glow);
    painter.drawEllipse(QPointF(hearth.x(), hearth.y() - 20), width * 0.22, height * 0.3);
    const QColor layers[] = {QColor(200, 50, 20, 200), QColor(240, 120, 30, 210), QColor(255, 200, 80, 220), QColor(255, 240, 180, 230)};
    for (int layer = 0; layer < 4; ++layer) {
        for (int i = 0; i < 7 - layer; ++i) {
            const double x = hearth.x() + random.uniform(-90.0, 90.0) * (1.0 - 0.2 * layer);
            const double h = random.uniform(90.0, 180.0) * (1.0 - 0.2 * layer);
            drawFlame(painter, QPointF(x, hearth.y() + 5), random.uniform(30.0, 60.0) * (1.0 - 0.15 * layer), h,
                      random.uniform(-20.0, 20.0), layers[layer]);
        }
    }
    painter.setBrush(QColor(46, 26, 16));
    painter.save();
    painter.translate(hearth.x(), hearth.y() + 10);
    painter.rotate(-8);
    painter.drawRoundedRect(QRectF(-150, -14, 300, 28), 12, 12);
    painter.rotate(16);
    painter.drawRoundedRect(QRectF(-140, -6, 280, 26), 12, 12);
    painter.restore();
    // Embers glowing on the hearth and sparks rising.
    for (int i = 0; i < 60; ++i) {
        const bool spark = i % 3 == 0;
        const QPointF at(hearth.x() + random.uniform(-130.0, 130.0),
                         spark ? hearth.y() - random.uniform(60.0, 260.0) : hearth.y() + random.uniform(18.0, 36.0));
        painter.setBrush(QColor(255, static_cast<int>(random.uniform(120.0, 220.0)), 60, static_cast<int>(random.uniform(120.0, 255.0))));
        const double r = spark ? random.uniform(0.8, 1.8) : random.uniform(2.0, 5.0);
        painter.drawEllipse(at, r, r);
    }
    painter.end();
    return image;
}

}  // namespace

QString buildFireside(const QString& staging, const QString& packagePath) {
    QString error;
    WorldRecipe world;
    world.name = QStringLiteral("Fireside");
    world.author = QStringLiteral("The Sylvora example synthesizer");
    world.description = QStringLiteral(
        "An evening by the hearth. The fire crackles and hisses, a log settles now and then, sap "
        "pops in the heat and outside the wind goes round the house.");
    world.crossfade = 6;

    world.loops.push_back({writeSoundInto(staging, QStringLiteral("Crackling Fire.flac"), makeFire(46.0, 1.0, SEED + 1), error), 0.9});
    world.loops.push_back({writeSoundInto(staging, QStringLiteral("Embers and Hiss.flac"), makeFire(42.0, 0.3, SEED + 2), error), 0.9});

    world.groups.push_back({QStringLiteral("Pops"), 8, 25});
    world.environment.push_back(
        {writeSoundInto(staging, QStringLiteral("Sap Pop.flac"), makeSapPop(SEED + 3), error), 0.4, 0.8, 20, 40, 0});
    world.environment.push_back(
        {writeSoundInto(staging, QStringLiteral("Knot Cracks.flac"), makeKnotCracks(SEED + 4), error), 0.4, 0.8, 20, 40, 0});
    world.environment.push_back(
        {writeSoundInto(staging, QStringLiteral("Log Shifts.flac"), makeLogShift(SEED + 5), error), 0.45, 0.8, 45, 120, -1});
    world.environment.push_back(
        {writeSoundInto(staging, QStringLiteral("Wind Outside.flac"), makeWindOutside(SEED + 6), error), 0.45, 0.8, 40, 100, -1});

    world.picture = savePictureInto(staging, QStringLiteral("Fireside.png"), makeFiresidePicture(800, 500, SEED + 7), error);
    if (!error.isEmpty()) return error;
    return writeWorldPackage(world, packagePath);
}

}  // namespace sylvora::synth
