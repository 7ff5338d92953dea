#pragma once

// One open sound file delivering its frames as interleaved 32-bit float in the file's own rate and
// channel count. Backends live in folders of their own; openDecoder() picks one by content.
// Lifecycle: openDecoder() -> read() until it returns 0 -> destroy. A decoder belongs to one thread
// at a time (the main thread while probing, the streaming thread while streaming).

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "util/status.h"

namespace sylvora::audio {

struct SoundFormat {
    int sampleRate = 0;
    int channels = 0;
    // Exact length in frames, or -1 when the container does not state it reliably (the caller then
    // counts the frames once by decoding).
    std::int64_t frames = -1;
};

class Decoder {
  public:
    virtual ~Decoder() = default;
    virtual SoundFormat format() const = 0;
    // Reads up to `frames` frames; returns the number read, 0 at the end or on a decoding error.
    virtual std::size_t read(float* interleaved, std::size_t frames) = 0;
    // Positions the next read() at source frame `frame` exactly; false when that cannot be done.
    virtual bool seek(std::int64_t frame) = 0;
};

// Opens `path` with the backend that suits it, falling back to the other one. fnfErr (or another
// file-system status) when the file cannot be reached, ioErr when no backend decodes it.
OSStatus openDecoder(const std::string& path, std::unique_ptr<Decoder>& out);

// [main] The sample rate `path` decodes at, read from its header without decoding; 0 when no
// backend opens it.
int probeSampleRate(const std::string& path);

}  // namespace sylvora::audio
