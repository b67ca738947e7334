// CUE sheets: the text files that say how the files beside them make up a disc (the format of the CDRWIN
// user's guide, appendix A, as today's programs write it). Windows-1252 or UTF-8, any line ends; commands
// that say nothing of the layout (REM, CDTEXTFILE, SONGWRITER) are passed over.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/outcome.h"
#include "platform/disc/disc_address.h"

namespace ts5 {

// A place in one of the files, in sectors from its start.
struct CuePlace {
  std::size_t file = 0;
  std::uint32_t sector = 0;

  auto operator<=>(const CuePlace&) const = default;
};

struct CueTrack {
  int number = 0;  // 1..99, each one more than the last
  bool audio = true;
  std::uint32_t sectorBytes = 0;  // of a sector in the file: 2352, for data also 2048 or 2336
  std::string title = {};
  std::string performer = {};
  std::string isrc = {};  // 12 characters, or ""
  bool copyPermitted = false;
  bool preEmphasis = false;
  std::uint32_t pregap = 0;            // sectors of silence before it that no file holds
  std::uint32_t postgap = 0;           // the same behind it
  std::optional<CuePlace> pause = {};  // INDEX 00: where the pause before it begins
  CuePlace start = {};                 // INDEX 01
};

struct CueFile {
  enum class Kind : std::uint8_t { Binary, Motorola, Audio };  // raw; raw, high byte first; to be decoded
  std::string name;                                            // as it is written
  Kind kind = Kind::Binary;
};

struct CueSheet {
  std::string catalogue = {};  // 13 digits, or ""
  std::string title = {};
  std::string performer = {};
  // The files begin with the two seconds before sector 0 (REM PREGAP-IN-FILE), as our recorder writes them;
  // other programs pass this over, and find the same music two seconds later.
  bool pregapInFile = false;
  std::vector<CueFile> files = {};
  std::vector<CueTrack> tracks = {};

  // WrongFormat: no track, or something that makes no disc (numbers out of order, places that run backwards,
  // a track without a file or without INDEX 01).
  [[nodiscard]] static Result<CueSheet> Parse(std::string_view text);
};

// "02:30:74" in sectors; nothing when it is no such time.
[[nodiscard]] std::optional<std::uint32_t> SectorsOfTime(std::string_view text);

}  // namespace ts5
