#include "audio/engine/voice.h"

#include <algorithm>

#include "audio/engine/mixcontext.h"
#include "audio/engine/mixkernels.h"
#include "audio/engine/sourcereader.h"

namespace sylvora::audio {

Voice::Voice(std::shared_ptr<const SoundSource> sound) : source(std::move(sound)) {}

Voice::~Voice() = default;

std::size_t Voice::takeFadeFrames() noexcept {
    std::uint32_t wished = fadeFrames.load(std::memory_order_relaxed);
    // Spent unless the main thread has wished another since.
    if (wished != 0)
        fadeFrames.compare_exchange_strong(wished, 0, std::memory_order_relaxed);
    return wished;
}

void Voice::applyControl(std::uint64_t word, const MixContext& context) noexcept {
    const std::uint32_t segment = voiceword::segment(word);
    const bool play = voiceword::flagA(word);
    const bool jump = segment != segment_;
    const bool fadesOut = playing_ && (jump || !play);
    const bool starts = play && (!playing_ || jump);
    const std::size_t wishedFade = fadesOut || starts ? takeFadeFrames() : 0;
    if (fadesOut) {
        // What is heard now fades out from where it is, whatever the new state says.
        const float heard = volume_ * attack_;
        const std::size_t length = std::max<std::size_t>(wishedFade > 0 ? wishedFade : context.declickFrames, 1);
        tail_ = Fade{true, cursor_, segment_, heard, length, heard / static_cast<float>(length)};
    }
    if (jump) {
        segment_ = segment;
        cursor_ = voiceword::position(word);
        ended_ = false;
    }
    if (starts) {
        // A sound started from its beginning is heard as its file begins; only one resumed mid-way
        // is cut in, and that is faded so it does not click. A wished fade applies either way.
        const std::size_t length = wishedFade > 0 ? wishedFade : cursor_ > 0 ? context.declickFrames : 0;
        attack_ = length > 0 ? 0.0f : 1.0f;
        attackLeft_ = length;
        attackStep_ = 1.0f / static_cast<float>(std::max<std::size_t>(length, 1));
        // A new play starts at the volume set for it, not gliding from the last play's.
        volume_ = rampTarget_ = gain.load(std::memory_order_relaxed);
        rampLeft_ = 0;
    }
    playing_ = play && !(ended_ && !jump);
    cued_ = !play && voiceword::flagB(word) && !(ended_ && !jump);
    fireAt_ = ~std::size_t{0};
    appliedControl_ = word;
}

void Voice::beginBlock(const std::atomic<Voice*>* slots, std::size_t frames) noexcept {
    if (!cued_ || control.load(std::memory_order_acquire) != appliedControl_)
        return;
    const Voice* before = cueVoice.load(std::memory_order_relaxed);
    if (before == nullptr || slots[cueSlot.load(std::memory_order_relaxed)].load(std::memory_order_acquire) != before)
        return;
    // The predecessor as it stands after the last block: it has not mixed this one yet. One that
    // ended counts even if the main thread has since rewound it; one still playing only while the
    // main thread still wants that play (a removed sound's voice is told to stop first).
    if (before->segment_ != cueSegment.load(std::memory_order_relaxed))
        return;
    if (!before->ended_) {
        const std::uint64_t wanted = before->control.load(std::memory_order_acquire);
        // (A predecessor that began by a cue of its own still has "cued" as its wish.)
        const bool wantsPlay = voiceword::flagA(wanted) || voiceword::flagB(wanted);
        if (!before->playing_ || !wantsPlay || voiceword::segment(wanted) != before->segment_)
            return;
    }
    // One that ended before the cue (its file could not be read) hands over at once, not never.
    const std::int64_t ahead = before->ended_ ? 0 : cueFrame.load(std::memory_order_relaxed) - before->cursor_;
    if (ahead < static_cast<std::int64_t>(frames))
        fireAt_ = static_cast<std::size_t>(std::max<std::int64_t>(0, ahead));
}

std::size_t Voice::take(std::int64_t cursor, std::uint32_t segment, float* out, const float* gains,
                        std::size_t frames, bool constantGain) noexcept {
    const bool mono = source->channels == 1;
    auto add = [&](const float* from, float* to, const float* g, std::size_t n) {
        if (constantGain) {
            mono ? mixkernels::addMono(from, to, gains[0], n) : mixkernels::addStereo(from, to, gains[0], n);
        } else {
            mono ? mixkernels::addMono(from, to, g, n) : mixkernels::addStereo(from, to, g, n);
        }
    };
    if (!source->streamed) {
        const std::int64_t left = std::max<std::int64_t>(0, source->frames - cursor);
        const std::size_t n = std::min(frames, static_cast<std::size_t>(left));
        add(source->samples.data() +
                static_cast<std::size_t>(cursor) * static_cast<std::size_t>(source->channels),
            out, gains, n);
        return n;
    }
    StreamRing* r = ring.load(std::memory_order_acquire);
    if (!r || r->segment != segment || r->readFrame() != cursor)
        return 0;
    std::size_t done = 0;
    while (done < frames) {
        std::size_t span = 0;
        const float* from = r->readSpan(span);
        const std::size_t n = std::min(span, frames - done);
        if (n == 0)
            break;
        add(from, out + 2 * done, gains + done, n);
        r->consume(n);
        done += n;
    }
    return done;
}

void Voice::mixHead(float* out, std::size_t frames, MixContext& context) noexcept {
    const bool constant = rampLeft_ == 0 && attackLeft_ == 0;
    float* gains = context.gains;
    if (constant) {
        gains[0] = volume_;
    } else {
        std::size_t done = 0;
        if (rampLeft_ > 0) {
            done = std::min(frames, rampLeft_);
            mixkernels::fillRamp(gains, volume_ + rampStep_, rampStep_, done);
            rampLeft_ -= done;
            volume_ = rampLeft_ == 0 ? rampTarget_ : volume_ + rampStep_ * static_cast<float>(done);
        }
        mixkernels::fill(gains + done, volume_, frames - done);
        if (attackLeft_ > 0) {
            const float step = attackStep_;
            const std::size_t n = std::min(frames, attackLeft_);
            mixkernels::scaleRamp(gains, attack_ + step, step, n);
            attackLeft_ -= n;
            attack_ = attackLeft_ == 0 ? 1.0f : attack_ + step * static_cast<float>(n);
        }
    }
    const std::size_t taken = take(cursor_, segment_, out, gains, frames, constant);
    cursor_ += static_cast<std::int64_t>(taken);
    // Both kinds of source deliver exactly `frames` frames, so the play ends in the block that
    // plays its last frame, not in the next one that finds nothing left.
    if (cursor_ >= source->frames) {
        ended_ = true;
        playing_ = false;
        return;
    }
    if (!source->streamed || taken == frames)
        return;
    StreamRing* r = ring.load(std::memory_order_acquire);
    if (r && r->segment == segment_ && r->exhausted()) {
        ended_ = true;
        playing_ = false;
    } else {
        context.underruns->fetch_add(1, std::memory_order_relaxed);
    }
}

void Voice::mixTail(float* out, std::size_t frames, MixContext& context) noexcept {
    const std::size_t n = std::min(frames, tail_.remaining);
    const float step = tail_.step;
    float* gains = context.tailGains;
    mixkernels::fillRamp(gains, tail_.gain - step, -step, n);
    for (std::size_t i = 0; i < n; ++i)
        gains[i] = std::max(0.0f, gains[i]);
    tail_.gain = std::max(0.0f, tail_.gain - step * static_cast<float>(n));
    const std::size_t taken = take(tail_.cursor, tail_.segment, out, gains, n, false);
    tail_.cursor += static_cast<std::int64_t>(taken);
    tail_.remaining -= n;
    if (taken < n || tail_.remaining == 0)
        tail_.active = false;
}

void Voice::mix(float* out, std::size_t frames, MixContext& context) noexcept {
    const std::uint64_t word = control.load(std::memory_order_acquire);
    if (word != appliedControl_)
        applyControl(word, context);
    const float target = gain.load(std::memory_order_relaxed);
    if (target != rampTarget_) {
        rampTarget_ = target;
        if (playing_) {
            rampLeft_ = std::max<std::size_t>(context.rampFrames, 1);
            rampStep_ = (target - volume_) / static_cast<float>(rampLeft_);
        } else {
            volume_ = target;
            rampLeft_ = 0;
        }
    }
    if (tail_.active)
        mixTail(out, frames, context);
    if (cued_ && fireAt_ < frames) {
        // The handover: the predecessor's last sample is followed by this voice's first, at the
        // volume set for it, with nothing faded.
        cued_ = false;
        playing_ = true;
        attack_ = 1.0f;
        attackLeft_ = 0;
        volume_ = rampTarget_ = target;
        rampLeft_ = 0;
        mixHead(out + 2 * fireAt_, frames - fireAt_, context);
        fireAt_ = ~std::size_t{0};
    } else if (playing_) {
        mixHead(out, frames, context);
    }
    const bool sounding = playing_ || tail_.active;
    const std::uint64_t word2 = voiceword::pack(
        segment_, (ended_ ? voiceword::FLAG_A : 0) | (sounding ? voiceword::FLAG_B : 0), cursor_);
    if (word2 != published_) {
        published_ = word2;
        status.store(word2, std::memory_order_release);
    }
}

}  // namespace sylvora::audio
