#include "audio/engine/streamer.h"

#include <algorithm>
#include <chrono>

#include "audio/engine/sourcereader.h"
#include "audio/engine/streamring.h"
#include "audio/engine/voice.h"

namespace sylvora::audio {

namespace {
// Passes without a finished render after which nobody is pulling audio, so a stopped instance's
// ring need not wait for its fade-out to be played (about 200 ms).
constexpr int STALLED_PASSES = 20;
}  // namespace

Streamer::Streamer(int engineRate, const RenderEpochs& epochs)
    : engineRate_(engineRate), epochs_(epochs), thread_([this] { run(); }) {}

Streamer::~Streamer() {
    {
        std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    wake_.notify_all();
    served_.notify_all();
    thread_.join();
}

void Streamer::add(std::shared_ptr<Voice> voice) {
    {
        std::lock_guard lock(mutex_);
        voices_.push_back(std::move(voice));
    }
}

void Streamer::remove(const Voice* voice) {
    std::lock_guard lock(mutex_);
    std::erase_if(voices_, [voice](const std::shared_ptr<Voice>& v) { return v.get() == voice; });
}

void Streamer::wake() {
    {
        std::lock_guard lock(mutex_);
        nudged_ = true;
    }
    wake_.notify_one();
}

void Streamer::waitUntilServed() {
    std::unique_lock lock(mutex_);
    const std::uint64_t ticket = ++requests_;
    nudged_ = true;
    wake_.notify_one();
    served_.wait(lock, [&] { return passesDone_ >= ticket || stopping_; });
}

void Streamer::run() {
    std::vector<std::shared_ptr<Voice>> voices;
    std::unique_lock lock(mutex_);
    while (!stopping_) {
        wake_.wait_for(lock, std::chrono::milliseconds(PERIOD_MS), [&] { return stopping_ || nudged_; });
        if (stopping_)
            break;
        nudged_ = false;
        const std::uint64_t ticket = requests_;
        voices = voices_;
        lock.unlock();

        const std::uint64_t finished = epochs_.finished.load(std::memory_order_acquire);
        idlePasses_ = finished == lastFinished_ ? idlePasses_ + 1 : 0;
        lastFinished_ = finished;
        const bool stalled = idlePasses_ >= STALLED_PASSES;
        for (const auto& voice : voices)
            serve(*voice, stalled);
        std::erase_if(graveyard_, [&](const auto& entry) { return epochs_.passed(entry.second); });
        // Voices dropped by the main thread meanwhile may die here; that is fine off the audio thread.
        voices.clear();

        lock.lock();
        passesDone_ = ticket;
        served_.notify_all();
    }
}

void Streamer::serve(Voice& voice, bool stalled) {
    const std::uint64_t want = voice.want.load(std::memory_order_acquire);
    Voice::StreamState& state = voice.stream;
    const std::uint64_t status = voice.status.load(std::memory_order_acquire);
    const bool playedOut = voiceword::segment(status) == voiceword::segment(want) && voiceword::flagA(status);
    if (voiceword::flagA(want) && !playedOut) {
        if (!state.ring || state.ring->segment != voiceword::segment(want))
            openRing(voice, want);
        fill(voice);
        return;
    }
    if (!state.ring)
        return;
    // Not wanted any more: keep the ring until the audio thread has played the stop's fade-out.
    const std::uint64_t control = voice.control.load(std::memory_order_acquire);
    const bool quiet = voiceword::segment(status) == voiceword::segment(control) &&
                       !voiceword::flagB(status) && (!voiceword::flagA(control) || voiceword::flagA(status));
    if (!quiet && !stalled)
        return;
    voice.ring.store(nullptr, std::memory_order_seq_cst);
    retire(std::move(state.ring));
    state.reader.reset();
}

void Streamer::openRing(Voice& voice, std::uint64_t want) {
    Voice::StreamState& state = voice.stream;
    const SoundSource& source = *voice.source;
    const std::int64_t start = std::min(voiceword::position(want), source.frames);
    auto ring = std::make_unique<StreamRing>(voiceword::segment(want), start, source.channels, RING_FRAMES);
    rings_.fetch_add(1, std::memory_order_relaxed);
    state.reader.reset();
    std::unique_ptr<Decoder> decoder;
    if (openDecoder(source.path, decoder) == noErr && decoder->format().sampleRate == source.sourceRate &&
        SourceReader::outputChannels(decoder->format().channels) == source.channels) {
        state.reader = std::make_unique<SourceReader>(std::move(decoder), source.sourceFrames, engineRate_);
        if (!state.reader->valid() || (start > 0 && !state.reader->seek(start)))
            state.reader.reset();
    }
    // A file that vanished or changed under us ends the play rather than playing something else.
    if (!state.reader)
        ring->markEnd();
    std::unique_ptr<StreamRing> old = std::move(state.ring);
    state.ring = std::move(ring);
    fill(voice);
    voice.ring.store(state.ring.get(), std::memory_order_seq_cst);
    if (old)
        retire(std::move(old));
}

void Streamer::fill(Voice& voice) {
    Voice::StreamState& state = voice.stream;
    if (!state.reader || !state.ring)
        return;
    StreamRing& ring = *state.ring;
    while (!ring.full()) {
        std::size_t span = 0;
        float* to = ring.writeSpan(span);
        const std::size_t n = state.reader->read(to, span);
        if (n == 0) {
            ring.markEnd();
            state.reader.reset();
            return;
        }
        ring.commitWrite(n);
    }
}

void Streamer::retire(std::unique_ptr<StreamRing> ring) {
    if (!ring)
        return;
    graveyard_.emplace_back(std::move(ring), epochs_.stamp());
    rings_.fetch_sub(1, std::memory_order_relaxed);
}

}  // namespace sylvora::audio
