#include "environmentsounds.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "filters.h"
#include "noise.h"

namespace sylvora::synth {

namespace {

constexpr double TWO_PI = 2.0 * std::numbers::pi;

// One note of a bird: the pitch glides from `from` to `to` along a smooth curve, with a touch of
// vibrato and a second harmonic; the envelope is a raised sine so the note has no edges.
struct Note {
    double start;     // seconds into the call
    double length;    // seconds
    double from;      // Hz
    double to;        // Hz
    double level;     // 0..1
    double vibratoHz = 0.0;
    double vibratoDepth = 0.0;  // Hz
};

std::vector<double> singNotes(const std::vector<Note>& notes, double totalSeconds) {
    std::vector<double> voice(static_cast<std::size_t>(totalSeconds * SAMPLE_RATE), 0.0);
    for (const Note& note : notes) {
        const auto first = static_cast<std::size_t>(note.start * SAMPLE_RATE);
        const auto count = static_cast<std::size_t>(note.length * SAMPLE_RATE);
        double phase = 0.0;
        for (std::size_t i = 0; i < count && first + i < voice.size(); ++i) {
            const double x = static_cast<double>(i) / static_cast<double>(count);
            const double glide = 0.5 - 0.5 * std::cos(std::numbers::pi * x);
            const double t = static_cast<double>(i) / SAMPLE_RATE;
            const double frequency = note.from + (note.to - note.from) * glide +
                                     note.vibratoDepth * std::sin(TWO_PI * note.vibratoHz * t);
            phase += TWO_PI * frequency / SAMPLE_RATE;
            const double envelope = std::pow(std::sin(std::numbers::pi * x), 1.5);
            voice[first + i] += note.level * envelope * (std::sin(phase) + 0.12 * std::sin(2.0 * phase));
        }
    }
    return voice;
}

// A bird somewhere in the trees: placed, softened by distance and given a little room.
StereoBuffer placeBird(const std::vector<double>& voice, double pan, unsigned seed) {
    StereoBuffer call(static_cast<double>(voice.size()) / SAMPLE_RATE + 0.6);
    std::vector<double> softened(voice.size());
    Biquad air(Biquad::Kind::LowPass, 7500.0, 0.7, SAMPLE_RATE);
    std::transform(voice.begin(), voice.end(), softened.begin(), [&](double s) { return air.process(s); });
    call.addMono(softened, 0, pan, 1.0);
    call.addAmbience(0.35, seed);
    call.fadeOut(0.3);
    call.normalize(-20.0, -11.0);
    return call;
}

}  // namespace

StereoBuffer makeBlackbirdCall(unsigned seed) {
    Random random(seed);
    std::vector<Note> notes;
    double t = 0.05;
    for (int phrase = 0; phrase < 2; ++phrase) {
        for (int whistle = 0; whistle < 2; ++whistle) {
            const double top = random.uniform(3200.0, 3500.0);
            notes.push_back({t, 0.16, top, top * 0.76, 0.9 - 0.15 * whistle});
            t += 0.16 + 0.07;
        }
        t += 0.35;
    }
    return placeBird(singNotes(notes, t + 0.1), -0.45, seed);
}

StereoBuffer makeWrenTrill(unsigned seed) {
    Random random(seed);
    std::vector<Note> notes;
    double t = 0.05;
    double gap = 0.05;
    for (int chirp = 0; chirp < 9; ++chirp) {
        const double base = random.uniform(2700.0, 2950.0);
        notes.push_back({t, 0.038, base, base * 1.45, 0.55 + 0.04 * chirp});
        t += 0.038 + gap;
        gap *= 0.9;  // the trill hurries towards its end
    }
    notes.push_back({t + 0.04, 0.22, 4300.0, 4100.0, 0.85, 18.0, 60.0});
    return placeBird(singNotes(notes, t + 0.35), 0.5, seed);
}

StereoBuffer makeRobinWhistle(unsigned seed) {
    std::vector<Note> notes;
    // "tee" held with a slow waver, then "oo" sliding down; answered a little lower.
    notes.push_back({0.05, 0.28, 2900.0, 2950.0, 0.8, 6.0, 35.0});
    notes.push_back({0.36, 0.38, 2900.0, 2050.0, 0.75});
    notes.push_back({1.25, 0.26, 2700.0, 2750.0, 0.6, 6.0, 30.0});
    notes.push_back({1.54, 0.36, 2700.0, 1900.0, 0.55});
    return placeBird(singNotes(notes, 2.05), 0.1, seed);
}

StereoBuffer makeCrickets(unsigned seed) {
    constexpr double SECONDS = 9.0;
    StereoBuffer crickets(SECONDS);
    Random random(seed);
    struct Cricket { double pitch; double period; double pan; double level; };
    const Cricket chorus[] = {{4350.0, 0.46, -0.6, 1.0}, {4720.0, 0.53, 0.55, 0.8}, {4080.0, 0.61, 0.05, 0.55}};
    for (const Cricket& cricket : chorus) {
        std::vector<double> song(crickets.frames(), 0.0);
        double chirpStart = random.uniform(0.0, cricket.period);
        while (chirpStart < SECONDS - 0.2) {
            // A chirp is three quick pulses of the wing's file against its scraper.
            for (int pulse = 0; pulse < 3; ++pulse) {
                const double pulseStart = chirpStart + pulse * 0.031;
                const auto first = static_cast<std::size_t>(pulseStart * SAMPLE_RATE);
                const auto count = static_cast<std::size_t>(0.017 * SAMPLE_RATE);
                for (std::size_t i = 0; i < count && first + i < song.size(); ++i) {
                    const double t = static_cast<double>(first + i) / SAMPLE_RATE;
                    const double x = static_cast<double>(i) / static_cast<double>(count);
                    const double envelope = std::sin(std::numbers::pi * x);
                    song[first + i] += envelope * envelope *
                                       (std::sin(TWO_PI * cricket.pitch * t) + 0.2 * std::sin(TWO_PI * 2.0 * cricket.pitch * t));
                }
            }
            chirpStart += cricket.period * random.uniform(0.96, 1.04);
        }
        crickets.addMono(song, 0, cricket.pan, cricket.level);
    }
    crickets.addAmbience(0.25, seed + 1);
    crickets.fadeIn(1.2);
    crickets.fadeOut(1.8);
    crickets.normalize(-27.0, -16.0);
    return crickets;
}

StereoBuffer makeThunder(unsigned seed) {
    constexpr double SECONDS = 13.0;
    StereoBuffer thunder(SECONDS);
    // Several rolls arriving from different parts of a far-away strike, each a swell of dark noise.
    const int rolls = 5;
    for (int side = 0; side < 2; ++side) {
        std::vector<double>& out = side == 0 ? thunder.left : thunder.right;
        Random noise(seed * 7 + static_cast<unsigned>(side) + 1);
        Random shape(seed + 99);  // both sides share the shape of the rolls
        BrownNoise brown;
        Biquad rumble(Biquad::Kind::LowPass, 160.0, 0.8, SAMPLE_RATE);
        Biquad crackle(Biquad::Kind::BandPass, 600.0, 0.8, SAMPLE_RATE);
        Biquad subsonic(Biquad::Kind::HighPass, 28.0, 0.7, SAMPLE_RATE);
        double starts[rolls];
        double decays[rolls];
        double levels[rolls];
        for (int r = 0; r < rolls; ++r) {
            starts[r] = 0.3 + shape.uniform(0.0, 4.5) * (r == 0 ? 0.0 : 1.0);
            decays[r] = shape.uniform(1.2, 3.2);
            levels[r] = r == 0 ? 1.0 : shape.uniform(0.4, 0.9);
        }
        for (std::size_t i = 0; i < out.size(); ++i) {
            const double t = static_cast<double>(i) / SAMPLE_RATE;
            double envelope = 0.0;
            for (int r = 0; r < rolls; ++r) {
                const double since = t - starts[r];
                if (since > 0.0) {
                    envelope += levels[r] * (1.0 - std::exp(-since / 0.35)) * std::exp(-since / decays[r]);
                }
            }
            const double white = noise.bipolar();
            const double body = rumble.process(brown.process(white) * 4.0);
            const double edge = crackle.process(white) * std::exp(-t / 1.5) * 0.12;
            out[i] = subsonic.process(envelope * (body + edge));
        }
    }
    thunder.fadeOut(2.0);
    thunder.normalize(-22.0, -9.0);
    return thunder;
}

}  // namespace sylvora::synth
