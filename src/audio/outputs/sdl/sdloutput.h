#pragma once

// The default sound device through SDL2, opened at the engine's rate as float stereo. No change of
// rate is allowed at the open, so the device runs at the engine's rate: a sound server takes any
// rate and resamples in its own process, and a device that truly cannot is converted by SDL. The
// device callback is the audio thread: it only calls Engine::render().
//
// The callback size is the largest power of two that lasts at most 24 ms at the engine's rate
// (1024 frames at 44.1 and 48 kHz). A volume change is heard within 50 ms of being set: it waits
// for the next callback (at most one buffer, 24 ms), whose block starts the engine's glide at its
// first frame, and that block plays once what the server already holds has played (about one
// buffer less what was taken since, plus the few ms the server is playing), so under 50 ms in all.
// A larger buffer would wake SDL's PulseAudio backend less often but pushes this past 50 ms.

#include <SDL.h>

#include "audio/outputs/output.h"

namespace sylvora::audio {

class SdlOutput final : public AudioOutput {
  public:
    static constexpr double MAX_BUFFER_SECONDS = 0.024;

    // The callback size at `sampleRate`, as above; never under 128 frames.
    static int bufferFrames(int sampleRate);

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
