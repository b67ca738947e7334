// Raises the level of 8-bit and 16-bit PCM wave files so that the loudest sample reaches full scale: each
// file by itself, or all of a project by the gain that the loudest of them leaves room for. Samples are
// multiplied, rounded to the nearest whole number (halves away from zero) and limited.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>

#include "audio/wave_file.h"
#include "platform/base/outcome.h"
#include "platform/base/work_watch.h"

namespace ts5 {

// As it is stored in jobs.
enum class NormaliseMode : std::uint32_t { None = 0, Each = 1, Project = 2 };

// The greatest magnitude of a sample: 0..32768 with 16 bits, 0..128 with 8. Mono has no right channel. Of
// more than two channels the odd ones count left, the even ones right.
struct Peaks {
  std::uint32_t left = 0;
  std::uint32_t right = 0;
  bool operator==(const Peaks&) const = default;
};
// Peaks on a scale of 0 (silence) to 100000 (full scale).
struct Levels {
  std::uint32_t left = 0;
  std::uint32_t right = 0;
  bool operator==(const Levels&) const = default;
};
[[nodiscard]] Levels LevelsOf(const Peaks& peaks, std::uint16_t bits);

// In all of these, watch.cancelled is asked before each block of data; where the user is to confirm a stop it
// asks him (Run::ConfirmStop).

// Reads all data of a file that is open for reading and goes back to its start. WrongFormat: neither 8 nor 16
// bits PCM. ReadFailed, Cancelled, OutOfMemory.
[[nodiscard]] Result<Peaks> ScanPeak(WaveFile& file, const WorkWatch& watch = {});

// The greatest levels of all files; empty names are passed over. Also SourceNotOpened.
[[nodiscard]] Result<Levels> ScanProjectLevel(std::span<const std::string> names,
                                              const WorkWatch& watch = {});

inline constexpr int kWholeProject = -1;
// index: kWholeProject for all sources with one gain, else the number of the first of count files that are
// normalised one by one. targets: where the copy of each source goes; an empty name, or no list: in place.
// Success; NotNecessary: the loudest file is at full scale already (a project: within a tenth of it) or
// silent, and nothing is written; SourceNotOpened, TargetNotCreated, ReadFailed, WriteFailed, WrongFormat,
// Cancelled, OutOfMemory. The first failure ends the call; files before it stay normalised.
[[nodiscard]] Outcome Normalise(std::span<const std::string> sources, std::span<const std::string> targets,
                                int index, std::size_t count, const WorkWatch& watch = {});

// One file that is complete in a staged file of the caller's, before anyone sees it: in place, without
// another file. On a failure but NotNecessary its samples are of no use.
[[nodiscard]] Outcome NormaliseStaged(StagedFile& file, const WorkWatch& watch = {});

}  // namespace ts5
