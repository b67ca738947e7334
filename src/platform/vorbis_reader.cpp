#include "platform/vorbis_reader.h"

#include <vorbis/vorbisfile.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace ts5 {
namespace {

constexpr int kMostChannels = 64;
constexpr long kMostRate = 1L << 20;

// Vorbis has its own order of loudspeakers; here is where each channel of ours stands in it.
constexpr std::array<std::array<std::uint8_t, 8>, 9> kPlaces{{
    {},
    {0},
    {0, 1},
    {0, 2, 1},  // left, centre, right
    {0, 1, 2, 3},
    {0, 2, 1, 3, 4},
    {0, 2, 1, 5, 3, 4},  // the low frequency channel comes last
    {0, 2, 1, 6, 5, 3, 4},
    {0, 2, 1, 7, 5, 6, 3, 4},
}};

// The file as the decoder sees it.
struct VorbisStream {
  InputFile file;
  std::uint64_t position = 0;
  bool failed = false;  // an I/O error, or the file ended before its size

  static std::size_t Read(void* out, std::size_t size, std::size_t count, void* self) {
    auto& stream = *static_cast<VorbisStream*>(self);
    const auto got = stream.file.ReadAt(stream.position, {static_cast<std::uint8_t*>(out), size * count});
    stream.failed |= !got || (*got == 0 && size * count > 0 && stream.position < stream.file.Size());
    if (!got) return 0;
    stream.position += *got;
    return size == 0 ? 0 : *got / size;
  }
  static int Seek(void* self, ogg_int64_t offset, int whence) {
    auto& stream = *static_cast<VorbisStream*>(self);
    if (whence == SEEK_CUR) offset += static_cast<ogg_int64_t>(stream.position);
    if (whence == SEEK_END) offset += static_cast<ogg_int64_t>(stream.file.Size());
    if (offset < 0) return -1;
    stream.position = static_cast<std::uint64_t>(offset);
    return 0;
  }
  static long Tell(void* self) { return static_cast<long>(static_cast<VorbisStream*>(self)->position); }
};

class VorbisReader final : public MediaReader {
 public:
  explicit VorbisReader(InputFile file) { stream_.file = std::move(file); }
  ~VorbisReader() override {
    if (open_) ov_clear(&decoder_);
  }
  VorbisReader(const VorbisReader&) = delete;
  VorbisReader& operator=(const VorbisReader&) = delete;

  [[nodiscard]] Outcome Open() {
    const ov_callbacks callbacks{VorbisStream::Read, VorbisStream::Seek, nullptr, VorbisStream::Tell};
    const int opened = ov_open_callbacks(&stream_, &decoder_, nullptr, 0, callbacks);
    if (stream_.failed || opened == OV_EREAD) return Outcome::ReadFailed;
    if (opened != 0) return Outcome::WrongFormat;
    open_ = true;
    const vorbis_info* const info = ov_info(&decoder_, 0);
    if (info == nullptr || info->channels < 1 || info->channels > kMostChannels || info->rate < 1 ||
        info->rate > kMostRate)
      return Outcome::WrongFormat;
    shape_.sampleRate = static_cast<std::uint32_t>(info->rate);
    shape_.channels = static_cast<std::uint32_t>(info->channels);
    shape_.channelMask = UsualChannelMask(shape_.channels);
    const ogg_int64_t total = ov_pcm_total(&decoder_, -1);
    if (total > 0) frames_ = static_cast<std::uint64_t>(total);
    Describe();
    return Outcome::Success;
  }

  const MediaInfo& Info() const override { return info_; }
  const PcmShape& Shape() const override { return shape_; }
  std::optional<std::uint64_t> Frames() const override { return frames_; }

  Result<std::size_t> Read(std::span<double> out) override {
    const std::size_t channels = shape_.channels;
    const std::size_t wanted = out.size() / channels;
    std::size_t filled = 0;
    while (filled < wanted) {
      float** planes = nullptr;
      int link = 0;
      const long got = ov_read_float(
          &decoder_, &planes, static_cast<int>(std::min<std::size_t>(wanted - filled, kMostRead)), &link);
      if (stream_.failed) return Failure(Outcome::ReadFailed);
      if (got == OV_HOLE) continue;  // the damaged place is left out
      if (got <= 0) break;
      // A stream of another shape that was appended to this one is left out.
      const vorbis_info* const info = ov_info(&decoder_, link);
      if (info == nullptr || std::cmp_not_equal(info->channels, channels) ||
          std::cmp_not_equal(info->rate, shape_.sampleRate))
        continue;
      Take(planes, static_cast<std::size_t>(got), out.data() + filled * channels);
      filled += static_cast<std::size_t>(got);
    }
    return filled;
  }

  Outcome Seek(std::uint64_t frame) override {
    const std::uint64_t target = std::min(frame, frames_.value_or(0));
    return ov_pcm_seek(&decoder_, static_cast<ogg_int64_t>(target)) == 0 ? Outcome::Success
                                                                         : Outcome::SourceFailed;
  }

 private:
  static constexpr std::size_t kMostRead = 8192;

  void Describe() {
    info_.container = MediaContainer::Ogg;
    info_.codec = MediaCodec::Vorbis;
    info_.frames = frames_;
    info_.seconds = static_cast<double>(frames_.value_or(0)) / shape_.sampleRate;
    info_.format.tag = 0;
    info_.format.channels = static_cast<std::uint16_t>(shape_.channels);
    info_.format.sampleRate = shape_.sampleRate;
    info_.format.blockAlign = 1;
    const long bitRate = ov_bitrate(&decoder_, -1);
    info_.format.bytesPerSecond =
        static_cast<std::uint32_t>(std::clamp(bitRate / 8, 1L, static_cast<long>(INT32_MAX)));
  }

  void Take(float* const* planes, std::size_t frames, double* out) const {
    const std::size_t channels = shape_.channels;
    for (std::size_t channel = 0; channel < channels; ++channel) {
      const std::size_t place = channels < kPlaces.size() ? kPlaces.at(channels).at(channel) : channel;
      const float* const in = planes[place];
      for (std::size_t i = 0; i < frames; ++i)
        out[i * channels + channel] = std::isfinite(in[i]) ? static_cast<double>(in[i]) : 0;
    }
  }

  VorbisStream stream_;
  OggVorbis_File decoder_{};
  bool open_ = false;
  MediaInfo info_;
  PcmShape shape_;
  std::optional<std::uint64_t> frames_;
};

}  // namespace

bool IsOgg(const InputFile& file) {
  std::array<std::uint8_t, 4> start{};
  const auto got = file.ReadAt(0, start);
  return got && *got == start.size() && AsText(start) == "OggS";
}

Result<std::unique_ptr<MediaReader>> OpenVorbis(InputFile file) {
  auto reader = std::make_unique<VorbisReader>(std::move(file));
  if (const Outcome opened = reader->Open(); Failed(opened)) return Failure(opened);
  return std::unique_ptr<MediaReader>(std::move(reader));
}

}  // namespace ts5
