#include "audio/wave_stream.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "audio/channel_mix.h"
#include "audio/sample_codec.h"
#include "platform/media/resampler.h"

namespace ts5 {
namespace {

class WaveReader final : public PcmSource {
 public:
  WaveReader(WaveFile file, SampleType type) : file_(std::move(file)), type_(type) {
    const WaveFormat& format = file_.Format();
    shape_ = {format.sampleRate, format.channels, ChannelMaskOf(format), SampleBits(type)};
    frameSize_ = SampleSize(type) * format.channels;
    frames_ = file_.DataSize() / frameSize_;
  }

  const PcmShape& Shape() const override { return shape_; }
  std::optional<std::uint64_t> Frames() const override { return frames_; }

  Result<std::size_t> Read(std::span<double> out) override {
    const auto frames =
        static_cast<std::size_t>(std::min<std::uint64_t>(out.size() / shape_.channels, frames_ - position_));
    if (frames == 0) return frames;
    bytes_.resize(std::max(bytes_.size(), frames * frameSize_));
    const auto got = file_.Read(std::span(bytes_).first(frames * frameSize_));
    if (!got) return Failure(got.error());
    DecodeSamples(type_, ByteView(bytes_).first(*got), out.first(frames * shape_.channels));
    position_ += frames;
    return frames;
  }

  Outcome Seek(std::uint64_t frame) override {
    position_ = std::min(frame, frames_);
    file_.SeekTo(position_ * frameSize_);
    return Outcome::Success;
  }

 private:
  WaveFile file_;
  SampleType type_;
  PcmShape shape_;
  std::size_t frameSize_ = 0;
  std::uint64_t frames_ = 0;
  std::uint64_t position_ = 0;
  Bytes bytes_;
};

class ConvertedSource final : public PcmSource {
 public:
  ConvertedSource(std::unique_ptr<PcmSource> source, std::optional<Resampler> resampler,
                  std::uint32_t sampleRate, std::uint32_t channels)
      : source_(std::move(source)),
        mix_(source_->Shape().channels, channels, source_->Shape().channelMask),
        resampler_(std::move(resampler)),
        shape_(source_->Shape()) {
    // Many frames come out of few where the source's rate is low: then it is taken in small blocks.
    blockFrames_ = static_cast<std::size_t>(std::clamp<std::uint64_t>(
        std::uint64_t{kBlockFrames} * shape_.sampleRate / sampleRate, 1, kBlockFrames));
    shape_.sampleRate = sampleRate;
    shape_.channels = channels;
    if (mix_.Changes()) shape_.channelMask = UsualChannelMask(channels);
    if (resampler_) shape_.bits = 0;
  }

  const PcmShape& Shape() const override { return shape_; }
  std::optional<std::uint64_t> Frames() const override {
    const auto frames = source_->Frames();
    if (!frames) return std::nullopt;
    return ResampledLength(*frames, source_->Shape().sampleRate, shape_.sampleRate);
  }

  Result<std::size_t> Read(std::span<double> out) override {
    if (!resampler_) return ReadMixed(out);
    const std::size_t wanted = out.size() / shape_.channels * shape_.channels;
    // Where few frames come out of many, what is there has to do, so that a stop is heard in between.
    for (int blocks = 0; ready_.size() - taken_ < wanted && !ended_; ++blocks) {
      if (blocks >= kMostBlocks && ready_.size() > taken_) break;
      if (const Outcome more = Resample(); Failed(more)) return Failure(more);
    }
    const std::size_t count = std::min(wanted, ready_.size() - taken_);
    std::copy_n(ready_.begin() + static_cast<std::ptrdiff_t>(taken_), count, out.begin());
    taken_ += count;
    return count / shape_.channels;
  }

  Outcome Seek(std::uint64_t frame) override {
    if (!resampler_) return source_->Seek(frame);
    resampler_->Reset();
    ready_.clear();
    taken_ = 0;
    ended_ = false;
    return source_->Seek(ResampledLength(frame, shape_.sampleRate, source_->Shape().sampleRate));
  }

 private:
  // The next frames of the source with the channels of the target.
  Result<std::size_t> ReadMixed(std::span<double> out) {
    if (!mix_.Changes()) return source_->Read(out);
    const std::size_t frames = out.size() / mix_.To();
    unmixed_.resize(std::max(unmixed_.size(), frames * mix_.From()));
    const auto got = source_->Read(std::span(unmixed_).first(frames * mix_.From()));
    if (!got || *got == 0) return got;
    mix_.Apply(std::span<const double>(unmixed_).first(*got * mix_.From()), out.first(*got * mix_.To()));
    return got;
  }

  Outcome Resample() {
    ready_.erase(ready_.begin(), ready_.begin() + static_cast<std::ptrdiff_t>(taken_));
    taken_ = 0;
    mixed_.resize(blockFrames_ * shape_.channels);
    const auto got = ReadMixed(mixed_);
    if (!got) return got.error();
    if (*got == 0) {
      ended_ = true;
      return resampler_->Finish(ready_);
    }
    return resampler_->Process(std::span<const double>(mixed_).first(*got * shape_.channels), ready_);
  }

  static constexpr std::size_t kBlockFrames = 4096;
  static constexpr int kMostBlocks = 64;

  std::unique_ptr<PcmSource> source_;
  ChannelMix mix_;
  std::optional<Resampler> resampler_;
  PcmShape shape_;
  std::size_t blockFrames_ = kBlockFrames;
  std::vector<double> unmixed_;
  std::vector<double> mixed_;
  std::vector<double> ready_;  // resampled
  std::size_t taken_ = 0;      // of it
  bool ended_ = false;
};

class WaveWriter final : public PcmSink {
 public:
  WaveWriter(WaveFile file, SampleType type, bool dither)
      : file_(std::move(file)), type_(type), encoder_(type, dither) {}

  Outcome Write(std::span<const double> interleaved) override {
    bytes_.resize(std::max(bytes_.size(), interleaved.size() * SampleSize(type_)));
    const auto bytes = std::span(bytes_).first(interleaved.size() * SampleSize(type_));
    encoder_.Encode(interleaved, bytes);
    return file_.Write(bytes);
  }
  Outcome Finish() override { return file_.Close(); }

 private:
  WaveFile file_;
  SampleType type_;
  SampleEncoder encoder_;
  Bytes bytes_;
};

}  // namespace

Result<std::unique_ptr<PcmSource>> OpenPcm(const std::string& path) {
  auto media = OpenMediaFile(path);
  if (!media) return Failure(media.error());
  return PcmOf(std::move(*media));
}

Result<std::unique_ptr<PcmSource>> PcmOf(MediaFile media) {
  if (media.wave && SampleTypeOf(media.wave->Format())) return WaveSource(std::move(*media.wave));
  if (!media.decoder) return Failure(Outcome::WrongFormat);
  return std::unique_ptr<PcmSource>(std::move(media.decoder));
}

Result<std::unique_ptr<PcmSource>> WaveSource(WaveFile file) {
  const auto type = SampleTypeOf(file.Format());
  if (!type) return Failure(Outcome::WrongFormat);
  return std::unique_ptr<PcmSource>(std::make_unique<WaveReader>(std::move(file), *type));
}

Result<std::unique_ptr<PcmSource>> Converted(std::unique_ptr<PcmSource> source, std::uint32_t sampleRate,
                                             std::uint32_t channels) {
  const PcmShape from = source->Shape();
  if (from.sampleRate == sampleRate && from.channels == channels) return source;
  std::optional<Resampler> resampler;
  if (from.sampleRate != sampleRate) {
    auto made = Resampler::Create(from.sampleRate, sampleRate, channels);
    if (!made) return Failure(made.error());
    resampler = std::move(*made);
  }
  return std::unique_ptr<PcmSource>(
      std::make_unique<ConvertedSource>(std::move(source), std::move(resampler), sampleRate, channels));
}

Result<std::unique_ptr<PcmSink>> WaveSink(WaveFile file, const PcmShape& from) {
  const auto type = SampleTypeOf(file.Format());
  if (!type) return Failure(Outcome::FormatRefused);
  const std::uint32_t bits = SampleBits(*type);
  const bool shallow = bits != 0 && bits <= 16;
  const bool finer = from.bits == 0 || from.bits > bits || from.sampleRate != file.Format().sampleRate;
  return std::unique_ptr<PcmSink>(std::make_unique<WaveWriter>(std::move(file), *type, shallow && finer));
}

}  // namespace ts5
