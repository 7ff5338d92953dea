// A world stopped and at once started again renders the same sound on every run: the restart
// readies a streamed instance anew while its last play still fades out.

#include <cstdint>
#include <cstring>
#include <vector>

#include "support/worldfixture.h"

namespace sylvora::test {
namespace {

std::vector<std::uint64_t> renderWithRestarts() {
    WorldFixture w(3);
    w.addLoop(w.writeSound("Loop Sounds/long.wav", 5.0, 330.0));  // streamed
    std::vector<std::uint64_t> sound;
    w.world.start();
    w.runTicks(
        15 * 12,
        [&](int tick) {
            if (tick % 15 == 14) {
                w.world.stop();
                w.world.start();
            }
            sound.push_back(0);
        },
        [&](const float* samples, std::size_t frames, std::uint64_t) {
            for (std::size_t i = 0; i < frames * 2; ++i) {
                std::uint32_t bits = 0;
                std::memcpy(&bits, &samples[i], sizeof bits);
                sound.back() = (sound.back() ^ bits) * 1099511628211ull;
            }
        });
    return sound;
}

TEST(OfflineRender, StopAndStartInOneTickSoundsTheSameOnEveryRun) {
    const std::vector<std::uint64_t> first = renderWithRestarts();
    for (int run = 1; run < 20; ++run) {
        const std::vector<std::uint64_t> again = renderWithRestarts();
        ASSERT_EQ(again.size(), first.size());
        for (std::size_t tick = 0; tick < first.size(); ++tick) {
            ASSERT_EQ(again[tick], first[tick]) << "run " << run << ", tick " << tick;
        }
    }
}

}  // namespace
}  // namespace sylvora::test
