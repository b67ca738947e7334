// The CUE sheet beside the files of a grabbed disc: with it they are the disc again, with pauses, codes and
// texts.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/disc/cd_text.h"

namespace ts5::disc {

struct SheetTrack {
  int number = 0;
  std::string file = {};
  CdText::Entry text = {};
  std::string isrc = {};
  std::uint8_t control = 0;
  std::optional<std::uint32_t> pauseInFileBefore =
      {};  // sectors from its start, where this track's pause begins
};

struct GrabbedDisc {
  std::string catalogue = {};
  CdText::Entry text = {};
  std::string hidden = {};  // the file of what lies before the first track; "" for none
  std::vector<SheetTrack> tracks = {};
};

[[nodiscard]] std::string GrabbedSheet(const GrabbedDisc& disc);

}  // namespace ts5::disc
