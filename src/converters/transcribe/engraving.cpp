#include "converters/transcribe/engraving.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <string>

#include "converters/transcribe/drums.h"
#include "converters/transcribe/staves.h"
#include "score/score_builder.h"

namespace ts5::transcribe {
namespace {

constexpr std::int64_t kWhole = 4 * kUnits;
constexpr double kTempoChange = 0.06;  // of a tempo that is worth saying
constexpr double kFoundTempoChange = 0.12;
constexpr std::uint8_t kViola = 41;

class Engraver {
 public:
  Engraver(const BarredMusic& music, const TranscriptionOptions& options)
      : music_(music), options_(options) {}

  std::uint32_t Build(ScoreDocument& score, const CancelCheck& cancelled) {
    score.landscape = options_.landscape;
    score.page = options_.page;
    score.systemSpacing = options_.page.betweenSystems;
    score.credits.title = music_.performance.title;
    score.credits.rights = music_.performance.rights;
    score.comment = music_.performance.title;
    for (const Staff& staff : music_.staves) score.staves.push_back(LayoutOf(staff));
    std::vector<BarColumn> columns(music_.bars.size());
    SetTempos(columns);
    int number = music_.bars.front().offset > 0 ? 0 : 1;
    for (std::size_t i = 0; i < music_.bars.size(); ++i, ++number) {
      const BarSpan& bar = music_.bars[i];
      columns[i].time = bar.time;
      columns[i].length = Fraction(bar.length, kWhole);
      columns[i].label = {.number = std::to_string(number), .implicit = number == 0};
      columns[i].staves.resize(music_.staves.size());
    }
    columns.back().line = kBarLineFinal;
    for (std::size_t s = 0; s < music_.staves.size(); ++s) {
      WriteSigns(s, columns);
      for (std::size_t v = 0; v < music_.staves[s].voices.size(); ++v) {
        if (cancelled && cancelled()) return 0;
        WriteVoice(s, v, columns);
      }
    }
    if (options_.page.barNumbers) NumberSystems(columns);
    AppendBars(score, std::move(columns), options_.page.barsPerSystem, cancelled);
    std::uint32_t respelled = 0;
    for (const MovedNotes& moved : PlaceNotes(score, cancelled)) respelled += moved.count;
    return respelled;
  }

 private:
  [[nodiscard]] StaffLayout LayoutOf(const Staff& staff) const {
    const PlayedPart& part = music_.performance.parts[staff.part];
    StaffLayout layout;
    layout.name = staff.name;
    layout.sound = part.program;
    layout.volume = part.volume;
    layout.spacing = options_.page.above + options_.page.below;
    std::iota(layout.noteMap.begin(), layout.noteMap.end(), std::uint8_t{0});
    if (staff.drums) {
      std::vector<std::uint8_t> keys;
      for (const Note& note : staff.notes) keys.push_back(note.key);
      layout.usesNoteMap = true;
      layout.noteMap = DrumMap(keys).Map();
    }
    return layout;
  }

  void SetTempos(std::vector<BarColumn>& columns) const {
    double current = 0;
    for (std::size_t i = 0; i < music_.bars.size(); ++i) {
      const double quarters = static_cast<double>(music_.bars[i].start) / static_cast<double>(kUnits);
      const double tempo =
          music_.beats.Found()
              ? music_.beats.Tempo(std::min(static_cast<std::size_t>(quarters), music_.beats.Beats() - 1))
              : 60 / music_.performance.QuarterSeconds(
                         std::llround(quarters * static_cast<double>(music_.performance.division)));
      const double worth = music_.beats.Found() ? kFoundTempoChange : kTempoChange;
      if (current != 0 && std::abs(tempo - current) < worth * current) continue;
      current = tempo;
      columns[i].tempo = static_cast<std::uint32_t>(std::clamp(std::round(tempo), 1.0, 999.0));
    }
  }

  // Clefs, keys and time signatures where they change.
  void WriteSigns(std::size_t index, std::vector<BarColumn>& columns) const {
    const Staff& staff = music_.staves[index];
    std::vector<std::vector<std::uint8_t>> keys(music_.bars.size());
    for (const Note& note : staff.notes) keys[BarAt(music_.bars, note.place)].push_back(note.key);
    const bool viola = music_.performance.parts[staff.part].program == kViola;
    const std::vector<std::uint8_t> clefs =
        staff.drums ? std::vector<std::uint8_t>(music_.bars.size(), kClefPercussion)
                    : ChooseClefs(keys, viola);
    for (std::size_t i = 0; i < music_.bars.size(); ++i) {
      std::vector<VoiceItems>& voices = columns[i].staves[index];
      voices.resize(1);
      const bool first = i == 0;
      if (first || clefs[i] != clefs[i - 1]) voices[0].push_back(ClefItem(clefs[i]));
      if (first || (music_.keys[i] != music_.keys[i - 1] && !staff.drums))
        voices[0].push_back(KeyItem(staff.drums ? 0 : music_.keys[i]));
      if (first || music_.bars[i].time != music_.bars[i - 1].time)
        voices[0].push_back(TimeItem(music_.bars[i].time.numerator, music_.bars[i].time.power));
    }
  }

  void WriteVoice(std::size_t index, std::size_t voice, std::vector<BarColumn>& columns) const {
    const std::vector<VoiceChord>& chords = music_.staves[index].voices[voice];
    std::size_t first = 0;
    for (std::size_t i = 0; i < music_.bars.size(); ++i) {
      const std::int64_t end = music_.bars[i].start + music_.bars[i].length;
      while (first < chords.size() && chords[first].end <= music_.bars[i].start) ++first;
      std::size_t last = first;
      while (last < chords.size() && chords[last].place < end) ++last;
      VoiceItems items = NotateBar(music_.bars[i], std::span(chords).subspan(first, last - first), voice == 0,
                                   static_cast<Beaming>(options_.page.beaming));
      if (items.empty()) continue;
      std::vector<VoiceItems>& voices = columns[i].staves[index];
      if (voices.size() <= voice) voices.resize(voice + 1);
      for (ScoreItem& item : items) voices[voice].push_back(std::move(item));
    }
  }

  // The number of the first bar of each system stands above its first chord or rest.
  void NumberSystems(std::vector<BarColumn>& columns) const {
    if (options_.page.barsPerSystem == 0) return;
    std::size_t inSystem = 0;
    for (std::size_t i = 0; i < columns.size(); ++i) {
      const bool begins = i > 0 && (inSystem == options_.page.barsPerSystem || columns[i].tempo != 0);
      inSystem = begins || i == 0 ? 1 : inSystem + 1;
      if (!begins) continue;
      for (ScoreItem& item : columns[i].staves[0][0]) {
        if (!item.IsGroup()) continue;
        item.drawings.push_back(WordsDrawing(columns[i].label.number));
        break;
      }
    }
  }

  const BarredMusic& music_;
  const TranscriptionOptions& options_;
};

}  // namespace

std::size_t BarAt(const std::vector<BarSpan>& bars, std::int64_t place) {
  const auto bar = std::ranges::upper_bound(bars, place, {}, &BarSpan::start);
  return bar == bars.begin() ? 0 : static_cast<std::size_t>(std::prev(bar) - bars.begin());
}

std::uint32_t Engrave(const BarredMusic& music, const TranscriptionOptions& options, ScoreDocument& score,
                      const CancelCheck& cancelled) {
  return Engraver(music, options).Build(score, cancelled);
}

}  // namespace ts5::transcribe
