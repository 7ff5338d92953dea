#pragma once

// The engine's SoundInstance. It keeps the state the caller sees (playing, position, done, volume)
// on the main thread, so every call takes effect at once for the caller, and tells the audio and
// streaming threads through the voice's atomic words. Only the advancing position and the end of a
// play come back from the audio thread, and only for the current segment of play.

#include <cstdint>
#include <memory>

#include "audio/engine/engine.h"
#include "audio/engine/soundinstance.h"

namespace sylvora::audio {

class Voice;

class EngineSoundInstance final : public SoundInstance {
public:
    EngineSoundInstance(Engine::Impl& engine, std::shared_ptr<Voice> voice);
    ~EngineSoundInstance() override;
    EngineSoundInstance(const EngineSoundInstance&) = delete;
    EngineSoundInstance& operator=(const EngineSoundInstance&) = delete;

    std::int64_t duration() const override;
    std::int32_t timeScale() const override;
    std::int64_t time() const override;
    double rate() const override;
    bool isDone() const override;

    void start() override;
    void stop() override;
    void goToBeginning() override;

    std::int16_t volume() const override { return volume_; }
    void setVolume(std::int16_t volume) override;

    void prepareToStart() override;
    bool cueAfter(SoundInstance& predecessor, double overlapSeconds) override;
    bool isCued() const override;
    bool failedToRead() const override;
    std::int64_t assuredTime() const override;
    void fadeNextChange(double seconds) override;

private:
    struct Heard {
        bool current = false;  // the audio thread has answered for the current segment
        bool ended = false;
        std::int64_t position = 0;  // engine frames
    };
    Heard heard() const;
    // A cue the audio thread has fired becomes an ordinary play here, on first sight.
    void settle() const;
    // The number the current play has, or the one the next start will take.
    std::uint32_t playSegment();
    bool playing() const;                     // started and not yet at its end
    std::int64_t position() const;            // engine frames
    std::int64_t timeAt(std::int64_t frames) const;  // engine frames in time units
    void publish(bool play, std::int64_t from);
    void requestRing(std::uint32_t segment, std::int64_t from);

    Engine::Impl& engine_;
    std::shared_ptr<Voice> voice_;
    mutable std::uint32_t segment_ = 0;  // current segment of play
    std::uint32_t nextSegment_ = 0;      // last number handed out
    mutable bool started_ = false;
    bool done_ = false;              // at the end while stopped
    std::int64_t position_ = 0;      // engine frames, while stopped or before the audio thread answers
    std::int16_t volume_ = 256;
    mutable bool prepared_ = false;  // the next start's number is taken (and a ring asked for it)
    std::uint32_t preparedSegment_ = 0;
    std::int64_t preparedFrom_ = 0;
    mutable bool cued_ = false;      // the next start waits for cueOn_ (prepared_ is then true)
    mutable std::shared_ptr<Voice> cueOn_;
    std::uint32_t cueOnSegment_ = 0;
};

}  // namespace sylvora::audio
