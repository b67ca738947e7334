#include "converters/score_assembly.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <set>

#include "converters/assembly_bars.h"
#include "converters/assembly_spans.h"
#include "converters/assembly_ties.h"
#include "converters/assembly_voices.h"
#include "converters/texts.h"
#include "score/accidentals.h"

namespace ts5::converters::musicxml {
namespace {

constexpr unsigned kBarsPerSystem = 4;
constexpr std::int32_t kUsualVolume = 100;

StaffLayout LayoutOf(const Part& part, std::size_t staff) {
  StaffLayout layout;
  layout.name = part.names.name;
  layout.volume = kUsualVolume;
  std::iota(layout.noteMap.begin(), layout.noteMap.end(), std::uint8_t{0});
  if (!part.instruments.empty()) {
    const Instrument& instrument = part.instruments.front().second;
    layout.sound = std::max(instrument.program, 0);
    if (instrument.volume >= 0) layout.volume = instrument.volume;
    constexpr int kDrumChannel = 10;
    layout.usesNoteMap = instrument.channel == kDrumChannel;
  }
  if (part.transpositions[staff]) layout.transpose = part.transpositions[staff]->chromatic;
  if (const auto& drums = part.drums[staff]) {
    layout.usesNoteMap = true;
    for (std::size_t key = 0; key < drums->size(); ++key) {
      if ((*drums)[key] >= 0) layout.noteMap[key] = static_cast<std::uint8_t>((*drums)[key]);
    }
  }
  return layout;
}

void AddParts(Score& score) {
  for (const Part& part : score.parts) {
    ScorePart names = part.names;
    names.staves = part.staves;
    if (part.transpositions[0]) names.diatonic = part.transpositions[0]->diatonic;
    score.document.parts.push_back(std::move(names));
    for (std::size_t staff = 0; staff < part.staves; ++staff)
      score.document.staves.push_back(LayoutOf(part, staff));
    std::set<int> programs;
    for (const auto& [id, instrument] : part.instruments) {
      (void)id;
      if (instrument.program >= 0) programs.insert(instrument.program);
    }
    const bool drums = std::ranges::any_of(part.drums, [](const auto& map) { return map.has_value(); });
    if (programs.size() > 1 && !drums)
      score.losses.Add(texts::LossInstruments, -1, static_cast<int>(part.firstStaff),
                       static_cast<unsigned>(programs.size()) - 1);
  }
}

// The time signature in force in each bar, as the first part has it.
std::vector<ScoreTimeSignature> SignaturesOf(const Score& score) {
  std::vector<ScoreTimeSignature> times(score.labels.size());
  ScoreTimeSignature now;
  for (std::size_t m = 0; m < times.size(); ++m) {
    for (const Part& part : score.parts) {
      if (m >= part.measures.size()) continue;
      const auto& signs = part.measures[m].signs;
      const auto found =
          std::ranges::find_if(signs, [](const Sign& sign) { return sign.item.Is(ObjectKind::Time); });
      if (found == signs.end()) continue;
      now = found->item.time;
      break;
    }
    times[m] = now;
  }
  return times;
}

BarTimes TimesOfBars(const Score& score, const std::vector<ScoreTimeSignature>& times) {
  std::vector<Fraction> lengths(score.labels.size());
  for (std::size_t m = 0; m < lengths.size(); ++m) {
    for (const Part& part : score.parts) {
      if (m < part.measures.size()) lengths[m] = std::max(lengths[m], part.measures[m].length);
    }
    if (lengths[m].IsZero()) lengths[m] = BarLength(times[m]);
  }
  std::vector<Fraction> starts(lengths.size());
  std::exclusive_scan(lengths.begin(), lengths.end(), starts.begin(), Fraction());
  return {std::move(starts), std::move(lengths)};
}

std::uint8_t Both(std::uint8_t line) {
  const auto end = static_cast<std::uint8_t>(BarLineType::RepeatEnd);
  return static_cast<std::uint8_t>(line == end ? BarLineType::RepeatBoth : BarLineType::RepeatStart);
}

// What all parts say of a bar: its line, its breaks, its tempo.
void SettleBar(const Score& score, std::size_t m, std::vector<BarColumn>& bars) {
  BarColumn& bar = bars[m];
  bool repeatStart = false;
  for (const Part& part : score.parts) {
    if (m >= part.measures.size()) continue;
    const Measure& measure = part.measures[m];
    bar.line = std::max(bar.line, measure.line);
    if (bar.lineStyle.empty()) bar.lineStyle = measure.lineStyle;
    bar.times = std::max(bar.times, measure.times);
    bar.newSystem |= measure.newSystem || measure.newPage;
    bar.label.newPage |= measure.newPage;
    repeatStart |= measure.repeatStart;
    if (bar.tempo == 0 && measure.tempo > 0)
      bar.tempo = static_cast<std::uint32_t>(std::max(std::lround(measure.tempo), 1L));
  }
  if (!repeatStart) return;
  if (m > 0) {
    bars[m - 1].line = Both(bars[m - 1].line);
  } else {
    bar.repeatStart = true;
  }
}

// False when it is to stop.
bool AddPart(const PartToPlace& place, bool endings, bool hasBeams, std::vector<BarColumn>& bars,
             const CancelCheck& cancelled) {
  Part& part = place.part;
  part.measures.resize(bars.size());
  for (Measure& measure : part.measures) {
    if (measure.first == 0 && measure.groups == 0) measure.first = part.groups.Size();
  }
  PartVoices voices(place);
  if (!voices.Allot(cancelled)) return false;
  ResolveSlurs(place, voices);
  if (!ResolveTies(place, voices, cancelled)) return false;
  if (endings) PlaceEndings(place, voices);
  for (std::size_t m = 0; m < bars.size(); ++m) {
    if (m % kBarsBetween == 0 && cancelled && cancelled()) return false;
    FillBar(place, voices, m, hasBeams, bars[m]);
  }
  part.groups.Clear();
  return true;
}

}  // namespace

ScoreResult<ScoreWithLosses> AssembleScore(Score score, bool notesAlone, const CancelCheck& cancelled) {
  const auto stop = [] { return tl::unexpected<ScoreFault>(ScoreFault{Outcome::Cancelled}); };
  AddParts(score);
  const auto signatures = SignaturesOf(score);
  const BarTimes times = TimesOfBars(score, signatures);

  std::vector<BarColumn> bars(score.labels.size());
  for (std::size_t m = 0; m < bars.size(); ++m) {
    bars[m].length = times.lengths[m];
    bars[m].time = signatures[m];
    bars[m].label = score.labels[m];
    bars[m].staves.resize(score.document.staves.size());
    SettleBar(score, m, bars);
  }
  // All parts have the endings; one is enough.
  const auto withEndings =
      std::ranges::find_if(score.parts, [](const Part& part) { return !part.endings.empty(); });
  const Part* endings = withEndings == score.parts.end() ? nullptr : &*withEndings;
  for (Part& part : score.parts) {
    if (!AddPart({part, times, score.losses}, &part == endings, score.hasBeams, bars, cancelled))
      return stop();
  }

  ScoreWithLosses result{std::move(score.document), std::move(score.losses)};
  AppendBars(result.document, std::move(bars), score.hasBreaks ? 0 : kBarsPerSystem, cancelled);
  const auto allMoved = PlaceNotes(result.document, cancelled);
  if (!notesAlone) KeepCourtesyAccidentals(result.document, cancelled);
  if (cancelled && cancelled()) return stop();
  for (const MovedNotes& moved : allMoved)
    result.losses.Add(texts::LossSpelling, static_cast<int>(moved.bar), static_cast<int>(moved.staff),
                      moved.count);
  std::vector<std::string> numbers;
  for (const ScoreBarLabel& label : result.document.bars) numbers.push_back(label.number);
  std::vector<std::string> names;
  for (const StaffLayout& staff : result.document.staves) names.push_back(staff.name);
  result.losses.NamePlaces(std::move(numbers), std::move(names));
  return result;
}

}  // namespace ts5::converters::musicxml
