#pragma once

// Writes the engine's output (interleaved 32-bit float stereo) to a sound file through libsndfile;
// the extension chooses the format: ".flac" gives 24-bit FLAC, anything else 32-bit float WAV.
// Lifecycle: create -> write any number of times -> close (or destroy). [main]

#include <sndfile.h>

#include <cstddef>
#include <memory>
#include <string>

#include "util/status.h"

namespace sylvora::audio {

class AudioFileWriter {
  public:
    // Null with `error` filled when the file cannot be created.
    static std::unique_ptr<AudioFileWriter> create(const std::string& path, int sampleRate,
                                                   std::string& error);

    // Appends `frames` stereo frames; ioErr (or dskFulErr) when they could not all be written.
    OSStatus write(const float* interleaved, std::size_t frames);
    // Finishes the file; a second call does nothing.
    OSStatus close();
    ~AudioFileWriter();

    AudioFileWriter(const AudioFileWriter&) = delete;
    AudioFileWriter& operator=(const AudioFileWriter&) = delete;

  private:
    explicit AudioFileWriter(SNDFILE* file) : file_(file) {}
    SNDFILE* file_;
};

}  // namespace sylvora::audio
