#pragma once

// An audio output pulls the engine's render() at its own pace.
// Lifecycle: create -> start() -> stop() -> destroy. start/stop are [main]; the pulling happens on
// the output's own thread (the device callback or the null pacer).

#include <functional>
#include <memory>
#include <string>

namespace sylvora::audio {

class Engine;

class AudioOutput {
public:
    virtual ~AudioOutput() = default;
    virtual bool start() = 0;
    virtual void stop() = 0;
    virtual std::string description() const = 0;

    // [any] True while the output waits for a sound server that went away, or was not there at the
    // start; the engine keeps its pace meanwhile, unheard.
    virtual bool waitingForServer() const noexcept { return false; }
    // [main] Before start(): `changed` is called, on the output's own thread, each time
    // waitingForServer() changes.
    virtual void setServerListener(std::function<void()> changed) { (void)changed; }
};

// The sound server through its native client when one answers (reconnecting by itself whenever it
// goes away), else the default device through SDL2, at the engine's rate; null (with `error`
// filled) when there is no device, including when SDL initialises but cannot open one.
std::unique_ptr<AudioOutput> openDeviceOutput(Engine& engine, std::string& error);
// Pulls audio at real-time pace and discards it.
std::unique_ptr<AudioOutput> makeNullOutput(Engine& engine);
// The device when there is one, else the null output's pace until a sound server appears; either
// way one line on the standard error stream says which, and nothing else is printed.
std::unique_ptr<AudioOutput> openDefaultOutput(Engine& engine);

}  // namespace sylvora::audio
