#include "platform/media/ffmpeg_reader.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <optional>
#include <utility>

#include "platform/files/paths.h"
#include "platform/media/certain_demuxer.h"
#include "platform/media/ffmpeg.h"
#include "platform/media/ffmpeg_format.h"
#include "platform/media/ffmpeg_stream.h"
#include "platform/media/mp3_length.h"

namespace ts5 {
namespace {

// No other demuxer or decoder ever sees a file: lists of other files, pictures and films stay outside.
constexpr const char* kDemuxers = "wav,w64,aiff,mp3,asf,ape,flac,mpeg,mpegts,aac,ogg,mov,wv";
constexpr const char* kDecoders =
    "pcm_u8,pcm_s8,pcm_s16le,pcm_s16be,pcm_s24le,pcm_s24be,pcm_s32le,pcm_s32be,pcm_f32le,pcm_f32be,pcm_f64le,"
    "pcm_f64be,pcm_alaw,pcm_mulaw,adpcm_ms,adpcm_ima_wav,adpcm_ima_qt,adpcm_yamaha,adpcm_g726,adpcm_g722,"
    "gsm_ms,gsm,libgsm_ms,libgsm,truespeech,mace3,mace6,qdm2,mp1,mp1float,mp2,mp2float,mp3,mp3float,wmav1,"
    "wmav2,wmapro,wmalossless,wmavoice,ape,flac,aac,aac_fixed,alac,opus,"
    "wavpack";
constexpr int kMostChannels = 64;
constexpr int kMostRate = 1 << 20;
// Decoding is taken up this far before a sought place, so that codecs with a memory are warm there.
constexpr double kPrerollSeconds = 0.5;
// No MPEG audio has fewer; a file that claims to last longer lies.
constexpr double kLeastMpegByteRate = 1000;

class LibraryReader final : public MediaReader {
 public:
  explicit LibraryReader(InputFile file) { stream_.file = std::move(file); }

  [[nodiscard]] Outcome Open(const std::string& path) {
    path_ = path;
    if (const Outcome opened = OpenContainer(path); Failed(opened)) return opened;
    if (const Outcome found = FindStream(); Failed(found)) return found;
    if (const Outcome opened = OpenDecoder(); Failed(opened)) return opened;
    Describe();
    return Outcome::Success;
  }

  const MediaInfo& Info() const override { return info_; }
  const PcmShape& Shape() const override { return shape_; }
  std::optional<std::uint64_t> Frames() const override {
    if (info_.frames) return info_.frames;
    if (info_.seconds <= 0) return std::nullopt;
    return static_cast<std::uint64_t>(std::llround(info_.seconds * shape_.sampleRate));
  }

  Result<std::size_t> Read(std::span<double> out) override {
    std::size_t wanted = out.size() / shape_.channels;
    if (end_)
      wanted = static_cast<std::size_t>(std::min<std::uint64_t>(wanted, *end_ - std::min(*end_, position_)));
    std::size_t filled = 0;
    while (filled < wanted) {
      if (offset_ == available_) {
        const auto more = NextBlock();
        if (!more) return Failure(more.error());
        if (!*more) break;
        continue;
      }
      const std::size_t count = std::min(wanted - filled, available_ - offset_);
      if (!ffmpeg::CopyFrames(*frame_, offset_, count, shape_.channels,
                              out.data() + filled * shape_.channels))
        return Failure(Outcome::SourceFailed);
      offset_ += count;
      filled += count;
    }
    position_ += filled;
    return filled;
  }

  Outcome Seek(std::uint64_t frame) override {
    // The byte rate by which compressed wave files would be searched is wrong too often.
    if (info_.container == MediaContainer::Wave) return DecodeFromStart(frame);
    // Places are counted from the first block, whose stamp only decoding tells.
    if (!firstStamp_) {
      if (const auto first = NextBlock(); !first) return first.error();
    }
    // Near the start that is before it: what the encoder put there warms the decoder up.
    const double start = static_cast<double>(frame) / shape_.sampleRate - kPrerollSeconds;
    const auto rate = static_cast<double>(track_->time_base.den) / track_->time_base.num;
    const std::int64_t stamp = firstStamp_.value_or(0) + std::llround(start * rate);
    if (av_seek_frame(container_.get(), track_->index, stamp, AVSEEK_FLAG_BACKWARD) < 0 &&
        av_seek_frame(container_.get(), track_->index, 0, AVSEEK_FLAG_BYTE) < 0) {
      return Outcome::SourceFailed;
    }
    avcodec_flush_buffers(codec_.get());
    offset_ = available_ = 0;
    ended_ = false;
    skipUntil_ = frame;
    position_ = frame;
    return Outcome::Success;
  }

 private:
  Outcome DecodeFromStart(std::uint64_t frame) {
    codec_.reset();
    container_.reset();
    io_.reset();
    stream_.position = 0;
    offset_ = available_ = 0;
    ended_ = false;
    skipUntil_.reset();
    if (const Outcome opened = Open(std::string(path_)); Failed(opened)) {
      ended_ = true;  // there is nothing left to decode with
      return opened;
    }
    discard_ = frame;
    position_ = frame;
    return Outcome::Success;
  }

  Outcome OpenContainer(const std::string& path) {
    auto* const buffer = static_cast<std::uint8_t*>(av_malloc(ffmpeg::kBufferSize));
    if (buffer == nullptr) return Outcome::OutOfMemory;
    io_.reset(avio_alloc_context(buffer, ffmpeg::kBufferSize, 0, &stream_, ffmpeg::FileStream::Read, nullptr,
                                 ffmpeg::FileStream::Seek));
    if (!io_) {
      av_free(buffer);
      return Outcome::OutOfMemory;
    }
    AVFormatContext* context = avformat_alloc_context();
    if (context == nullptr) return Outcome::OutOfMemory;
    context->pb = io_.get();
    context->flags |= AVFMT_FLAG_CUSTOM_IO;
    context->format_whitelist = av_strdup(kDemuxers);
    context->codec_whitelist = av_strdup(kDecoders);
    // The name helps to tell the kind; nothing is opened by it.
    const std::string name(FileNameOf(path));
    if (avformat_open_input(&context, name.c_str(), ffmpeg::CertainDemuxer(stream_.file), nullptr) <
        0) {  // which frees the context
      return stream_.failed ? Outcome::ReadFailed : Outcome::WrongFormat;
    }
    container_.reset(context);
    return Outcome::Success;
  }

  Outcome FindStream() {
    // Formats that only their packets tell: a stream that cannot be told is still there.
    (void)avformat_find_stream_info(container_.get(), nullptr);
    const int index = av_find_best_stream(container_.get(), AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
    if (index < 0) return Outcome::WrongFormat;
    for (unsigned i = 0; i < container_->nb_streams; ++i) {
      if (static_cast<int>(i) != index) container_->streams[i]->discard = AVDISCARD_ALL;
    }
    track_ = container_->streams[index];
    return Outcome::Success;
  }

  Outcome OpenDecoder() {
    const AVCodec* const decoder = avcodec_find_decoder(track_->codecpar->codec_id);
    if (decoder == nullptr) return Outcome::WrongFormat;
    codec_.reset(avcodec_alloc_context3(decoder));
    frame_.reset(av_frame_alloc());
    packet_.reset(av_packet_alloc());
    if (!codec_ || !frame_ || !packet_) return Outcome::OutOfMemory;
    if (avcodec_parameters_to_context(codec_.get(), track_->codecpar) < 0) return Outcome::WrongFormat;
    codec_->codec_whitelist = av_strdup(kDecoders);
    codec_->pkt_timebase = track_->time_base;
    if (avcodec_open2(codec_.get(), decoder, nullptr) < 0) return Outcome::WrongFormat;
    const int channels = codec_->ch_layout.nb_channels;
    if (channels < 1 || channels > kMostChannels || codec_->sample_rate < 1 ||
        codec_->sample_rate > kMostRate)
      return Outcome::WrongFormat;
    return Outcome::Success;
  }

  [[nodiscard]] double FileSize() const { return static_cast<double>(stream_.file.Size()); }

  void Describe() {
    shape_.sampleRate = static_cast<std::uint32_t>(codec_->sample_rate);
    shape_.channels = static_cast<std::uint32_t>(codec_->ch_layout.nb_channels);
    shape_.channelMask = ffmpeg::MaskOf(codec_->ch_layout);
    shape_.bits = ffmpeg::BitsOf(*codec_);
    info_.container = ffmpeg::ContainerNamed(container_->iformat->name);
    info_.codec = ffmpeg::CodecOf(track_->codecpar->codec_id);
    info_.format = ffmpeg::FormatOf(*track_->codecpar);
    if (track_->duration != AV_NOPTS_VALUE && track_->duration > 0) {
      info_.seconds = static_cast<double>(track_->duration) * av_q2d(track_->time_base);
    } else if (container_->duration != AV_NOPTS_VALUE && container_->duration > 0) {
      info_.seconds = static_cast<double>(container_->duration) / AV_TIME_BASE;
    }
    if (info_.container == MediaContainer::Mpeg && info_.codec == MediaCodec::MpegLayer3) {
      const int block = track_->codecpar->frame_size;
      const auto tagged = ReadTaggedMp3(stream_.file, block > 0 ? static_cast<std::uint32_t>(block) : 1152);
      if (tagged) info_.frames = tagged->frames;
      if (tagged && tagged->delay != 0) info_.delay = tagged->delay;
    }
    // An MP4 file counts in samples how much of what is decoded is music; the last block has more.
    const bool countsMusic = std::strncmp(container_->iformat->name, "mov", 3) == 0 &&
                             av_cmp_q(track_->time_base, {1, codec_->sample_rate}) == 0;
    if (countsMusic && track_->duration != AV_NOPTS_VALUE && track_->duration > 0)
      end_ = info_.frames = static_cast<std::uint64_t>(track_->duration);
    if (info_.container == MediaContainer::Mpeg && info_.seconds * kLeastMpegByteRate > FileSize())
      info_.seconds = FileSize() / info_.format.bytesPerSecond;
    const bool countsSamples =
        info_.container == MediaContainer::Aiff || info_.container == MediaContainer::Ape;
    if (countsSamples && info_.seconds > 0)
      info_.frames = static_cast<std::uint64_t>(std::llround(info_.seconds * shape_.sampleRate));
    if (info_.frames) info_.seconds = static_cast<double>(*info_.frames) / shape_.sampleRate;
    // Where the file does not say it, its size does.
    if (track_->codecpar->bit_rate <= 0 && info_.format.tag != kTagPcm && info_.format.tag != kTagFloat &&
        info_.seconds > 0)
      info_.format.bytesPerSecond =
          static_cast<std::uint32_t>(std::clamp(FileSize() / info_.seconds, 1.0, double{INT32_MAX}));
    for (const AVDictionary* const tags : {track_->metadata, container_->metadata}) {
      const AVDictionaryEntry* const entry = av_dict_get(tags, "encoder", nullptr, 0);
      if (entry != nullptr && info_.encoder.empty()) info_.encoder = entry->value;
    }
  }

  // Decodes until a block of the stream's shape is there; false at the end.
  Result<bool> NextBlock() {
    while (!ended_) {
      const int received = avcodec_receive_frame(codec_.get(), frame_.get());
      if (received == 0) {
        // A block of another shape is junk between the frames that a weak decoder took for one.
        if (frame_->nb_samples <= 0 || frame_->ch_layout.nb_channels != static_cast<int>(shape_.channels) ||
            frame_->sample_rate != static_cast<int>(shape_.sampleRate)) {
          continue;
        }
        available_ = static_cast<std::size_t>(frame_->nb_samples);
        offset_ = 0;
        anything_ = true;
        if (!firstStamp_ && frame_->best_effort_timestamp != AV_NOPTS_VALUE)
          firstStamp_ = frame_->best_effort_timestamp;
        if (skipUntil_) SkipToSought();
        if (discard_ > 0) {
          offset_ = static_cast<std::size_t>(std::min<std::uint64_t>(discard_, available_));
          discard_ -= offset_;
        }
        if (offset_ < available_) return true;
        continue;
      }
      if (received == AVERROR_EOF) {
        ended_ = true;
        break;
      }
      if (received != AVERROR(EAGAIN)) {
        damaged_ = true;
        if (received == AVERROR(ENOMEM)) return Failure(Outcome::OutOfMemory);
      }
      if (!FeedDecoder()) return Failure(Outcome::ReadFailed);
    }
    offset_ = available_ = 0;
    // What promises to last and gives nothing is no success.
    if (!anything_ && (damaged_ || info_.seconds > 0)) return Failure(Outcome::SourceFailed);
    return false;
  }

  // One packet, or the news that there are no more; false on an I/O error.
  bool FeedDecoder() {
    const int read = av_read_frame(container_.get(), packet_.get());
    if (read < 0) {
      if (stream_.failed) return false;
      if (avcodec_send_packet(codec_.get(), nullptr) < 0) ended_ = true;
      return true;
    }
    if (packet_->stream_index == track_->index && avcodec_send_packet(codec_.get(), packet_.get()) < 0)
      damaged_ = true;  // the damaged packet is left out
    av_packet_unref(packet_.get());
    return true;
  }

  void SkipToSought() {
    // Before the start lies what the encoder put there, which is left out only where decoding begins.
    std::int64_t position = 0;
    if (frame_->best_effort_timestamp != AV_NOPTS_VALUE)
      position = av_rescale_q(frame_->best_effort_timestamp - firstStamp_.value_or(0), track_->time_base,
                              {1, static_cast<int>(shape_.sampleRate)});
    if (std::cmp_greater_equal(position, *skipUntil_)) {
      skipUntil_.reset();
      return;
    }
    const std::uint64_t missing = *skipUntil_ - static_cast<std::uint64_t>(position);
    offset_ = static_cast<std::size_t>(std::min<std::uint64_t>(missing, available_));
    if (missing < available_) skipUntil_.reset();
  }

  ffmpeg::FileStream stream_;
  ffmpeg::Io io_;
  ffmpeg::Input container_;
  ffmpeg::Codec codec_;
  ffmpeg::Frame frame_;
  ffmpeg::Packet packet_;
  AVStream* track_ = nullptr;  // of the container
  MediaInfo info_;
  PcmShape shape_;
  std::optional<std::int64_t> firstStamp_;  // of the first sample, in the track's time base
  std::uint64_t position_ = 0;              // frame that Read() gives next
  std::optional<std::uint64_t> end_;        // where the music ends although more is decoded
  std::size_t offset_ = 0;                  // in the decoded block
  std::size_t available_ = 0;
  std::optional<std::uint64_t> skipUntil_;  // by the stamps of the blocks
  std::uint64_t discard_ = 0;               // frames, counted
  std::string path_;
  bool ended_ = false;
  bool damaged_ = false;
  bool anything_ = false;
};

}  // namespace

Result<std::unique_ptr<MediaReader>> OpenWithFfmpeg(InputFile file, const std::string& name) {
  ffmpeg::Silence();
  auto reader = std::make_unique<LibraryReader>(std::move(file));
  if (const Outcome opened = reader->Open(name); Failed(opened)) return Failure(opened);
  return std::unique_ptr<MediaReader>(std::move(reader));
}

}  // namespace ts5
