#include "audio/waveform_overview.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace ts5 {
namespace {

constexpr std::size_t kBlockFrames = 8192;

}  // namespace

Result<Waveform> OverviewOf(PcmSource& source, std::size_t parts, const WorkWatch& watch) {
  const std::uint64_t total = source.Frames().value_or(0);
  if (total == 0 || parts == 0) return Failure(Outcome::WrongFormat);
  const std::size_t channels = source.Shape().channels;
  Waveform waveform(parts);
  std::vector<double> block(kBlockFrames * channels);
  for (std::uint64_t frame = 0;;) {
    if (watch.cancelled && watch.cancelled()) return Failure(Outcome::Cancelled);
    const auto got = source.Read(block);
    if (!got) return Failure(got.error());
    if (*got == 0) return waveform;
    for (std::size_t i = 0; i < *got; ++i, ++frame) {
      double peak = 0;
      for (std::size_t c = 0; c < channels; ++c) peak = std::max(peak, std::abs(block[i * channels + c]));
      const auto part = static_cast<std::size_t>(std::min<double>(
          static_cast<double>(frame) * static_cast<double>(parts) / static_cast<double>(total),
          static_cast<double>(parts - 1)));
      waveform[part] = std::max(waveform[part], static_cast<float>(std::min(peak, 1.0)));
    }
  }
}

}  // namespace ts5
