#pragma once

// FFmpeg backend (libavformat + libavcodec): Ogg Vorbis, Opus, MP3, M4A/AAC, ALAC and whatever
// else libsndfile cannot open. Encoder delay and padding are trimmed by libavcodec, so the first
// frame delivered is the first sample of the sound.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "audio/decoders/decoder.h"

struct AVFormatContext;
struct AVCodecContext;
struct AVPacket;
struct AVFrame;

namespace sylvora::audio {

class FfmpegDecoder final : public Decoder {
  public:
    // Null when FFmpeg finds no decodable audio stream in the file.
    static std::unique_ptr<Decoder> open(const std::string& path);
    ~FfmpegDecoder() override;

    SoundFormat format() const override { return format_; }
    std::size_t read(float* interleaved, std::size_t frames) override;
    bool seek(std::int64_t frame) override;

  private:
    struct FormatCloser {
        void operator()(AVFormatContext* context) const noexcept;
    };
    struct CodecCloser {
        void operator()(AVCodecContext* context) const noexcept;
    };
    struct PacketCloser {
        void operator()(AVPacket* packet) const noexcept;
    };
    struct FrameCloser {
        void operator()(AVFrame* frame) const noexcept;
    };

    explicit FfmpegDecoder(std::string path);
    bool openStreams();
    std::int64_t statedLength() const;
    // Decodes the next frame into pending_; false at the end of the stream or on an error.
    bool decodeMore();
    void appendFrame(const AVFrame& frame);
    bool skipFrames(std::int64_t count);

    std::string path_;
    std::unique_ptr<AVFormatContext, FormatCloser> format_context_;
    std::unique_ptr<AVCodecContext, CodecCloser> codec_;
    std::unique_ptr<AVPacket, PacketCloser> packet_;
    std::unique_ptr<AVFrame, FrameCloser> frame_;
    int stream_ = -1;
    bool draining_ = false;
    bool finished_ = false;
    SoundFormat format_;
    std::vector<float> pending_;     // decoded frames not yet read
    std::size_t pendingOffset_ = 0;  // in samples
    std::int64_t position_ = 0;      // next frame read() delivers
};

}  // namespace sylvora::audio
