#include "audio/outputs/null/nulloutput.h"

#include <chrono>
#include <vector>

#include "audio/engine/engine.h"

namespace sylvora::audio {

NullOutput::~NullOutput() {
    stop();
}

bool NullOutput::start() {
    if (running_.exchange(true))
        return true;
    thread_ = std::thread([this] { run(); });
    return true;
}

void NullOutput::stop() {
    if (!running_.exchange(false))
        return;
    thread_.join();
}

void NullOutput::run() {
    using Clock = std::chrono::steady_clock;
    std::vector<float> block(2 * BLOCK_FRAMES);
    const auto period = std::chrono::duration_cast<Clock::duration>(
        std::chrono::duration<double>(static_cast<double>(BLOCK_FRAMES) / engine_.sampleRate()));
    // Deadlines advance by whole blocks from one origin, so the pace never drifts; after a long
    // stall the pacer catches up at once instead of rendering a burst.
    auto deadline = Clock::now();
    while (running_.load(std::memory_order_relaxed)) {
        engine_.render(block.data(), BLOCK_FRAMES);
        deadline += period;
        const auto now = Clock::now();
        if (deadline < now - 4 * period)
            deadline = now;
        std::this_thread::sleep_until(deadline);
    }
}

}  // namespace sylvora::audio
