#include "converters/musicxml_part_writer.h"

#include <algorithm>
#include <array>
#include <map>
#include <numeric>
#include <set>

#include "converters/musicxml_marks.h"
#include "converters/musicxml_note.h"
#include "converters/notation_slices.h"
#include "score/accidentals.h"

namespace ts5::musicxml {
namespace {

constexpr std::int64_t kMostDivisions = 1'000'000;
constexpr std::int64_t kUsualDivisions = 10080;  // for what has no common one below the most
constexpr int kOctave = 12;
constexpr std::array<std::string_view, 7> kSteps = {"C", "D", "E", "F", "G", "A", "B"};
constexpr std::array<std::string_view, 10> kTypes = {"whole", "half", "quarter", "eighth", "16th",
                                                     "32nd",  "64th", "128th",   "256th",  "breve"};

std::string Number(std::size_t value) {
  return std::to_string(value);
}

std::string_view AccidentalName(int alter) {
  constexpr std::array<std::string_view, 7> kNames = {"triple-flat", "flat-flat",    "flat",        "natural",
                                                      "sharp",       "double-sharp", "triple-sharp"};
  return alter < -3 || alter > 3 ? std::string_view() : kNames[static_cast<std::size_t>(alter + 3)];
}

// A voice on its way through the score.
struct VoiceCursor {
  std::vector<NotationSlice> slices;
  std::size_t next = 0;
  std::size_t nextDirection = 0;
  unsigned number = 1;                    // MusicXML's
  std::array<bool, kMaxVerses> inWord{};  // of each verse
};

class PartWriter {
 public:
  PartWriter(XmlOut& out, const ScoreDocument& document, const ScoreMusic& music, LossReport& losses,
             std::string id, const ScorePart& part, std::size_t firstStaff, bool ownBeams)
      : out_(out),
        document_(document),
        music_(music),
        id_(std::move(id)),
        part_(part),
        first_(firstStaff),
        marks_(CollectMarks(music, firstStaff, part.staves, losses)) {
    voices_.resize(part.staves);
    nextChange_.resize(part.staves);
    unsigned number = 1;
    for (std::size_t staff = 0; staff < part.staves; ++staff) {
      accidentals_.push_back(NeededAccidentals(music, first_ + staff));
      const auto& events = music.voices[first_ + staff];
      for (std::size_t v = 0; v < events.size(); ++v) {
        VoiceCursor& voice = voices_[staff].emplace_back();
        voice.slices = SliceVoice(events[v], music, !ownBeams);
        voice.number = number + static_cast<unsigned>(v);
      }
      number += std::max(4U, static_cast<unsigned>(events.size()));  // as most programs number them
    }
    for (std::size_t i = 0; i < music.endings.size(); ++i) {
      endingStarts_.emplace(music.endings[i].first, i);
      endingStops_.emplace(music.endings[i].last, i);
    }
    SettleDivisions();
    if (first_ == 0) AddSystemTempos();
  }

  Outcome Write(const WorkWatch& watch) {
    out_.Open("part", {{"id", id_}});
    for (std::size_t bar = 0; bar < music_.bars.size(); ++bar) {
      if (bar % 64 == 0 && watch.cancelled && watch.cancelled()) return Outcome::Cancelled;
      WriteMeasure(bar);
    }
    out_.Close();
    return Outcome::Success;
  }

 private:
  [[nodiscard]] const ScoreBar& Bar(std::size_t bar) const { return music_.bars[bar]; }
  [[nodiscard]] const StaffLayout& Layout(std::size_t staff) const {
    return document_.staves[first_ + staff];
  }

  // --- time

  void SettleDivisions() {
    std::int64_t common = 1;
    const auto take = [&common](Fraction length) {
      const std::int64_t denominator = (length * Fraction(4)).Denominator();
      if (common <= kMostDivisions) common = std::lcm(common, denominator);
    };
    for (const ScoreBar& bar : music_.bars) {
      take(bar.length);
      take(bar.start);
    }
    for (std::size_t staff = 0; staff < part_.staves; ++staff) {
      for (const VoiceCursor& voice : voices_[staff]) {
        for (const NotationSlice& slice : voice.slices) {
          take(slice.start);
          take(slice.length);
        }
      }
      for (const VoiceMarks& voice : marks_[staff]) {
        for (const Direction& direction : voice.directions) take(direction.at);
      }
    }
    divisions_ = common <= kMostDivisions ? common : kUsualDivisions;
  }
  [[nodiscard]] std::int64_t Ticks(Fraction place) const { return place.In(4 * divisions_); }

  void AddSystemTempos() {
    std::set<Fraction> drawn;
    for (const auto& staff : music_.voices) {
      for (const auto& voice : staff) {
        for (const ScoreEvent& event : voice) {
          for (const DrawingItem& drawing : event.item->drawings) {
            if (TempoOf(drawing) > 0) drawn.insert(event.start + drawing.offset);
          }
        }
      }
    }
    for (const ScoreTempo& tempo : music_.tempos) {
      if (!drawn.contains(tempo.at)) tempos_.push_back({tempo.at, nullptr, false, 1, tempo.quarters});
    }
  }

  // --- measures

  void WriteMeasure(std::size_t index) {
    const ScoreBar& bar = Bar(index);
    const std::string number = bar.number.empty() ? Number(index + 1) : bar.number;
    out_.Open("measure", {{"number", number}, {"implicit", bar.implicit ? "yes" : ""}});
    WritePrint(index);
    WriteLeftLine(index);
    WriteAttributes(index);
    while (nextTempo_ < tempos_.size() && tempos_[nextTempo_].at <= bar.start)
      WriteDirection(out_, tempos_[nextTempo_++], 0, 1, 1);
    position_ = bar.start;
    bool first = true;
    for (std::size_t staff = 0; staff < part_.staves; ++staff) {
      for (std::size_t v = 0; v < voices_[staff].size(); ++v) {
        if (!HasMusic(staff, v, index) && !first) {
          SkipBar(staff, v, index);
          continue;
        }
        first = false;
        WriteVoice(staff, v, index);
      }
    }
    MoveTo(bar.start + bar.length);
    WriteRightLine(index);
    out_.Close();
  }

  void WritePrint(std::size_t index) {
    if (index == 0 || Bar(index).system == Bar(index - 1).system) return;
    const bool page = index < document_.bars.size() && document_.bars[index].newPage;
    out_.Empty("print", {{page ? "new-page" : "new-system", "yes"}});
  }

  void WriteEndings(std::size_t index, bool left) {
    const auto& places = left ? endingStarts_ : endingStops_;
    for (auto [place, last] = places.equal_range(index); place != last; ++place) {
      const ScoreEnding& ending = music_.endings[place->second];
      std::string numbers;
      for (unsigned n = ending.from; n <= ending.to; ++n) numbers += (numbers.empty() ? "" : ",") + Number(n);
      const bool open = ending.drawing != nullptr && ending.drawing->words == "discontinue";
      out_.Empty("ending", {{"number", numbers}, {"type", left ? "start" : open ? "discontinue" : "stop"}});
    }
  }
  [[nodiscard]] bool HasEnding(std::size_t index, bool left) const {
    return (left ? endingStarts_ : endingStops_).contains(index);
  }

  void WriteLeftLine(std::size_t index) {
    if (!Bar(index).repeatStart && !HasEnding(index, true)) return;
    out_.Open("barline", {{"location", "left"}});
    if (Bar(index).repeatStart) out_.Leaf("bar-style", "heavy-light");
    WriteEndings(index, true);
    if (Bar(index).repeatStart) out_.Empty("repeat", {{"direction", "forward"}});
    out_.Close();
  }

  void WriteRightLine(std::size_t index) {
    const ScoreBar& bar = Bar(index);
    std::string_view style = bar.lineStyle;
    if (style.empty() && (bar.line == kBarLineFinal || bar.repeatEnd)) style = "light-heavy";
    if (style.empty() && bar.line == kBarLineDouble) style = "light-light";
    if (style.empty() && !HasEnding(index, false)) return;
    out_.Open("barline", {{"location", "right"}});
    if (!style.empty()) out_.Leaf("bar-style", style);
    WriteEndings(index, false);
    if (bar.repeatEnd) {
      const std::string times = bar.passes == 2 ? std::string() : Number(bar.passes);
      out_.Empty("repeat", {{"direction", "backward"}, {"times", times}});
    }
    out_.Close();
  }

  // --- attributes

  // The changes of a staff up to a place, that one included.
  std::vector<const ScoreItem*> TakeChanges(std::size_t staff, Fraction to) {
    std::vector<const ScoreItem*> taken;
    const auto& changes = music_.changes[first_ + staff];
    std::size_t& next = nextChange_[staff];
    for (; next < changes.size() && changes[next].at <= to; ++next) taken.push_back(changes[next].item);
    return taken;
  }

  static const ScoreItem* LastOf(const std::vector<const ScoreItem*>& items, ObjectKind kind) {
    const auto found =
        std::find_if(items.rbegin(), items.rend(), [kind](const ScoreItem* i) { return i->Is(kind); });
    return found == items.rend() ? nullptr : *found;
  }

  void WriteAttributes(std::size_t index) {
    const ScoreBar& bar = Bar(index);
    std::vector<std::vector<const ScoreItem*>> changes;
    for (std::size_t staff = 0; staff < part_.staves; ++staff)
      changes.push_back(TakeChanges(staff, bar.start));
    const bool start = index == 0;
    const ScoreItem* time = LastOf(changes[0], ObjectKind::Time);
    const bool newTime =
        start || !(bar.time == Bar(index - 1).time) || (time != nullptr && time->time == bar.time);
    const bool any = std::ranges::any_of(changes, [](const auto& list) {
      return LastOf(list, ObjectKind::Key) != nullptr || LastOf(list, ObjectKind::Clef) != nullptr;
    });
    if (!newTime && !any) return;
    out_.Open("attributes");
    if (start) out_.Leaf("divisions", divisions_);
    WriteKeys(changes, start);
    if (newTime) WriteTime(bar.time, time == nullptr ? std::string_view() : std::string_view(time->style));
    if (start && part_.staves > 1) out_.Leaf("staves", part_.staves);
    const ScoreItem usual = ClefItem(kClefG);
    for (std::size_t staff = 0; staff < part_.staves; ++staff) {
      const ScoreItem* clef = LastOf(changes[staff], ObjectKind::Clef);
      if (clef == nullptr && start) clef = &usual;
      if (clef != nullptr) WriteClef(*clef, staff);
    }
    if (start) WriteTranspositions();
    out_.Close();
  }

  // One key for all staves where they agree.
  void WriteKeys(const std::vector<std::vector<const ScoreItem*>>& changes, bool start) {
    const ScoreItem none = KeyItem(0);
    std::vector<const ScoreItem*> keys;
    for (const auto& list : changes) {
      const ScoreItem* key = LastOf(list, ObjectKind::Key);
      keys.push_back(key == nullptr && start ? &none : key);
    }
    const auto same = [&](const ScoreItem* key) {
      return key != nullptr && keys[0] != nullptr && key->key == keys[0]->key && key->style == keys[0]->style;
    };
    const bool shared = std::ranges::all_of(keys, same);
    for (std::size_t staff = 0; staff < keys.size(); ++staff) {
      if (keys[staff] == nullptr || (shared && staff > 0)) continue;
      out_.Open("key", {{"number", shared ? std::string() : Number(staff + 1)}});
      out_.Leaf("fifths", keys[staff]->key);
      if (!keys[staff]->style.empty()) out_.Leaf("mode", keys[staff]->style);
      out_.Close();
    }
  }

  void WriteTime(ScoreTimeSignature time, std::string_view style) {
    const bool sum = style.find('+') != std::string_view::npos;
    out_.Open("time", {{"symbol", sum ? std::string_view() : style}});
    out_.Leaf("beats", sum ? std::string(style) : Number(time.numerator));
    out_.Leaf("beat-type", std::int64_t{1} << std::clamp<int>(time.power, 0, 12));
    out_.Close();
  }

  void WriteClef(const ScoreItem& item, std::size_t staff) {
    constexpr std::array<std::string_view, 5> kSigns = {"G", "C", "F", "percussion", "G"};
    const ScoreClef clef = item.clef;
    const std::size_t form = std::min<std::size_t>(clef.form, kSigns.size() - 1);
    // Lines are counted from the bottom one, 0; of a G or an F clef that says the usual one.
    const bool usual = clef.line == 0 && form != kClefC;
    const std::uint8_t line = usual ? ClefItem(clef.form).clef.line : clef.line;
    out_.Open("clef", {{"number", part_.staves > 1 ? Number(staff + 1) : std::string()}});
    out_.Leaf("sign", item.style == "TAB" ? "TAB" : kSigns[form]);
    const bool told = form != kClefPercussion || line != ClefItem(kClefPercussion).clef.line;
    if (told) out_.Leaf("line", line + 1);
    if (clef.octave != 1) out_.Leaf("clef-octave-change", clef.octave == 0 ? 1 : -1);
    out_.Close();
  }

  void WriteTranspositions() {
    for (std::size_t staff = 0; staff < part_.staves; ++staff) {
      const int transpose = std::clamp(Layout(staff).transpose, -120, 120);
      if (transpose == 0) continue;
      const bool alike = part_.staves == 1;
      out_.Open("transpose", {{"number", alike ? std::string() : Number(staff + 1)}});
      const int octaves = transpose / kOctave;
      const int diatonic = part_.diatonic - 7 * octaves;
      out_.Leaf("diatonic", part_.diatonic != 0 ? diatonic : (transpose % kOctave) * 7 / kOctave);
      out_.Leaf("chromatic", transpose % kOctave);
      if (octaves != 0) out_.Leaf("octave-change", octaves);
      out_.Close();
    }
  }

  // A clef, key or time inside the bar, before what begins there.
  void WriteChangesWithin(std::size_t staff, Fraction to) {
    for (const ScoreItem* item : TakeChanges(staff, to)) {
      out_.Open("attributes");
      if (item->Is(ObjectKind::Clef)) WriteClef(*item, staff);
      if (item->Is(ObjectKind::Key)) {
        out_.Open("key", {{"number", part_.staves > 1 ? Number(staff + 1) : std::string()}});
        out_.Leaf("fifths", item->key);
        out_.Close();
      }
      if (item->Is(ObjectKind::Time)) WriteTime(item->time, item->style);
      out_.Close();
    }
  }

  // --- voices

  [[nodiscard]] bool HasMusic(std::size_t staff, std::size_t v, std::size_t bar) const {
    const VoiceCursor& voice = voices_[staff][v];
    const Fraction end = Bar(bar).start + Bar(bar).length;
    const auto& directions = marks_[staff][v].directions;
    if (voice.nextDirection < directions.size() && directions[voice.nextDirection].at < end) return true;
    const auto& changes = music_.changes[first_ + staff];
    if (v == 0 && nextChange_[staff] < changes.size() && changes[nextChange_[staff]].at < end) return true;
    for (std::size_t i = voice.next; i < voice.slices.size() && voice.slices[i].bar == bar; ++i) {
      if (!voice.slices[i].event->IsGap()) return true;
    }
    return false;
  }

  void SkipBar(std::size_t staff, std::size_t v, std::size_t bar) {
    VoiceCursor& voice = voices_[staff][v];
    while (voice.next < voice.slices.size() && voice.slices[voice.next].bar == bar) ++voice.next;
  }

  // Moves the cursor of the reader to a place.
  void MoveTo(Fraction place) {
    const std::int64_t by = Ticks(place) - Ticks(position_);
    position_ = place;
    if (by == 0) return;
    out_.Open(by > 0 ? "forward" : "backup");
    out_.Leaf("duration", by > 0 ? by : -by);
    out_.Close();
  }

  void WriteVoice(std::size_t staff, std::size_t v, std::size_t bar) {
    VoiceCursor& voice = voices_[staff][v];
    MoveTo(Bar(bar).start);
    const Fraction end = Bar(bar).start + Bar(bar).length;
    for (; voice.next < voice.slices.size() && voice.slices[voice.next].bar == bar; ++voice.next) {
      const NotationSlice& slice = voice.slices[voice.next];
      if (v == 0) WriteChangesWithin(staff, slice.start);
      const Fraction until = std::max(slice.start + slice.length, slice.start);
      WriteDirections(staff, v, slice.start, until);
      WriteSlice(staff, voice, slice);
    }
    if (v == 0) {
      // What stands behind the last note and before the bar line.
      const auto& changes = music_.changes[first_ + staff];
      if (nextChange_[staff] < changes.size() && changes[nextChange_[staff]].at < end)
        WriteChangesWithin(staff, changes[nextChange_[staff]].at);
    }
    if (position_ < end) WriteDirections(staff, v, position_, end);
    const bool lastBar = bar + 1 == music_.bars.size();
    if (lastBar) WriteDirections(staff, v, end, end + Fraction(1));
  }

  // Those before a place, seen from where the cursor is.
  void WriteDirections(std::size_t staff, std::size_t v, Fraction from, Fraction until) {
    VoiceCursor& voice = voices_[staff][v];
    const auto& directions = marks_[staff][v].directions;
    while (voice.nextDirection < directions.size()) {
      const Direction& direction = directions[voice.nextDirection];
      const bool here = direction.at == from || direction.at < until;
      if (!here) return;
      MoveTo(from);
      WriteDirection(out_, direction, Ticks(direction.at) - Ticks(from), voice.number,
                     static_cast<unsigned>(staff) + 1);
      ++voice.nextDirection;
    }
  }

  void WriteSlice(std::size_t staff, VoiceCursor& voice, const NotationSlice& slice) {
    const ScoreEvent& event = *slice.event;
    if (event.IsGap()) return MoveTo(slice.start + slice.length);
    MoveTo(slice.start);
    const ScoreItem& item = *event.item;
    const std::size_t notes = event.IsRest() ? 1 : item.group.notes.size();
    for (std::size_t n = 0; n < notes; ++n) WriteNote(staff, voice, slice, n);
    position_ = slice.start + slice.length;
  }

  void WriteNote(std::size_t staff, VoiceCursor& voice, const NotationSlice& slice, std::size_t n) {
    const ScoreEvent& event = *slice.event;
    const ScoreItem& item = *event.item;
    const ScoreGroup& group = item.group;
    out_.Open("note", {{"print-object", (group.flags & kGroupInvisible) != 0 ? "no" : ""}});
    if (slice.grace) {
      out_.Empty("grace", {{"slash", group.graceForm == kGraceSlashed ? "yes" : ""}});
    } else if (!event.IsRest() && (group.flags & kGroupSilent) != 0) {
      out_.Empty("cue");
    }
    if (n > 0) out_.Empty("chord");
    SpelledPitch pitch;
    if (event.IsRest()) {
      out_.Empty("rest", {{"measure", slice.measureRest ? "yes" : ""}});
    } else {
      pitch = PitchOf(group.notes[n], event.clef, event.key);
      WritePitch(staff, pitch);
    }
    if (!slice.grace) out_.Leaf("duration", Ticks(slice.start + slice.length) - Ticks(slice.start));
    const std::uint8_t ties = TiesOf(slice, n);
    if ((ties & kTieFromBefore) != 0) out_.Empty("tie", {{"type", "stop"}});
    if ((ties & kTieOnward) != 0) out_.Empty("tie", {{"type", "start"}});
    if (!event.IsRest() && Layout(staff).usesNoteMap)
      out_.Empty("instrument", {{"id", DrumId(staff, event, n)}});
    out_.Leaf("voice", voice.number);
    if (!slice.measureRest) WriteValue(slice.value);
    WriteAccidental(staff, voice, slice, n, pitch);
    if (slice.value.ratio.actual != 0) WriteRatio(slice.value.ratio);
    WriteLooks(staff, slice, n);
    WriteNotations(staff, voice, slice, n, ties);
    if (n == 0 && slice.first) WriteLyrics(voice, item);
    out_.Close();
  }

  void WriteAccidental(std::size_t staff, const VoiceCursor& voice, const NotationSlice& slice, std::size_t n,
                       SpelledPitch pitch) {
    const ScoreItem& item = *slice.event->item;
    if (slice.event->IsRest() || !slice.first || n >= kMaxChordKeys || Layout(staff).usesNoteMap) return;
    const auto v = static_cast<std::size_t>(&voice - voices_[staff].data());
    const bool needed = (accidentals_[staff][v][slice.index] >> n & 1U) != 0;
    const bool courtesy = (item.courtesy >> n & 1U) != 0;
    if (!needed && !courtesy) return;
    out_.Leaf(
        "accidental", AccidentalName(pitch.alter),
        {{"cautionary", needed ? "" : "yes"}, {"parentheses", (item.bracketed >> n & 1U) != 0 ? "yes" : ""}});
  }

  void WritePitch(std::size_t staff, SpelledPitch pitch) {
    const auto step = kSteps[static_cast<std::size_t>(pitch.step)];
    const int octave = std::clamp<int>(pitch.octave, 0, 9);
    if (Layout(staff).usesNoteMap) {
      out_.Open("unpitched");
      out_.Leaf("display-step", step);
      out_.Leaf("display-octave", octave);
      return out_.Close();
    }
    out_.Open("pitch");
    out_.Leaf("step", step);
    if (pitch.alter != 0) out_.Leaf("alter", int{pitch.alter});
    out_.Leaf("octave", octave);
    out_.Close();
  }

  [[nodiscard]] std::string DrumId(std::size_t staff, const ScoreEvent& event, std::size_t n) const {
    const auto keys = SoundingKeys(event, Layout(staff));
    return id_ + "-I" + Number(std::size_t{keys[n]} + 1);
  }

  static std::uint8_t TiesOf(const NotationSlice& slice, std::size_t n) {
    const ScoreItem& item = *slice.event->item;
    if (item.group.isRest) return 0;
    std::uint8_t ties = static_cast<std::uint8_t>((item.group.tieFromBefore ? kTieFromBefore : 0) |
                                                  (item.group.tieOnward ? kTieOnward : 0));
    if (n < item.noteTies.size()) ties = item.noteTies[n];
    if (!slice.first) ties |= kTieFromBefore;
    if (!slice.last) ties |= kTieOnward;
    return ties;
  }

  void WriteValue(const NoteValue& value) {
    out_.Leaf("type", kTypes[std::min<std::size_t>(value.code, kTypes.size() - 1)]);
    for (unsigned dot = 0; dot < value.dots; ++dot) out_.Empty("dot");
  }

  void WriteRatio(TupletRatio ratio) {
    out_.Open("time-modification");
    out_.Leaf("actual-notes", ratio.actual);
    out_.Leaf("normal-notes", ratio.normal);
    out_.Close();
  }

  void WriteLooks(std::size_t staff, const NotationSlice& slice, std::size_t n) {
    const ScoreItem& item = *slice.event->item;
    if (item.stem != 0) out_.Leaf("stem", item.stem == 'u' ? "up" : item.stem == 'd' ? "down" : "none");
    if (!item.group.isRest && item.group.notes[n].value != 0)
      out_.Leaf("notehead", HeadName(item.group.notes[n].value));
    if (part_.staves > 1) out_.Leaf("staff", staff + 1);
    if (n > 0) return;
    for (std::size_t level = 0; level < slice.beams.size(); ++level) {
      constexpr std::pair<char, std::string_view> kBeams[] = {
          {'b', "begin"}, {'c', "continue"}, {'e', "end"}, {'f', "forward hook"}, {'h', "backward hook"}};
      const auto* const found =
          std::ranges::find(kBeams, slice.beams[level], &std::pair<char, std::string_view>::first);
      if (found != std::end(kBeams)) out_.Leaf("beam", found->second, {{"number", Number(level + 1)}});
    }
  }

  void WriteNotations(std::size_t staff, const VoiceCursor& voice, const NotationSlice& slice, std::size_t n,
                      std::uint8_t ties) {
    const auto v = static_cast<std::size_t>(&voice - voices_[staff].data());
    const bool head = n == 0;
    NotationSigns signs;
    const ScoreItem& item = *slice.event->item;
    if (slice.first) signs = head ? SignsOf(item) : SignsOfEachNote(item);
    std::vector<SlurEnd> slurs;
    const auto& known = marks_[staff][v].slurs;
    if (const auto found = known.find(slice.index); head && found != known.end()) {
      for (const SlurEnd& end : found->second) {
        if (end.start ? slice.first : slice.last) slurs.push_back(end);
      }
    }
    const bool tuplet =
        head && (slice.tupletStart || slice.tupletStop) && !(slice.tupletStart && slice.tupletStop);
    if (ties == 0 && !tuplet && slurs.empty() && signs.Empty()) return;
    out_.Open("notations");
    if ((ties & kTieFromBefore) != 0) out_.Empty("tied", {{"type", "stop"}});
    if ((ties & kTieOnward) != 0) out_.Empty("tied", {{"type", "start"}});
    // What ends comes before what begins.
    std::ranges::stable_sort(slurs, {}, &SlurEnd::start);
    for (const SlurEnd& slur : slurs) {
      const std::string_view placement = slur.placement == 0 ? "" : slur.placement > 0 ? "above" : "below";
      out_.Empty("slur", {{"type", slur.start ? "start" : "stop"},
                          {"number", Number(slur.number)},
                          {"placement", placement}});
    }
    if (tuplet && slice.tupletStop) out_.Empty("tuplet", {{"type", "stop"}});
    if (tuplet && slice.tupletStart) out_.Empty("tuplet", {{"type", "start"}, {"bracket", "yes"}});
    WriteSigns(out_, signs);
    out_.Close();
  }

  void WriteLyrics(VoiceCursor& voice, const ScoreItem& item) {
    for (std::size_t verse = 0; verse < item.lyrics.size() && verse < kMaxVerses; ++verse) {
      const LyricItem& lyric = item.lyrics[verse];
      std::string_view text = lyric.syllable;
      bool hyphen = (lyric.flags & kLyricHyphen) != 0;
      const bool extender = (lyric.flags & kLyricExtender) != 0;
      if (text.empty() && !extender) continue;
      // Some texts have their hyphens within them.
      if (text.size() > 1 && text.ends_with('-')) {
        text.remove_suffix(1);
        hyphen = true;
      }
      out_.Open("lyric", {{"number", Number(verse + 1)}});
      if (!text.empty()) {
        bool& inWord = voice.inWord[verse];
        out_.Leaf("syllabic", inWord ? (hyphen ? "middle" : "end") : (hyphen ? "begin" : "single"));
        inWord = hyphen;
        out_.Leaf("text", text);
      }
      if (extender) out_.Empty("extend");
      out_.Close();
    }
  }

  XmlOut& out_;
  const ScoreDocument& document_;
  const ScoreMusic& music_;
  std::string id_;
  const ScorePart& part_;
  std::size_t first_;
  PartMarks marks_;
  std::vector<std::vector<VoiceCursor>> voices_;  // staff, voice
  std::vector<AccidentalBits> accidentals_;       // of each staff
  std::vector<std::size_t> nextChange_;
  std::multimap<std::size_t, std::size_t> endingStarts_;  // by bar: index into the endings
  std::multimap<std::size_t, std::size_t> endingStops_;
  std::vector<Direction> tempos_;
  std::size_t nextTempo_ = 0;
  std::int64_t divisions_ = 1;
  Fraction position_;
};

}  // namespace

Outcome WritePart(XmlOut& out, const PartToWrite& part, LossReport& losses, const WorkWatch& watch) {
  PartWriter writer(out, part.document, part.music, losses, part.id, part.part, part.firstStaff,
                    part.ownBeams);
  return writer.Write(watch);
}

}  // namespace ts5::musicxml
