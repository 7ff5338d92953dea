#include "audio/engine/soundcache.h"

#include <sys/stat.h>

#include <cerrno>
#include <vector>

#include "audio/decoders/decoder.h"
#include "audio/engine/sourcereader.h"

namespace sylvora::audio {

OSStatus SoundCache::load(const std::string& path, std::shared_ptr<const SoundSource>& out) {
    out.reset();
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0)
        return statusFromErrno(errno);
    const Key key{static_cast<std::uint64_t>(info.st_dev), static_cast<std::uint64_t>(info.st_ino),
                  static_cast<std::int64_t>(info.st_size), static_cast<std::int64_t>(info.st_mtim.tv_sec),
                  static_cast<std::int64_t>(info.st_mtim.tv_nsec)};
    prune();
    if (auto it = entries_.find(key); it != entries_.end()) {
        if ((out = it->second.lock()))
            return noErr;
    }
    auto source = std::make_shared<SoundSource>();
    if (const OSStatus status = decode(path, *source); status != noErr)
        return status;
    entries_[key] = source;
    out = std::move(source);
    return noErr;
}

OSStatus SoundCache::decode(const std::string& path, SoundSource& source) {
    std::unique_ptr<Decoder> decoder;
    if (const OSStatus status = openDecoder(path, decoder); status != noErr)
        return status;
    const SoundFormat format = decoder->format();
    std::int64_t frames = format.frames;
    // A damaged header can claim any length (libsndfile's "unknown" is the largest count there
    // is): past a year at the highest rate the frames are counted instead of believed, which also
    // keeps every later conversion of the count to the engine's rate inside 64 bits.
    constexpr std::int64_t MOST_BELIEVED_FRAMES = std::int64_t{192000} * 60 * 60 * 24 * 365;
    if (frames < 0 || frames > MOST_BELIEVED_FRAMES)
        frames = countFrames(*decoder);
    if (frames < 0)
        return ioErr;
    if (frames > 0) {
        // A file that opens but yields nothing is as unreadable as one that does not open.
        std::vector<float> probe(256 * static_cast<std::size_t>(format.channels));
        if (decoder->read(probe.data(), 256) == 0 || !decoder->seek(0))
            return ioErr;
    }
    source.path = path;
    source.sourceRate = format.sampleRate;
    source.sourceFrames = frames;
    source.channels = SourceReader::outputChannels(format.channels);
    source.frames = SourceReader::engineFrames(frames, format.sampleRate, engineRate_);
    const auto bytes =
        static_cast<std::size_t>(source.frames) * static_cast<std::size_t>(source.channels) * sizeof(float);
    source.streamed = bytes > MEMORY_LIMIT_BYTES;
    if (source.streamed)
        return noErr;

    SourceReader reader(std::move(decoder), frames, engineRate_);
    if (!reader.valid())
        return ioErr;
    source.samples.resize(static_cast<std::size_t>(source.frames) *
                          static_cast<std::size_t>(source.channels));
    std::size_t done = 0;
    const auto total = static_cast<std::size_t>(source.frames);
    while (done < total) {
        const std::size_t n = reader.read(
            source.samples.data() + done * static_cast<std::size_t>(source.channels), total - done);
        if (n == 0)
            break;
        done += n;
    }
    return noErr;
}

std::size_t SoundCache::decodedBytes() {
    prune();
    std::size_t bytes = 0;
    for (const auto& [key, weak] : entries_)
        if (auto source = weak.lock())
            bytes += source->samples.size() * sizeof(float);
    return bytes;
}

void SoundCache::prune() {
    std::erase_if(entries_, [](const auto& entry) { return entry.second.expired(); });
}

}  // namespace sylvora::audio
