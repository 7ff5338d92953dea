#include "audio/decoders/ffmpeg/ffmpegdecoder.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/avutil.h>
}

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <mutex>

namespace sylvora::audio {

namespace {

// Positions closer than this are reached by decoding from the start, which is sample-exact in
// every container; further ones seek by timestamp first.
constexpr std::int64_t EXACT_SEEK_SECONDS = 30;

template <typename Sample>
float toFloat(Sample value);
template <>
float toFloat(std::uint8_t value) {
    return (static_cast<float>(value) - 128.0f) / 128.0f;
}
template <>
float toFloat(std::int16_t value) {
    return static_cast<float>(value) / 32768.0f;
}
template <>
float toFloat(std::int32_t value) {
    return static_cast<float>(static_cast<double>(value) / 2147483648.0);
}
template <>
float toFloat(std::int64_t value) {
    return static_cast<float>(static_cast<double>(value) / 9223372036854775808.0);
}
template <>
float toFloat(float value) {
    return value;
}
template <>
float toFloat(double value) {
    return static_cast<float>(value);
}

template <typename Sample>
void convert(const AVFrame& frame, int channels, bool planar, float* out) {
    const auto frames = static_cast<std::size_t>(frame.nb_samples);
    const auto ch = static_cast<std::size_t>(channels);
    if (planar) {
        for (std::size_t c = 0; c < ch; ++c) {
            const auto* plane = reinterpret_cast<const Sample*>(frame.extended_data[c]);
            for (std::size_t i = 0; i < frames; ++i)
                out[i * ch + c] = toFloat(plane[i]);
        }
    } else {
        const auto* samples = reinterpret_cast<const Sample*>(frame.extended_data[0]);
        for (std::size_t i = 0; i < frames * ch; ++i)
            out[i] = toFloat(samples[i]);
    }
}

void quietLogsOnce() {
    static std::once_flag once;
    std::call_once(once, [] { av_log_set_level(AV_LOG_FATAL); });
}

}  // namespace

void FfmpegDecoder::FormatCloser::operator()(AVFormatContext* context) const noexcept {
    avformat_close_input(&context);
}
void FfmpegDecoder::CodecCloser::operator()(AVCodecContext* context) const noexcept {
    avcodec_free_context(&context);
}
void FfmpegDecoder::PacketCloser::operator()(AVPacket* packet) const noexcept {
    av_packet_free(&packet);
}
void FfmpegDecoder::FrameCloser::operator()(AVFrame* frame) const noexcept {
    av_frame_free(&frame);
}

FfmpegDecoder::FfmpegDecoder(std::string path) : path_(std::move(path)) {}
FfmpegDecoder::~FfmpegDecoder() = default;

std::unique_ptr<Decoder> FfmpegDecoder::open(const std::string& path) {
    quietLogsOnce();
    std::unique_ptr<FfmpegDecoder> decoder(new FfmpegDecoder(path));
    if (!decoder->openStreams())
        return nullptr;
    decoder->format_.sampleRate = decoder->codec_->sample_rate;
    decoder->format_.channels = decoder->codec_->ch_layout.nb_channels;
    if (decoder->format_.sampleRate < 1 || decoder->format_.channels < 1)
        return nullptr;
    decoder->format_.frames = decoder->statedLength();
    if (const std::int64_t held = decoder->heldLength(); held >= 0 && held < decoder->format_.frames) {
        decoder->format_.frames = held;
        if (decoder->lengthCap_ >= 0)
            decoder->lengthCap_ = held;
    }
    if (decoder->leadIn_ > 0 && !decoder->skipLeadIn())
        return nullptr;
    return decoder;
}

namespace {
// Apple's gapless tag on AAC: " 00000000 PRIMING PADDING LENGTH ..." in hexadecimal.
bool readItunesGapless(const AVDictionary* metadata, std::int64_t& priming, std::int64_t& length) {
    const AVDictionaryEntry* tag = av_dict_get(metadata, "iTunSMPB", nullptr, 0);
    if (tag == nullptr || tag->value == nullptr)
        return false;
    unsigned long long fields[4] = {};
    if (std::sscanf(tag->value, " %llx %llx %llx %llx", &fields[0], &fields[1], &fields[2], &fields[3]) != 4)
        return false;
    priming = static_cast<std::int64_t>(fields[1]);
    length = static_cast<std::int64_t>(fields[3]);
    return length > 0 && priming >= 0;
}
}  // namespace

bool FfmpegDecoder::skipLeadIn() {
    const std::int64_t cap = lengthCap_;
    lengthCap_ = -1;
    const bool skipped = skipFrames(leadIn_);
    lengthCap_ = cap;
    position_ = 0;
    return skipped;
}

bool FfmpegDecoder::rewind() {
    return openStreams() && (leadIn_ == 0 || skipLeadIn());
}

std::int64_t FfmpegDecoder::statedLength() {
    const AVStream& stream = *format_context_->streams[stream_];
    // A length guessed from the bit rate (MP3 without a length header) is not a length.
    if (stream.duration == AV_NOPTS_VALUE ||
        format_context_->duration_estimation_method == AVFMT_DURATION_FROM_BITRATE)
        return -1;
    const std::int64_t stated =
        av_rescale_q(stream.duration, stream.time_base, AVRational{1, format_.sampleRate});
    switch (stream.codecpar->codec_id) {
        case AV_CODEC_ID_OPUS:
            // The Ogg granule count includes the pre-skip that the decoder drops.
            return stated - stream.codecpar->initial_padding;
        case AV_CODEC_ID_AAC: {
            // An MP4 states the sound's own length in its edit list (whose start the demuxer
            // already skips); the decoder would still deliver the padding of the last codec frame.
            // Without an edit list Apple's tag says how much priming to skip and how long it is.
            std::int64_t priming = 0;
            std::int64_t length = 0;
            if (readItunesGapless(format_context_->metadata, priming, length) ||
                readItunesGapless(stream.metadata, priming, length)) {
                if (stated != length)
                    leadIn_ = priming;
                lengthCap_ = length;
                return length;
            }
            if (std::strstr(format_context_->iformat->name, "mp4") != nullptr &&
                format_context_->duration_estimation_method != AVFMT_DURATION_FROM_BITRATE) {
                lengthCap_ = stated;
                return stated;
            }
            return -1;
        }
        case AV_CODEC_ID_MP3:
        case AV_CODEC_ID_MP2:
            // The container counts whole codec frames, encoder delay and padding included, and the
            // trimmed amount is only known to the decoder: count what it delivers instead.
            return -1;
        default:
            return stated;
    }
}

std::int64_t FfmpegDecoder::heldLength() const {
    // (FFmpeg 5 takes the stream as mutable, though it only reads it.)
    AVStream* stream = format_context_->streams[stream_];
    const int entries = avformat_index_get_entries_count(stream);
    const std::int64_t fileSize = format_context_->pb ? avio_size(format_context_->pb) : -1;
    if (entries < 1 || fileSize <= 0)
        return -1;
    const auto beyondTheEnd = [&](int entry) {
        const AVIndexEntry* e = avformat_index_get_entry(stream, entry);
        return e->pos + e->size > fileSize;
    };
    if (!beyondTheEnd(entries - 1))
        return -1;
    // Packets lie in the file in the order of the index, so the first one missing splits it in two.
    int low = 0;
    int high = entries - 1;
    while (low < high) {
        const int middle = low + (high - low) / 2;
        if (beyondTheEnd(middle))
            high = middle;
        else
            low = middle + 1;
    }
    const std::int64_t start = stream->start_time == AV_NOPTS_VALUE ? 0 : stream->start_time;
    const std::int64_t firstMissing = avformat_index_get_entry(stream, low)->timestamp - start;
    return std::max<std::int64_t>(0, av_rescale_q(firstMissing, stream->time_base, AVRational{1, format_.sampleRate}));
}

namespace {
bool statedInHeaders(const AVFormatContext& context) {
    bool audio = false;
    for (unsigned i = 0; i < context.nb_streams; ++i) {
        const AVCodecParameters& p = *context.streams[i]->codecpar;
        if (p.codec_type != AVMEDIA_TYPE_AUDIO)
            continue;
        if (p.codec_id == AV_CODEC_ID_NONE || p.sample_rate <= 0 || p.ch_layout.nb_channels <= 0 ||
            context.streams[i]->duration == AV_NOPTS_VALUE)
            return false;
        audio = true;
    }
    return audio;
}
}  // namespace

bool FfmpegDecoder::openStreams() {
    AVFormatContext* raw = nullptr;
    // Audio files need little probing, and every byte probed stays resident for as long as a
    // streamed instance plays: keep the probe small (the defaults are sized for video).
    AVDictionary* options = nullptr;
    av_dict_set(&options, "probesize", "65536", 0);
    av_dict_set(&options, "analyzeduration", "500000", 0);
    const int opened = avformat_open_input(&raw, path_.c_str(), nullptr, &options);
    av_dict_free(&options);
    if (opened < 0)
        return false;
    format_context_.reset(raw);
    // Probing the stream opens and runs a decoder of its own (for Vorbis that means building every
    // codebook twice per open, and a streamed instance opens its file at each play). Containers
    // whose headers already state the codec, rate and channels need no probe.
    if (!statedInHeaders(*raw) && avformat_find_stream_info(raw, nullptr) < 0)
        return false;
    const AVCodec* codec = nullptr;
    stream_ = av_find_best_stream(raw, AVMEDIA_TYPE_AUDIO, -1, -1, &codec, 0);
    if (stream_ < 0 || !codec)
        return false;
    for (unsigned i = 0; i < raw->nb_streams; ++i)
        if (static_cast<int>(i) != stream_)
            raw->streams[i]->discard = AVDISCARD_ALL;
    codec_.reset(avcodec_alloc_context3(codec));
    if (!codec_ || avcodec_parameters_to_context(codec_.get(), raw->streams[stream_]->codecpar) < 0)
        return false;
    codec_->thread_count = 1;
    if (avcodec_open2(codec_.get(), codec, nullptr) < 0)
        return false;
    packet_.reset(av_packet_alloc());
    frame_.reset(av_frame_alloc());
    draining_ = false;
    finished_ = false;
    pending_.clear();
    pendingOffset_ = 0;
    position_ = 0;
    return packet_ && frame_;
}

bool FfmpegDecoder::decodeMore() {
    while (!finished_) {
        const int received = avcodec_receive_frame(codec_.get(), frame_.get());
        if (received == 0) {
            appendFrame(*frame_);
            av_frame_unref(frame_.get());
            return true;
        }
        if (received == AVERROR_EOF || (received != AVERROR(EAGAIN))) {
            finished_ = true;
            return false;
        }
        if (draining_) {
            finished_ = true;
            return false;
        }
        const int got = av_read_frame(format_context_.get(), packet_.get());
        if (got < 0) {
            draining_ = true;
            avcodec_send_packet(codec_.get(), nullptr);
            continue;
        }
        if (packet_->stream_index == stream_) {
            // A corrupt packet is skipped; the decoder resynchronises on the next one.
            avcodec_send_packet(codec_.get(), packet_.get());
        }
        av_packet_unref(packet_.get());
    }
    return false;
}

void FfmpegDecoder::appendFrame(const AVFrame& frame) {
    const int channels = frame.ch_layout.nb_channels;
    if (frame.nb_samples <= 0 || channels != format_.channels)
        return;
    if (pendingOffset_ > 0) {
        pending_.erase(pending_.begin(), pending_.begin() + static_cast<std::ptrdiff_t>(pendingOffset_));
        pendingOffset_ = 0;
    }
    const std::size_t old = pending_.size();
    pending_.resize(old + static_cast<std::size_t>(frame.nb_samples) * static_cast<std::size_t>(channels));
    float* out = pending_.data() + old;
    const auto sampleFormat = static_cast<AVSampleFormat>(frame.format);
    const bool planar = av_sample_fmt_is_planar(sampleFormat) != 0;
    switch (av_get_packed_sample_fmt(sampleFormat)) {
        case AV_SAMPLE_FMT_U8:
            convert<std::uint8_t>(frame, channels, planar, out);
            break;
        case AV_SAMPLE_FMT_S16:
            convert<std::int16_t>(frame, channels, planar, out);
            break;
        case AV_SAMPLE_FMT_S32:
            convert<std::int32_t>(frame, channels, planar, out);
            break;
        case AV_SAMPLE_FMT_S64:
            convert<std::int64_t>(frame, channels, planar, out);
            break;
        case AV_SAMPLE_FMT_FLT:
            convert<float>(frame, channels, planar, out);
            break;
        case AV_SAMPLE_FMT_DBL:
            convert<double>(frame, channels, planar, out);
            break;
        default:
            pending_.resize(old);
            break;
    }
}

std::size_t FfmpegDecoder::read(float* interleaved, std::size_t frames) {
    const auto channels = static_cast<std::size_t>(format_.channels);
    if (lengthCap_ >= 0)
        frames = std::min(frames, static_cast<std::size_t>(std::max<std::int64_t>(0, lengthCap_ - position_)));
    std::size_t done = 0;
    while (done < frames) {
        const std::size_t available = (pending_.size() - pendingOffset_) / channels;
        if (available == 0) {
            if (!decodeMore())
                break;
            continue;
        }
        const std::size_t n = std::min(available, frames - done);
        std::memcpy(interleaved + done * channels, pending_.data() + pendingOffset_,
                    n * channels * sizeof(float));
        pendingOffset_ += n * channels;
        done += n;
    }
    position_ += static_cast<std::int64_t>(done);
    return done;
}

bool FfmpegDecoder::skipFrames(std::int64_t count) {
    std::vector<float> scratch(4096 * static_cast<std::size_t>(format_.channels));
    while (count > 0) {
        const std::size_t n =
            read(scratch.data(), static_cast<std::size_t>(std::min<std::int64_t>(count, 4096)));
        if (n == 0)
            return false;
        count -= static_cast<std::int64_t>(n);
    }
    return true;
}

bool FfmpegDecoder::seek(std::int64_t frame) {
    if (frame == position_)
        return true;
    if (frame < 0)
        return false;
    // Reopening is the one way back to the very first sample that every codec honours: it restores
    // the encoder-delay trimming that a flush after a seek may lose.
    if (frame < position_ || frame < EXACT_SEEK_SECONDS * format_.sampleRate) {
        if (!rewind())
            return false;
        if (frame == 0)
            return true;
        if (frame < EXACT_SEEK_SECONDS * format_.sampleRate)
            return skipFrames(frame);
    }
    const AVStream& stream = *format_context_->streams[stream_];
    const std::int64_t target =
        av_rescale_q(frame + leadIn_, AVRational{1, format_.sampleRate}, stream.time_base);
    if (av_seek_frame(format_context_.get(), stream_, target, AVSEEK_FLAG_BACKWARD) < 0) {
        if (!rewind())
            return false;
        return skipFrames(frame);
    }
    avcodec_flush_buffers(codec_.get());
    pending_.clear();
    pendingOffset_ = 0;
    draining_ = false;
    finished_ = false;
    // Decode until the frame that holds the target, then drop the part before it.
    while (true) {
        const int received = avcodec_receive_frame(codec_.get(), frame_.get());
        if (received == 0) {
            const std::int64_t pts = frame_->best_effort_timestamp;
            if (pts == AV_NOPTS_VALUE) {
                av_frame_unref(frame_.get());
                if (!rewind())
                    return false;
                return skipFrames(frame);
            }
            const std::int64_t first =
                av_rescale_q(pts, stream.time_base, AVRational{1, format_.sampleRate}) - leadIn_;
            const std::int64_t last = first + frame_->nb_samples;
            if (last > frame) {
                appendFrame(*frame_);
                av_frame_unref(frame_.get());
                const std::int64_t drop = std::max<std::int64_t>(0, frame - first);
                pendingOffset_ = std::min(pending_.size(), static_cast<std::size_t>(drop) *
                                                               static_cast<std::size_t>(format_.channels));
                position_ = frame;
                return true;
            }
            av_frame_unref(frame_.get());
            continue;
        }
        if (received != AVERROR(EAGAIN))
            return false;
        if (av_read_frame(format_context_.get(), packet_.get()) < 0)
            return false;
        if (packet_->stream_index == stream_)
            avcodec_send_packet(codec_.get(), packet_.get());
        av_packet_unref(packet_.get());
    }
}

}  // namespace sylvora::audio
