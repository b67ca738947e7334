#include "score/music_summary.h"

#include <algorithm>
#include <numeric>
#include <string_view>
#include <utility>

#include "platform/base/text.h"
#include "score/play_order.h"
#include "score/score_bars.h"
#include "score/texts.h"

namespace ts5 {
namespace {

// Of each bar; 120 quarters a minute where no tempo is written.
std::vector<double> BarSeconds(const ScoreMusic& music) {
  std::vector<double> all;
  double quarters = 120;
  auto tempo = music.tempos.begin();
  for (const ScoreBar& bar : music.bars) {
    Fraction at = bar.start;
    double seconds = 0;
    const auto until = [&](Fraction place) {
      seconds += (place - at).Value() * 4 * 60 / quarters;
      at = place;
    };
    const Fraction end = bar.start + bar.length;
    for (; tempo != music.tempos.end() && tempo->at < end; ++tempo) {
      if (at < tempo->at) until(tempo->at);
      quarters = tempo->quarters;
    }
    until(end);
    all.push_back(seconds);
  }
  return all;
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
  const std::vector<double> seconds = BarSeconds(music);
  summary.seconds = std::accumulate(seconds.begin(), seconds.end(), 0.0);
  for (const PlayedBar& played : PlayOrder(music)) summary.played += seconds[played.bar];
  summary.bars = music.bars.size();
  return summary;
}

}  // namespace ts5
