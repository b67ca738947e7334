#include "score/music_summary.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "platform/base/text.h"
#include "score/score_bars.h"
#include "score/texts.h"

namespace ts5 {
namespace {

// 120 quarters a minute where no tempo is written.
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

// From seven flats to seven sharps.
std::string KeyText(int sharps) {
  std::string_view names = Text(texts::MusicKeyNames);
  for (int key = -7; key < std::min(sharps, 7); ++key) names.remove_prefix(names.find('|') + 1);
  return std::string(names.substr(0, names.find('|')));
}

template <typename Value>
void AddNew(std::vector<Value>& values, Value value) {
  if (std::ranges::find(values, value) == values.end()) values.push_back(std::move(value));
}

}  // namespace

MusicSummary SummariseMusic(const ScoreDocument& document, const CancelCheck& cancelled) {
  const ScoreMusic music = ReadMusic(document, cancelled);
  MusicSummary summary;
  for (std::size_t staff = 0; staff < music.changes.size(); ++staff) {
    if (document.staves[staff].usesNoteMap) continue;
    for (const ScoreChange& change : music.changes[staff]) {
      if (change.item->Is(ObjectKind::Key)) AddNew(summary.keys, KeyText(change.item->key));
    }
  }
  if (summary.keys.empty()) summary.keys.push_back(KeyText(0));
  for (const ScoreBar& bar : music.bars) {
    const int denominator = 1 << std::clamp<int>(bar.time.power, 0, 12);
    AddNew(summary.metres, Format("%d/%d", bar.time.numerator, denominator));
  }
  for (const ScoreTempo& tempo : music.tempos) AddNew(summary.tempos, tempo.quarters);
  summary.seconds = SecondsOf(music);
  summary.bars = music.bars.size();
  return summary;
}

}  // namespace ts5
