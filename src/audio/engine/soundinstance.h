#pragma once

// One loaded, independently playable instance of a sound file: the "movie" the scheduler drives.
// Every call here is [main]. State as the caller reads it changes at once, on the calling thread:
// after start() the rate is nonzero; after stop() the rate is 0 and the position stays; after
// goToBeginning() the position is 0 and isDone() is false; volume() returns the last value set.
// Only the advancing position and the end of a play come back from the audio thread, and they
// never undo a later call made here.

#include <cstdint>

namespace sylvora::audio {

class SoundInstance {
public:
    virtual ~SoundInstance() = default;  // DisposeMovie: stops and frees the instance

    virtual std::int64_t duration() const = 0;   // GetMovieDuration, in time units
    virtual std::int32_t timeScale() const = 0;  // GetMovieTimeScale: time units per second
    virtual std::int64_t time() const = 0;       // GetMovieTime: current position in time units
    virtual double rate() const = 0;             // GetMovieRate: 0 while stopped, 1 while playing
    virtual bool isDone() const = 0;             // IsMovieDone: the play has reached the end

    virtual void start() = 0;          // StartMovie: play from the current position
    virtual void stop() = 0;           // StopMovie: the position stays
    virtual void goToBeginning() = 0;  // GoToBeginningOfMovie

    // 8.8 fixed point: 256 is full volume, 0 silent. Changes are ramped across the next block.
    virtual std::int16_t volume() const = 0;
    virtual void setVolume(std::int16_t volume) = 0;

    // [main] Announces that the instance has been scheduled to start soon, so a streamed sound has
    // its buffer filled from its current position before its start. stop() releases that buffer.
    virtual void prepareToStart() = 0;

    // [main] Cues this stopped instance to start, from its position, on the very sample at which
    // `predecessor`'s current play (or its next, when it is stopped) has `overlapSeconds` left: a
    // handover with neither gap nor overlap nor fade, which no timer tick could place. start()
    // before then starts it at once; stop() or a rewind cancels the cue. False when it cannot be
    // cued (another engine's instance, or this one plays); start() it at its time instead.
    virtual bool cueAfter(SoundInstance& predecessor, double overlapSeconds) = 0;
    // [main] A cue is waiting for a predecessor that is still on its way to it.
    virtual bool isCued() const = 0;

    // [main] The last play ended early because the sound's file could no longer be read as it was
    // when opened (gone, cut short, replaced by something else). A sound held decoded in memory
    // never fails this way.
    virtual bool failedToRead() const = 0;
    // [main] How far (in time units) the current play is sure to get unless it is stopped: its end
    // for a sound held in memory; for a streamed one, the end of what has been read from its file
    // so far, because a read that fails ends the play only where what was read runs out. Until its
    // first frames are read, its position.
    virtual std::int64_t assuredTime() const = 0;

    // [main] The next start from the beginning, stop or disposal fades over `seconds` instead of a
    // declick's few milliseconds; a cued handover never fades. This is how one world gives way to
    // another (a save's reload) without a click and without a gap between them.
    virtual void fadeNextChange(double seconds) = 0;
};

}  // namespace sylvora::audio
