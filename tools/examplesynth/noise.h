#pragma once

// Deterministic noise for the example world: the same seed gives the same sound on every machine,
// so nothing here uses the standard library's distributions (their algorithms are unspecified).

#include <cmath>
#include <cstdint>

namespace sylvora::synth {

// xoshiro256** seeded through splitmix64.
class Random {
public:
    explicit Random(std::uint64_t seed) {
        for (auto& word : state) {
            seed += 0x9E3779B97F4A7C15ull;
            std::uint64_t z = seed;
            z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
            z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
            word = z ^ (z >> 31);
        }
    }

    std::uint64_t next() {
        const std::uint64_t result = rotl(state[1] * 5, 7) * 9;
        const std::uint64_t t = state[1] << 17;
        state[2] ^= state[0];
        state[3] ^= state[1];
        state[1] ^= state[2];
        state[0] ^= state[3];
        state[2] ^= t;
        state[3] = rotl(state[3], 45);
        return result;
    }

    // [0, 1)
    double unit() { return static_cast<double>(next() >> 11) * 0x1.0p-53; }
    // [lo, hi)
    double uniform(double lo, double hi) { return lo + (hi - lo) * unit(); }
    // [-1, 1)
    double bipolar() { return uniform(-1.0, 1.0); }
    // Waiting time of a Poisson process with `rate` events per second.
    double exponential(double rate) { return -std::log(1.0 - unit()) / rate; }

private:
    static std::uint64_t rotl(std::uint64_t x, int k) { return (x << k) | (x >> (64 - k)); }
    std::uint64_t state[4]{};
};

// Pink noise (-3 dB per octave) from white, Paul Kellet's economy filter.
class PinkNoise {
public:
    double process(double white) {
        b0 = 0.99765 * b0 + white * 0.0990460;
        b1 = 0.96300 * b1 + white * 0.2965164;
        b2 = 0.57000 * b2 + white * 1.0526913;
        return (b0 + b1 + b2 + white * 0.1848) * 0.25;
    }

private:
    double b0 = 0.0, b1 = 0.0, b2 = 0.0;
};

// Brown noise (-6 dB per octave): leaky integration of white.
class BrownNoise {
public:
    double process(double white) {
        level = 0.997 * level + white * 0.06;
        return level;
    }

private:
    double level = 0.0;
};

}  // namespace sylvora::synth
