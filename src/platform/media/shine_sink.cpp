#include "platform/media/shine_sink.h"

extern "C" {
#include <shine/layer3.h>
}

#include <algorithm>
#include <array>
#include <iterator>
#include <vector>

#include "platform/base/bytes.h"
#include "platform/media/mp3_frame.h"

namespace ts5 {
namespace {

// Samples that the encoder puts before the music, without the decoder's own delay of kMp3DecoderDelay.
constexpr std::uint32_t kShineDelay = 528;

// What the library makes is louder than what it gets, by an eighth.
constexpr double kGain = 8.0 / 9;
// A granule holds no more bits than these; the library breaks the frame when a channel's share is greater.
constexpr int kMostGranuleBits = 4095;
constexpr std::array<int, 18> kBitRates = {8,  16,  24,  32,  40,  48,  56,  64,  80,
                                           96, 112, 128, 144, 160, 192, 224, 256, 320};

// The bit rate, or the greatest one below it whose frames the library can fill.
int FillableRate(int bitRate, int sampleRate, int channels) {
  const int granules = sampleRate >= 32000 ? 2 : 1;
  const int most = granules * channels * kMostGranuleBits;
  const auto fits = [&](int rate) { return 576LL * granules * rate * 1000 / sampleRate <= most; };
  while (!fits(bitRate)) {
    const auto below = std::ranges::lower_bound(kBitRates, bitRate);
    if (below == kBitRates.begin()) break;
    bitRate = *std::prev(below);
  }
  return bitRate;
}

// The bit rate whose frames, with their checksums, fit into those of this bit rate; nothing when there is no
// lower one.
std::optional<int> RateWithin(int bitRate, int sampleRate) {
  const auto below = std::ranges::lower_bound(kBitRates, bitRate);
  for (auto rate = below; rate != kBitRates.begin();) {
    if (shine_check_config(sampleRate, *--rate) >= 0) return *rate;
  }
  return std::nullopt;
}

// The lowest bit rate above this one.
std::optional<int> RateAbove(int bitRate, int sampleRate) {
  for (auto rate = std::ranges::upper_bound(kBitRates, bitRate); rate != kBitRates.end(); ++rate) {
    if (shine_check_config(sampleRate, *rate) >= 0) return *rate;
  }
  return std::nullopt;
}

// Players look for some frames in a row before they believe that a file is of this kind.
constexpr std::uint64_t kLeastPasses = 4;

struct CloseShine {
  void operator()(shine_t shine) const { shine_close(shine); }
};

class ShineSink final : public PcmSink {
 public:
  explicit ShineSink(StagedFile& target) : target_(target), start_(target.Size()) {}

  [[nodiscard]] Outcome Open(const PcmShape& shape, const ShineOptions& options) {
    const auto rate = static_cast<int>(shape.sampleRate);
    if (shape.channels < 1 || shape.channels > 2) return Outcome::ConverterNotOpened;
    int bitRate = FillableRate(options.bitRate, rate, static_cast<int>(shape.channels));
    if (shine_check_config(rate, bitRate) < 0) return Outcome::ConverterNotOpened;
    if (options.crc) {
      const auto within = RateWithin(bitRate, rate);
      const auto outer = within ? std::optional(bitRate) : RateAbove(bitRate, rate);
      if (!outer) return Outcome::ConverterNotOpened;
      checked_.emplace(static_cast<std::uint32_t>(*outer));
      bitRate = within.value_or(bitRate);
    }
    shine_config_t config{};
    shine_set_config_mpeg_defaults(&config.mpeg);
    config.wave.channels = shape.channels == 1 ? PCM_MONO : PCM_STEREO;
    config.wave.samplerate = rate;
    config.mpeg.mode = shape.channels == 1                    ? MONO
                       : options.mode == Mp3Mode::DualChannel ? DUAL_CHANNEL
                                                              : STEREO;
    config.mpeg.bitr = bitRate;
    config.mpeg.emph = static_cast<emph>(options.emphasis);
    config.mpeg.copyright = options.copyright ? 1 : 0;
    config.mpeg.original = options.original ? 1 : 0;
    shine_.reset(shine_initialise(&config));
    if (!shine_) return Outcome::ConverterNotOpened;
    channels_ = shape.channels;
    privateBit_ = options.privateBit;
    block_.reserve(static_cast<std::size_t>(shine_samples_per_pass(shine_.get())) * channels_);
    return Outcome::Success;
  }

  Outcome Write(std::span<const double> interleaved) override {
    samples_ += interleaved.size() / channels_;
    for (const double sample : interleaved) {
      if (const Outcome added = Add(Sample16(sample * kGain)); Failed(added)) return added;
    }
    return Outcome::Success;
  }

  Outcome Finish() override {
    // The last samples come out of a decoder only when the delays have gone through it, too.
    const std::uint64_t through = samples_ + kShineDelay + kMp3DecoderDelay;
    const auto pass = static_cast<std::uint64_t>(shine_samples_per_pass(shine_.get()));
    const std::uint64_t passes = std::max((through + pass - 1) / pass, kLeastPasses);
    mostFrames_ = passes;
    // One more, as the library keeps the last bytes of its last frame to itself.
    while (passes_ <= passes) {
      if (const Outcome added = Add(0); Failed(added)) return added;
    }
    int size = 0;
    const std::uint8_t* const rest = shine_flush(shine_.get(), &size);
    if (const Outcome put = Put(rest, size); Failed(put)) return put;
    if (frames_ < passes) return Outcome::ConverterFailed;
    const Mp3LengthTag tag{.frames = frames_,
                           .bytes = target_.Size() - start_,
                           .delay = kShineDelay,
                           .padding = static_cast<std::uint32_t>(frames_ * pass - samples_ - kShineDelay)};
    return target_.WriteAt(start_, LengthTagFrame(first_, tag));
  }

 private:
  Outcome Add(std::int16_t sample) {
    block_.push_back(sample);
    if (block_.size() < block_.capacity()) return Outcome::Success;
    ++passes_;
    int size = 0;
    const std::uint8_t* const out = shine_encode_buffer_interleaved(shine_.get(), block_.data(), &size);
    block_.clear();
    return Put(out, size);
  }

  Outcome Put(const std::uint8_t* bytes, int size) {
    if (size < 0) return Outcome::ConverterFailed;
    waiting_.insert(waiting_.end(), bytes, bytes + size);
    return PutFrames();
  }

  // The frame that begins here. Where all are equally long, the library rounds their size down and marks each
  // as one byte longer than that, which makes it the size that it should have without the mark.
  std::optional<Mp3Header> FrameAt(std::size_t place) {
    const auto header = ParseMp3Header(ByteView(waiting_).subspan(place));
    if (!header || header->samples / 8 * header->bitRate * 1000 % header->sampleRate != 0) return header;
    waiting_[place + 2] &= static_cast<std::uint8_t>(~2U);
    return ParseMp3Header(ByteView(waiting_).subspan(place));
  }

  // Whole frames, each with its private bit; before the first of them a place for the frame with the length.
  Outcome PutFrames() {
    std::size_t done = 0;
    while (frames_ < mostFrames_) {
      const auto header = FrameAt(done);
      if (!header || waiting_.size() - done < header->size) break;
      if (privateBit_) waiting_[done + 2] |= 1;
      ByteView frame = ByteView(waiting_).subspan(done, header->size);
      Bytes larger;
      if (checked_) {
        auto set = checked_->Set(frame);
        if (!set) return Outcome::ConverterFailed;
        larger = *std::move(set);
        frame = larger;
      }
      if (frames_ == 0) {
        first_ = *ParseMp3Header(frame);
        if (const Outcome put = target_.Write(Bytes(LengthTagFrame(first_, {}).size())); Failed(put))
          return put;
      }
      ++frames_;
      done += header->size;
      if (const Outcome put = target_.Write(frame); Failed(put)) return put;
    }
    waiting_.erase(waiting_.begin(), waiting_.begin() + static_cast<std::ptrdiff_t>(done));
    return Outcome::Success;
  }

  StagedFile& target_;
  std::uint64_t start_;
  std::unique_ptr<std::remove_pointer_t<shine_t>, CloseShine> shine_;
  std::size_t channels_ = 0;
  bool privateBit_ = false;
  std::optional<CheckedFrames> checked_;  // with checksums
  std::vector<std::int16_t> block_;       // up to a pass
  Bytes waiting_;                         // of the frames that are not whole yet
  Mp3Header first_;
  std::uint64_t samples_ = 0;
  std::uint64_t passes_ = 0;
  std::uint64_t frames_ = 0;
  std::uint64_t mostFrames_ = UINT64_MAX;  // that are taken
};

}  // namespace

Result<std::unique_ptr<PcmSink>> OpenShineSink(StagedFile& target, const PcmShape& shape,
                                               const ShineOptions& options) {
  auto sink = std::make_unique<ShineSink>(target);
  if (const Outcome opened = sink->Open(shape, options); Failed(opened)) return Failure(opened);
  return std::unique_ptr<PcmSink>(std::move(sink));
}

std::optional<LibraryVersion> ShineVersion() {
  return VersionOfLibrary("libshine", TS5_SHINE_VERSION, reinterpret_cast<const void*>(&shine_initialise));
}

}  // namespace ts5
