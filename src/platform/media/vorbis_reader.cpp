#include "platform/media/vorbis_reader.h"

#include <vorbis/vorbisfile.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/base/bytes.h"
#include "platform/media/ogg_pages.h"
#include "platform/media/resampler.h"
#include "platform/media/vorbis_music.h"

namespace ts5 {
namespace {

constexpr std::string_view kIdentification = "\x01vorbis";
constexpr std::size_t kFirstPage = 64;
constexpr int kMostChannels = 64;
constexpr double kLeastBitRate = 1000;  // of music; what is counted below it is none
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

// Whether the file begins as a Vorbis stream and ends before the last of its three headers does.
bool EndsInHeaders(const InputFile& file) {
  constexpr std::size_t kSerialPlace = 14;
  constexpr int kHeaders = 3;
  Bytes start(kFirstPage);
  const auto got = file.ReadAt(0, start);
  start.resize(got.value_or(0));
  if (AsText(start).find(kIdentification) == std::string_view::npos) return false;
  ByteReader in(start);
  in.Seek(kSerialPlace);
  OggPages pages(file, static_cast<int>(in.U32Le()));
  int headers = 0;
  for (auto page = pages.Next(); page && *page && headers < kHeaders; page = pages.Next()) {
    for (ogg_packet packet; pages.Packet(packet);) ++headers;
  }
  return headers < kHeaders;
}

// The samples of a stream with another rate or number of channels in the shape of the first one.
class LinkConverter {
 public:
  LinkConverter(std::size_t from, std::size_t to, std::optional<Resampler> resampler)
      : from_(from), to_(to), resampler_(std::move(resampler)) {}

  Outcome Take(std::span<const double> samples, std::vector<double>& out) {
    mixed_.clear();
    for (std::size_t i = 0; i < samples.size(); i += from_) Mix(samples.subspan(i, from_));
    if (resampler_) return resampler_->Process(mixed_, out);
    out.insert(out.end(), mixed_.begin(), mixed_.end());
    return Outcome::Success;
  }
  Outcome Finish(std::vector<double>& out) { return resampler_ ? resampler_->Finish(out) : Outcome::Success; }

 private:
  // Mono goes to all channels, and one channel gets the mean of all; else each goes to its own.
  void Mix(std::span<const double> frame) {
    if (to_ == 1) {
      mixed_.push_back(std::accumulate(frame.begin(), frame.end(), 0.0) / static_cast<double>(from_));
      return;
    }
    for (std::size_t channel = 0; channel < to_; ++channel)
      mixed_.push_back(from_ == 1 ? frame[0] : channel < from_ ? frame[channel] : 0.0);
  }

  std::size_t from_;
  std::size_t to_;
  std::optional<Resampler> resampler_;
  std::vector<double> mixed_;
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
    if (opened != 0) return EndsInHeaders(stream_.file) ? Outcome::SourceFailed : Outcome::WrongFormat;
    open_ = true;
    // The library leaves a first stream out whose music ends on its first page.
    if (ov_streams(&decoder_) > 1) (void)ov_pcm_seek(&decoder_, 0);
    const vorbis_info* const info = ov_info(&decoder_, 0);
    if (info == nullptr || info->channels < 1 || info->channels > kMostChannels || info->rate < 1 ||
        info->rate > kMostRate)
      return Outcome::WrongFormat;
    shape_.sampleRate = static_cast<std::uint32_t>(info->rate);
    shape_.channels = static_cast<std::uint32_t>(info->channels);
    shape_.channelMask = UsualChannelMask(shape_.channels);
    CountFrames();
    Describe();
    return Outcome::Success;
  }

  const MediaInfo& Info() const override { return info_; }
  const PcmShape& Shape() const override { return shape_; }
  std::optional<std::uint64_t> Frames() const override { return frames_; }

  Result<std::size_t> Read(std::span<double> out) override {
    if (straight_ && !music_) {
      music_ =
          OpenVorbisMusic(stream_.file, static_cast<int>(ov_serialnumber(&decoder_, 0)), shape_.channels);
      straight_ = music_ != nullptr;
    }
    return straight_ ? music_->Read(out) : ReadLinks(out);
  }

  Outcome Seek(std::uint64_t frame) override {
    music_.reset();
    straight_ = frame == 0 && ov_streams(&decoder_) == 1;
    return SeekInLinks(frame);
  }

 private:
  static constexpr std::size_t kMostRead = 8192;

  // One of the streams of a chained file.
  struct Link {
    std::uint32_t rate = 0;
    std::uint64_t frames = 0;
    std::uint64_t converted = 0;  // frames in the shape of the first one
  };

  Result<std::size_t> ReadLinks(std::span<double> out) {
    const std::size_t channels = shape_.channels;
    const std::size_t wanted = out.size() / channels;
    std::size_t filled = 0;
    while (filled < wanted) {
      if (taken_ < ready_.size()) {
        filled += TakeReady(out.subspan(filled * channels, (wanted - filled) * channels));
        continue;
      }
      float** planes = nullptr;
      int link = 0;
      const long got = ov_read_float(
          &decoder_, &planes, static_cast<int>(std::min<std::size_t>(wanted - filled, kMostRead)), &link);
      if (stream_.failed) return Failure(Outcome::ReadFailed);
      if (got == OV_HOLE) continue;  // the damaged place is left out
      if (got <= 0) {
        if (const Outcome left = LeaveLink(-1); Failed(left)) return Failure(left);
        if (taken_ < ready_.size()) continue;
        break;
      }
      if (link != link_) {
        if (const Outcome left = LeaveLink(link); Failed(left)) return Failure(left);
      }
      const auto frames = static_cast<std::size_t>(got);
      if (converter_) {
        if (const Outcome converted = Convert(planes, frames); Failed(converted)) return Failure(converted);
      } else if (taken_ < ready_.size()) {
        // The end of the stream before comes first.
        const std::size_t at = ready_.size();
        ready_.resize(at + frames * channels);
        Take(planes, channels, frames, ready_.data() + at);
      } else {
        Take(planes, channels, frames, out.data() + filled * channels);
        filled += frames;
      }
    }
    return filled;
  }

  Outcome SeekInLinks(std::uint64_t frame) {
    std::uint64_t left = std::min(frame, frames_.value_or(0));
    ogg_int64_t before = 0;
    ready_.clear();
    taken_ = 0;
    converter_.reset();
    link_ = -1;
    for (std::size_t i = 0; i < links_.size(); ++i) {
      const Link& link = links_[i];
      if (left < link.converted || i + 1 == links_.size()) {
        const std::uint64_t inside = ResampledLength(left, shape_.sampleRate, link.rate);
        before += static_cast<ogg_int64_t>(std::min(inside, link.frames));
        break;
      }
      left -= link.converted;
      before += static_cast<ogg_int64_t>(link.frames);
    }
    return ov_pcm_seek(&decoder_, before) == 0 ? Outcome::Success : Outcome::SourceFailed;
  }

  void CountFrames() {
    std::uint64_t all = 0;
    for (int i = 0; i < ov_streams(&decoder_); ++i) {
      const vorbis_info* const info = ov_info(&decoder_, i);
      const ogg_int64_t frames = ov_pcm_total(&decoder_, i);
      if (info == nullptr || info->rate < 1 || frames < 0) continue;
      Link link{.rate = static_cast<std::uint32_t>(info->rate), .frames = static_cast<std::uint64_t>(frames)};
      link.converted = ResampledLength(link.frames, link.rate, shape_.sampleRate);
      all += link.converted;
      links_.push_back(link);
    }
    frames_ = all;
    straight_ = ov_streams(&decoder_) == 1;
  }

  std::size_t TakeReady(std::span<double> out) {
    const std::size_t count = std::min(out.size(), ready_.size() - taken_);
    std::copy_n(ready_.begin() + static_cast<std::ptrdiff_t>(taken_), count, out.begin());
    taken_ += count;
    if (taken_ == ready_.size()) {
      ready_.clear();
      taken_ = 0;
    }
    return count / shape_.channels;
  }

  // What the stream before still has, and what the next one (-1: none) needs.
  Outcome LeaveLink(int next) {
    if (converter_) {
      if (const Outcome ended = converter_->Finish(ready_); Failed(ended)) return ended;
    }
    converter_.reset();
    link_ = next;
    const vorbis_info* const info = next < 0 ? nullptr : ov_info(&decoder_, next);
    if (info == nullptr) return Outcome::Success;
    const auto rate = static_cast<std::uint32_t>(info->rate);
    linkChannels_ = static_cast<std::size_t>(info->channels);
    if (rate == shape_.sampleRate && linkChannels_ == shape_.channels) return Outcome::Success;
    std::optional<Resampler> resampler;
    if (rate != shape_.sampleRate) {
      auto made = Resampler::Create(rate, shape_.sampleRate, shape_.channels);
      if (!made) return made.error();
      resampler = std::move(*made);
    }
    converter_.emplace(linkChannels_, shape_.channels, std::move(resampler));
    return Outcome::Success;
  }

  Outcome Convert(float* const* planes, std::size_t frames) {
    interleaved_.resize(frames * linkChannels_);
    Take(planes, linkChannels_, frames, interleaved_.data());
    return converter_->Take(interleaved_, ready_);
  }

  void Describe() {
    info_.container = MediaContainer::Ogg;
    info_.codec = MediaCodec::Vorbis;
    info_.frames = frames_;
    info_.seconds = static_cast<double>(frames_.value_or(0)) / shape_.sampleRate;
    info_.format.tag = 0;
    info_.format.channels = static_cast<std::uint16_t>(shape_.channels);
    info_.format.sampleRate = shape_.sampleRate;
    info_.format.blockAlign = 1;
    const vorbis_comment* const comment = ov_comment(&decoder_, 0);
    if (comment != nullptr && comment->vendor != nullptr) info_.encoder = comment->vendor;
    // The library does not count the page that the music begins on.
    const double size = static_cast<double>(stream_.file.Size());
    const double counted = static_cast<double>(ov_bitrate(&decoder_, -1)) / 8;
    const double mean = counted * 8 < kLeastBitRate && info_.seconds > 0 ? size / info_.seconds : counted;
    info_.format.bytesPerSecond = static_cast<std::uint32_t>(std::clamp(mean, 1.0, double{INT32_MAX}));
  }

  static void Take(float* const* planes, std::size_t channels, std::size_t frames, double* out) {
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
  bool straight_ = false;               // one stream, read from its start
  std::unique_ptr<VorbisMusic> music_;  // by which it is read then
  std::vector<Link> links_;
  int link_ = -1;  // that is read
  std::size_t linkChannels_ = 0;
  std::optional<LinkConverter> converter_;  // of that one, where its shape is another
  std::vector<double> interleaved_;
  std::vector<double> ready_;  // converted
  std::size_t taken_ = 0;      // of it
};

}  // namespace

bool IsOggVorbis(const InputFile& file) {
  std::array<std::uint8_t, kFirstPage> start{};
  const auto got = file.ReadAt(0, start);
  const std::string_view text = AsText(ByteView(start).first(got.value_or(0)));
  if (!text.starts_with("OggS")) return false;
  // Other music in the same container says so in its first page; what says nothing is Vorbis, and damaged.
  constexpr std::string_view kOthers[] = {"OpusHead",
                                          "\x7F"
                                          "FLAC",
                                          "Speex   "};
  return std::ranges::none_of(
      kOthers, [text](std::string_view id) { return text.find(id) != std::string_view::npos; });
}

Result<std::unique_ptr<MediaReader>> OpenVorbis(InputFile file) {
  auto reader = std::make_unique<VorbisReader>(std::move(file));
  if (const Outcome opened = reader->Open(); Failed(opened)) return Failure(opened);
  return std::unique_ptr<MediaReader>(std::move(reader));
}

}  // namespace ts5
