#include "audio/engine/streamer.h"

#include <algorithm>
#include <chrono>

#include <sys/resource.h>
#include <unistd.h>

#include "audio/engine/sourcereader.h"
#include "audio/engine/streamring.h"
#include "audio/engine/voice.h"

namespace sylvora::audio {

namespace {
// Without a finished render for this long (or this many passes, when an offline caller drives the
// passes), nobody is pulling audio, so a stopped instance's ring need not wait for its fade-out.
constexpr auto STALL_TIME = std::chrono::milliseconds(200);
constexpr int STALLED_PASSES = 20;
// While a ring waits to be retired (a fade-out playing, a render that may still read it) the
// thread looks again this often; otherwise it sleeps until a ring needs frames or it is woken.
constexpr auto RETIRE_CHECK = std::chrono::milliseconds(20);
constexpr std::size_t NOTHING_DUE = ~std::size_t{0};
constexpr int STREAM_NICE = -10;
constexpr std::size_t FIRST_FILL = 4096;
}  // namespace

std::size_t Streamer::refillAt(const StreamRing& ring) noexcept {
    return std::max(ring.capacityFrames() / 2, std::min(ring.capacityFrames() * 3 / 4, MIN_REFILL_AT));
}

std::size_t Streamer::ringFrames(std::size_t ringsInUse, int channels) noexcept {
    // The share falls with the square of the rings already held, so that a few streams get long
    // rings while a hundred, readied one after another, hold little more than short ones would.
    const std::size_t share =
        RING_BUDGET_BYTES / ((ringsInUse + 1) * (ringsInUse + 1)) / (static_cast<std::size_t>(channels) * sizeof(float));
    std::size_t frames = MIN_RING_FRAMES;
    while (frames * 2 <= share && frames * 2 <= MAX_RING_FRAMES)
        frames *= 2;
    return frames;
}

Streamer::Streamer(int engineRate, const RenderEpochs& epochs)
    : engineRate_(engineRate), epochs_(epochs), thread_([this] { run(); }) {}

Streamer::~Streamer() {
    {
        std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    wake_.notify_all();
    thread_.join();
}

void Streamer::add(std::shared_ptr<Voice> voice) {
    std::lock_guard lock(mutex_);
    voices_.push_back(std::move(voice));
}

void Streamer::remove(const Voice* voice) {
    std::lock_guard lock(mutex_);
    std::erase_if(voices_, [voice](const std::shared_ptr<Voice>& v) { return v.get() == voice; });
}

void Streamer::wake() {
    {
        std::lock_guard lock(mutex_);
        if (nudged_)
            return;
        nudged_ = true;
    }
    wake_.notify_one();
}

void Streamer::serveNow() {
    pass();
}

void Streamer::serveAhead(std::size_t frames) {
    bool low = false;
    // Only the main thread changes voices_, so it may read it without the lock. Backwards, so
    // that this thread and the streaming thread, which goes forwards, meet rather than queue.
    for (auto it = voices_.rbegin(); it != voices_.rend(); ++it) {
        Voice& voice = **it;
        const Need need = needs(voice, frames);
        if (need == Need::Frames) {
            std::lock_guard voiceLock(voice.stream.lock);
            serve(voice, false);
        }
        low = low || need == Need::Soon;
    }
    if (low)
        wake();
}

Streamer::Need Streamer::needs(const Voice& voice, std::size_t frames) const {
    const std::uint64_t want = voice.want.load(std::memory_order_acquire);
    const std::uint64_t control = voice.control.load(std::memory_order_acquire);
    // A ring nobody wants is never filled, by a pass or otherwise; one readied for a start that
    // has not come is not read yet. A cued voice starts by itself, so it counts as playing.
    const bool plays = voiceword::flagA(control) || voiceword::flagB(control);
    if (!voiceword::flagA(want) || !plays ||
        voiceword::segment(control) != voiceword::segment(want))
        return Need::Nothing;
    const StreamRing* ring = voice.ring.load(std::memory_order_acquire);
    if (!ring || ring->segment != voiceword::segment(want))
        return Need::Frames;
    if (ring->full())
        return Need::Nothing;
    const std::size_t held = ring->readableFrames();
    if (held < frames)
        return Need::Frames;
    return held < refillAt(*ring) ? Need::Soon : Need::Nothing;
}

void Streamer::run() {
    // Reading is what keeps the rings from running dry, so it should not queue behind whatever
    // else keeps the cores busy. Raising the priority needs a privilege most users lack; without
    // it the thread simply runs at the normal priority.
    setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), STREAM_NICE);
    Clock::time_point due = Clock::time_point::max();
    std::unique_lock lock(mutex_);
    const auto woken = [this] { return stopping_ || nudged_; };
    while (!stopping_) {
        if (due == Clock::time_point::max())
            wake_.wait(lock, woken);
        else
            wake_.wait_until(lock, due, woken);
        if (stopping_)
            break;
        nudged_ = false;
        lock.unlock();
        due = pass();
        lock.lock();
    }
}

Streamer::Clock::time_point Streamer::pass() {
    std::lock_guard passLock(passMutex_);
    {
        std::lock_guard lock(mutex_);
        passVoices_ = voices_;
    }
    const Clock::time_point now = Clock::now();
    const std::uint64_t finished = epochs_.finished.load(std::memory_order_acquire);
    if (finished != lastFinished_) {
        lastFinished_ = finished;
        lastProgress_ = now;
        idlePasses_ = 0;
    } else {
        ++idlePasses_;
    }
    const bool stalled = idlePasses_ >= STALLED_PASSES || now - lastProgress_ >= STALL_TIME;
    // Emptiest first, and new rings (none yet) before all: under load they run dry first. The
    // levels are read once, as the audio thread keeps draining them.
    passOrder_.clear();
    for (std::size_t i = 0; i < passVoices_.size(); ++i) {
        const StreamRing* ring = passVoices_[i]->ring.load(std::memory_order_acquire);
        passOrder_.emplace_back(ring ? ring->readableFrames() : 0, i);
    }
    std::sort(passOrder_.begin(), passOrder_.end());
    std::size_t dueIn = NOTHING_DUE;
    bool retiring = false;
    for (const auto& [level, index] : passOrder_) {
        const std::shared_ptr<Voice>& voice = passVoices_[index];
        std::lock_guard voiceLock(voice->stream.lock);
        if (serve(*voice, stalled))
            retiring = true;
        const StreamRing* ring = voice->stream.ring.get();
        if (ring && voice->stream.reader) {
            const std::size_t ready = ring->readableFrames();
            const std::size_t mark = refillAt(*ring);
            dueIn = std::min(dueIn, ready > mark ? ready - mark : 0);
        }
    }
    {
        std::lock_guard graveLock(graveyardMutex_);
        std::erase_if(graveyard_, [&](const auto& entry) { return epochs_.passed(entry.second); });
        retiring = retiring || !graveyard_.empty();
    }
    // Voices dropped by the main thread meanwhile may die here; that is fine off the audio thread.
    passVoices_.clear();

    Clock::time_point due = Clock::time_point::max();
    if (dueIn != NOTHING_DUE)
        due = now + std::chrono::nanoseconds(static_cast<std::int64_t>(dueIn) * 1'000'000'000 / engineRate_);
    if (retiring)
        due = std::min(due, now + RETIRE_CHECK);
    return due;
}

bool Streamer::serve(Voice& voice, bool stalled) {
    const std::uint64_t want = voice.want.load(std::memory_order_acquire);
    Voice::StreamState& state = voice.stream;
    const std::uint64_t status = voice.status.load(std::memory_order_acquire);
    const bool playedOut = voiceword::segment(status) == voiceword::segment(want) && voiceword::flagA(status);
    const std::uint64_t control = voice.control.load(std::memory_order_acquire);
    const bool quiet = voiceword::segment(status) == voiceword::segment(control) &&
                       !voiceword::flagB(status) && (!voiceword::flagA(control) || voiceword::flagA(status));
    if (voiceword::flagA(want) && !playedOut) {
        if (!state.ring || state.ring->segment != voiceword::segment(want)) {
            // A play only readied must not take the ring from the fade-out of the one just
            // stopped: whether that fade were heard would hang on when this thread got here, and
            // a stop and a start in one tick would sound different from run to run. Once the new
            // play starts (or is cued) it needs its frames and takes the ring as it stands.
            const bool begun = (voiceword::flagA(control) || voiceword::flagB(control)) &&
                               voiceword::segment(control) == voiceword::segment(want);
            if (state.ring && !quiet && !begun && !stalled)
                return true;
            openRing(voice, want);
        }
        fill(voice);
        return false;
    }
    if (!state.ring)
        return false;
    // Not wanted any more: keep the ring until the audio thread has played the stop's fade-out.
    if (!quiet && !stalled)
        return true;
    voice.ring.store(nullptr, std::memory_order_seq_cst);
    retire(std::move(state.ring));
    state.reader.reset();
    return false;
}

void Streamer::openRing(Voice& voice, std::uint64_t want) {
    Voice::StreamState& state = voice.stream;
    const SoundSource& source = *voice.source;
    const std::int64_t start = std::min(voiceword::position(want), source.frames);
    const std::size_t frames = ringFrames(rings_.load(std::memory_order_relaxed), source.channels);
    auto ring = std::make_unique<StreamRing>(voiceword::segment(want), start, source.channels, frames);
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
    if (!state.reader) {
        ring->markEnd();
        voice.unreadSegment.store(voiceword::segment(want), std::memory_order_release);
    }
    std::unique_ptr<StreamRing> old = std::move(state.ring);
    state.ring = std::move(ring);
    // Published once its first frames are in, so that a play started without being readied
    // waits for one decoder open and a few milliseconds of audio, not for a whole ring; the
    // caller fills the rest.
    fill(voice, FIRST_FILL);
    voice.ring.store(state.ring.get(), std::memory_order_seq_cst);
    if (old)
        retire(std::move(old));
}

void Streamer::fill(Voice& voice, std::size_t upTo) {
    Voice::StreamState& state = voice.stream;
    if (!state.ring)
        return;
    StreamRing& ring = *state.ring;
    for (std::size_t held = ring.readableFrames(); state.reader && !ring.full() && held < upTo;
         held = ring.readableFrames()) {
        std::size_t span = 0;
        float* to = ring.writeSpan(span);
        const std::size_t n = state.reader->read(to, std::min(span, upTo - held));
        if (n == 0) {
            ring.markEnd();
            if (state.reader->cameUpShort())
                voice.unreadSegment.store(ring.segment, std::memory_order_release);
            state.reader.reset();
            break;
        }
        ring.commitWrite(n);
    }
    // The play cannot end before what the ring holds: the main thread may count on that much.
    voice.filled.store(voiceword::pack(ring.segment, 0, ring.writtenEnd()), std::memory_order_release);
}

void Streamer::retire(std::unique_ptr<StreamRing> ring) {
    if (!ring)
        return;
    std::lock_guard graveLock(graveyardMutex_);
    graveyard_.emplace_back(std::move(ring), epochs_.stamp());
    rings_.fetch_sub(1, std::memory_order_relaxed);
}

}  // namespace sylvora::audio
