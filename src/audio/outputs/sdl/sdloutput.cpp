#include "audio/outputs/sdl/sdloutput.h"

#include <alsa/asoundlib.h>

#include "audio/engine/engine.h"

namespace sylvora::audio {

namespace {
// ALSA reports every plugin and card it tries and fails on straight to the standard error stream;
// whether a device opened at all is said once, by whoever opened the output.
void ignoreAlsaError(const char* /*file*/, int /*line*/, const char* /*function*/, int /*err*/,
                     const char* /*format*/, ...) {}
}  // namespace

int SdlOutput::bufferFrames(int sampleRate) {
    int frames = 128;
    while (frames * 2 <= sampleRate * MAX_BUFFER_SECONDS) {
        frames *= 2;
    }
    return frames;
}

std::unique_ptr<SdlOutput> SdlOutput::open(Engine& engine, std::string& error) {
    snd_lib_error_set_handler(&ignoreAlsaError);
    if (SDL_InitSubSystem(SDL_INIT_AUDIO) != 0) {
        error = SDL_GetError();
        return nullptr;
    }
    std::unique_ptr<SdlOutput> output(new SdlOutput(engine));
    SDL_AudioSpec want{};
    want.freq = engine.sampleRate();
    want.format = AUDIO_F32SYS;
    want.channels = 2;
    want.samples = static_cast<Uint16>(bufferFrames(want.freq));
    want.callback = &SdlOutput::callback;
    want.userdata = output.get();
    SDL_AudioSpec have{};
    // SDL can initialise and still have no device to open (no server, no card): that is "no device".
    // No change allowed: `have` is `want`, and the engine's rate reaches the server as it is.
    output->device_ = SDL_OpenAudioDevice(nullptr, 0, &want, &have, 0);
    if (output->device_ == 0) {
        error = SDL_GetError();
        SDL_QuitSubSystem(SDL_INIT_AUDIO);
        return nullptr;
    }
    const char* driver = SDL_GetCurrentAudioDriver();
    output->description_ = std::string("SDL ") + (driver ? driver : "audio") + " device, " +
                           std::to_string(have.freq) + " Hz, " + std::to_string(have.samples) + " frames";
    return output;
}

SdlOutput::~SdlOutput() {
    if (device_ != 0) {
        SDL_CloseAudioDevice(device_);
        SDL_QuitSubSystem(SDL_INIT_AUDIO);
    }
}

bool SdlOutput::start() {
    SDL_PauseAudioDevice(device_, 0);
    return true;
}

void SdlOutput::stop() {
    // Once paused, SDL guarantees the callback is not running and will not run again.
    SDL_PauseAudioDevice(device_, 1);
    SDL_LockAudioDevice(device_);
    SDL_UnlockAudioDevice(device_);
}

void SdlOutput::callback(void* self, Uint8* stream, int length) {
    auto* output = static_cast<SdlOutput*>(self);
    output->engine_.render(reinterpret_cast<float*>(stream),
                           static_cast<std::size_t>(length) / (2 * sizeof(float)));
}

}  // namespace sylvora::audio
