#include "audio/outputs/file/audiofilewriter.h"

#include <algorithm>
#include <cctype>

namespace sylvora::audio {

std::unique_ptr<AudioFileWriter> AudioFileWriter::create(const std::string& path, int sampleRate,
                                                         std::string& error) {
    std::string lower = path;
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return std::tolower(c); });
    const bool flac = lower.size() >= 5 && lower.compare(lower.size() - 5, 5, ".flac") == 0;
    SF_INFO info{};
    info.samplerate = sampleRate;
    info.channels = 2;
    info.format = flac ? (SF_FORMAT_FLAC | SF_FORMAT_PCM_24) : (SF_FORMAT_WAV | SF_FORMAT_FLOAT);
    SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
    if (!file) {
        error = sf_strerror(nullptr);
        return nullptr;
    }
    // Integer formats clip rather than wrap when the mix goes over full scale.
    sf_command(file, SFC_SET_CLIPPING, nullptr, SF_TRUE);
    return std::unique_ptr<AudioFileWriter>(new AudioFileWriter(file));
}

OSStatus AudioFileWriter::write(const float* interleaved, std::size_t frames) {
    if (!file_)
        return paramErr;
    const auto n = static_cast<sf_count_t>(frames);
    return sf_writef_float(file_, interleaved, n) == n ? noErr : ioErr;
}

OSStatus AudioFileWriter::close() {
    if (!file_)
        return noErr;
    const int result = sf_close(file_);
    file_ = nullptr;
    return result == 0 ? noErr : ioErr;
}

AudioFileWriter::~AudioFileWriter() {
    close();
}

}  // namespace sylvora::audio
