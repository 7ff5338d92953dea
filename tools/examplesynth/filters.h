#pragma once

// The few filters the example sounds need: a one-pole smoother and the usual biquads
// (Robert Bristow-Johnson's cookbook forms, direct form I).

#include <cmath>
#include <numbers>

namespace sylvora::synth {

class OnePole {
public:
    OnePole(double cutoffHz, double sampleRate) { setCutoff(cutoffHz, sampleRate); }
    void setCutoff(double cutoffHz, double sampleRate) {
        a = 1.0 - std::exp(-2.0 * std::numbers::pi * cutoffHz / sampleRate);
    }
    double lowpass(double x) { return y += a * (x - y); }
    double highpass(double x) { return x - lowpass(x); }

private:
    double a = 1.0;
    double y = 0.0;
};

class Biquad {
public:
    enum class Kind { LowPass, HighPass, BandPass };

    Biquad(Kind filterKind, double frequencyHz, double q, double sampleRate) : kind(filterKind), rate(sampleRate) {
        set(frequencyHz, q);
    }

    // Cheap enough to call every few dozen samples for a moving filter.
    void set(double frequencyHz, double q) {
        const double w0 = 2.0 * std::numbers::pi * frequencyHz / rate;
        const double cosw = std::cos(w0);
        const double alpha = std::sin(w0) / (2.0 * q);
        double nb0 = 0.0, nb1 = 0.0, nb2 = 0.0;
        switch (kind) {
        case Kind::LowPass: nb0 = (1.0 - cosw) / 2.0; nb1 = 1.0 - cosw; nb2 = nb0; break;
        case Kind::HighPass: nb0 = (1.0 + cosw) / 2.0; nb1 = -(1.0 + cosw); nb2 = nb0; break;
        case Kind::BandPass: nb0 = alpha; nb1 = 0.0; nb2 = -alpha; break;
        }
        const double a0 = 1.0 + alpha;
        b0 = nb0 / a0;
        b1 = nb1 / a0;
        b2 = nb2 / a0;
        a1 = -2.0 * cosw / a0;
        a2 = (1.0 - alpha) / a0;
    }

    double process(double x) {
        const double y = b0 * x + b1 * x1 + b2 * x2 - a1 * y1 - a2 * y2;
        x2 = x1;
        x1 = x;
        y2 = y1;
        y1 = y;
        return y;
    }

private:
    Kind kind;
    double rate;
    double b0 = 1.0, b1 = 0.0, b2 = 0.0, a1 = 0.0, a2 = 0.0;
    double x1 = 0.0, x2 = 0.0, y1 = 0.0, y2 = 0.0;
};

}  // namespace sylvora::synth
