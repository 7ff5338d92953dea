// "Rain on a Roof": a night indoors under tiles. The beds are rain drumming on the roof (one steady,
// one driven in gusts); a gutter drips into a water butt, a gust throws rain at the window and
// thunder grumbles far off.

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>
#include <algorithm>
#include <cmath>
#include <numbers>

#include "bundledworlds.h"
#include "drift.h"
#include "environmentsounds.h"
#include "filters.h"
#include "packagewriter.h"
#include "scatter.h"

namespace sylvora::synth {

namespace {

constexpr unsigned SEED = 3100;
constexpr double FOLD_SECONDS = 4.0;
constexpr double TWO_PI = 2.0 * std::numbers::pi;

// A drop striking a tile: a click through the tile's ring, gone within milliseconds.
std::vector<double> makeTileTick(Random& random) {
    const double decay = random.uniform(0.0015, 0.006);
    const auto n = static_cast<std::size_t>(decay * 6.0 * SAMPLE_RATE);
    Biquad tile(Biquad::Kind::BandPass, random.uniform(1200.0, 4800.0), random.uniform(1.5, 5.0), SAMPLE_RATE);
    std::vector<double> tick(n);
    for (std::size_t i = 0; i < n; ++i) {
        tick[i] = tile.process(random.bipolar()) * std::exp(-static_cast<double>(i) / SAMPLE_RATE / decay);
    }
    return tick;
}

// A drop falling into standing water: a splash and the bubble it traps, whose pitch rises.
std::vector<double> makePlink(Random& random) {
    const double frequency = random.uniform(700.0, 1700.0);
    const double decay = random.uniform(0.03, 0.07);
    const auto n = static_cast<std::size_t>(decay * 6.0 * SAMPLE_RATE);
    Biquad splash(Biquad::Kind::HighPass, 2500.0, 0.7, SAMPLE_RATE);
    std::vector<double> plink(n);
    double phase = 0.0;
    for (std::size_t i = 0; i < n; ++i) {
        const double t = static_cast<double>(i) / SAMPLE_RATE;
        phase += TWO_PI * frequency * (1.0 + 2.5 * t) / SAMPLE_RATE;
        plink[i] = std::min(1.0, t / 0.002) * std::exp(-t / decay) * std::sin(phase) +
                   0.5 * splash.process(random.bipolar()) * std::exp(-t / 0.006);
    }
    return plink;
}

// Rain on the roof above: a low drumming, a hiss and a crowd of tile ticks, all moving with one
// intensity. `gustiness` 0 keeps it steady; towards 1 the wind drives it in waves and is heard.
StereoBuffer makeRoofRain(double seconds, double gustiness, unsigned seed) {
    StereoBuffer rain(seconds + FOLD_SECONDS);
    for (int side = 0; side < 2; ++side) {
        std::vector<double>& out = side == 0 ? rain.left : rain.right;
        Random noise(seed * 29 + static_cast<unsigned>(side) + 1);
        PinkNoise pink;
        Biquad drum(Biquad::Kind::LowPass, 380.0, 0.7, SAMPLE_RATE);
        Biquad drumFloor(Biquad::Kind::HighPass, 60.0, 0.7, SAMPLE_RATE);
        Biquad hissLow(Biquad::Kind::HighPass, 1600.0, 0.7, SAMPLE_RATE);
        Biquad hissHigh(Biquad::Kind::LowPass, 8000.0, 0.7, SAMPLE_RATE);
        Biquad wind(Biquad::Kind::BandPass, 420.0, 1.3, SAMPLE_RATE);
        Drift gust(8.0, SAMPLE_RATE, seed + 5);
        for (double& sample : out) {
            const double white = noise.bipolar();
            const double g = gust.next();
            const double howl = gustiness * 1.2 * g * g * wind.process(pink.process(white));
            sample = 1.1 * drumFloor.process(drum.process(pink.process(noise.bipolar()))) +
                     0.3 * hissHigh.process(hissLow.process(white)) + howl;
        }
    }
    Random random(seed);
    scatter(rain, 420.0, 0.95, 0.01, 0.07, random, makeTileTick);
    scatter(rain, 25.0, 0.7, 0.04, 0.14, random, makeTileTick);  // the drops nearest the attic window
    // One intensity moves everything together; gusts push it up and let it fall back.
    Drift swell(5.0, SAMPLE_RATE, seed + 3);
    Drift gust(8.0, SAMPLE_RATE, seed + 5);
    for (std::size_t i = 0; i < rain.frames(); ++i) {
        const double g = gust.next();
        const double level = 0.8 + 0.2 * swell.next() + gustiness * (1.3 * g * g * g - 0.35);
        rain.left[i] *= level;
        rain.right[i] *= level;
    }
    rain.foldIntoLoop(FOLD_SECONDS);
    rain.normalize(-21.6, -5.0);
    return rain;
}

// The gutter overflowing into a water butt: drips in an uneven rhythm that quickens and slows.
StereoBuffer makeGutterDrips(double seconds, double meanGap, unsigned seed) {
    StereoBuffer drips(seconds);
    Random random(seed);
    double t = 0.2;
    while (t < seconds - 0.5) {
        drips.addMono(makePlink(random), static_cast<std::ptrdiff_t>(t * SAMPLE_RATE), random.uniform(-0.2, 0.2),
                      random.uniform(0.5, 1.0));
        t += meanGap * random.uniform(0.5, 1.6);
    }
    drips.addAmbience(0.3, seed + 1);
    drips.fadeIn(0.1);
    drips.fadeOut(0.6);
    drips.normalize(-26.0, -12.0);
    return drips;
}

// A gust against the window: the wind swells and throws a spatter of rain at the glass.
StereoBuffer makeWindowGust(unsigned seed) {
    constexpr double SECONDS = 7.0;
    StereoBuffer gust(SECONDS);
    const auto envelope = [](double t) {
        const double x = t / SECONDS;
        return std::pow(std::sin(std::numbers::pi * std::pow(x, 0.7)), 2.0);
    };
    for (int side = 0; side < 2; ++side) {
        std::vector<double>& out = side == 0 ? gust.left : gust.right;
        Random noise(seed * 3 + static_cast<unsigned>(side));
        PinkNoise pink;
        Biquad howl(Biquad::Kind::BandPass, 300.0, 1.5, SAMPLE_RATE);
        for (std::size_t i = 0; i < out.size(); ++i) {
            const double t = static_cast<double>(i) / SAMPLE_RATE;
            const double e = envelope(t);
            if (i % 32 == 0) howl.set(280.0 + 380.0 * e, 1.5);
            out[i] = e * 1.6 * howl.process(pink.process(noise.bipolar()));
        }
    }
    Random random(seed);
    scatter(gust, 900.0, 0.9, 0.02, 0.12, random, makeTileTick, [&](double t) { return std::pow(envelope(t), 3.0); });
    gust.fadeOut(0.5);
    gust.normalize(-22.0, -10.0);
    return gust;
}

QImage makeRoofPicture(int width, int height, unsigned seed) {
    QImage image(width, height, QImage::Format_RGB32);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    Random random(seed);
    QLinearGradient sky(0, 0, 0, height);
    sky.setColorAt(0.0, QColor(34, 40, 52));
    sky.setColorAt(0.6, QColor(70, 80, 94));
    sky.setColorAt(1.0, QColor(52, 58, 66));
    painter.fillRect(image.rect(), sky);

    // Rooftops across the street, a wet roof with its gutter in front and a lit attic window.
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(40, 44, 54));
    for (double x = -40; x < width; x += random.uniform(120.0, 200.0)) {
        const double w = random.uniform(110.0, 190.0);
        const double y = height * random.uniform(0.52, 0.62);
        QPainterPath house;
        house.moveTo(x, height);
        house.lineTo(x, y);
        house.lineTo(x + w / 2, y - w * 0.32);
        house.lineTo(x + w, y);
        house.lineTo(x + w, height);
        painter.drawPath(house);
    }
    QPainterPath roof;
    roof.moveTo(0, height * 0.78);
    roof.lineTo(width * 0.55, height * 0.58);
    roof.lineTo(width, height * 0.74);
    roof.lineTo(width, height);
    roof.lineTo(0, height);
    painter.setBrush(QColor(24, 22, 26));
    painter.drawPath(roof);
    // Tile rows catching the light.
    painter.setPen(QPen(QColor(70, 72, 82), 1.2));
    for (int row = 1; row < 9; ++row) {
        const double dy = row * height * 0.05;
        painter.drawLine(QPointF(0, height * 0.78 + dy), QPointF(width * 0.55, height * 0.58 + dy));
        painter.drawLine(QPointF(width * 0.55, height * 0.58 + dy), QPointF(width, height * 0.74 + dy));
    }
    const QRectF window(width * 0.66, height * 0.71, width * 0.1, height * 0.14);
    QRadialGradient glow(window.center(), width * 0.16);
    glow.setColorAt(0.0, QColor(255, 196, 120, 150));
    glow.setColorAt(1.0, QColor(255, 196, 120, 0));
    painter.setPen(Qt::NoPen);
    painter.setBrush(glow);
    painter.drawEllipse(window.center(), width * 0.16, width * 0.16);
    painter.setBrush(QColor(250, 190, 110));
    painter.drawRect(window);
    painter.setPen(QPen(QColor(30, 24, 20), 3));
    painter.drawLine(QPointF(window.center().x(), window.top()), QPointF(window.center().x(), window.bottom()));
    painter.drawLine(QPointF(window.left(), window.center().y()), QPointF(window.right(), window.center().y()));

    // Rain over everything, slanting a little with the wind.
    for (int i = 0; i < 900; ++i) {
        const double x = random.uniform(-40.0, width);
        const double y = random.uniform(-20.0, height);
        const double length = random.uniform(12.0, 30.0);
        painter.setPen(QPen(QColor(200, 210, 230, static_cast<int>(random.uniform(25.0, 90.0))), random.uniform(0.6, 1.4)));
        painter.drawLine(QPointF(x, y), QPointF(x + length * 0.18, y + length));
    }
    painter.end();
    return image;
}

}  // namespace

QString buildRainOnARoof(const QString& staging, const QString& packagePath) {
    QString error;
    WorldRecipe world;
    world.name = QStringLiteral("Rain on a Roof");
    world.author = QStringLiteral("The Sylvora example synthesizer");
    world.description = QStringLiteral(
        "A long wet night under the tiles. Rain drums steadily on the roof, gusts throw it at the "
        "window, the gutter drips and thunder grumbles far away.");
    world.crossfade = 6;

    world.loops.push_back({writeSoundInto(staging, QStringLiteral("Steady Rain.flac"), makeRoofRain(42.0, 0.0, SEED + 1), error), 0.9});
    world.loops.push_back({writeSoundInto(staging, QStringLiteral("Rain in Gusts.flac"), makeRoofRain(40.0, 0.8, SEED + 2), error), 0.85});

    world.groups.push_back({QStringLiteral("Gutter"), 14, 35});
    world.environment.push_back(
        {writeSoundInto(staging, QStringLiteral("Gutter Drips.flac"), makeGutterDrips(9.0, 0.7, SEED + 3), error), 0.5, 0.9, 20, 40, 0});
    world.environment.push_back(
        {writeSoundInto(staging, QStringLiteral("Slow Drips.flac"), makeGutterDrips(8.0, 1.4, SEED + 4), error), 0.5, 0.9, 20, 40, 0});
    world.environment.push_back(
        {writeSoundInto(staging, QStringLiteral("Gust at the Window.flac"), makeWindowGust(SEED + 5), error), 0.5, 0.85, 40, 110, -1});
    world.environment.push_back(
        {writeSoundInto(staging, QStringLiteral("Distant Thunder.flac"), makeThunder(SEED + 6), error), 0.4, 0.75, 90, 220, -1});

    world.picture = savePictureInto(staging, QStringLiteral("Rain on a Roof.png"), makeRoofPicture(800, 500, SEED + 7), error);
    if (!error.isEmpty()) return error;
    return writeWorldPackage(world, packagePath);
}

}  // namespace sylvora::synth
