#include "encodedfile.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
#include <libavutil/opt.h>
}

#include <cmath>
#include <memory>
#include <numbers>

namespace sylvora::test {

namespace {

struct Closer {
    void operator()(AVFormatContext* c) const {
        if (c && c->pb)
            avio_closep(&c->pb);
        avformat_free_context(c);
    }
    void operator()(AVCodecContext* c) const { avcodec_free_context(&c); }
    void operator()(AVFrame* f) const { av_frame_free(&f); }
    void operator()(AVPacket* p) const { av_packet_free(&p); }
};

void store(const AVCodecContext& codec, AVFrame& frame, const float* in, int frames, int channels) {
    const bool planar = av_sample_fmt_is_planar(codec.sample_fmt) != 0;
    const AVSampleFormat packed = av_get_packed_sample_fmt(codec.sample_fmt);
    for (int i = 0; i < frames; ++i) {
        for (int c = 0; c < channels; ++c) {
            const float v = in[i * channels + c];
            const int index = planar ? i : i * channels + c;
            std::uint8_t* base = frame.extended_data[planar ? c : 0];
            if (packed == AV_SAMPLE_FMT_FLT)
                reinterpret_cast<float*>(base)[index] = v;
            else if (packed == AV_SAMPLE_FMT_S16)
                reinterpret_cast<std::int16_t*>(base)[index] =
                    static_cast<std::int16_t>(std::lround(v * 32767.0f));
            else if (packed == AV_SAMPLE_FMT_S32)
                reinterpret_cast<std::int32_t*>(base)[index] =
                    static_cast<std::int32_t>(std::lround(v * 2147483647.0));
        }
    }
}

bool drain(AVCodecContext* codec, AVFormatContext* format, AVStream* stream, AVPacket* packet) {
    while (true) {
        const int got = avcodec_receive_packet(codec, packet);
        if (got == AVERROR(EAGAIN) || got == AVERROR_EOF)
            return true;
        if (got < 0)
            return false;
        av_packet_rescale_ts(packet, codec->time_base, stream->time_base);
        packet->stream_index = stream->index;
        if (av_interleaved_write_frame(format, packet) < 0)
            return false;
    }
}

}  // namespace

std::vector<float> sineFrames(double frequency, double amplitude, long frames, int sampleRate, int channels) {
    std::vector<float> out(static_cast<std::size_t>(frames * channels));
    for (long i = 0; i < frames; ++i) {
        const auto v = static_cast<float>(
            amplitude * std::sin(2.0 * std::numbers::pi * frequency * static_cast<double>(i) / sampleRate));
        for (int c = 0; c < channels; ++c)
            out[static_cast<std::size_t>(i * channels + c)] = v;
    }
    return out;
}

std::string writeEncodedFile(const std::string& path, const EncodeSettings& settings,
                             const std::vector<float>& interleaved) {
    const AVCodec* encoder = avcodec_find_encoder_by_name(settings.codec.c_str());
    if (!encoder)
        return "no encoder " + settings.codec;
    AVFormatContext* rawFormat = nullptr;
    if (avformat_alloc_output_context2(&rawFormat, nullptr, nullptr, path.c_str()) < 0)
        return "no container";
    std::unique_ptr<AVFormatContext, Closer> format(rawFormat);
    std::unique_ptr<AVCodecContext, Closer> codec(avcodec_alloc_context3(encoder));
    codec->sample_rate = settings.sampleRate;
    codec->sample_fmt = encoder->sample_fmts ? encoder->sample_fmts[0] : AV_SAMPLE_FMT_FLTP;
    av_channel_layout_default(&codec->ch_layout, settings.channels);
    codec->bit_rate = settings.codec == "alac" ? 0 : 128000;
    codec->time_base = AVRational{1, settings.sampleRate};
    if (format->oformat->flags & AVFMT_GLOBALHEADER)
        codec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    if (avcodec_open2(codec.get(), encoder, nullptr) < 0)
        return "encoder does not open";
    AVStream* stream = avformat_new_stream(format.get(), nullptr);
    avcodec_parameters_from_context(stream->codecpar, codec.get());
    stream->time_base = codec->time_base;
    if (avio_open(&format->pb, path.c_str(), AVIO_FLAG_WRITE) < 0)
        return "cannot create file";
    AVDictionary* options = nullptr;
    if (!settings.lengthHeader)
        av_dict_set(&options, "write_xing", "0", 0);
    if (settings.indexFirst)
        av_dict_set(&options, "movflags", "+faststart", 0);
    const int header = avformat_write_header(format.get(), &options);
    av_dict_free(&options);
    if (header < 0)
        return "cannot write header";

    std::unique_ptr<AVFrame, Closer> frame(av_frame_alloc());
    std::unique_ptr<AVPacket, Closer> packet(av_packet_alloc());
    const long total = static_cast<long>(interleaved.size()) / settings.channels;
    const int frameSize = codec->frame_size > 0 ? codec->frame_size : 1024;
    for (long at = 0; at < total; at += frameSize) {
        const int n = static_cast<int>(std::min<long>(frameSize, total - at));
        frame->nb_samples = n;
        frame->format = codec->sample_fmt;
        frame->sample_rate = settings.sampleRate;
        av_channel_layout_copy(&frame->ch_layout, &codec->ch_layout);
        if (av_frame_get_buffer(frame.get(), 0) < 0)
            return "no frame buffer";
        store(*codec, *frame, interleaved.data() + at * settings.channels, n, settings.channels);
        frame->pts = at;
        if (avcodec_send_frame(codec.get(), frame.get()) < 0)
            return "encoding failed";
        av_frame_unref(frame.get());
        if (!drain(codec.get(), format.get(), stream, packet.get()))
            return "writing failed";
    }
    avcodec_send_frame(codec.get(), nullptr);
    if (!drain(codec.get(), format.get(), stream, packet.get()))
        return "writing failed";
    if (av_write_trailer(format.get()) < 0)
        return "cannot finish file";
    return {};
}

}  // namespace sylvora::test
