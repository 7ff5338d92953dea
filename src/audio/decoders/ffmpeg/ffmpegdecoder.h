#pragma once

// FFmpeg backend (libavformat + libavcodec): Ogg Vorbis, Opus, MP3, M4A/AAC, ALAC and whatever
// else libsndfile cannot open. Encoder delay and padding are left out, so the first frame
// delivered is the first sample of the sound and the last is its last: libavcodec trims what the
// container marks (Opus pre-skip, LAME header, Ogg granules, MP4 edit list starts), and this
// decoder the rest (the padding after an MP4's edit list, Apple's iTunSMPB tag).

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
    std::int64_t statedLength();  // also sets leadIn_ and lengthCap_
    // The frames up to the first packet the index places beyond the file's end, or -1 when the
    // index places none there: a file cut short can keep an index that promises the whole sound.
    std::int64_t heldLength() const;
    // Decodes the next frame into pending_; false at the end of the stream or on an error.
    bool decodeMore();
    void appendFrame(const AVFrame& frame);
    bool skipFrames(std::int64_t count);
    bool skipLeadIn();  // drops the priming that no edit list took away; position 0 after it
    bool rewind();      // reopens at the sound's first sample

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
    std::int64_t leadIn_ = 0;        // decoded frames before the sound's first (priming)
    std::int64_t lengthCap_ = -1;    // no frame at or after this is delivered; -1: no cap
};

}  // namespace sylvora::audio
