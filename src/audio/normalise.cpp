#include "audio/normalise.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <new>
#include <optional>
#include <utility>

namespace ts5 {
namespace {

constexpr double kFullLevel = 100000.0;
constexpr float kLeastProjectGain = 1.1F;
// One second of audio, within these bounds whatever a header says.
constexpr std::size_t kLeastBlock = std::size_t{1} << 12;
constexpr std::size_t kMostBlock = std::size_t{1} << 20;

// Progress of one step among several.
WorkWatch Step(const WorkWatch& watch, std::size_t index, std::size_t count) {
  WorkWatch step{watch.cancelled, {}};
  if (watch.progress) {
    step.progress = [&watch, index, count](double fraction) {
      watch.progress((static_cast<double>(index) + fraction) / static_cast<double>(count));
    };
  }
  return step;
}

std::optional<std::uint16_t> BitsOf(const WaveFormat& format) {
  switch (SampleTypeOf(format).value_or(SampleType::Float64)) {
    case SampleType::Unsigned8:
      return 8;
    case SampleType::Signed16:
      return 16;
    default:
      return std::nullopt;
  }
}

Result<WaveFile> OpenSource(const std::string& name) {
  auto file = WaveFile::Open(name);
  if (file) return file;
  return Failure(file.error() == Outcome::OutOfMemory ? file.error() : Outcome::SourceNotOpened);
}

// Bytes of a frame by the samples that are in it: what the header says of blocks may be wrong.
std::size_t FrameSize(const WaveFormat& format) {
  return SampleSize(SampleTypeOf(format).value_or(SampleType::Float64)) *
         std::max<std::size_t>(1, format.channels);
}

// Reads the data block by block: whole frames, but for what is left at the end.
template <typename Take>
Outcome ForEachBlock(WaveFile& file, const WorkWatch& watch, const Take& take) {
  const WaveFormat& format = file.Format();
  const std::size_t frame = FrameSize(format);
  const std::size_t size = std::clamp<std::size_t>(format.bytesPerSecond, kLeastBlock, kMostBlock);
  Bytes block((size + frame - 1) / frame * frame);
  const std::uint64_t total = file.DataSize();
  while (file.DataSize() > 0) {
    if (watch.cancelled && watch.cancelled()) return Outcome::Cancelled;
    const auto got = file.Read(block);
    if (!got) return got.error();
    if (const Outcome taken = take(std::span(block).first(*got)); Failed(taken)) return taken;
    if (watch.progress) watch.progress(1 - static_cast<double>(file.DataSize()) / static_cast<double>(total));
  }
  return Outcome::Success;
}

std::int32_t SampleAt(const std::uint8_t* bytes) {
  return static_cast<std::int16_t>(static_cast<std::uint16_t>(bytes[0] | bytes[1] << 8));
}

// The peaks of the samples of every second channel.
template <std::size_t kSize>
void RaisePeaks(std::span<const std::uint8_t> block, std::size_t channels, Peaks& peaks) {
  std::int32_t left = static_cast<std::int32_t>(peaks.left);
  std::int32_t right = static_cast<std::int32_t>(peaks.right);
  const auto magnitude = [&](std::size_t sample) {
    const std::uint8_t* const at = block.data() + sample * kSize;
    return std::abs(kSize == 1 ? *at - 128 : SampleAt(at));
  };
  const std::size_t samples = block.size() / kSize;
  if (channels == 1) {
    for (std::size_t i = 0; i < samples; ++i) left = std::max(left, magnitude(i));
  } else if (channels == 2) {
    for (std::size_t i = 0; i + 1 < samples; i += 2) {
      left = std::max(left, magnitude(i));
      right = std::max(right, magnitude(i + 1));
    }
    if (samples % 2 != 0) left = std::max(left, magnitude(samples - 1));
  } else {
    for (std::size_t i = 0; i < samples; ++i) {
      std::int32_t& peak = i % channels % 2 == 0 ? left : right;
      peak = std::max(peak, magnitude(i));
    }
  }
  peaks = {static_cast<std::uint32_t>(left), static_cast<std::uint32_t>(right)};
}

// Halves away from zero. The product of a sample and the gain is exact in 64 bits.
std::int32_t Rounded(double value) {
  return static_cast<std::int32_t>(value + std::copysign(0.5, value));
}

void Amplify16(std::span<std::uint8_t> block, double gain) {
  for (std::size_t i = 0; i + 1 < block.size(); i += 2) {
    const double louder = std::clamp(SampleAt(block.data() + i) * gain, -32768.0, 32767.0);
    const auto bits = static_cast<std::uint32_t>(Rounded(louder));
    block[i] = static_cast<std::uint8_t>(bits);
    block[i + 1] = static_cast<std::uint8_t>(bits >> 8);
  }
}

void Amplify8(std::span<std::uint8_t> block, double gain) {
  for (std::uint8_t& byte : block) {
    const double louder = std::clamp((byte - 128) * gain + 128, 0.0, 255.0);
    byte = static_cast<std::uint8_t>(Rounded(louder));
  }
}

void Amplify(std::span<std::uint8_t> block, std::uint16_t bits, double gain) {
  bits == 8 ? Amplify8(block, gain) : Amplify16(block, gain);
}

// The source's data with this gain into a new file of the same format, which takes the target's place when it
// is complete.
Outcome WriteLouder(const std::string& source, const std::string& target, float gain,
                    const WorkWatch& watch) {
  auto from = OpenSource(source);
  if (!from) return from.error();
  const auto bits = BitsOf(from->Format());
  if (!bits) return Outcome::WrongFormat;
  auto to = WaveFile::Create(target.empty() ? source : target, from->Format(), from->DataSize());
  if (!to) return to.error() == Outcome::WriteFailed ? to.error() : Outcome::TargetNotCreated;
  const Outcome copied = ForEachBlock(*from, watch, [&](std::span<std::uint8_t> block) {
    Amplify(block, *bits, gain);
    return to->Write(block);
  });
  return Failed(copied) ? copied : to->Close();
}

// What brings the file's loudest sample to full scale. NotNecessary: it is there already, or all is silent.
Result<float> GainFor(WaveFile& file, const WorkWatch& watch) {
  const auto peaks = ScanPeak(file, watch);
  if (!peaks) return Failure(peaks.error());
  const std::uint32_t peak = std::max(peaks->left, peaks->right);
  if (peak == 0) return Failure(Outcome::NotNecessary);
  const double full = BitsOf(file.Format()) == 8 ? 128 : 32768;
  const auto gain = static_cast<float>(full / peak);
  if (gain <= 1.0F) return Failure(Outcome::NotNecessary);
  return gain;
}

Outcome NormaliseFile(const std::string& source, const std::string& target, const WorkWatch& watch) {
  auto file = OpenSource(source);
  if (!file) return file.error();
  const auto gain = GainFor(*file, Step(watch, 0, 2));
  if (!gain) return gain.error();
  return WriteLouder(source, target, *gain, Step(watch, 1, 2));
}

Outcome NormaliseProject(std::span<const std::string> sources, std::span<const std::string> targets,
                         const WorkWatch& watch) {
  const auto levels = ScanProjectLevel(sources, Step(watch, 0, 2));
  if (!levels) return levels.error();
  const std::uint32_t peak = std::max(levels->left, levels->right);
  if (peak == 0) return Outcome::NotNecessary;
  const auto gain = static_cast<float>(kFullLevel / peak);
  if (gain < kLeastProjectGain) return Outcome::NotNecessary;
  const WorkWatch writing = Step(watch, 1, 2);
  for (std::size_t i = 0; i < sources.size(); ++i) {
    if (sources[i].empty()) continue;
    const std::string target = i < targets.size() ? targets[i] : std::string();
    const Outcome written = WriteLouder(sources[i], target, gain, Step(writing, i, sources.size()));
    if (Failed(written)) return written;
  }
  return Outcome::Success;
}

}  // namespace

Levels LevelsOf(const Peaks& peaks, std::uint16_t bits) {
  const double factor = kFullLevel / (bits == 8 ? 128 : 32768);
  return {static_cast<std::uint32_t>(std::lround(peaks.left * factor)),
          static_cast<std::uint32_t>(std::lround(peaks.right * factor))};
}

Result<Peaks> ScanPeak(WaveFile& file, const WorkWatch& watch) {
  try {
    const auto bits = BitsOf(file.Format());
    if (!bits) return Failure(Outcome::WrongFormat);
    Peaks peaks;
    const Outcome scanned = ForEachBlock(file, watch, [&](std::span<const std::uint8_t> block) {
      if (*bits == 8) {
        RaisePeaks<1>(block, file.Format().channels, peaks);
      } else {
        RaisePeaks<2>(block, file.Format().channels, peaks);
      }
      return Outcome::Success;
    });
    if (Failed(scanned)) return Failure(scanned);
    file.Reset();
    return peaks;
  } catch (const std::bad_alloc&) {
    return Failure(Outcome::OutOfMemory);
  }
}

Result<Levels> ScanProjectLevel(std::span<const std::string> names, const WorkWatch& watch) {
  Levels loudest;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (names[i].empty()) continue;
    auto file = OpenSource(names[i]);
    if (!file) return Failure(file.error());
    const auto peaks = ScanPeak(*file, Step(watch, i, names.size()));
    if (!peaks) return Failure(peaks.error());
    const Levels levels = LevelsOf(*peaks, BitsOf(file->Format()).value_or(16));
    loudest = {std::max(loudest.left, levels.left), std::max(loudest.right, levels.right)};
  }
  return loudest;
}

Outcome Normalise(std::span<const std::string> sources, std::span<const std::string> targets, int index,
                  std::size_t count, const WorkWatch& watch) {
  try {
    if (index == kWholeProject) {
      const std::size_t all = std::min(count, sources.size());
      return NormaliseProject(sources.first(all), targets, watch);
    }
    const auto first = static_cast<std::size_t>(index);
    if (index < 0 || first > sources.size() || count > sources.size() - first)
      return Outcome::InvalidParameter;
    for (std::size_t i = 0; i < count; ++i) {
      const std::size_t file = first + i;
      const std::string target = file < targets.size() ? targets[file] : std::string();
      const Outcome done = NormaliseFile(sources[file], target, Step(watch, i, count));
      if (Failed(done)) return done;
    }
    return Outcome::Success;
  } catch (const std::bad_alloc&) {
    return Outcome::OutOfMemory;
  }
}

Outcome NormaliseStaged(StagedFile& file, const WorkWatch& watch) {
  try {
    auto wave = WaveFile::EditIn(file);
    if (!wave) return wave.error();
    const auto gain = GainFor(*wave, Step(watch, 0, 2));
    if (!gain) return gain.error();
    const std::uint16_t bits = *BitsOf(wave->Format());
    std::uint64_t at = 0;
    const Outcome amplified = ForEachBlock(*wave, Step(watch, 1, 2), [&](std::span<std::uint8_t> block) {
      Amplify(block, bits, *gain);
      wave->SeekTo(at);
      at += block.size();
      return wave->Write(block);
    });
    return Failed(amplified) ? amplified : wave->Close();
  } catch (const std::bad_alloc&) {
    return Outcome::OutOfMemory;
  }
}

}  // namespace ts5
