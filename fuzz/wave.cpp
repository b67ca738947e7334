// Wave and AIFF files: their layout, reading them to the end, and every conversion of the samples that the
// first bytes choose.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>

#include "audio/aiff_layout.h"
#include "audio/format_texts.h"
#include "audio/wave_stream.h"

namespace {

using namespace ts5;

constexpr std::size_t kMostFrames = 1 << 16;

// What comes out never exceeds the length that was told.
void ReadAll(PcmSource& source) {
  const std::uint64_t frames = source.Frames().value_or(0);
  std::vector<double> block(source.Shape().channels * 256);
  std::uint64_t total = 0;
  while (total < kMostFrames) {
    const auto got = source.Read(block);
    if (!got || *got == 0) break;
    total += *got;
  }
  if (total > frames) abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const std::uint32_t rate = kOfferedRates.at(data[0] % kOfferedRates.size());
  const std::uint32_t channels = 1 + data[1] % 2;
  const Bytes bytes(data + 2, data + size);
  auto wave = IsAiff(bytes) ? WaveFile::ReadAiff(InputFile::FromBytes(bytes))
                            : WaveFile::Read(InputFile::FromBytes(bytes));
  if (!wave) return 0;
  if (wave->DataSize() > size) abort();
  (void)FullFormatText(wave->Format());
  (void)CodingName(wave->Format());
  auto source = WaveSource(std::move(*wave));
  if (!source) return 0;
  if ((*source)->Frames().value_or(0) > 4096) return 0;
  auto converted = Converted(std::move(*source), rate, channels);
  if (converted) ReadAll(**converted);
  return 0;
}
