// The one place where FFmpeg is included, for the media reader and writer: its structures as owners that free
// themselves. Nothing outside this folder includes it.
#pragma once

#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
#include <libavutil/mathematics.h>
}

namespace ts5::ffmpeg {

inline constexpr int kBufferSize = 1 << 16;

struct FreeInput {
  void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
};
struct FreeOutput {
  void operator()(AVFormatContext* context) const { avformat_free_context(context); }
};
struct FreeCodec {
  void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
};
struct FreeFrame {
  void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
struct FreePacket {
  void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
struct FreeIo {
  void operator()(AVIOContext* io) const {
    av_freep(&io->buffer);
    avio_context_free(&io);
  }
};

using Input = std::unique_ptr<AVFormatContext, FreeInput>;
using Output = std::unique_ptr<AVFormatContext, FreeOutput>;
using Codec = std::unique_ptr<AVCodecContext, FreeCodec>;
using Frame = std::unique_ptr<AVFrame, FreeFrame>;
using Packet = std::unique_ptr<AVPacket, FreePacket>;
using Io = std::unique_ptr<AVIOContext, FreeIo>;

// What the library prints on its own is of no use to a musician.
inline void Silence() {
  static const bool quiet = [] {
    av_log_set_level(AV_LOG_QUIET);
    return true;
  }();
  (void)quiet;
}

}  // namespace ts5::ffmpeg
