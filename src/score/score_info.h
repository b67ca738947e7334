// What a score file says about itself: its texts, its staves and where its music begins.
//
// The current format ("stv3") can be played, converted and searched; of three older formats only this much is
// read.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/base/bytes.h"
#include "platform/base/outcome.h"
#include "platform/base/work_watch.h"
#include "score/page_layout.h"

namespace ts5 {

inline constexpr std::uint32_t kScoreMagic = 0x33767473;     // "stv3"
inline constexpr std::uint32_t kOldScoreMagic = 0x74B3E289;  // and the two numbers behind it
inline constexpr std::size_t kMaxStaves = 65'535;            // staff layouts; a file with more is damaged
inline constexpr std::uint64_t kMaxScoreFile = std::uint64_t{256} << 20;

using NoteMap = std::array<std::uint8_t, 128>;  // MIDI key -> what sounds

struct StaffLayout {
  std::string name;            // UTF-8; never empty
  std::int32_t sound = 0;      // MIDI program
  std::int32_t volume = 0;     // first channel volume
  std::int32_t transpose = 0;  // semitones
  bool usesNoteMap = false;    // a drum staff
  NoteMap noteMap{};           // the identity unless the file changes it
  std::int32_t spacing = 0;    // from this staff to the next one, in the units of the notation program
};

struct ScoreFileInfo {
  std::uint32_t magic = 0;
  std::string author;  // UTF-8, "" when absent; so keywords and comment
  std::string keywords;
  std::string comment;
  bool landscape = false;
  std::vector<StaffLayout> staves;
  std::int32_t systemSpacing = 0;  // behind the last staff of a system; the current format only
  std::uint32_t galleryObjects = 0;
  ScorePageLayout page;
  std::size_t galleryOffset = 0;  // of the first of them; the current format only
  std::uint32_t systems = 0;
  std::size_t bodyOffset = 0;  // of the first system; the current format only

  [[nodiscard]] bool IsCurrent() const { return magic == kScoreMagic; }
};

// WrongFormat: no score, or a score of another version; ReadFailed: a field that breaks off or cannot be.
[[nodiscard]] Result<ScoreFileInfo> ReadScoreInfo(ByteView file, const CancelCheck& cancelled = {});
// Also SourceFailed.
[[nodiscard]] Result<ScoreFileInfo> ReadScoreFileInfo(const std::string& path);

}  // namespace ts5
