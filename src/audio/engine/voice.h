#pragma once

// The engine's side of one sound instance, shared by three threads. The main thread writes what it
// wants (control, gain, stream request) as single atomic words, so the latest wish always wins and
// no command can be lost or reordered; the audio thread mixes and answers with one status word;
// the streaming thread keeps the ring of a streamed sound filled.

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>

#include "audio/engine/soundsource.h"
#include "audio/engine/streamring.h"

namespace sylvora::audio {

class SourceReader;
struct MixContext;

// A segment is one continuous stretch of play: it begins with a start or a rewind. Segment numbers
// are how the three threads tell a current answer from a stale one.
namespace voiceword {
inline constexpr std::uint64_t SEGMENT_MASK = 0xFFFFFF;
inline constexpr int SEGMENT_SHIFT = 40;
inline constexpr std::uint64_t FLAG_A = 1ull << 39;  // control: playing; status: ended; want: wanted
inline constexpr std::uint64_t FLAG_B = 1ull << 38;  // control: cued; status: still sounding
inline constexpr std::uint64_t POSITION_MASK = (1ull << 38) - 1;

constexpr std::uint64_t pack(std::uint32_t segment, std::uint64_t flags, std::int64_t position) noexcept {
    return (static_cast<std::uint64_t>(segment & SEGMENT_MASK) << SEGMENT_SHIFT) | flags |
           (static_cast<std::uint64_t>(position) & POSITION_MASK);
}
constexpr std::uint32_t segment(std::uint64_t word) noexcept {
    return static_cast<std::uint32_t>(word >> SEGMENT_SHIFT);
}
constexpr std::int64_t position(std::uint64_t word) noexcept {
    return static_cast<std::int64_t>(word & POSITION_MASK);
}
constexpr bool flagA(std::uint64_t word) noexcept {
    return (word & FLAG_A) != 0;
}
constexpr bool flagB(std::uint64_t word) noexcept {
    return (word & FLAG_B) != 0;
}
}  // namespace voiceword

class Voice {
  public:
    explicit Voice(std::shared_ptr<const SoundSource> source);
    ~Voice();
    Voice(const Voice&) = delete;
    Voice& operator=(const Voice&) = delete;

    const std::shared_ptr<const SoundSource> source;
    std::size_t slot = 0;  // where the audio thread finds it; set once before it is published

    // Written by the main thread, read by the audio and streaming threads.
    std::atomic<std::uint64_t> control{0};  // segment | playing | position to play from
    std::atomic<float> gain{1.0f};          // target linear gain
    std::atomic<std::uint64_t> want{0};     // segment | ring wanted | position the ring starts at
    // Frames the next start from the beginning or stop fades over instead of the declick; 0 for the
    // declick. Written by the main thread before the control word, spent by the audio thread.
    std::atomic<std::uint32_t> fadeFrames{0};

    // A cue, written by the main thread before the control word that says "cued": this voice starts
    // on the very sample at which the voice in slot `cueSlot` (which must still be `cueVoice`)
    // reaches frame `cueFrame` of its play numbered `cueSegment`.
    std::atomic<Voice*> cueVoice{nullptr};
    std::atomic<std::size_t> cueSlot{0};
    std::atomic<std::uint32_t> cueSegment{0};
    std::atomic<std::int64_t> cueFrame{0};

    // Written by the audio thread, read by the others.
    std::atomic<std::uint64_t> status{0};  // segment | ended | sounding | position played

    // [RT] Before any voice mixes a block: applies the latest control word and, for a cued voice,
    // works out whether its predecessor reaches the cue inside the block. Run over every voice
    // first, so each sees its predecessor as it stands at the block's start, whatever the order.
    void beginBlock(const std::atomic<Voice*>* slots, std::size_t frames) noexcept;

    // Written by the streaming thread, read by the audio thread.
    std::atomic<StreamRing*> ring{nullptr};
    // Written by the streaming thread, read by the main thread: the last segment whose file could
    // not be read as it was measured (gone, cut short, replaced); its play ended there.
    std::atomic<std::uint32_t> unreadSegment{0};
    // Written by the streaming thread (or an offline main thread), read by the main thread: the
    // segment of the ring and the engine frame up to which it holds the play.
    std::atomic<std::uint64_t> filled{0};

    // [RT] Applies the latest control word and adds this voice into `out` (interleaved stereo).
    void mix(float* out, std::size_t frames, MixContext& context) noexcept;

    // Streaming state, touched under `lock` by the streaming thread or by a main thread that
    // fills a ring itself (offline), and by the destructor once both let go. Never by the audio thread.
    struct StreamState {
        std::mutex lock;
        std::unique_ptr<StreamRing> ring;
        std::unique_ptr<SourceReader> reader;
    } stream;

  private:
    struct Fade {
        bool active = false;
        std::int64_t cursor = 0;
        std::uint32_t segment = 0;
        float gain = 0.0f;
        std::size_t remaining = 0;
        float step = 0.0f;  // gain lost per frame
    };

    void applyControl(std::uint64_t word, const MixContext& context) noexcept;
    std::size_t takeFadeFrames() noexcept;  // the wished fade, spent, or 0
    // Adds up to `frames` frames from `cursor` with per-sample `gains`; returns the frames taken.
    std::size_t take(std::int64_t cursor, std::uint32_t segment, float* out, const float* gains,
                     std::size_t frames, bool constantGain) noexcept;
    void mixHead(float* out, std::size_t frames, MixContext& context) noexcept;
    void mixTail(float* out, std::size_t frames, MixContext& context) noexcept;

    // Audio-thread state.
    std::uint64_t appliedControl_ = 0;
    std::uint32_t segment_ = 0;
    bool playing_ = false;
    bool ended_ = false;
    std::int64_t cursor_ = 0;
    float volume_ = 1.0f;  // current (ramping) gain
    float rampTarget_ = 1.0f;
    float rampStep_ = 0.0f;
    std::size_t rampLeft_ = 0;
    float attack_ = 1.0f;  // envelope of a start that fades in
    float attackStep_ = 0.0f;
    std::size_t attackLeft_ = 0;
    Fade tail_;
    std::uint64_t published_ = ~0ull;
    bool cued_ = false;  // waiting for the predecessor; starts at `fireAt_` frames into the block
    std::size_t fireAt_ = ~std::size_t{0};
};

}  // namespace sylvora::audio
