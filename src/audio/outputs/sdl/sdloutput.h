#pragma once

// The default sound device through SDL2, opened at the engine's rate as float stereo (SDL converts
// if the device wants something else). The device callback is the audio thread: it only calls
// Engine::render().
//
// 2048 frames per callback is 43 ms at 48 kHz. SDL's PulseAudio backend asks the server for that
// much buffering and wakes several times per callback whatever its size, so the size sets the
// wake-up rate: about 180 a second at 2048 against 365 at 1024, half the cost of playing. The
// server then holds about 32 ms ahead of the 5-10 ms it is playing, so a new volume, read at
// the next callback, starts its glide about 40 ms after that callback, under 50 ms.

#include <SDL.h>

#include "audio/outputs/output.h"

namespace sylvora::audio {

class SdlOutput final : public AudioOutput {
  public:
    static constexpr int BUFFER_FRAMES = 2048;

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
