#include "platform/media/media_writer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <vector>

#include "platform/media/ffmpeg.h"

namespace ts5 {
namespace {

struct EncoderRow {
  const char* codec;
  const char* container;
  // Decoders lose the first block, or give back the last samples only after others.
  std::size_t leadBlocks;
  std::size_t tailBlocks;
};
// In the order of MediaEncoder.
constexpr std::array<EncoderRow, 2> kEncoders{{{"mp2", "mp2", 0, 1}, {"wmav2", "asf", 1, 1}}};
constexpr int kBlockOfAny = 1152;  // for an encoder that takes blocks of any length

const EncoderRow& RowOf(MediaEncoder encoder) {
  return kEncoders.at(static_cast<std::size_t>(encoder));
}

AVSampleFormat BestFormat(const AVCodec& codec) {
  constexpr AVSampleFormat kWishes[] = {AV_SAMPLE_FMT_FLTP, AV_SAMPLE_FMT_FLT, AV_SAMPLE_FMT_S16P,
                                        AV_SAMPLE_FMT_S16};
  for (const AVSampleFormat wish : kWishes) {
    for (const AVSampleFormat* format = codec.sample_fmts; format != nullptr && *format != AV_SAMPLE_FMT_NONE;
         ++format) {
      if (*format == wish) return wish;
    }
  }
  return AV_SAMPLE_FMT_NONE;
}

// The staged file as the muxer sees it.
struct StagedStream {
  explicit StagedStream(StagedFile& file) : target(file), start(file.Size()) {}

  static int Write(void* self, std::uint8_t* bytes, int size) {
    auto& stream = *static_cast<StagedStream*>(self);
    ByteView left(bytes, static_cast<std::size_t>(size));
    // What lies before the end is overwritten, the rest is appended.
    const std::uint64_t end = stream.target.Size() - stream.start;
    if (stream.position < end) {
      const ByteView inside =
          left.first(static_cast<std::size_t>(std::min<std::uint64_t>(left.size(), end - stream.position)));
      if (Failed(stream.target.WriteAt(stream.start + stream.position, inside))) return AVERROR(EIO);
      stream.position += inside.size();
      left = left.subspan(inside.size());
    }
    if (!left.empty()) {
      if (Failed(stream.target.Write(left))) return AVERROR(EIO);
      stream.position += left.size();
    }
    return size;
  }

  static std::int64_t Seek(void* self, std::int64_t offset, int whence) {
    auto& stream = *static_cast<StagedStream*>(self);
    const auto size = static_cast<std::int64_t>(stream.target.Size() - stream.start);
    if ((whence & AVSEEK_SIZE) != 0) return size;
    if (whence == SEEK_CUR) offset += static_cast<std::int64_t>(stream.position);
    if (whence == SEEK_END) offset += size;
    if (offset < 0 || offset > size) return AVERROR(EINVAL);
    stream.position = static_cast<std::uint64_t>(offset);
    return offset;
  }

  StagedFile& target;
  std::uint64_t start;
  std::uint64_t position = 0;
};

class LibraryWriter final : public PcmSink {
 public:
  explicit LibraryWriter(StagedFile& target) : stream_(target) {}

  [[nodiscard]] Outcome Open(MediaEncoder encoder, const PcmShape& shape, std::uint32_t bitRate) {
    const EncoderRow& row = RowOf(encoder);
    const AVCodec* const codec = avcodec_find_encoder_by_name(row.codec);
    if (codec == nullptr) return Outcome::ConverterNotOpened;
    if (const Outcome opened = OpenEncoder(*codec, shape, bitRate); Failed(opened)) return opened;
    tail_ = row.tailBlocks * BlockSize() * Channels();
    if (const Outcome opened = OpenContainer(row.container); Failed(opened)) return opened;
    return Write(std::vector<double>(row.leadBlocks * BlockSize() * Channels()));
  }

  Outcome Write(std::span<const double> interleaved) override {
    const std::size_t channels = Channels();
    while (!interleaved.empty()) {
      const std::size_t wanted = BlockSize() * channels - waiting_.size();
      const auto taken = interleaved.first(std::min(wanted, interleaved.size()));
      waiting_.insert(waiting_.end(), taken.begin(), taken.end());
      interleaved = interleaved.subspan(taken.size());
      if (waiting_.size() < BlockSize() * channels) break;
      if (const Outcome encoded = EncodeWaiting(); Failed(encoded)) return encoded;
    }
    return Outcome::Success;
  }

  Outcome Finish() override {
    if (const Outcome filled = Write(std::vector<double>(tail_)); Failed(filled)) return filled;
    if (!waiting_.empty()) {
      if (const Outcome encoded = EncodeWaiting(); Failed(encoded)) return encoded;
    }
    if (avcodec_send_frame(codec_.get(), nullptr) < 0) return Outcome::ConverterFailed;
    if (const Outcome written = WritePackets(); Failed(written)) return written;
    if (av_write_trailer(container_.get()) < 0) return Outcome::WriteFailed;
    avio_flush(io_.get());
    return io_->error < 0 ? Outcome::WriteFailed : Outcome::Success;
  }

 private:
  [[nodiscard]] std::size_t Channels() const {
    return static_cast<std::size_t>(codec_->ch_layout.nb_channels);
  }
  [[nodiscard]] std::size_t BlockSize() const {
    return static_cast<std::size_t>(codec_->frame_size > 0 ? codec_->frame_size : kBlockOfAny);
  }

  Outcome OpenEncoder(const AVCodec& codec, const PcmShape& shape, std::uint32_t bitRate) {
    if (shape.channels < 1 || shape.channels > 2 || bitRate == 0) return Outcome::FormatRefused;
    codec_.reset(avcodec_alloc_context3(&codec));
    frame_.reset(av_frame_alloc());
    packet_.reset(av_packet_alloc());
    if (!codec_ || !frame_ || !packet_) return Outcome::OutOfMemory;
    codec_->sample_rate = static_cast<int>(shape.sampleRate);
    codec_->bit_rate = bitRate;
    codec_->sample_fmt = BestFormat(codec);
    codec_->time_base = {1, static_cast<int>(shape.sampleRate)};
    av_channel_layout_default(&codec_->ch_layout, static_cast<int>(shape.channels));
    return avcodec_open2(codec_.get(), &codec, nullptr) < 0 ? Outcome::FormatRefused : Outcome::Success;
  }

  Outcome OpenContainer(const char* name) {
    AVFormatContext* context = nullptr;
    if (avformat_alloc_output_context2(&context, nullptr, name, nullptr) < 0)
      return Outcome::ConverterNotOpened;
    container_.reset(context);
    auto* const buffer = static_cast<std::uint8_t*>(av_malloc(ffmpeg::kBufferSize));
    if (buffer == nullptr) return Outcome::OutOfMemory;
    io_.reset(avio_alloc_context(buffer, ffmpeg::kBufferSize, 1, &stream_, nullptr, StagedStream::Write,
                                 StagedStream::Seek));
    if (!io_) {
      av_free(buffer);
      return Outcome::OutOfMemory;
    }
    container_->pb = io_.get();
    container_->flags |= AVFMT_FLAG_CUSTOM_IO;
    track_ = avformat_new_stream(container_.get(), nullptr);
    if (track_ == nullptr || avcodec_parameters_from_context(track_->codecpar, codec_.get()) < 0)
      return Outcome::OutOfMemory;
    track_->time_base = codec_->time_base;
    return avformat_write_header(container_.get(), nullptr) < 0 ? Outcome::WriteFailed : Outcome::Success;
  }

  Outcome EncodeWaiting() {
    const std::size_t channels = Channels();
    av_frame_unref(frame_.get());
    frame_->nb_samples = static_cast<int>(waiting_.size() / channels);
    frame_->format = codec_->sample_fmt;
    frame_->sample_rate = codec_->sample_rate;
    if (av_channel_layout_copy(&frame_->ch_layout, &codec_->ch_layout) < 0 ||
        av_frame_get_buffer(frame_.get(), 0) < 0)
      return Outcome::OutOfMemory;
    frame_->pts = frames_;
    frames_ += frame_->nb_samples;
    const bool planar = av_sample_fmt_is_planar(codec_->sample_fmt) != 0;
    const bool floats = av_get_packed_sample_fmt(codec_->sample_fmt) == AV_SAMPLE_FMT_FLT;
    for (std::size_t i = 0; i < waiting_.size(); ++i) {
      std::uint8_t* const plane = frame_->extended_data[planar ? i % channels : 0];
      const std::size_t index = planar ? i / channels : i;
      if (floats) {
        const auto sample = static_cast<float>(std::clamp(waiting_[i], -1.0, 1.0));
        std::memcpy(plane + index * sizeof sample, &sample, sizeof sample);
      } else {
        const auto sample =
            static_cast<std::int16_t>(std::lrint(std::clamp(waiting_[i] * 32768, -32768.0, 32767.0)));
        std::memcpy(plane + index * sizeof sample, &sample, sizeof sample);
      }
    }
    waiting_.clear();
    if (avcodec_send_frame(codec_.get(), frame_.get()) < 0) return Outcome::ConverterFailed;
    return WritePackets();
  }

  Outcome WritePackets() {
    while (avcodec_receive_packet(codec_.get(), packet_.get()) == 0) {
      packet_->stream_index = track_->index;
      av_packet_rescale_ts(packet_.get(), codec_->time_base, track_->time_base);
      if (av_interleaved_write_frame(container_.get(), packet_.get()) < 0) return Outcome::WriteFailed;
    }
    return io_->error < 0 ? Outcome::WriteFailed : Outcome::Success;
  }

  StagedStream stream_;
  ffmpeg::Io io_;
  ffmpeg::Output container_;
  ffmpeg::Codec codec_;
  ffmpeg::Frame frame_;
  ffmpeg::Packet packet_;
  AVStream* track_ = nullptr;    // of the container
  std::vector<double> waiting_;  // for a whole block
  std::size_t tail_ = 0;         // samples of silence behind the music
  std::int64_t frames_ = 0;
};

}  // namespace

bool HasEncoder(MediaEncoder encoder) {
  return avcodec_find_encoder_by_name(RowOf(encoder).codec) != nullptr;
}

Result<std::unique_ptr<PcmSink>> OpenMediaWriter(StagedFile& target, MediaEncoder encoder,
                                                 const PcmShape& shape, std::uint32_t bitRate) {
  ffmpeg::Silence();
  auto writer = std::make_unique<LibraryWriter>(target);
  if (const Outcome opened = writer->Open(encoder, shape, bitRate); Failed(opened)) return Failure(opened);
  return std::unique_ptr<PcmSink>(std::move(writer));
}

}  // namespace ts5
