#include "audio/engine/engine.h"

#include <algorithm>
#include <chrono>
#include <cstring>

#include "audio/engine/engineimpl.h"
#include "audio/engine/enginesoundinstance.h"
#include "audio/engine/voice.h"

namespace sylvora::audio {

namespace {
// A start or stop fades over 5 ms: long enough that the step is inaudible, short enough that the
// sound still starts "at once".
constexpr double DECLICK_SECONDS = 0.005;
// A new volume is reached over 20 ms, about one device buffer, so the scheduler's 15 steps a
// second join into one smooth curve.
constexpr double VOLUME_RAMP_SECONDS = 0.02;
// How long a disposed voice may take to play its fade-out before it is dropped regardless, and how
// long without a finished render means that no output is pulling (offline, or none started), so
// that a fade-out would never be played and is not waited for.
constexpr auto MAX_FADE_WAIT = std::chrono::seconds(2);
constexpr auto NOT_PULLING = std::chrono::milliseconds(500);
}  // namespace

Engine::Impl::Impl(int rate)
    : sampleRate(rate),
      cache(rate),
      streamer(rate, epochs),
      limiter(rate),
      live_(MAX_VOICES),
      gains_(MixContext::MAX_BLOCK),
      tailGains_(MixContext::MAX_BLOCK) {
    context_.declickFrames = static_cast<std::size_t>(rate * DECLICK_SECONDS);
    context_.rampFrames = static_cast<std::size_t>(rate * VOLUME_RAMP_SECONDS);
    context_.gains = gains_.data();
    context_.tailGains = tailGains_.data();
    context_.underruns = &underruns;
}

Engine::Impl::~Impl() {
    for (auto& slot : slots)
        slot.store(nullptr);
}

OSStatus Engine::Impl::open(const std::string& path, std::shared_ptr<Voice>& out) {
    reclaim();
    std::shared_ptr<const SoundSource> source;
    if (const OSStatus status = cache.load(path, source); status != noErr)
        return status;
    const auto free = std::find(live_.begin(), live_.end(), nullptr);
    if (free == live_.end())
        return movieListFullErr;
    const auto slot = static_cast<std::size_t>(free - live_.begin());
    auto voice = std::make_shared<Voice>(std::move(source));
    voice->slot = slot;
    *free = voice;
    if (voice->source->streamed)
        streamer.add(voice);
    slots[slot].store(voice.get(), std::memory_order_seq_cst);
    if (slot + 1 > slotsUsed.load(std::memory_order_relaxed))
        slotsUsed.store(slot + 1, std::memory_order_release);
    out = std::move(voice);
    return noErr;
}

void Engine::Impl::dispose(std::shared_ptr<Voice> voice) {
    const auto it = std::find(live_.begin(), live_.end(), voice);
    if (it == live_.end())
        return;
    const auto slot = static_cast<std::size_t>(it - live_.begin());
    // Silence it through the usual stop, so a playing instance fades instead of clicking.
    const std::uint64_t control = voice->control.load(std::memory_order_relaxed);
    voice->control.store(voiceword::pack(voiceword::segment(control), 0, voiceword::position(control)),
                         std::memory_order_release);
    voice->want.store(0, std::memory_order_release);
    if (voice->source->streamed)
        streamer.wake();
    dying_.push_back(Dying{std::move(voice), slot, Clock::now(), 0, false});
    reclaim();
}

void Engine::Impl::reclaim() {
    // Judged by time, not by the calls in between: a whole world disposed in one go makes many
    // calls with no render between them, and each of its voices still has its fade to play.
    const auto now = Clock::now();
    const std::uint64_t finished = epochs.finished.load(std::memory_order_acquire);
    if (finished != lastFinished_) {
        lastFinished_ = finished;
        lastRender_ = now;
    }
    const bool pulling = now - lastRender_ < NOT_PULLING;
    for (Dying& d : dying_) {
        if (d.unslotted)
            continue;
        const std::uint64_t status = d.voice->status.load(std::memory_order_acquire);
        const std::uint64_t control = d.voice->control.load(std::memory_order_acquire);
        const bool quiet =
            voiceword::segment(status) == voiceword::segment(control) && !voiceword::flagB(status);
        if (!quiet && pulling && now - d.disposed < MAX_FADE_WAIT)
            continue;
        slots[d.slot].store(nullptr, std::memory_order_seq_cst);
        d.stamp = epochs.stamp();
        d.unslotted = true;
    }
    std::erase_if(dying_, [&](Dying& d) {
        if (!d.unslotted || !epochs.passed(d.stamp))
            return false;
        if (d.voice->source->streamed)
            streamer.remove(d.voice.get());
        live_[d.slot].reset();
        return true;
    });
}

void Engine::Impl::render(float* interleaved, std::size_t frames) noexcept {
    const std::uint64_t ticket = epochs.enter();
    std::memset(interleaved, 0, frames * 2 * sizeof(float));
    const std::size_t used = slotsUsed.load(std::memory_order_acquire);
    for (std::size_t done = 0; done < frames;) {
        const std::size_t n = std::min(frames - done, MixContext::MAX_BLOCK);
        for (std::size_t i = 0; i < used; ++i) {
            if (Voice* voice = slots[i].load(std::memory_order_seq_cst))
                voice->beginBlock(slots.data(), n);
        }
        for (std::size_t i = 0; i < used; ++i) {
            if (Voice* voice = slots[i].load(std::memory_order_seq_cst))
                voice->mix(interleaved + 2 * done, n, context_);
        }
        done += n;
    }
    // However many voices pile up, nothing reaches full scale.
    if (limit)
        limiter.process(interleaved, frames);
    epochs.leave(ticket);
}

Engine::Engine(int sampleRate) : impl_(std::make_unique<Impl>(sampleRate)) {}

Engine::~Engine() = default;

int Engine::sampleRate() const noexcept {
    return impl_->sampleRate;
}

OSStatus Engine::openInstance(const std::string& path, std::unique_ptr<SoundInstance>& out) {
    out.reset();
    std::shared_ptr<Voice> voice;
    if (const OSStatus status = impl_->open(path, voice); status != noErr)
        return status;
    out = std::make_unique<EngineSoundInstance>(*impl_, std::move(voice));
    return noErr;
}

void Engine::render(float* interleaved, std::size_t frames) noexcept {
    impl_->render(interleaved, frames);
}

void Engine::service() {
    // The streaming thread is not woken here: it sleeps until a ring needs frames, and every
    // request for a ring wakes it when it is made.
    impl_->reclaim();
}

bool Engine::servicePending() const {
    return impl_->reclaimPending();
}

void Engine::setLowLatency(bool wanted) {
    impl_->lowLatency = wanted;
    if (impl_->outputLink)
        impl_->outputLink->setLowLatency(wanted);
}

bool Engine::lowLatencyWanted() const noexcept {
    return impl_->lowLatency;
}

void Engine::setOutputLink(OutputLink* link) {
    impl_->outputLink = link;
}

double Engine::outputDelay() const {
    return impl_->outputLink ? impl_->outputLink->queuedSeconds() : 0.0;
}

std::uint64_t Engine::underruns() const noexcept {
    return impl_->underruns.load(std::memory_order_relaxed);
}

void Engine::waitForStreams() {
    impl_->streamer.serveNow();
}

void Engine::waitForStreams(std::size_t frames) {
    impl_->streamer.serveAhead(frames);
}

std::size_t Engine::decodedBytes() {
    return impl_->cache.decodedBytes();
}

std::size_t Engine::ringsInUse() const noexcept {
    return impl_->streamer.ringsInUse();
}

}  // namespace sylvora::audio
