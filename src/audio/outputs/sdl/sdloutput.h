#pragma once

// The default sound device through SDL2, opened at the engine's rate as float stereo (SDL converts
// if the device wants something else). The device callback is the audio thread: it only calls
// Engine::render().
//
// 1024 frames per callback is 21 ms at 48 kHz: a volume set on the main thread is heard within
// one to two buffers (21-43 ms) plus the 20 ms glide, well under the scheduler's 67 ms tick, while
// leaving the callback room to mix a hundred voices on a busy machine.

#include <SDL.h>

#include "audio/outputs/output.h"

namespace sylvora::audio {

class SdlOutput final : public AudioOutput {
  public:
    static constexpr int BUFFER_FRAMES = 1024;

    // Null with `error` filled when SDL has no audio or no device opens.
    static std::unique_ptr<SdlOutput> open(Engine& engine, std::string& error);
    ~SdlOutput() override;

    bool start() override;  // [main]
    void stop() override;   // [main]
    std::string description() const override { return description_; }

  private:
    SdlOutput(Engine& engine) : engine_(engine) {}
    static void callback(void* self, Uint8* stream, int length);  // [RT]

    Engine& engine_;
    SDL_AudioDeviceID device_ = 0;
    std::string description_;
};

}  // namespace sylvora::audio
