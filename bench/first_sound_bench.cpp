// Waits for the first sound on a PulseAudio source and says when it was played: records the source
// (the default, or the one named) in blocks of 5 ms and prints the wall-clock time (seconds since
// the epoch, CLOCK_REALTIME, as `date +%s.%N` gives) at which the first block whose peak is above
// the threshold began, or "none" after the time limit: the time the block was read, less the
// latency the server reports for the recording (what it held back, in the source and in transit)
// and less the block. For bench/server_return.sh.
// Usage: first_sound_bench [source] [threshold, default 0.1] [seconds, default 10]

#include <pulse/error.h>
#include <pulse/simple.h>
#include <time.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {
constexpr int RATE = 48000;
constexpr int BLOCK_FRAMES = RATE / 200;

double wallSeconds() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}
}  // namespace

int main(int argc, char** argv) {
    const char* source = argc > 1 && argv[1][0] != '\0' ? argv[1] : nullptr;
    const double threshold = argc > 2 ? std::atof(argv[2]) : 0.1;
    const double limit = argc > 3 ? std::atof(argv[3]) : 10.0;
    const pa_sample_spec spec{PA_SAMPLE_FLOAT32NE, RATE, 1};
    pa_buffer_attr attr{};
    attr.maxlength = static_cast<std::uint32_t>(-1);
    attr.fragsize = BLOCK_FRAMES * sizeof(float);
    int error = 0;
    pa_simple* recorder = pa_simple_new(nullptr, "first_sound_bench", PA_STREAM_RECORD, source, "first sound", &spec,
                                        nullptr, &attr, &error);
    if (!recorder) {
        std::fprintf(stderr, "first_sound_bench: %s\n", pa_strerror(error));
        return 1;
    }
    const double end = wallSeconds() + limit;
    std::array<float, BLOCK_FRAMES> block{};
    while (wallSeconds() < end) {
        if (pa_simple_read(recorder, block.data(), sizeof block, &error) < 0) {
            std::fprintf(stderr, "first_sound_bench: %s\n", pa_strerror(error));
            break;
        }
        const double arrived = wallSeconds();
        const pa_usec_t latency = pa_simple_get_latency(recorder, &error);
        const float peak = std::abs(*std::max_element(block.begin(), block.end(),
                                                      [](float a, float b) { return std::abs(a) < std::abs(b); }));
        if (peak > threshold) {
            std::printf("%.4f\n", arrived - static_cast<double>(latency) * 1e-6 - static_cast<double>(BLOCK_FRAMES) / RATE);
            pa_simple_free(recorder);
            return 0;
        }
    }
    std::printf("none\n");
    pa_simple_free(recorder);
    return 0;
}
