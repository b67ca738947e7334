// The layout of RIFF WAVE files: where the samples lie and what they are, and the header of a new file.
//
// Formats: RIFF WAVE as IBM and Microsoft published it in 1991, WAVEFORMATEXTENSIBLE,
// and EBU Tech 3306 (RF64) for files of more than 4 GiB. RIFX is RIFF with all its numbers big-endian.
#pragma once

#include <cstdint>
#include <span>

#include "audio/chunk_walk.h"
#include "platform/base/bytes.h"
#include "platform/base/outcome.h"
#include "platform/files/input_file.h"
#include "platform/media/wave_format.h"

namespace ts5 {

struct WaveLayout {
  WaveFormat format;
  std::uint64_t dataOffset = 0;
  // What there is of the data, whatever the header says: a size of 0 or 0xFFFFFFFF that a writer left behind,
  // or one that reaches beyond the file, counts to the end of the file.
  std::uint64_t dataSize = 0;
  // How the samples lie in the file, where that is not as in a RIFF file.
  ByteOrder order = ByteOrder::Little;
  bool signedBytes = false;  // samples of 8 bits count from 0

  [[nodiscard]] bool LiesAsInRiff() const { return order == ByteOrder::Little && !signedBytes; }
  bool operator==(const WaveLayout&) const = default;
};

[[nodiscard]] bool IsWave(ByteView start);  // RIFF, RIFX or RF64, of the type WAVE

// The chunks may come in any order. WrongFormat: no wave file, or without a "fmt " chunk of 16 bytes or a
// "data" chunk, or RIFX with compressed data. SourceFailed: samples are promised, and there is not one frame.
// ReadFailed.
[[nodiscard]] Result<WaveLayout> ReadWaveLayout(const InputFile& file);

// Makes samples that were read as they lie in the file what they are in a RIFF file. Whole samples.
void BringToRiff(const WaveLayout& layout, std::span<std::uint8_t> samples);

// Whether so much data needs an RF64 file.
[[nodiscard]] bool NeedsRf64(const WaveFormat& format, std::uint64_t dataSize);
// Everything before the first sample: RIFF, "fmt ", "fact" with this value, "data". With rf64 the sizes stand
// in a chunk "ds64" before "fmt ".
[[nodiscard]] Bytes WaveHeader(const WaveFormat& format, std::uint64_t dataSize, std::uint32_t fact,
                               bool rf64);

}  // namespace ts5
