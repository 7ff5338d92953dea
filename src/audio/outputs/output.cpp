#include "audio/outputs/output.h"

#include <cstdio>

#include "audio/outputs/null/nulloutput.h"
#include "audio/outputs/pulse/pulseoutput.h"
#include "audio/outputs/pulse/reconnectingpulseoutput.h"
#include "audio/outputs/sdl/sdloutput.h"

namespace sylvora::audio {

std::unique_ptr<AudioOutput> openDeviceOutput(Engine& engine, std::string& error) {
    std::string serverError;
    if (auto server = ReconnectingPulseOutput::open(engine, serverError))
        return server;
    if (auto device = SdlOutput::open(engine, error))
        return device;
    error = serverError + "; SDL: " + error;
    return nullptr;
}

std::unique_ptr<AudioOutput> makeNullOutput(Engine& engine) {
    return std::make_unique<NullOutput>(engine);
}

std::unique_ptr<AudioOutput> openDefaultOutput(Engine& engine) {
    std::string error;
    if (auto device = openDeviceOutput(engine, error)) {
        std::fprintf(stderr, "Sylvora: playing through %s\n", device->description().c_str());
        return device;
    }
    std::fprintf(stderr, "Sylvora: no sound device (%s); playing silently until a sound server appears.\n",
                 error.empty() ? "unknown" : error.c_str());
    return ReconnectingPulseOutput::waitForServer(engine);
}

}  // namespace sylvora::audio
