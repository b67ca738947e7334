// A disc of the virtual recorder, kept as files in a directory of its own: "disc.bin" (all sectors from the
// start of track 1's pre-gap), "disc.cue" (for other programs) and "disc.json" (what the disc is; see
// docs/formats.md).
#pragma once

#include <string>
#include <string_view>

#include "platform/base/outcome.h"
#include "platform/disc/cd_text.h"
#include "platform/disc/disc_layout.h"

namespace ts5 {

struct RecordedDisc {
  enum class Status : std::uint8_t { Blank, Open, Finalized, Damaged };

  std::string directory = {};
  int minutes = 80;  // 74 or 80
  bool rewritable = false;
  Status status = Status::Blank;
  bool atOnce = false;     // how its session was written
  DiscLayout layout = {};  // of closed tracks
  CdText text = {};

  // SourceFailed: there is no disc in the directory; WrongFormat: its description contradicts itself.
  [[nodiscard]] static Result<RecordedDisc> Load(const std::string& directory);
  // Makes the directory. InUse: there is a disc in it already; TargetFailed, WriteFailed.
  [[nodiscard]] static Outcome MakeBlank(const std::string& directory, int minutes, bool rewritable);
  // Both descriptions; TargetFailed, WriteFailed.
  [[nodiscard]] Outcome Save() const;
  // Nothing is left on it. The same codes.
  [[nodiscard]] Outcome Erase();

  [[nodiscard]] std::string BinFile() const;
  // The last place where its lead-out may begin.
  [[nodiscard]] Lba LastLeadOut() const {
    return {minutes * 60 * static_cast<std::int32_t>(kSectorsPerSecond) - 1 - kPregapSectors};
  }
};

[[nodiscard]] std::string_view StatusName(
    RecordedDisc::Status status);  // "blank", "open", "finalized", "damaged"

}  // namespace ts5
