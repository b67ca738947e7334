#include "converters/score_assembly.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <numeric>
#include <set>

#include "converters/texts.h"
#include "platform/base/casts.h"
#include "platform/base/text.h"
#include "score/accidentals.h"
#include "score/playback_parameters.h"

namespace ts5::musicxml {
namespace {

constexpr unsigned kBarsPerSystem = 4;
constexpr std::uint16_t kMostSpan = 4095;
constexpr std::int32_t kUsualVolume = 100;
// Between two looks at the stop.
constexpr std::size_t kBarsBetween = 16;
constexpr std::size_t kChordsBetween = 1024;

// A chord of a voice of a staff: where it begins in the score, and its group.
struct ChordAt {
  Fraction at;
  std::size_t group = 0;
};

// Orders the numbers of voices by their value, other names behind them.
bool VoiceBefore(const std::string& a, const std::string& b) {
  const auto x = ParseInteger(a);
  const auto y = ParseInteger(b);
  if (x && y) return *x != *y ? *x < *y : a < b;
  if (x || y) return x.has_value();
  return a < b;
}

class PartAssembly {
 public:
  PartAssembly(Score& score, Part& part, const std::vector<Fraction>& starts,
               const std::vector<Fraction>& lengths)
      : score_(score), part_(part), starts_(starts), lengths_(lengths) {
    part_.measures.resize(lengths.size());
    for (Measure& measure : part_.measures) {
      if (measure.first == 0 && measure.groups == 0) measure.first = part_.groups.size();
    }
  }

  // False when it is to stop.
  bool Settle(bool endings, const CancelCheck& cancelled) {
    const auto stopped = [&cancelled] { return cancelled && cancelled(); };
    if (!Allot(stopped)) return false;
    NumberChords();
    ResolveSlurs();
    if (stopped() || !ResolveTies(stopped)) return false;
    if (endings) PlaceEndings();
    return true;
  }

  // The bar of this part, into the columns of its staves.
  void AddTo(std::size_t measure, BarColumn& bar) {
    for (std::size_t staff = 0; staff < part_.staves; ++staff) {
      auto& voices = bar.staves[part_.firstStaff + staff];
      voices.resize(std::max<std::size_t>(slots_[staff], 1));
      for (std::size_t slot = 0; slot < voices.size(); ++slot) FillVoice(measure, staff, slot, voices[slot]);
    }
    PlaceMarks(measure, bar);
    PlaceSigns(measure, bar);
  }

 private:
  [[nodiscard]] int Staff(std::size_t staff) const { return static_cast<int>(part_.firstStaff + staff); }
  void Lose(TextId kind, std::size_t measure, std::size_t staff, unsigned count = 1) {
    score_.losses.Add(kind, static_cast<int>(measure), Staff(staff), count);
  }
  [[nodiscard]] std::size_t MeasureOf(std::size_t group) const {
    const auto after = std::ranges::upper_bound(part_.measures, group, {}, &Measure::first);
    return static_cast<std::size_t>(after - part_.measures.begin()) - 1;
  }

  // Which voice of its staff each group goes to: that of its number, or another that is free, where groups
  // overlap.
  using VoiceEnds = std::array<Fraction, kMaxVoices>;  // where each voice of a staff has come to
  template <typename Stopped>
  bool Allot(const Stopped& stopped) {
    names_.assign(part_.staves, VoiceNames(VoiceBefore));
    const Group* before = nullptr;
    for (std::size_t i = 0; i < part_.groups.size(); ++i) {
      const Group& group = part_.groups[i];
      if (before == nullptr || before->staff != group.staff || before->voice != group.voice)
        names_[group.staff].try_emplace(group.voice);
      before = &group;
    }
    for (VoiceNames& names : names_) {
      std::size_t number = 0;
      for (auto& [name, slot] : names) slot = number++;
    }
    slots_.assign(part_.staves, 1);
    contents_.resize(part_.measures.size());
    std::vector<VoiceEnds> ends(part_.staves);
    std::vector<std::size_t> order;
    const auto startOf = [this](std::size_t i) { return part_.groups[i].start; };
    for (std::size_t m = 0; m < part_.measures.size(); ++m) {
      if (m % kBarsBetween == 0 && stopped()) return false;
      const Measure& measure = part_.measures[m];
      std::ranges::fill(ends, VoiceEnds{});
      auto& content = contents_[m];
      content.resize(part_.staves);
      order.resize(measure.groups);
      std::iota(order.begin(), order.end(), measure.first);
      if (!std::ranges::is_sorted(order, {}, startOf)) std::ranges::stable_sort(order, {}, startOf);
      for (const std::size_t index : order) PlaceGroup(index, m, ends, content);
    }
    return true;
  }

  [[nodiscard]] std::size_t SlotOf(std::size_t staff, const std::string& voice) const {
    if (names_[staff].size() == 1 && names_[staff].begin()->first == voice) return 0;
    const auto found = names_[staff].find(voice);
    return found == names_[staff].end() ? names_[staff].size() : found->second;
  }

  void PlaceGroup(std::size_t index, std::size_t measure, std::vector<VoiceEnds>& allEnds,
                  std::vector<std::vector<std::vector<std::size_t>>>& staves) {
    Group& group = part_.groups[index];
    VoiceEnds& ends = allEnds[group.staff];
    auto& content = staves[group.staff];
    std::size_t slot = SlotOf(group.staff, group.voice);
    if (slot >= kMaxVoices || ends[slot] > group.start) {
      // A rest is no music that another voice would be needed for.
      if (group.item.group.isRest) return;
      slot = 0;
      while (slot < kMaxVoices && ends[slot] > group.start) ++slot;
      Lose(slot == kMaxVoices ? texts::LossVoice : texts::LossOverlap, measure, group.staff);
      if (slot == kMaxVoices) return;
    }
    ends[slot] = group.start + group.length;
    group.slot = slot;
    group.placed = true;
    slots_[group.staff] = std::max(slots_[group.staff], slot + 1);
    if (content.size() <= slot) content.resize(slot + 1);
    content[slot].push_back(index);
  }

  void NumberChords() {
    chords_.resize(part_.staves);
    for (auto& staff : chords_) staff.resize(kMaxVoices);
    for (std::size_t m = 0; m < contents_.size(); ++m) {
      for (std::size_t staff = 0; staff < contents_[m].size(); ++staff) {
        for (std::size_t slot = 0; slot < contents_[m][staff].size(); ++slot) {
          for (const std::size_t index : contents_[m][staff][slot]) {
            Group& group = part_.groups[index];
            auto& chords = chords_[staff][slot];
            group.chord = chords.size();
            if (!group.item.group.isRest) chords.push_back({starts_[m] + group.start, index});
          }
        }
      }
    }
  }

  [[nodiscard]] Fraction PlaceOf(std::size_t group) const {
    return starts_[MeasureOf(group)] + part_.groups[group].start;
  }

  // Chords of a voice that begin after one number and not after a place.
  [[nodiscard]] std::uint16_t SpanTo(std::size_t staff, std::size_t slot, std::size_t chord,
                                     Fraction end) const {
    const auto& chords = chords_[staff][slot];
    const auto after = std::ranges::upper_bound(chords, end, {}, &ChordAt::at);
    const auto last = static_cast<std::size_t>(after - chords.begin());
    const std::size_t span = last > chord + 1 ? last - chord - 1 : 0;
    return static_cast<std::uint16_t>(std::min<std::size_t>(span, kMostSpan));
  }

  void ResolveSlurs() {
    for (const Slur& slur : part_.slurs) {
      Group& start = part_.groups[slur.start];
      DrawingItem& drawing = start.item.drawings[slur.drawing];
      if (slur.stop == SIZE_MAX || !start.placed) continue;
      const Group& stop = part_.groups[slur.stop];
      if (stop.staff == start.staff && stop.slot == start.slot && stop.chord >= start.chord) {
        drawing.span = static_cast<std::uint16_t>(std::min<std::size_t>(stop.chord - start.chord, kMostSpan));
        continue;
      }
      drawing.span = SpanTo(start.staff, start.slot, start.chord, PlaceOf(slur.stop));
      Lose(texts::LossSlurVoice, MeasureOf(slur.start), start.staff);
    }
    // What never ends is no slur.
    for (auto slur = part_.slurs.rbegin(); slur != part_.slurs.rend(); ++slur) {
      if (slur->stop != SIZE_MAX) continue;
      auto& drawings = part_.groups[slur->start].item.drawings;
      drawings.erase(drawings.begin() + static_cast<std::ptrdiff_t>(slur->drawing));
    }
  }

  // --- ties: each note that is tied onward finds the note of its pitch where it ends.

  template <typename Stopped>
  bool ResolveTies(const Stopped& stopped) {
    if (!HasTies()) return true;
    std::vector<ChordAt> all;
    for (const auto& staff : chords_) {
      for (const auto& chords : staff) all.insert(all.end(), chords.begin(), chords.end());
    }
    std::ranges::sort(all, {}, [](const ChordAt& chord) { return std::pair(chord.at, chord.group); });
    std::vector<TiedNotes> found(part_.groups.size());
    std::vector<std::size_t> next(part_.groups.size(), SIZE_MAX);  // the chord that all its notes go on to
    std::size_t linked = 0;
    for (const ChordAt& chord : all) {
      if (++linked % kChordsBetween == 0 && stopped()) return false;
      LinkTies(chord, all, found, next);
    }
    for (const ChordAt& chord : all) SettleTies(part_.groups[chord.group], found[chord.group]);
    for (const ChordAt& chord : all) CloseTies(chord.group, next[chord.group]);
    return true;
  }

  [[nodiscard]] bool HasTies() const {
    for (std::size_t i = 0; i < part_.groups.size(); ++i) {
      const TiedNotes ties = part_.groups[i].ties;
      if ((ties.fromBefore | ties.onward) != 0) return true;
    }
    return false;
  }

  void LinkTies(const ChordAt& chord, const std::vector<ChordAt>& all, std::vector<TiedNotes>& found,
                std::vector<std::size_t>& next) {
    Group& group = part_.groups[chord.group];
    const Fraction end = chord.at + group.length;
    for (std::size_t n = 0; n < group.item.pitches.size(); ++n) {
      if ((group.ties.onward >> n & 1U) == 0) continue;
      bool linked = false;
      for (auto other = std::ranges::lower_bound(all, end, {}, &ChordAt::at);
           other != all.end() && other->at == end; ++other) {
        if (other->group <= chord.group && other->at == chord.at) continue;
        Group& target = part_.groups[other->group];
        for (std::size_t k = 0; k < target.item.pitches.size() && !linked; ++k) {
          if (target.item.pitches[k].Key() != group.item.pitches[n].Key()) continue;
          if ((found[other->group].fromBefore >> k & 1U) != 0) continue;
          found[other->group].fromBefore |= 1U << k;
          found[chord.group].onward |= 1U << n;
          next[chord.group] = other->group;
          linked = true;
        }
        if (linked) break;
      }
      if (!linked) Lose(texts::LossTieEnd, MeasureOf(chord.group), group.staff);
    }
  }

  static std::uint32_t AllNotes(const Group& group) {
    return static_cast<std::uint32_t>((std::uint64_t{1} << group.item.pitches.size()) - 1);
  }

  static void SettleTies(Group& group, TiedNotes found) {
    const std::uint32_t all = AllNotes(group);
    group.ties = found;
    group.item.group.tieFromBefore = all != 0 && found.fromBefore == all;
    group.item.group.tieOnward = all != 0 && found.onward == all;
  }

  // A chord is tied as a whole only to the chord that follows it in its voice, when that one is as a whole
  // too.
  void CloseTies(std::size_t index, std::size_t next) {
    Group& group = part_.groups[index];
    const auto& chords = chords_[group.staff][group.slot];
    const std::size_t follower = group.chord + 1 < chords.size() ? chords[group.chord + 1].group : SIZE_MAX;
    const bool whole = group.item.group.tieOnward && follower == next && follower != SIZE_MAX &&
                       part_.groups[follower].item.group.tieFromBefore;
    if (group.item.group.tieOnward && !whole) group.item.group.tieOnward = false;
    if (follower != SIZE_MAX && !whole) part_.groups[follower].item.group.tieFromBefore = false;
  }

  // Where the group's flags do not say what its notes have.
  static void KeepNoteTies(Group& group) {
    const ScoreGroup& whole = group.item.group;
    const std::uint32_t all = AllNotes(group);
    const TiedNotes ties = group.ties;
    if (ties.fromBefore == (whole.tieFromBefore ? all : 0) && ties.onward == (whole.tieOnward ? all : 0))
      return;
    for (std::size_t n = 0; n < group.item.pitches.size(); ++n) {
      group.item.noteTies.push_back(static_cast<std::uint8_t>((ties.fromBefore >> n & 1U) * kTieFromBefore |
                                                              (ties.onward >> n & 1U) * kTieOnward));
    }
  }

  // --- endings hang on the first chord of their measure in the first voice

  void PlaceEndings() {
    for (Ending& ending : part_.endings) {
      if (ending.last == SIZE_MAX) ending.last = ending.first;
      const auto& content = contents_[ending.first];
      if (content.empty() || content[0].empty() || content[0][0].empty()) continue;
      Group& group = part_.groups[content[0][0].front()];
      const Fraction end = starts_[ending.last] + lengths_[ending.last];
      const auto& chords = chords_[0][0];
      const auto after = std::ranges::lower_bound(chords, end, {}, &ChordAt::at);
      const auto last = static_cast<std::size_t>(after - chords.begin());
      const std::size_t span = last > group.chord + 1 ? last - group.chord - 1 : 0;
      DrawingItem volta = VoltaDrawing(ending.from, ending.to,
                                       static_cast<std::uint16_t>(std::min<std::size_t>(span, kMostSpan)));
      if (ending.open) volta.words = "discontinue";
      group.item.drawings.push_back(std::move(volta));
    }
  }

  // --- bars

  void FillVoice(std::size_t measure, std::size_t staff, std::size_t slot, VoiceItems& items) {
    const auto& content = contents_[measure];
    if (staff >= content.size() || slot >= content[staff].size()) return;
    Fraction now;
    items.reserve(content[staff][slot].size());
    for (const std::size_t index : content[staff][slot]) {
      Group& group = part_.groups[index];
      if (group.start > now) {
        std::ranges::move(GapItems(group.start - now), std::back_inserter(items));
        now = group.start;
      }
      SortChord(group);
      if (score_.hasBeams && group.item.beams.empty() && IsFlagged(group.item)) group.item.beams = "-";
      KeepNoteTies(group);
      items.push_back(std::move(group.item));
      now += group.length;
    }
  }

  static bool IsFlagged(const ScoreItem& item) {
    constexpr std::uint8_t kEighth = 3;
    constexpr std::uint8_t kShortest = 8;
    return !item.group.isRest && item.group.durationCode >= kEighth && item.group.durationCode <= kShortest;
  }

  // The notes of a chord from low to high.
  static void SortChord(Group& group) {
    auto& pitches = group.item.pitches;
    group.item.courtesy = group.shown;
    group.item.bracketed = group.bracketed;
    const auto low = [](const SpelledPitch& a, const SpelledPitch& b) { return a.Key() < b.Key(); };
    if (std::ranges::is_sorted(pitches, low)) return;
    std::vector<std::size_t> order(pitches.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::ranges::stable_sort(order, {}, [&](std::size_t i) { return pitches[i].Key(); });
    const auto sorted = [&order](const auto& values) {
      std::remove_cvref_t<decltype(values)> result;
      for (const std::size_t i : order) result.push_back(values[i]);
      return result;
    };
    pitches = sorted(pitches);
    group.item.group.notes = sorted(group.item.group.notes);
    const auto moved = [&order](std::uint32_t bits) {
      std::uint32_t result = 0;
      for (std::size_t i = 0; i < order.size(); ++i) result |= (bits >> order[i] & 1U) << i;
      return result;
    };
    group.ties = {moved(group.ties.fromBefore), moved(group.ties.onward)};
    group.item.courtesy = moved(group.shown);
    group.item.bracketed = moved(group.bracketed);
  }

  // The item of a staff at a place: one that begins there, else the one that lasts over it, else the last.
  struct ItemAt {
    std::size_t voice = 0;
    std::size_t index = 0;
    Fraction start;
  };
  std::optional<ItemAt> FindItem(const std::vector<VoiceItems>& voices, Fraction at,
                                 std::optional<std::size_t> wanted, ScoreTimeSignature time) const {
    std::optional<ItemAt> over;
    for (std::size_t v = 0; v < voices.size(); ++v) {
      if (wanted && *wanted != v) continue;
      Fraction now;
      std::optional<ItemAt> last;
      for (std::size_t i = 0; i < voices[v].size(); ++i) {
        if (!voices[v][i].IsGroup()) continue;
        if (now == at && !voices[v][i].IsGrace()) return ItemAt{v, i, now};
        if (now <= at) last = ItemAt{v, i, now};
        now += LengthOf(voices[v][i], time);
      }
      if (last && (!over || last->start > over->start)) over = last;
    }
    return over;
  }

  void PlaceMarks(std::size_t measure, BarColumn& bar) {
    for (Mark& mark : part_.measures[measure].marks) {
      auto& voices = bar.staves[part_.firstStaff + mark.staff];
      std::optional<ItemAt> found;
      if (!mark.voice.empty()) found = FindItem(voices, mark.at, SlotOf(mark.staff, mark.voice), bar.time);
      if (!found) found = FindItem(voices, mark.at, std::nullopt, bar.time);
      if (!found) {
        voices[0] = GapItems(lengths_[measure]);
        found = FindItem(voices, mark.at, std::nullopt, bar.time);
        if (!found) continue;
      }
      mark.drawing.offset = mark.at - found->start;
      if (mark.end != SIZE_MAX) Extend(mark, measure, *found, voices[found->voice]);
      voices[found->voice][found->index].drawings.push_back(std::move(mark.drawing));
    }
  }

  void Extend(Mark& mark, std::size_t measure, const ItemAt& item, const VoiceItems& items) {
    const MarkEnd& end = part_.ends[mark.end];
    const Fraction from = starts_[measure] + mark.at;
    const Fraction to =
        end.measure == SIZE_MAX ? starts_[measure] + lengths_[measure] : starts_[end.measure] + end.at;
    if (to <= from) return;
    mark.drawing.extent = to - from;
    // The chords of this voice up to there, from the one it hangs on.
    const auto& chords = chords_[mark.staff][item.voice];
    const Fraction start = starts_[measure] + item.start;
    auto first = std::ranges::lower_bound(chords, start, {}, &ChordAt::at);
    while (first != chords.end() && first->at == start && part_.groups[first->group].length.IsZero()) ++first;
    const bool rest = items[item.index].group.isRest;
    const auto after = std::ranges::upper_bound(chords, to, {}, &ChordAt::at);
    const std::ptrdiff_t span = (after - first) - (rest ? 0 : 1);
    mark.drawing.span = static_cast<std::uint16_t>(std::clamp<std::ptrdiff_t>(span, 1, kMostSpan));
  }

  // Before the item of the first voice that begins at its place or behind it.
  void PlaceSigns(std::size_t measure, BarColumn& bar) {
    for (Sign& sign : part_.measures[measure].signs) {
      VoiceItems& voice = bar.staves[part_.firstStaff + sign.staff][0];
      Fraction now;
      std::size_t index = 0;
      while (index < voice.size() && (now < sign.at || !voice[index].IsGroup())) {
        now += LengthOf(voice[index], bar.time);
        ++index;
      }
      if (now < sign.at) {
        auto gap = GapItems(sign.at - now);
        index += gap.size();
        std::ranges::move(gap, std::back_inserter(voice));
      }
      voice.insert(voice.begin() + static_cast<std::ptrdiff_t>(std::min(index, voice.size())),
                   std::move(sign.item));
    }
  }

  using VoiceNames = std::map<std::string, std::size_t, decltype(&VoiceBefore)>;  // and their numbers

  Score& score_;
  Part& part_;
  std::vector<VoiceNames> names_;        // of each staff
  const std::vector<Fraction>& starts_;  // of the bars
  const std::vector<Fraction>& lengths_;
  std::vector<std::size_t> slots_;                                            // voices of each staff
  std::vector<std::vector<std::vector<std::vector<std::size_t>>>> contents_;  // measure, staff, voice: groups
  std::vector<std::vector<std::vector<ChordAt>>> chords_;                     // staff, voice
};

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
std::vector<ScoreTimeSignature> TimesOf(const Score& score) {
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

std::vector<Fraction> LengthsOf(const Score& score, const std::vector<ScoreTimeSignature>& times) {
  std::vector<Fraction> lengths(score.labels.size());
  for (std::size_t m = 0; m < lengths.size(); ++m) {
    for (const Part& part : score.parts) {
      if (m < part.measures.size()) lengths[m] = std::max(lengths[m], part.measures[m].length);
    }
    if (lengths[m].IsZero()) lengths[m] = BarLength(times[m]);
  }
  return lengths;
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

}  // namespace

ScoreResult<ScoreWithLosses> AssembleScore(Score score, bool notesAlone, const CancelCheck& cancelled) {
  const auto stop = [] { return tl::unexpected<ScoreFault>(ScoreFault{Outcome::Cancelled}); };
  AddParts(score);
  const auto times = TimesOf(score);
  const auto lengths = LengthsOf(score, times);
  std::vector<Fraction> starts(lengths.size());
  std::exclusive_scan(lengths.begin(), lengths.end(), starts.begin(), Fraction());

  std::vector<BarColumn> bars(lengths.size());
  for (std::size_t m = 0; m < bars.size(); ++m) {
    bars[m].length = lengths[m];
    bars[m].time = times[m];
    bars[m].label = score.labels[m];
    bars[m].staves.resize(score.document.staves.size());
    SettleBar(score, m, bars);
  }
  // All parts have the endings; one is enough.
  const auto withEndings =
      std::ranges::find_if(score.parts, [](const Part& part) { return !part.endings.empty(); });
  const Part* endings = withEndings == score.parts.end() ? nullptr : &*withEndings;
  for (Part& part : score.parts) {
    PartAssembly assembly(score, part, starts, lengths);
    if (!assembly.Settle(&part == endings, cancelled)) return stop();
    for (std::size_t m = 0; m < bars.size(); ++m) {
      if (m % kBarsBetween == 0 && cancelled && cancelled()) return stop();
      assembly.AddTo(m, bars[m]);
    }
    part.groups.clear();
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

}  // namespace ts5::musicxml
