#pragma once

// Pulls the engine at real-time pace on a thread of its own and throws the sound away: the output
// of a machine without a sound device, so that playback (positions, ends, scheduling) runs on.

#include <atomic>
#include <thread>

#include "audio/outputs/output.h"

namespace sylvora::audio {

class NullOutput final : public AudioOutput {
  public:
    static constexpr int BLOCK_FRAMES = 1024;

    explicit NullOutput(Engine& engine) : engine_(engine) {}
    ~NullOutput() override;
    bool start() override;  // [main]
    void stop() override;   // [main]
    std::string description() const override { return "no sound device (null output)"; }

  private:
    void run();  // [RT]

    Engine& engine_;
    std::atomic<bool> running_{false};
    std::thread thread_;
};

}  // namespace sylvora::audio
