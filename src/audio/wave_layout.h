// The layout of RIFF WAVE files: where the samples lie and what they are, and the header of a new file.
//
// Formats: RIFF WAVE as IBM and Microsoft published it in 1991, WAVEFORMATEXTENSIBLE,
// and EBU Tech 3306 (RF64) for files of more than 4 GiB.
#pragma once

#include <cstdint>
#include <string_view>

#include "platform/bytes.h"
#include "platform/input_file.h"
#include "platform/outcome.h"
#include "platform/wave_format.h"

namespace ts5 {

struct WaveLayout {
  WaveFormat format;
  std::uint64_t dataOffset = 0;
  // What there is of the data, whatever the header says: a size of 0 or 0xFFFFFFFF that a writer left behind,
  // or one that reaches beyond the file, counts to the end of the file.
  std::uint64_t dataSize = 0;

  bool operator==(const WaveLayout&) const = default;
};

// The chunks may come in any order. WrongFormat: no wave file, or without a "fmt " chunk of 16 bytes or a
// "data" chunk. ReadFailed.
[[nodiscard]] Result<WaveLayout> ReadWaveLayout(const InputFile& file);

// Whether so much data needs an RF64 file.
[[nodiscard]] bool NeedsRf64(const WaveFormat& format, std::uint64_t dataSize);
// Everything before the first sample: RIFF, "fmt ", "fact" with this value, "data". With rf64 the sizes stand
// in a chunk "ds64" before "fmt ".
[[nodiscard]] Bytes WaveHeader(const WaveFormat& format, std::uint64_t dataSize, std::uint32_t fact,
                               bool rf64);

}  // namespace ts5
