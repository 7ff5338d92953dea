#include "audio/engine/enginesoundinstance.h"

#include <algorithm>

#include "audio/engine/engineimpl.h"
#include "audio/engine/voice.h"

namespace sylvora::audio {

EngineSoundInstance::EngineSoundInstance(Engine::Impl& engine, std::shared_ptr<Voice> voice)
    : engine_(engine), voice_(std::move(voice)) {}

EngineSoundInstance::~EngineSoundInstance() {
    engine_.dispose(std::move(voice_));
}

std::int64_t EngineSoundInstance::duration() const {
    return voice_->source->sourceFrames;
}

std::int32_t EngineSoundInstance::timeScale() const {
    return voice_->source->sourceRate;
}

EngineSoundInstance::Heard EngineSoundInstance::heard() const {
    const std::uint64_t status = voice_->status.load(std::memory_order_acquire);
    if (voiceword::segment(status) != segment_)
        return {};
    return {true, voiceword::flagA(status), voiceword::position(status)};
}

bool EngineSoundInstance::playing() const {
    if (!started_)
        return false;
    const Heard h = heard();
    return !(h.current && h.ended);
}

std::int64_t EngineSoundInstance::position() const {
    const std::int64_t end = voice_->source->frames;
    if (started_) {
        const Heard h = heard();
        if (h.current)
            return h.ended ? end : std::min(h.position, end);
    }
    return done_ ? end : position_;
}

std::int64_t EngineSoundInstance::time() const {
    const SoundSource& source = *voice_->source;
    const std::int64_t frames = position();
    if (frames >= source.frames)
        return source.sourceFrames;
    const std::int64_t rate = engine_.sampleRate;
    const std::int64_t sourceFrame = source.sourceRate == rate ? frames : frames * source.sourceRate / rate;
    return std::min(sourceFrame, source.sourceFrames);
}

double EngineSoundInstance::rate() const {
    return playing() ? 1.0 : 0.0;
}

bool EngineSoundInstance::isDone() const {
    if (started_) {
        const Heard h = heard();
        return h.current && h.ended;
    }
    return done_;
}

void EngineSoundInstance::publish(bool play, std::int64_t from) {
    voice_->control.store(voiceword::pack(segment_, play ? voiceword::FLAG_A : 0, from),
                          std::memory_order_release);
}

void EngineSoundInstance::requestRing(std::uint32_t segment, std::int64_t from) {
    if (!voice_->source->streamed)
        return;
    voice_->want.store(voiceword::pack(segment, voiceword::FLAG_A, from), std::memory_order_release);
    engine_.streamer.wake();
}

namespace {
std::uint32_t nextNumber(std::uint32_t& counter) {
    // Segment 0 is the state before any play; the audio thread starts there.
    counter = (counter + 1) & voiceword::SEGMENT_MASK;
    if (counter == 0)
        counter = 1;
    return counter;
}
}  // namespace

void EngineSoundInstance::start() {
    if (playing())
        return;
    const std::int64_t from = position();
    done_ = false;
    if (prepared_ && preparedFrom_ == from) {
        segment_ = preparedSegment_;
    } else {
        segment_ = nextNumber(nextSegment_);
        requestRing(segment_, from);
    }
    prepared_ = false;
    started_ = true;
    position_ = from;
    publish(true, from);
}

void EngineSoundInstance::stop() {
    if (started_) {
        const Heard h = heard();
        position_ = position();
        done_ = h.current && h.ended;
        started_ = false;
        publish(false, position_);
    }
    prepared_ = false;
    if (voice_->source->streamed) {
        voice_->want.store(voiceword::pack(segment_, 0, position_), std::memory_order_release);
        engine_.streamer.wake();
    }
}

void EngineSoundInstance::goToBeginning() {
    if (playing()) {
        segment_ = nextNumber(nextSegment_);
        position_ = 0;
        requestRing(segment_, 0);
        publish(true, 0);
        return;
    }
    if (started_) {
        // The play ran to its end unmanaged: it is stopped now, at its beginning.
        started_ = false;
        publish(false, 0);
    }
    position_ = 0;
    done_ = false;
    if (prepared_ && preparedFrom_ != 0)
        prepareToStart();
}

void EngineSoundInstance::setVolume(std::int16_t volume) {
    volume_ = volume;
    voice_->gain.store(volume <= 0 ? 0.0f : static_cast<float>(volume) / 256.0f, std::memory_order_relaxed);
}

void EngineSoundInstance::prepareToStart() {
    if (!voice_->source->streamed || playing())
        return;
    const std::int64_t from = position();
    if (prepared_ && preparedFrom_ == from)
        return;
    prepared_ = true;
    preparedSegment_ = nextNumber(nextSegment_);
    preparedFrom_ = from;
    requestRing(preparedSegment_, from);
}

}  // namespace sylvora::audio
