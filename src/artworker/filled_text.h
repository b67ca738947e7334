// Text fields that are filled from a disc: its title, its performer, its titles and their time.
#pragma once

#include <array>
#include <chrono>
#include <string>
#include <string_view>
#include <vector>

#include "artworker/layout.h"
#include "artworker/texts.h"
#include "platform/base/strings.h"

namespace ts5::artworker {

struct DiscTrack {
  std::string title;
  std::string performer;  // "" as the disc
  std::chrono::seconds time{0};

  bool operator==(const DiscTrack&) const = default;
};

struct DiscFacts {
  std::string title;
  std::string performer;
  std::vector<DiscTrack> tracks;

  [[nodiscard]] bool Known() const { return !title.empty() || !performer.empty() || !tracks.empty(); }
  bool operator==(const DiscFacts&) const = default;
};

struct DiscField {
  std::string_view name;  // as it stands in a text
  TextId explanation;
};
inline constexpr std::array kDiscFields = {
    DiscField{"{Titel}", texts::DiscFieldTitle}, DiscField{"{Interpret}", texts::DiscFieldPerformer},
    DiscField{"{Titelliste}", texts::DiscFieldTracks}, DiscField{"{Spielzeit}", texts::DiscFieldTime}};

// Whether there is anything to be filled.
[[nodiscard]] bool HasFields(const ArtworkLayout& layout);

// The layout with its fields filled, for drawing; with their names when nothing is known of a disc. A text
// that is nothing but a list of titles goes into as many columns (parted by a form feed) as give it the
// largest letters, and its line spacing shrinks to fit.
[[nodiscard]] ArtworkLayout FilledLayout(ArtworkLayout layout, const DiscFacts& facts);

// "3:05", "1:02:07"
[[nodiscard]] std::string PlayingTime(std::chrono::seconds time);

}  // namespace ts5::artworker
