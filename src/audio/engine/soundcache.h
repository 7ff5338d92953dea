#pragma once

// Loads sound files for the engine and shares what it loaded: every instance of the same file (the
// same device, inode, size and modification time) gets the same SoundSource, and a short sound is
// decoded only once. Entries die with their last instance.

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <tuple>

#include "audio/engine/soundsource.h"
#include "util/status.h"

namespace sylvora::audio {

class SoundCache {
  public:
    // A sound whose decoded form (engine rate, float, 1 or 2 channels) fits in this many bytes is
    // held whole in memory: 512 KiB is about 1.4 s of stereo or 2.7 s of mono at 48 kHz, the size
    // of two streaming rings. Below that, holding the sound costs less than streaming even one
    // instance of it would, and it plays with no disk access at all. Anything longer is streamed,
    // so a world's memory follows how many sounds are scheduled, not how long they are: 50
    // one-shots at the limit cost 25 MiB at most.
    static constexpr std::size_t MEMORY_LIMIT_BYTES = std::size_t{1} << 19;

    explicit SoundCache(int engineRate) : engineRate_(engineRate) {}

    // [main]
    OSStatus load(const std::string& path, std::shared_ptr<const SoundSource>& out);
    // [main] Bytes of decoded sound held in memory by live entries.
    std::size_t decodedBytes();

  private:
    using Key = std::tuple<std::uint64_t, std::uint64_t, std::int64_t, std::int64_t, std::int64_t>;
    OSStatus decode(const std::string& path, SoundSource& source);
    void prune();

    int engineRate_;
    std::map<Key, std::weak_ptr<const SoundSource>> entries_;
};

}  // namespace sylvora::audio
