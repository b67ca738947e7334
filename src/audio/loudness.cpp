#include "audio/loudness.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numbers>

#include "platform/media/media_engine.h"

namespace ts5 {
namespace {

constexpr double kAbsoluteGate = -70;  // LUFS
constexpr double kRelativeGate = -10;  // LU below the mean of what passes the absolute one
constexpr double kBinsPerUnit = 100;
constexpr double kLoudest = 30;  // LUFS; what is louder counts there
// Below it the weighting filter would have its corner beyond what the rate can hold.
constexpr std::uint32_t kLeastRate = 4000;

// The interpolating filter of BS.1770-4, annex 2: the phases 0 and 1 of four; 2 and 3 are their mirrors.
constexpr std::array<double, 12> kPhase0{0.0017089843750,  0.0109863281250,  -0.0196533203125,
                                         0.0332031250000,  -0.0594482421875, 0.1373291015625,
                                         0.9721679687500,  -0.1022949218750, 0.0476074218750,
                                         -0.0266113281250, 0.0148925781250,  -0.0083007812500};
constexpr std::array<double, 12> kPhase1{-0.0291748046875, 0.0292968750000,  -0.0517578125000,
                                         0.0891113281250,  -0.1665039062500, 0.4650878906250,
                                         0.7797851562500,  -0.2003173828125, 0.1015625000000,
                                         -0.0582275390625, 0.0330810546875,  -0.0189208984375};

double LoudnessOf(double energy) {
  return -0.691 + 10 * std::log10(energy);
}

// By the channel mask: surround channels count more, the low frequency channel not at all.
double WeightOf(std::uint32_t speaker) {
  constexpr std::uint32_t kLowFrequency = 0x8;
  constexpr std::uint32_t kSurround = 0x10 | 0x20 | 0x200 | 0x400;
  if ((speaker & kLowFrequency) != 0) return 0;
  return (speaker & kSurround) != 0 ? 1.41 : 1;
}

}  // namespace

LoudnessMeter::LoudnessMeter(const PcmShape& shape)
    : rate_(shape.sampleRate),
      channels_(shape.channels),
      bins_(static_cast<std::size_t>((kLoudest - kAbsoluteGate) * kBinsPerUnit) + 1) {
  // The two filters of the K weighting, for any sample rate.
  {
    constexpr double kGain = 3.999843853973347;
    constexpr double kQ = 0.7071752369554196;
    const double k = std::tan(std::numbers::pi * 1681.974450955533 / rate_);
    const double vh = std::pow(10.0, kGain / 20);
    const double vb = std::pow(vh, 0.4996667741545416);
    const double a0 = 1 + k / kQ + k * k;
    shelf_ = {(vh + vb * k / kQ + k * k) / a0, 2 * (k * k - vh) / a0, (vh - vb * k / kQ + k * k) / a0,
              2 * (k * k - 1) / a0, (1 - k / kQ + k * k) / a0};
  }
  {
    constexpr double kQ = 0.5003270373238773;
    const double k = std::tan(std::numbers::pi * 38.13547087602444 / rate_);
    const double a0 = 1 + k / kQ + k * k;
    highPass_ = {1, -2, 1, 2 * (k * k - 1) / a0, (1 - k / kQ + k * k) / a0};
  }
  std::uint32_t mask = shape.channelMask;
  for (Channel& channel : channels_) {
    const std::uint32_t speaker = mask & (~mask + 1);
    channel.weight = rate_ < kLeastRate ? 0 : WeightOf(speaker);
    mask &= ~speaker;
  }
  stepLength_ = std::max<std::uint64_t>(1, rate_ / 10);
}

void LoudnessMeter::Weigh(Channel& channel, std::span<const double> in, std::size_t stride) {
  if (channel.weight == 0) return;
  auto [s1, s2] = channel.shelf;
  auto [h1, h2] = channel.highPass;
  double energy = 0;
  for (std::size_t i = 0; i < in.size(); i += stride) {
    const double x = in[i];
    const double shelved = shelf_.b0 * x + s1;
    s1 = shelf_.b1 * x - shelf_.a1 * shelved + s2;
    s2 = shelf_.b2 * x - shelf_.a2 * shelved;
    const double weighted = shelved + h1;
    h1 = -2 * shelved - highPass_.a1 * weighted + h2;
    h2 = shelved - highPass_.a2 * weighted;
    energy += weighted * weighted;
  }
  channel.shelf = {s1, s2};
  channel.highPass = {h1, h2};
  channel.energy += energy * channel.weight;
}

void LoudnessMeter::RaisePeak(Channel& channel, std::span<const double> in, std::size_t stride) {
  double peak = peak_;
  for (std::size_t i = 0; i < in.size(); i += stride) {
    channel.place = channel.place == 0 ? kTaps - 1 : channel.place - 1;
    channel.history[channel.place] = channel.history[channel.place + kTaps] = in[i];
    const double* const last = channel.history.data() + channel.place;  // newest first
    std::array<double, 4> between{};
    for (std::size_t tap = 0; tap < kTaps; ++tap) {
      between[0] += last[tap] * kPhase0[tap];
      between[1] += last[tap] * kPhase1[tap];
      between[2] += last[tap] * kPhase1[kTaps - 1 - tap];
      between[3] += last[tap] * kPhase0[kTaps - 1 - tap];
    }
    peak = std::max(peak, std::abs(in[i]));
    for (const double value : between) peak = std::max(peak, std::abs(value));
  }
  peak_ = peak;
}

void LoudnessMeter::Add(std::span<const double> interleaved) {
  const std::size_t count = channels_.size();
  while (!interleaved.empty()) {
    const auto frames = static_cast<std::size_t>(
        std::min<std::uint64_t>(interleaved.size() / count, stepLength_ - framesInStep_));
    if (frames == 0) return;
    for (std::size_t i = 0; i < count; ++i) {
      const auto samples = interleaved.first(frames * count).subspan(i);
      Weigh(channels_[i], samples, count);
      RaisePeak(channels_[i], samples, count);
    }
    framesInStep_ += frames;
    interleaved = interleaved.subspan(frames * count);
    if (framesInStep_ == stepLength_) EndStep();
  }
}

// Every 100 ms there is a new measuring block of the last 400 ms.
void LoudnessMeter::EndStep() {
  double energy = 0;
  for (Channel& channel : channels_) {
    energy += channel.energy / static_cast<double>(stepLength_);
    channel.energy = 0;
  }
  steps_.at(stepCount_ % steps_.size()) = energy;
  ++stepCount_;
  framesInStep_ = 0;
  // Steps end where their exact places say, whatever the rate.
  stepLength_ = std::max<std::uint64_t>(1, (stepCount_ + 1) * rate_ / 10 - stepCount_ * rate_ / 10);
  if (stepCount_ < steps_.size()) return;
  const double block = (steps_[0] + steps_[1] + steps_[2] + steps_[3]) / 4;
  if (block <= 0 || !std::isfinite(block)) return;
  const double loudness = std::min(LoudnessOf(block), kLoudest);
  if (loudness <= kAbsoluteGate) return;
  Bin& bin = bins_.at(static_cast<std::size_t>((loudness - kAbsoluteGate) * kBinsPerUnit));
  ++bin.blocks;
  bin.energy += block;
}

void LoudnessMeter::Join(const LoudnessMeter& other) {
  for (std::size_t i = 0; i < bins_.size(); ++i) {
    bins_[i].blocks += other.bins_[i].blocks;
    bins_[i].energy += other.bins_[i].energy;
  }
  peak_ = std::max(peak_, other.peak_);
}

Loudness LoudnessMeter::Result() const {
  Loudness result;
  if (peak_ > 0) result.truePeak = 20 * std::log10(peak_);
  const auto mean = [this](std::size_t from) -> std::optional<double> {
    std::uint64_t blocks = 0;
    double energy = 0;
    for (std::size_t i = from; i < bins_.size(); ++i) {
      blocks += bins_[i].blocks;
      energy += bins_[i].energy;
    }
    if (blocks == 0) return std::nullopt;
    return LoudnessOf(energy / static_cast<double>(blocks));
  };
  const auto ungated = mean(0);
  if (!ungated) return result;
  const double gate = std::max(0.0, *ungated + kRelativeGate - kAbsoluteGate);
  result.integrated = mean(static_cast<std::size_t>(gate * kBinsPerUnit));
  return result;
}

Result<Loudness> MeasureLoudness(PcmSource& source, const WorkWatch& watch) {
  LoudnessSink sink(source.Shape());
  if (const Outcome measured = CopyPcm(source, sink, watch); Failed(measured)) return Failure(measured);
  return sink.Measured();
}

}  // namespace ts5
