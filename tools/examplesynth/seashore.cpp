// "Sea Shore": a pebble beach on a grey morning. The beds are surf (big waves or a calm lapping)
// breaking and drawing back over stones at uneven intervals; gulls call far out, the wind comes off
// the sea and now and then a bigger wave crashes.

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <cmath>
#include <numbers>

#include "bundledworlds.h"
#include "drift.h"
#include "filters.h"
#include "packagewriter.h"
#include "scatter.h"
#include "voices.h"

namespace sylvora::synth {

namespace {

constexpr unsigned SEED = 4100;
constexpr double FOLD_SECONDS = 4.0;

struct Wave {
    double breakAt;   // seconds
    double strength;  // 0..1.5
    double pan;
};

// How a wave sounds over time, `d` seconds after it breaks: the swell rising before, the crash,
// and the wash running back over the pebbles.
double swellOf(double d) { return d < -2.5 || d > 0.0 ? 0.0 : std::pow(std::sin(0.5 * std::numbers::pi * (d + 2.5) / 2.5), 2.0); }
double crashOf(double d) { return d < 0.0 ? 0.0 : (1.0 - std::exp(-d / 0.09)) * std::exp(-d / 1.2); }
double washOf(double d) {
    if (d < 0.5) return 0.0;
    return std::min(1.0, (d - 0.5) / 0.8) * std::exp(-(d - 0.5) / 2.4);
}

// A stone knocked by the backwash.
std::vector<double> makePebbleClick(Random& random) {
    const double decay = random.uniform(0.001, 0.004);
    const auto n = static_cast<std::size_t>(decay * 6.0 * SAMPLE_RATE);
    Biquad stone(Biquad::Kind::BandPass, random.uniform(2500.0, 6500.0), 3.0, SAMPLE_RATE);
    std::vector<double> click(n);
    for (std::size_t i = 0; i < n; ++i) {
        click[i] = stone.process(random.bipolar()) * std::exp(-static_cast<double>(i) / SAMPLE_RATE / decay);
    }
    return click;
}

// Adds `waves` over a low constant murmur of the sea. With `period` > 0 the waves' sound wraps
// around it, so a loop of that length has waves running across its seam.
void addSurf(StereoBuffer& sound, const std::vector<Wave>& waves, double period, double murmur, unsigned seed) {
    const auto since = [&](double t, double at) {
        double d = t - at;
        if (period > 0.0) d -= period * std::floor((d + period * 0.25) / period);  // into [-period/4, 3period/4)
        return d;
    };
    // The envelopes are shared by both sides, each wave leaning towards its own side.
    std::vector<double> body[2], wash[2], cutoff(sound.frames());
    for (auto& v : body) v.assign(sound.frames(), 0.0);
    for (auto& v : wash) v.assign(sound.frames(), 0.0);
    for (std::size_t i = 0; i < sound.frames(); ++i) {
        const double t = static_cast<double>(i) / SAMPLE_RATE;
        double crashSum = 0.0;
        for (const Wave& wave : waves) {
            const double d = since(t, wave.breakAt);
            const double b = wave.strength * (0.35 * swellOf(d) + crashOf(d));
            const double w = wave.strength * washOf(d);
            body[0][i] += b * (1.0 - 0.4 * wave.pan);
            body[1][i] += b * (1.0 + 0.4 * wave.pan);
            wash[0][i] += w * (1.0 - 0.5 * wave.pan);
            wash[1][i] += w * (1.0 + 0.5 * wave.pan);
            crashSum += wave.strength * crashOf(d);
        }
        cutoff[i] = 350.0 + 3200.0 * std::min(1.0, crashSum);
    }
    for (int side = 0; side < 2; ++side) {
        std::vector<double>& out = side == 0 ? sound.left : sound.right;
        Random noise(seed * 11 + static_cast<unsigned>(side));
        PinkNoise pink;
        BrownNoise brown;
        Biquad roar(Biquad::Kind::LowPass, 800.0, 0.6, SAMPLE_RATE);
        Biquad fizzLow(Biquad::Kind::HighPass, 1800.0, 0.7, SAMPLE_RATE);
        Biquad fizzHigh(Biquad::Kind::LowPass, 9000.0, 0.7, SAMPLE_RATE);
        Biquad deep(Biquad::Kind::LowPass, 220.0, 0.7, SAMPLE_RATE);
        Biquad floor(Biquad::Kind::HighPass, 35.0, 0.7, SAMPLE_RATE);
        Drift tide(9.0, SAMPLE_RATE, seed + 7);
        for (std::size_t i = 0; i < out.size(); ++i) {
            if (i % 32 == 0) roar.set(cutoff[i], 0.6);
            const double white = noise.bipolar();
            const double b = body[side][i];
            out[i] += floor.process(b * 1.3 * roar.process(pink.process(white)) +
                                    murmur * (0.7 + 0.3 * tide.next()) * deep.process(brown.process(white) * 3.0)) +
                      wash[side][i] * 0.45 * fizzHigh.process(fizzLow.process(noise.bipolar()));
        }
    }
    Random random(seed);
    const auto rattle = [&](double t) {
        double w = 0.0;
        for (const Wave& wave : waves) w += wave.strength * washOf(since(t, wave.breakAt));
        return std::min(1.0, w);
    };
    scatter(sound, 500.0, 0.8, 0.01, 0.06, random, makePebbleClick, rattle);
}

// Waves at uneven intervals across a loop of `seconds`.
StereoBuffer makeSurf(double seconds, double minGap, double maxGap, double minStrength, double maxStrength, unsigned seed) {
    StereoBuffer surf(seconds + FOLD_SECONDS);
    Random random(seed);
    std::vector<Wave> waves;
    for (double t = random.uniform(0.0, minGap); t < seconds - minGap * 0.5; t += random.uniform(minGap, maxGap)) {
        waves.push_back({t, random.uniform(minStrength, maxStrength), random.uniform(-0.6, 0.6)});
    }
    addSurf(surf, waves, seconds, 0.5, seed + 1);
    surf.foldIntoLoop(FOLD_SECONDS);
    surf.normalize(-20.1, -3.5);
    return surf;
}

StereoBuffer makeBigWave(unsigned seed) {
    StereoBuffer wave(11.0);
    addSurf(wave, {{2.6, 1.4, 0.2}}, 0.0, 0.0, seed);
    wave.fadeIn(0.5);
    wave.fadeOut(2.5);
    wave.normalize(-21.0, -8.0);
    return wave;
}

// A gull far out: a harsh "kyow" repeated, falling away, softened by the distance over the water.
StereoBuffer makeGulls(int calls, double pitch, double pan, unsigned seed) {
    Random random(seed);
    std::vector<std::pair<double, std::vector<double>>> line;
    for (int i = 0; i < calls; ++i) {
        const double p = pitch * random.uniform(0.95, 1.05) * (1.0 - 0.03 * i);
        const double length = i == 0 ? 0.55 : random.uniform(0.22, 0.32);
        line.push_back({i == 0 ? 0.05 : random.uniform(0.08, 0.2),
                        sing({length, {p * 0.75, p * 1.15, p * 0.7}, 9, 1700.0, 0.5, 0.15, 0.25}, random)});
    }
    std::vector<double> voice = sequence(line);
    Biquad distance(Biquad::Kind::LowPass, 3200.0, 0.7, SAMPLE_RATE);
    for (double& s : voice) s = distance.process(s);
    StereoBuffer call(static_cast<double>(voice.size()) / SAMPLE_RATE + 0.8);
    call.addMono(voice, 0, pan, 1.0);
    call.addAmbience(0.5, seed + 1);
    call.fadeOut(0.4);
    call.normalize(-24.0, -12.0);
    return call;
}

// Wind off the sea: a long swell of air with a soft whistle in it.
StereoBuffer makeSeaWind(unsigned seed) {
    constexpr double SECONDS = 10.0;
    StereoBuffer wind(SECONDS);
    for (int side = 0; side < 2; ++side) {
        std::vector<double>& out = side == 0 ? wind.left : wind.right;
        Random noise(seed * 5 + static_cast<unsigned>(side));
        PinkNoise pink;
        Biquad howl(Biquad::Kind::BandPass, 400.0, 1.2, SAMPLE_RATE);
        Biquad whistle(Biquad::Kind::BandPass, 900.0, 9.0, SAMPLE_RATE);
        Drift flutter(0.8, SAMPLE_RATE, seed + 3);
        for (std::size_t i = 0; i < out.size(); ++i) {
            const double x = static_cast<double>(i) / static_cast<double>(out.size());
            const double e = std::pow(std::sin(std::numbers::pi * x), 2.0) * (0.8 + 0.2 * flutter.next());
            if (i % 32 == 0) {
                howl.set(300.0 + 400.0 * e, 1.2);
                whistle.set(700.0 + 500.0 * e, 9.0);
            }
            const double p = pink.process(noise.bipolar());
            out[i] = e * (1.5 * howl.process(p) + 0.9 * whistle.process(p));
        }
    }
    wind.normalize(-24.0, -11.0);
    return wind;
}

QImage makeShorePicture(int width, int height, unsigned seed) {
    QImage image(width, height, QImage::Format_RGB32);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    Random random(seed);
    const double horizon = height * 0.5;
    QLinearGradient sky(0, 0, 0, horizon);
    sky.setColorAt(0.0, QColor(92, 110, 132));
    sky.setColorAt(1.0, QColor(196, 200, 198));
    painter.fillRect(QRectF(0, 0, width, horizon), sky);
    QLinearGradient sea(0, horizon, 0, height * 0.78);
    sea.setColorAt(0.0, QColor(70, 92, 104));
    sea.setColorAt(1.0, QColor(92, 124, 128));
    painter.fillRect(QRectF(0, horizon, width, height * 0.3), sea);

    // Crests of foam, thinner and fainter towards the horizon, then the breaking line.
    painter.setBrush(Qt::NoBrush);
    for (int row = 0; row < 14; ++row) {
        const double depth = row / 14.0;
        const double y = horizon + 4.0 + (height * 0.26) * depth * depth;
        painter.setPen(QPen(QColor(230, 236, 236, static_cast<int>(50 + 140 * depth)), 0.6 + 2.4 * depth));
        for (double x = random.uniform(-80.0, 0.0); x < width; x += random.uniform(60.0, 160.0)) {
            const double length = random.uniform(30.0, 120.0) * (0.4 + depth);
            QPainterPath crest;
            crest.moveTo(x, y);
            crest.quadTo(x + length / 2, y - 3.0 * depth, x + length, y);
            painter.drawPath(crest);
        }
    }
    QPainterPath foam;
    foam.moveTo(0, height);
    for (int x = 0; x <= width; x += 10) foam.lineTo(x, height * 0.8 + 9.0 * std::sin(x * 0.013 + 0.5) + 5.0 * std::sin(x * 0.041));
    foam.lineTo(width, height);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(214, 222, 220));
    painter.drawPath(foam);
    // The pebble beach.
    QPainterPath beach;
    beach.moveTo(0, height);
    for (int x = 0; x <= width; x += 10) beach.lineTo(x, height * 0.84 + 7.0 * std::sin(x * 0.011 + 1.3));
    beach.lineTo(width, height);
    painter.setBrush(QColor(104, 98, 92));
    painter.drawPath(beach);
    for (int i = 0; i < 500; ++i) {
        const double y = random.uniform(height * 0.85, height);
        const double r = 1.0 + 5.0 * (y - height * 0.85) / (height * 0.15) * random.uniform(0.4, 1.0);
        const int shade = static_cast<int>(random.uniform(90.0, 170.0));
        painter.setBrush(QColor(shade, shade - 6, shade - 12));
        painter.drawEllipse(QPointF(random.uniform(0.0, width), y), r * 1.3, r);
    }
    // Gulls far off: a few bent strokes.
    painter.setPen(QPen(QColor(50, 56, 64), 2.0, Qt::SolidLine, Qt::RoundCap));
    painter.setBrush(Qt::NoBrush);
    for (int i = 0; i < 4; ++i) {
        const QPointF at(width * random.uniform(0.5, 0.9), height * random.uniform(0.15, 0.35));
        const double span = random.uniform(8.0, 16.0);
        QPainterPath gull;
        gull.moveTo(at.x() - span, at.y() - span * 0.2);
        gull.quadTo(at.x() - span * 0.5, at.y() - span * 0.5, at.x(), at.y());
        gull.quadTo(at.x() + span * 0.5, at.y() - span * 0.5, at.x() + span, at.y() - span * 0.2);
        painter.drawPath(gull);
    }
    painter.end();
    return image;
}

}  // namespace

QString buildSeaShore(const QString& staging, const QString& packagePath) {
    QString error;
    WorldRecipe world;
    world.name = QStringLiteral("Sea Shore");
    world.author = QStringLiteral("The Sylvora example synthesizer");
    world.description = QStringLiteral(
        "A grey morning on a pebble beach. Waves break and draw back over the stones at their own "
        "pace, the wind comes off the sea and gulls call far out.");
    world.crossfade = 6;

    world.loops.push_back({writeSoundInto(staging, QStringLiteral("Surf.flac"), makeSurf(46.0, 6.0, 12.5, 0.6, 1.0, SEED + 1), error), 0.9});
    world.loops.push_back({writeSoundInto(staging, QStringLiteral("Calm Surf.flac"), makeSurf(42.0, 3.5, 7.5, 0.35, 0.65, SEED + 2), error), 0.9});

    world.groups.push_back({QStringLiteral("Gulls"), 18, 45});
    world.environment.push_back(
        {writeSoundInto(staging, QStringLiteral("Gulls Far Off.flac"), makeGulls(5, 1300.0, -0.5, SEED + 3), error), 0.35, 0.7, 20, 40, 0});
    world.environment.push_back(
        {writeSoundInto(staging, QStringLiteral("Gull Overhead.flac"), makeGulls(2, 1500.0, 0.4, SEED + 4), error), 0.35, 0.7, 20, 40, 0});
    world.environment.push_back(
        {writeSoundInto(staging, QStringLiteral("Wind off the Sea.flac"), makeSeaWind(SEED + 5), error), 0.45, 0.8, 35, 90, -1});
    world.environment.push_back(
        {writeSoundInto(staging, QStringLiteral("Big Wave.flac"), makeBigWave(SEED + 6), error), 0.5, 0.8, 60, 150, -1});

    world.picture = savePictureInto(staging, QStringLiteral("Sea Shore.png"), makeShorePicture(800, 500, SEED + 7), error);
    if (!error.isEmpty()) return error;
    return writeWorldPackage(world, packagePath);
}

}  // namespace sylvora::synth
