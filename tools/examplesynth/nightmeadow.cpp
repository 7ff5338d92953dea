// "Night Meadow": a warm summer night in the grass. The beds are a chorus of crickets over a low
// wind, and the same beside a brook; an owl calls and is answered, and a dog barks far away.

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>
#include <cmath>
#include <numbers>

#include "bundledworlds.h"
#include "drift.h"
#include "filters.h"
#include "loopsounds.h"
#include "packagewriter.h"
#include "voices.h"

namespace sylvora::synth {

namespace {

constexpr unsigned SEED = 6100;
constexpr double FOLD_SECONDS = 4.0;
constexpr double TWO_PI = 2.0 * std::numbers::pi;

// A field of crickets, each at its own pitch, pace and distance, chirping a few pulses at a time,
// over the low wind in the grass.
StereoBuffer makeCricketMeadow(double seconds, int crickets, double windLevel, unsigned seed) {
    StereoBuffer meadow(seconds + FOLD_SECONDS);
    Random random(seed);
    for (int c = 0; c < crickets; ++c) {
        const double pitch = random.uniform(3900.0, 5200.0);
        const double period = random.uniform(0.35, 0.9);
        const int pulses = 2 + static_cast<int>(random.unit() * 3.0);
        const double distance = random.uniform(0.15, 1.0);  // 1 is near
        std::vector<double> song(meadow.frames(), 0.0);
        for (double chirp = random.uniform(0.0, period); chirp < meadow.seconds() - 0.2; chirp += period * random.uniform(0.95, 1.05)) {
            for (int pulse = 0; pulse < pulses; ++pulse) {
                const auto first = static_cast<std::size_t>((chirp + pulse * 0.028) * SAMPLE_RATE);
                const auto count = static_cast<std::size_t>(0.016 * SAMPLE_RATE);
                for (std::size_t i = 0; i < count && first + i < song.size(); ++i) {
                    const double x = static_cast<double>(i) / static_cast<double>(count);
                    const double t = static_cast<double>(first + i) / SAMPLE_RATE;
                    song[first + i] += std::pow(std::sin(std::numbers::pi * x), 2.0) *
                                       (std::sin(TWO_PI * pitch * t) + 0.15 * std::sin(TWO_PI * 2.0 * pitch * t));
                }
            }
        }
        meadow.addMono(song, 0, random.uniform(-0.9, 0.9), 0.12 * distance * distance);
    }
    // Far crickets beyond counting: a trilling band of noise.
    for (int side = 0; side < 2; ++side) {
        std::vector<double>& out = side == 0 ? meadow.left : meadow.right;
        Random noise(seed * 23 + static_cast<unsigned>(side));
        Biquad band(Biquad::Kind::BandPass, 4600.0, 6.0, SAMPLE_RATE);
        PinkNoise pink;
        Biquad low(Biquad::Kind::LowPass, 320.0, 0.7, SAMPLE_RATE);
        Biquad grass(Biquad::Kind::BandPass, 2200.0, 0.6, SAMPLE_RATE);
        Drift breeze(8.0, SAMPLE_RATE, seed + 3);
        for (std::size_t i = 0; i < out.size(); ++i) {
            const double t = static_cast<double>(i) / SAMPLE_RATE;
            const double trill = 0.5 + 0.5 * std::sin(TWO_PI * 28.0 * t + side);
            const double b = breeze.next();
            out[i] += 0.05 * trill * band.process(noise.bipolar()) +
                      windLevel * (0.5 + 0.5 * b) * (1.3 * low.process(pink.process(noise.bipolar())) +
                                                     0.06 * b * b * grass.process(noise.bipolar()));
        }
    }
    meadow.foldIntoLoop(FOLD_SECONDS);
    return meadow;
}

StereoBuffer makeMeadow(double seconds, unsigned seed) {
    StereoBuffer meadow = makeCricketMeadow(seconds, 14, 0.45, seed);
    meadow.normalize(-18.0, -3.0);
    return meadow;
}

// The meadow by the brook: fewer crickets, the water running over stones in front.
StereoBuffer makeMeadowByTheBrook(double seconds, unsigned seed) {
    StereoBuffer meadow = makeCricketMeadow(seconds, 9, 0.5, seed);
    meadow.normalize(-27.0, -10.0);
    meadow.addStereo(makeStream(seconds, seed + 1), 0.8);
    meadow.normalize(-21.5, -5.0);
    return meadow;
}

// Places a far voice in the night: softened by distance, with the open land's late echo.
StereoBuffer placeFarVoice(std::vector<double> voice, double pan, double softenHz, double echo, unsigned seed) {
    Biquad distance(Biquad::Kind::LowPass, softenHz, 0.7, SAMPLE_RATE);
    for (double& s : voice) s = distance.process(s);
    const auto echoDelay = static_cast<std::size_t>(0.32 * SAMPLE_RATE);
    StereoBuffer placed(static_cast<double>(voice.size() + echoDelay) / SAMPLE_RATE + 0.8);
    placed.addMono(voice, 0, pan, 1.0);
    if (echo > 0.0) {
        OnePole dull(1200.0, SAMPLE_RATE);
        std::vector<double> late(voice.size());
        for (std::size_t i = 0; i < voice.size(); ++i) late[i] = dull.lowpass(voice[i]);
        placed.addMono(late, static_cast<std::ptrdiff_t>(echoDelay), -pan * 0.5, echo);
    }
    placed.addAmbience(0.45, seed);
    placed.fadeOut(0.5);
    placed.normalize(-24.0, -12.0);
    return placed;
}

// A tawny owl's hoot: a long "hooo", a pause, a short "hu", then a quavering "hu-hoo-oo-oo".
StereoBuffer makeOwlHoot(unsigned seed) {
    Random random(seed);
    const std::vector<double> voice = sequence({
        {0.05, sing({0.9, {430.0, 445.0, 400.0}, 2, 500.0, 0.0, 0.08, 0.15}, random)},
        {1.6, sing({0.18, {420.0, 430.0, 410.0}, 2, 500.0, 0.0, 0.08, 0.3}, random)},
        {0.2, sing({1.3, {420.0, 440.0, 390.0}, 2, 500.0, 0.35, 0.06, 0.1}, random)},
    });
    return placeFarVoice(voice, -0.35, 2000.0, 0.25, seed + 1);
}

// The answer: a sharp "ke-wick" from another tree.
StereoBuffer makeOwlAnswer(unsigned seed) {
    Random random(seed);
    const std::vector<double> voice = sequence({
        {0.05, sing({0.12, {1300.0, 1500.0, 1400.0}, 5, 1500.0, 0.25, 0.2, 0.2}, random)},
        {0.05, sing({0.26, {1550.0, 1650.0, 1200.0}, 5, 1500.0, 0.3, 0.2, 0.15}, random)},
        {1.2, sing({0.12, {1300.0, 1480.0, 1380.0}, 5, 1500.0, 0.25, 0.2, 0.2}, random)},
        {0.05, sing({0.24, {1500.0, 1620.0, 1180.0}, 5, 1500.0, 0.3, 0.2, 0.15}, random)},
    });
    return placeFarVoice(voice, 0.55, 3000.0, 0.2, seed + 1);
}

// A dog on a farm across the valley: a few gruff barks, their echo coming back off the hills.
StereoBuffer makeFarDog(unsigned seed) {
    Random random(seed);
    std::vector<std::pair<double, std::vector<double>>> barks;
    const int count = 3 + static_cast<int>(random.unit() * 2.0);
    for (int i = 0; i < count; ++i) {
        const double p = random.uniform(330.0, 400.0);
        barks.push_back({i == 0 ? 0.05 : random.uniform(0.35, 0.9),
                         sing({random.uniform(0.14, 0.2), {p, p * 1.35, p * 0.8}, 14, 900.0, 0.6, 0.35, 0.12}, random)});
    }
    return placeFarVoice(sequence(barks), 0.3, 1100.0, 0.45, seed + 1);
}

QImage makeMeadowPicture(int width, int height, unsigned seed) {
    QImage image(width, height, QImage::Format_RGB32);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    Random random(seed);
    QLinearGradient sky(0, 0, 0, height * 0.7);
    sky.setColorAt(0.0, QColor(6, 10, 30));
    sky.setColorAt(0.7, QColor(20, 34, 70));
    sky.setColorAt(1.0, QColor(40, 56, 90));
    painter.fillRect(image.rect(), sky);
    for (int i = 0; i < 260; ++i) {
        const double y = height * 0.6 * random.unit() * random.unit();
        painter.setBrush(QColor(255, 252, 240, static_cast<int>(random.uniform(60.0, 240.0) * (1.0 - y / (height * 0.6)))));
        const double r = random.uniform(0.4, 1.3);
        painter.drawEllipse(QPointF(random.uniform(0.0, width), y), r, r);
    }
    // A high moon.
    const QPointF moon(width * 0.2, height * 0.18);
    QRadialGradient halo(moon, height * 0.2);
    halo.setColorAt(0.0, QColor(220, 230, 255, 90));
    halo.setColorAt(1.0, QColor(220, 230, 255, 0));
    painter.setBrush(halo);
    painter.drawEllipse(moon, height * 0.2, height * 0.2);
    painter.setBrush(QColor(236, 240, 250));
    painter.drawEllipse(moon, height * 0.04, height * 0.04);
    // A line of far trees, the meadow, the brook catching the moonlight.
    QPainterPath trees;
    trees.moveTo(0, height);
    for (int x = 0; x <= width; x += 6) trees.lineTo(x, height * 0.66 - 14.0 * std::abs(std::sin(x * 0.021)) - 8.0 * std::abs(std::sin(x * 0.057)));
    trees.lineTo(width, height);
    painter.setBrush(QColor(10, 16, 24));
    painter.drawPath(trees);
    QPainterPath meadow;
    meadow.moveTo(0, height);
    for (int x = 0; x <= width; x += 8) meadow.lineTo(x, height * 0.72 + 10.0 * std::sin(x * 0.006 + 0.4));
    meadow.lineTo(width, height);
    painter.setBrush(QColor(16, 30, 30));
    painter.drawPath(meadow);
    QPainterPath brook;
    brook.moveTo(width * 0.52, height * 0.74);
    brook.cubicTo(width * 0.62, height * 0.8, width * 0.4, height * 0.86, width * 0.62, height);
    brook.lineTo(width * 0.82, height);
    brook.cubicTo(width * 0.56, height * 0.86, width * 0.72, height * 0.8, width * 0.55, height * 0.74);
    painter.setBrush(QColor(70, 90, 130));
    painter.drawPath(brook);
    // Tall grass in front, blade by blade.
    for (int i = 0; i < 700; ++i) {
        const double x = random.uniform(-10.0, width + 10.0);
        const double base = height + 4.0;
        const double h = random.uniform(0.08, 0.3) * height;
        const double bend = random.uniform(-18.0, 18.0);
        const int shade = static_cast<int>(random.uniform(6.0, 26.0));
        painter.setPen(QPen(QColor(shade, shade + 10, shade + 8), random.uniform(1.0, 2.4)));
        QPainterPath blade;
        blade.moveTo(x, base);
        blade.quadTo(x + bend * 0.2, base - h * 0.6, x + bend, base - h);
        painter.drawPath(blade);
    }
    // A few fireflies.
    painter.setPen(Qt::NoPen);
    for (int i = 0; i < 14; ++i) {
        const QPointF at(random.uniform(0.0, width), height * random.uniform(0.7, 0.92));
        QRadialGradient fly(at, 7.0);
        fly.setColorAt(0.0, QColor(230, 255, 150, 230));
        fly.setColorAt(1.0, QColor(230, 255, 150, 0));
        painter.setBrush(fly);
        painter.drawEllipse(at, 7.0, 7.0);
    }
    painter.end();
    return image;
}

}  // namespace

QString buildNightMeadow(const QString& staging, const QString& packagePath) {
    QString error;
    WorldRecipe world;
    world.name = QStringLiteral("Night Meadow");
    world.author = QStringLiteral("The Sylvora example synthesizer");
    world.description = QStringLiteral(
        "A warm summer night in the grass. Crickets sing, a low wind passes, a brook runs nearby, an "
        "owl calls and a dog barks far away.");
    world.crossfade = 6;

    world.loops.push_back({writeSoundInto(staging, QStringLiteral("Crickets and Low Wind.flac"), makeMeadow(46.0, SEED + 1), error), 0.9});
    world.loops.push_back({writeSoundInto(staging, QStringLiteral("By the Brook.flac"), makeMeadowByTheBrook(42.0, SEED + 2), error), 0.85});

    world.groups.push_back({QStringLiteral("Owls"), 35, 90});
    world.environment.push_back(
        {writeSoundInto(staging, QStringLiteral("Tawny Owl.flac"), makeOwlHoot(SEED + 3), error), 0.45, 0.8, 20, 40, 0});
    world.environment.push_back(
        {writeSoundInto(staging, QStringLiteral("Owl Answering.flac"), makeOwlAnswer(SEED + 4), error), 0.4, 0.75, 20, 40, 0});
    world.environment.push_back(
        {writeSoundInto(staging, QStringLiteral("Far Dog.flac"), makeFarDog(SEED + 5), error), 0.35, 0.65, 70, 180, -1});

    world.picture = savePictureInto(staging, QStringLiteral("Night Meadow.png"), makeMeadowPicture(800, 500, SEED + 6), error);
    if (!error.isEmpty()) return error;
    return writeWorldPackage(world, packagePath);
}

}  // namespace sylvora::synth
