#include "artworker/filled_text.h"

#include <algorithm>
#include <numeric>

#include "artworker/text_layout.h"
#include "artworker/track_table.h"
#include "platform/base/text.h"

namespace ts5::artworker {
namespace {

constexpr std::string_view kTracks = "{Titelliste}";

void Replace(std::string& text, std::string_view what, const std::string& by) {
  for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += by.size())
    text.replace(at, what.size(), by);
}

// The titles, one a line: number, title and time, parted by the separator.
std::string TrackLines(const DiscFacts& facts, std::string_view separator) {
  std::string lines;
  for (std::size_t i = 0; i < facts.tracks.size(); ++i) {
    const DiscTrack& track = facts.tracks[i];
    const bool other = !track.performer.empty() && track.performer != facts.performer;
    lines += (i == 0 ? "" : "\n") + std::to_string(i + 1) + std::string(separator) + track.title +
             (other ? " – " + track.performer : "");
    if (track.time.count() > 0) lines += std::string(separator) + PlayingTime(track.time);
  }
  return lines;
}

std::chrono::seconds TotalOf(const DiscFacts& facts) {
  return std::accumulate(facts.tracks.begin(), facts.tracks.end(), std::chrono::seconds(0),
                         [](std::chrono::seconds sum, const DiscTrack& track) { return sum + track.time; });
}

}  // namespace

std::string PlayingTime(std::chrono::seconds time) {
  const auto seconds = time.count();
  if (seconds < 3600) return Format("%i:%02i", seconds / 60, seconds % 60);
  return Format("%i:%02i:%02i", seconds / 3600, seconds / 60 % 60, seconds % 60);
}

bool HasFields(const ArtworkLayout& layout) {
  return std::ranges::any_of(layout.elements, [](const ArtworkElement& element) {
    const auto* const field = std::get_if<TextField>(&element.content);
    return field != nullptr && std::ranges::any_of(kDiscFields, [&](const DiscField& row) {
             return field->text.find(row.name) != std::string::npos;
           });
  });
}

ArtworkLayout FilledLayout(ArtworkLayout layout, const DiscFacts& facts) {
  const bool known = facts.Known();
  for (ArtworkElement& element : layout.elements) {
    auto* const field = std::get_if<TextField>(&element.content);
    if (field == nullptr || field->text.find('{') == std::string::npos) continue;
    std::string& text = field->text;
    if (known && Trim(text) == kTracks) {
      text = kTableMark + TrackLines(facts, "\t");
      continue;
    }
    if (known) {
      Replace(text, "{Titel}", facts.title);
      Replace(text, "{Interpret}", facts.performer);
      const auto total = TotalOf(facts);
      Replace(text, "{Spielzeit}", total.count() > 0 ? PlayingTime(total) : std::string());
      Replace(text, kTracks, TrackLines(facts, "  "));
    }
    // Nobody knows how long a title is when its field is drawn.
    if (text.find('\n') == std::string::npos) text = kFitMark + text;
  }
  return layout;
}

}  // namespace ts5::artworker
