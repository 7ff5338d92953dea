// The decoders on a sound file made from the input: both backends decode it to the end and seek in
// it, and the engine opens it as an instance and plays it, as a world's sound would be.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

#include "audio/decoders/ffmpeg/ffmpegdecoder.h"
#include "audio/decoders/sndfile/sndfiledecoder.h"
#include "audio/engine/engine.h"
#include "audio/engine/soundinstance.h"
#include "support/scratch.h"

using namespace sylvora;

namespace {

constexpr std::size_t BLOCK_FRAMES = 1024;
// Far more than any input of the fuzzer's size decodes to honestly; keeps a decoder that claims
// endless output from turning into a timeout.
constexpr std::int64_t MAX_FRAMES = 1 << 22;
constexpr int ENGINE_RATE = 8000;
constexpr int MAX_CHANNELS = 1024;

void decodeAll(audio::Decoder& decoder) {
    const audio::SoundFormat format = decoder.format();
    if (format.channels <= 0 || format.channels > MAX_CHANNELS || format.sampleRate <= 0) {
        std::fprintf(stderr, "a decoder opened a file with %d channels at %d Hz\n", format.channels,
                     format.sampleRate);
        std::abort();
    }
    std::vector<float> block(BLOCK_FRAMES * static_cast<std::size_t>(format.channels));
    std::int64_t total = 0;
    while (total < MAX_FRAMES) {
        const std::size_t got = decoder.read(block.data(), BLOCK_FRAMES);
        if (got == 0) break;
        if (got > BLOCK_FRAMES) std::abort();
        total += static_cast<std::int64_t>(got);
    }
    if (decoder.seek(total / 2)) decoder.read(block.data(), BLOCK_FRAMES);
    if (decoder.seek(0)) decoder.read(block.data(), BLOCK_FRAMES);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Scratch::clear();
    const std::string path = fuzz::Scratch::work() + "/sound";
    if (!fuzz::Scratch::writeFile(path, data, size)) return 0;

    if (auto decoder = audio::SndfileDecoder::open(path)) decodeAll(*decoder);
    if (auto decoder = audio::FfmpegDecoder::open(path)) decodeAll(*decoder);

    audio::Engine engine(ENGINE_RATE);
    std::unique_ptr<audio::SoundInstance> instance;
    if (engine.openInstance(path, instance) == noErr) {
        instance->setVolume(256);
        instance->prepareToStart();
        instance->start();
        std::vector<float> out(2 * BLOCK_FRAMES);
        engine.waitForStreams();
        for (int i = 0; i < 8 && !instance->isDone(); ++i) {
            engine.render(out.data(), BLOCK_FRAMES);
            engine.service();
            engine.waitForStreams();
        }
        instance.reset();
        engine.service();
    }
    return 0;
}
