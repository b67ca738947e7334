#include "score/music_rows.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/base/text.h"
#include "score/music_summary.h"
#include "score/score_parts.h"
#include "score/texts.h"

namespace ts5 {
namespace {

constexpr int kFirstSound = 32'000;  // text of the first General MIDI program

std::string PartList(const ScoreDocument& document) {
  const auto parts = PartsOf(document);
  std::string list = Format(Text(texts::ScoreStaffListHead), parts.size());
  std::size_t first = 0;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const StaffLayout& staff = document.staves[first];
    std::string instrument = parts[i].instrument;
    if (instrument.empty())
      instrument = TextByNumber(kFirstSound + std::clamp(staff.sound, 0, 127)).value_or(std::string_view());
    list += Format(Text(texts::MusicPartLine), i + 1, OrMissing(parts[i].name), parts[i].staves, instrument);
    first += parts[i].staves;
  }
  return list;
}

std::string Joined(const std::vector<std::string>& texts) {
  std::string list;
  for (const std::string& text : texts) list += (list.empty() ? "" : ", ") + text;
  return list;
}

// In whole quarters a minute; several that are written alike are one.
std::string TempoList(const std::vector<double>& tempos) {
  std::vector<std::string> texts;
  for (const double tempo : tempos) {
    std::string text = std::to_string(std::lround(tempo));
    if (std::ranges::find(texts, text) == texts.end()) texts.push_back(std::move(text));
  }
  return Joined(texts);
}

}  // namespace

std::string OrMissing(const std::string& text) {
  return text.empty() ? std::string(Text(texts::ScoreTextMissing)) : text;
}

std::string TitleOf(const ScoreCredits& credits) {
  const bool both = !credits.title.empty() && !credits.movement.empty();
  return credits.title + (both ? ": " : "") + credits.movement;
}

std::vector<PropertyRow> MusicRows(const ScoreDocument& document) {
  const MusicSummary music = SummariseMusic(document);
  const auto seconds = static_cast<std::int64_t>(music.seconds);
  std::vector<PropertyRow> rows;
  const auto add = [&rows](TextId label, std::string value) {
    rows.push_back({std::string(Text(label)), std::move(value)});
  };
  add(texts::MusicParts, PartList(document));
  add(texts::MusicBars, std::to_string(music.bars));
  add(texts::MusicKeys, Joined(music.keys));
  add(texts::MusicTimes, OrMissing(Joined(music.metres)));
  add(texts::MusicTempos, OrMissing(TempoList(music.tempos)));
  add(texts::MusicLength, Format(Text(texts::MusicMinutes), seconds / 60, seconds % 60));
  return rows;
}

}  // namespace ts5
