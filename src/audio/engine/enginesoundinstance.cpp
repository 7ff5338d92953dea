#include "audio/engine/enginesoundinstance.h"

#include <algorithm>
#include <cmath>
#include <limits>

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

void EngineSoundInstance::settle() const {
    if (!cued_)
        return;
    const std::uint64_t status = voice_->status.load(std::memory_order_acquire);
    if (voiceword::segment(status) != preparedSegment_ || !(voiceword::flagA(status) || voiceword::flagB(status)))
        return;
    cued_ = false;
    cueOn_.reset();
    prepared_ = false;
    started_ = true;
    segment_ = preparedSegment_;
}

bool EngineSoundInstance::playing() const {
    settle();
    if (!started_)
        return false;
    const Heard h = heard();
    return !(h.current && h.ended);
}

std::int64_t EngineSoundInstance::position() const {
    settle();
    const std::int64_t end = voice_->source->frames;
    if (started_) {
        const Heard h = heard();
        if (h.current)
            return h.ended ? end : std::min(h.position, end);
    }
    return done_ ? end : position_;
}

std::int64_t EngineSoundInstance::time() const {
    return timeAt(position());
}

std::int64_t EngineSoundInstance::timeAt(std::int64_t frames) const {
    const SoundSource& source = *voice_->source;
    if (frames >= source.frames)
        return source.sourceFrames;
    const std::int64_t rate = engine_.sampleRate;
    const std::int64_t sourceFrame = source.sourceRate == rate ? frames : frames * source.sourceRate / rate;
    return std::min(sourceFrame, source.sourceFrames);
}

double EngineSoundInstance::rate() const {
    return playing() ? 1.0 : 0.0;
}

bool EngineSoundInstance::failedToRead() const {
    settle();
    return segment_ != 0 && voice_->unreadSegment.load(std::memory_order_acquire) == segment_;
}

std::int64_t EngineSoundInstance::assuredTime() const {
    settle();
    if (!voice_->source->streamed)
        return duration();
    const std::uint64_t filled = voice_->filled.load(std::memory_order_acquire);
    return timeAt(voiceword::segment(filled) == segment_ ? voiceword::position(filled) : position());
}

void EngineSoundInstance::fadeNextChange(double seconds) {
    // Stored before the control word that it shapes, whose release publishes it too.
    const auto frames = std::llround(std::max(0.0, seconds) * engine_.sampleRate);
    voice_->fadeFrames.store(static_cast<std::uint32_t>(std::min<long long>(frames, std::numeric_limits<std::uint32_t>::max())),
                             std::memory_order_relaxed);
}

bool EngineSoundInstance::isDone() const {
    settle();
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
    cued_ = false;
    cueOn_.reset();
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
    } else if (cued_) {
        cued_ = false;
        cueOn_.reset();
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
    if (cued_ && position_ != 0) {
        cued_ = false;
        cueOn_.reset();
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
    if (playing())
        return;
    const std::int64_t from = position();
    if (prepared_ && preparedFrom_ == from)
        return;
    prepared_ = true;
    preparedSegment_ = nextNumber(nextSegment_);
    preparedFrom_ = from;
    requestRing(preparedSegment_, from);
}

std::uint32_t EngineSoundInstance::playSegment() {
    if (playing())
        return segment_;
    prepareToStart();
    return preparedSegment_;
}

bool EngineSoundInstance::cueAfter(SoundInstance& predecessor, double overlapSeconds) {
    auto* before = dynamic_cast<EngineSoundInstance*>(&predecessor);
    if (before == nullptr || before == this || &before->engine_ != &engine_ || playing())
        return false;
    const std::uint32_t beforeSegment = before->playSegment();
    prepareToStart();
    const std::shared_ptr<Voice>& on = before->voice_;
    const auto lead = static_cast<std::int64_t>(std::llround(std::max(0.0, overlapSeconds) * engine_.sampleRate));
    voice_->cueVoice.store(on.get(), std::memory_order_relaxed);
    voice_->cueSlot.store(on->slot, std::memory_order_relaxed);
    voice_->cueSegment.store(beforeSegment, std::memory_order_relaxed);
    voice_->cueFrame.store(std::max<std::int64_t>(0, on->source->frames - lead), std::memory_order_relaxed);
    voice_->control.store(voiceword::pack(preparedSegment_, voiceword::FLAG_B, preparedFrom_),
                          std::memory_order_release);
    cued_ = true;
    cueOn_ = on;
    cueOnSegment_ = beforeSegment;
    return true;
}

bool EngineSoundInstance::isCued() const {
    settle();
    if (!cued_)
        return false;
    const std::uint64_t wanted = cueOn_->control.load(std::memory_order_acquire);
    if ((voiceword::flagA(wanted) || voiceword::flagB(wanted)) && voiceword::segment(wanted) == cueOnSegment_)
        return true;
    // A predecessor that reached its end still fires the cue in the next block, even when it has
    // been rewound since: the audio thread goes by what it last played.
    const std::uint64_t played = cueOn_->status.load(std::memory_order_acquire);
    return voiceword::segment(played) == cueOnSegment_ && voiceword::flagA(played);
}

}  // namespace sylvora::audio
