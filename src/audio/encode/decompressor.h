// The audio decompressor: MPEG audio, Windows Media, Ogg Vorbis, Opus, AAC, FLAC and Monkey's Audio files
// back into wave files, with exactly the samples that went into their encoders where the files tell of them.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "audio/media_file.h"
#include "frame/filter_module.h"
#include "frame/parameters.h"
#include "platform/base/outcome.h"
#include "platform/base/work_watch.h"
#include "platform/files/files.h"

namespace ts5::encode {

// How one file is decoded, by the page of its decoder. As they stand: everything as it is in the file.
struct DecodeOptions {
  std::int32_t rateDivisor = 1;  // of the sample rate: kDecodeDivisors
  bool mono = false;
  std::int32_t bits = 0;  // of a sample: kDecodeBits; 0: as decoded

  bool operator==(const DecodeOptions&) const = default;
};
inline constexpr std::array<std::int32_t, 3> kDecodeDivisors = {1, 2, 4};
inline constexpr std::array<std::int32_t, 4> kDecodeBits = {0, 8, 16, 24};

struct AudioDecompressorParameters : ClonableParameters<AudioDecompressorParameters> {
  DecodeOptions decode;     // of a run with one file; several are decoded as they are
  std::string namePattern;  // "": targets are named after their sources
};

// WrongFormat: it is none that is decoded here; SourceNotOpened; SourceFailed: nothing in it can be decoded.
[[nodiscard]] Result<MediaFile> OpenCompressed(const std::string& source);

// What the page of a decoder says of a file.
struct CompressedFile {
  std::string description;  // its kind and its format
  std::uint32_t sampleRate = 0;
};
// Codes of OpenCompressed.
[[nodiscard]] Result<CompressedFile> DescribeCompressed(const std::string& source);

// What OpenCompressed has opened of the source, into a wave file. Whole numbers keep their depth; all else is
// rounded to 16 bits, of Ogg Vorbis to 32767 steps. What the options change is converted as by the wave
// converter. SourceFailed: there is nothing in it that can be decoded; TargetNotCreated, ReadFailed,
// WriteFailed, OutOfMemory, Cancelled.
[[nodiscard]] Outcome Decompress(MediaFile media, const std::string& source, StagedFile& target,
                                 const DecodeOptions& options = {}, const WorkWatch& watch = {});

[[nodiscard]] FilterModule AudioDecompressorModule();

}  // namespace ts5::encode
