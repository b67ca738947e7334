#include "score/music_rows.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "platform/base/text.h"
#include "score/score_bars.h"
#include "score/score_parts.h"
#include "score/texts.h"

namespace ts5 {
namespace {

constexpr int kFirstSound = 32'000;  // text of the first General MIDI program

std::string OrMissing(const std::string& text) {
  return text.empty() ? std::string(Text(texts::ScoreTextMissing)) : text;
}

// Without repeats, at the written tempos; 120 quarters a minute where none is.
double SecondsOf(const ScoreMusic& music) {
  constexpr double kUsual = 120;
  double seconds = 0;
  double quarters = kUsual;
  Fraction at;
  const auto until = [&](Fraction place) {
    seconds += (place - at).Value() * 4 * 60 / quarters;
    at = place;
  };
  for (const ScoreTempo& tempo : music.tempos) {
    until(tempo.at);
    quarters = tempo.quarters;
  }
  until(music.length);
  return seconds;
}

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

// The different texts in the order in which they come.
class Listing {
 public:
  void Add(const std::string& text) {
    if (known_.insert(text).second) list_ += (list_.empty() ? "" : ", ") + text;
  }
  [[nodiscard]] const std::string& Get() const { return list_; }

 private:
  std::set<std::string> known_;
  std::string list_;
};

// From seven flats to seven sharps.
std::string KeyText(int sharps) {
  std::string_view names = Text(texts::MusicKeyNames);
  for (int key = -7; key < std::min(sharps, 7); ++key) names.remove_prefix(names.find('|') + 1);
  return std::string(names.substr(0, names.find('|')));
}

}  // namespace

std::vector<PropertyRow> MusicRows(const ScoreDocument& document) {
  const ScoreMusic music = ReadMusic(document);
  Listing keys;
  Listing times;
  Listing tempos;
  for (std::size_t staff = 0; staff < music.changes.size(); ++staff) {
    if (document.staves[staff].usesNoteMap) continue;
    for (const ScoreChange& change : music.changes[staff]) {
      if (change.item->Is(ObjectKind::Key)) keys.Add(KeyText(change.item->key));
    }
  }
  for (const ScoreBar& bar : music.bars)
    times.Add(Format("%d/%d", bar.time.numerator, 1 << std::clamp<int>(bar.time.power, 0, 12)));
  for (const ScoreTempo& tempo : music.tempos) tempos.Add(std::to_string(std::lround(tempo.quarters)));
  const auto seconds = static_cast<std::int64_t>(std::llround(SecondsOf(music)));
  std::vector<PropertyRow> rows;
  const auto add = [&rows](TextId label, std::string value) {
    rows.push_back({std::string(Text(label)), std::move(value)});
  };
  add(texts::MusicParts, PartList(document));
  add(texts::MusicBars, std::to_string(music.bars.size()));
  add(texts::MusicKeys, keys.Get().empty() ? KeyText(0) : keys.Get());
  add(texts::MusicTimes, OrMissing(times.Get()));
  add(texts::MusicTempos, OrMissing(tempos.Get()));
  add(texts::MusicLength, Format(Text(texts::MusicMinutes), seconds / 60, seconds % 60));
  return rows;
}

}  // namespace ts5
