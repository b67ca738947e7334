// One part of MusicXML, measure by measure: the cursor that notes, backup and forward move, and what stands
// at it.
#include <algorithm>
#include <array>
#include <cmath>
#include <map>

#include "converters/musicxml_children.h"
#include "converters/musicxml_cursor.h"
#include "converters/musicxml_direction.h"
#include "converters/musicxml_note.h"
#include "converters/texts.h"
#include "platform/base/text.h"
#include "score/score_bars.h"

namespace ts5::converters::musicxml {
namespace {

// Of one measure; one with more is no music.
constexpr std::size_t kMostGroups = 10'000;
constexpr std::size_t kMostMarks = 4096;  // and signs
constexpr unsigned kCancelEvery = 256;    // measures' children

// What is shorter than a note value of score files is written as the shortest, within a ratio that makes it
// so short.
constexpr NamedCode kTypes[] = {{"whole", 0}, {"half", 1}, {"quarter", 2}, {"eighth", 3}, {"16th", 4},
                                {"32nd", 5},  {"64th", 6}, {"128th", 7},   {"256th", 8},  {"breve", 9}};

std::optional<int> StepOf(std::string_view name) {
  constexpr std::string_view kSteps = "CDEFGAB";
  const std::size_t step = name.size() == 1 ? kSteps.find(name[0]) : std::string_view::npos;
  if (step == std::string_view::npos) return std::nullopt;
  return static_cast<int>(step);
}

class PartReader {
 public:
  PartReader(Reading& reading, Part& part) : at_{reading, part}, directions_(at_) { at_.GrowStaves(1); }

  void Read(const std::vector<pugi::xml_node>& measures) {
    for (const pugi::xml_node measure : measures) {
      if (at_.reading.fault) return;
      ReadMeasure(measure);
    }
    for (const auto& [number, slur] : open_.slurs) {
      (void)number;
      (void)slur;
      at_.reading.score.losses.Add(texts::LossSlur, at_.bar - 1, at_.Staff(0));
    }
  }

 private:
  void ReadMeasure(pugi::xml_node node) {
    at_.part.measures.emplace_back();
    at_.Now().first = at_.part.groups.Size();
    at_.now = {};
    raw_ = {};
    moved_.clear();
    last_ = SIZE_MAX;
    for (const pugi::xml_node child : node.children()) {
      if (++asked_ % kCancelEvery == 0 && at_.reading.cancelled && at_.reading.cancelled())
        at_.reading.Fail(at_.bar, at_.Staff(0), Outcome::Cancelled);
      if (at_.reading.fault) return;
      ReadChild(child);
      if (at_.now > Fraction(kLongestMeasure)) return at_.Fail();
      if (at_.part.groups.Size() - at_.Now().first > kMostGroups || at_.Now().marks.size() > kMostMarks ||
          at_.Now().signs.size() > kMostMarks * kMostStaves)
        return at_.Fail();
      at_.Now().length = std::max(at_.Now().length, at_.now);
    }
    at_.Now().groups = at_.part.groups.Size() - at_.Now().first;
    ++at_.bar;
  }

  void ReadChild(pugi::xml_node child) {
    const std::string_view name = child.name();
    if (name == "note") return ReadNote(child);
    if (name == "backup") return Move(child, true);
    if (name == "forward") return Move(child, false);
    if (name == "attributes") return ReadAttributes(at_, child);
    if (name == "direction") return directions_.Read(child);
    if (name == "sound") return directions_.ReadSound(child, at_.now, 0, nullptr);
    if (name == "barline") return ReadBarLine(at_, child);
    if (name == "harmony") return directions_.ReadHarmony(child);
    if (name == "figured-bass") return at_.Lose(texts::LossFigured);
    if (name == "print") {
      at_.Now().newSystem = std::string_view(child.attribute("new-system").value()) == "yes";
      at_.Now().newPage = std::string_view(child.attribute("new-page").value()) == "yes";
      at_.reading.score.hasBreaks |= at_.Now().newSystem || at_.Now().newPage;
    }
  }

  // --- the cursor

  // In whole notes.
  std::optional<Fraction> DurationOf(std::string_view text) {
    const auto divisions = DivisionsOf(text);
    if (!divisions) return std::nullopt;
    return *divisions / (at_.divisions * Fraction(4));
  }

  void Move(pugi::xml_node element, bool back) {
    const auto duration = DurationOf(element.child("duration").text().get());
    if (!duration) return at_.Fail();
    if (back && *duration > raw_) {
      // Exporters round; what goes back before the start of the measure goes to its start.
      raw_ = {};
    } else {
      raw_ = back ? raw_ - *duration : raw_ + *duration;
    }
    at_.now = Exact(raw_);
    last_ = SIZE_MAX;
  }

  // The place by written note values, where rounded durations have led to another one.
  [[nodiscard]] Fraction Exact(Fraction raw) const {
    const auto found = moved_.find(raw);
    return found == moved_.end() ? raw : found->second;
  }

  void Advance(Fraction duration, Fraction written) {
    const bool exact = raw_ == at_.now && duration == written;
    raw_ += duration;
    at_.now = exact ? raw_ : at_.now + written;
    if (raw_ != at_.now) moved_.try_emplace(raw_, at_.now);
  }

  // --- notes

  void ReadNote(pugi::xml_node node) {
    const NoteParts note(node);
    const std::size_t staff = at_.StaffNumbered(note.Text(NotePart::Staff));
    const bool grace = note.Has(NotePart::Grace);
    const bool rest = note.Has(NotePart::Rest);
    std::optional<Fraction> duration = Fraction();
    if (!grace) duration = DurationOf(note.Text(NotePart::Duration));
    if (!duration) return at_.Fail(staff);
    std::string voice = note.Text(NotePart::Voice);
    if (voice.empty()) voice = "1";

    const bool chord = note.Has(NotePart::Chord) && last_ != SIZE_MAX && !rest;
    if (chord && at_.part.groups[last_].staff == staff && at_.part.groups[last_].voice == voice &&
        !at_.part.groups[last_].item.group.isRest)
      return ReadChordNote(note, staff);
    const Fraction start = chord ? chordStart_ : at_.now;
    const std::size_t first = at_.part.groups.Size();
    const Fraction written = AddGroups(note, {start, *duration, staff, std::move(voice)}, grace);
    if (!chord) {
      chordStart_ = at_.now;
      Advance(*duration, written);
    }
    last_ = first;
    piecesEnd_ = at_.part.groups.Size();
    if (rest) return ReadMarks(first, note, staff);
    ReadChordNote(note, staff);
  }

  struct NoteTime {
    Fraction start;
    Fraction duration;
    std::size_t staff;
    std::string voice;
  };

  // The group of a note, or several where no single note value is so long. How long they are.
  Fraction AddGroups(const NoteParts& note, NoteTime time, bool grace) {
    const bool isRest = note.Has(NotePart::Rest);
    ScoreItem item = isRest ? RestItem(2) : ChordItem(2, {});
    const bool hidden = std::string_view(note.Note().attribute("print-object").value()) == "no";
    if (hidden) item.group.flags |= kGroupInvisible;
    if (note.Has(NotePart::Cue)) item.group.flags |= kGroupSilent;
    // A hidden rest is no gap, whatever its size.
    if (isRest) item.group.flags &= static_cast<std::uint8_t>(~kGroupSilent);
    Fraction written;
    if (grace) {
      const bool slashed = std::string_view(note[NotePart::Grace].attribute("slash").value()) == "yes";
      item.group.flags |= kGroupZeroDuration | kGroupGrace;
      item.group.graceForm = slashed ? kGraceSlashed : kGracePlain;
      (void)SetWritten(note, item);
      AddGroup(std::move(item), time, {});
      return {};
    }
    const std::string_view type = note.Text(NotePart::Type);
    const bool wholeBar = std::string_view(note[NotePart::Rest].attribute("measure").value()) == "yes" ||
                          (isRest && (type.empty() || type == "whole"));
    if (isRest && wholeBar && time.duration == BarLength(at_.time) && time.start.IsZero()) {
      item.group.durationCode = 0;
      item.group.wholeBars = 1;
      written = time.duration;
    } else if (SetWritten(note, item)) {
      written = LengthOf(item, at_.time);
    }
    // The rounded duration of a tuplet is that of its note value; any other one counts.
    const Fraction off = written > time.duration ? written - time.duration : time.duration - written;
    const bool rounded = RatioOf(item).actual != 0 && off <= Fraction(1) / (at_.divisions * Fraction(4)) &&
                         off <= written * Fraction(1, 2);
    if (written == time.duration || rounded) {
      AddGroup(std::move(item), time, written);
      return written;
    }
    if (!type.empty() && !time.duration.IsZero()) at_.Lose(texts::LossLength, time.staff);
    NoteTime piece = time;
    for (const NoteValue& value : NoteValues(time.duration)) {
      ScoreItem next = item;
      next.group.durationCode = value.code;
      next.group.dots = value.dots;
      next.group.wholeBars = 0;
      SetTuplet(next, value.ratio);
      const Fraction length = LengthOf(next, at_.time);
      AddGroup(std::move(next), piece, length);
      piece.start += length;
    }
    // A note without any time is kept as one that has none.
    if (time.duration.IsZero()) {
      item.group.flags |= kGroupZeroDuration;
      AddGroup(std::move(item), time, {});
    }
    return time.duration;
  }

  void AddGroup(ScoreItem&& item, const NoteTime& time, Fraction length) {
    at_.begun[time.staff] = true;
    Group& group = at_.part.groups.Append();
    group.start = time.start;
    group.length = length;
    group.staff = time.staff;
    group.voice = time.voice;
    group.item = std::move(item);
  }

  // Note value, dots and tuplet as written; false when the note says none.
  static bool SetWritten(const NoteParts& note, ScoreItem& item) {
    constexpr std::size_t kMostDots = 3;
    TupletRatio ratio;
    if (const pugi::xml_node modified = note[NotePart::TimeModification]) {
      const auto actual = WholeNumber(modified.child("actual-notes").text().get());
      const auto normal = WholeNumber(modified.child("normal-notes").text().get());
      if (actual && normal && *actual > 0 && *normal > 0 && *actual <= UINT16_MAX && *normal <= UINT16_MAX)
        ratio = {static_cast<std::uint16_t>(*actual), static_cast<std::uint16_t>(*normal)};
    }
    const auto* const found =
        std::ranges::find(kTypes, std::string_view(note.Text(NotePart::Type)), &NamedCode::name);
    if (found == std::end(kTypes)) return false;
    std::size_t dots = 0;
    note.ForEach(NotePart::Dot, [&dots](pugi::xml_node) { ++dots; });
    item.group.durationCode = found->code;
    item.group.dots = static_cast<std::uint8_t>(std::min(dots, kMostDots));
    SetTuplet(item, ratio);
    return true;
  }

  // One note of the chord last_.
  void ReadChordNote(const NoteParts& note, std::size_t staff) {
    Group& group = at_.part.groups[last_];
    if (group.item.pitches.size() >= kMaxChordKeys) return at_.Lose(texts::LossVoice, staff);
    const auto pitch =
        note.Has(NotePart::Unpitched) ? DrumPitch(note, staff) : WrittenPitch(note[NotePart::Pitch], staff);
    if (!pitch) return;
    group.item.pitches.push_back(*pitch);
    group.item.group.notes.emplace_back();
    TakeTies(note, group);
    ReadMarks(last_, note, staff);
    ContinuePieces();
  }

  // What hangs on a note or rest.
  void ReadMarks(std::size_t index, const NoteParts& note, std::size_t staff) {
    if (at_.reading.notesAlone) return;
    const pugi::xml_node node = note.Note();
    Group& group = at_.part.groups[index];
    ReadNotations(at_.reading, at_.part, open_, index, node, at_.Place(staff));
    if (group.item.group.isRest) return;
    TakeAccidental(note[NotePart::Accidental], group);
    ReadLyrics(at_.reading, at_.part, open_, index, node, at_.Place(staff));
    ReadLooks(at_.reading, group, node, at_.Place(staff));
  }

  static void TakeAccidental(pugi::xml_node accidental, Group& group) {
    if (!accidental) return;
    const std::uint32_t bit = 1U << (group.item.pitches.size() - 1);
    const auto yes = [accidental](const char* name) {
      return std::string_view(accidental.attribute(name).value()) == "yes";
    };
    group.shown |= bit;
    if (yes("parentheses") || yes("bracket") || yes("editorial")) group.bracketed |= bit;
  }

  // The last note of the chord, in all pieces of a length that no single value has: they are tied.
  void ContinuePieces() {
    Group& head = at_.part.groups[last_];
    const std::uint32_t note = 1U << (head.item.pitches.size() - 1);
    const bool onward = (head.ties.onward & note) != 0;
    for (std::size_t i = last_ + 1; i < piecesEnd_; ++i) {
      Group& next = at_.part.groups[i];
      next.item.pitches.push_back(head.item.pitches.back());
      next.item.group.notes.push_back(head.item.group.notes.back());
      next.ties.fromBefore |= note;
      if (onward || i + 1 < piecesEnd_) next.ties.onward |= note;
      head.ties.onward |= note;
    }
  }

  std::optional<SpelledPitch> WrittenPitch(pugi::xml_node pitch, std::size_t staff) {
    std::optional<int> step;
    std::optional<std::int64_t> octave;
    std::optional<double> alter = 0;
    for (pugi::xml_node child = pitch.first_child(); child; child = child.next_sibling()) {
      const std::string_view name = child.name();
      if (name == "step") step = StepOf(Trim(child.child_value()));
      if (name == "octave") octave = WholeNumber(child.child_value());
      if (name == "alter") alter = ParseNumber(Trim(child.child_value()));
    }
    if (!step || !octave || *octave < -1 || *octave > 10 || !alter || !(std::abs(*alter) <= 4)) {
      at_.Fail(staff);
      return std::nullopt;
    }
    const double whole = std::trunc(*alter);
    if (whole != *alter) at_.Lose(texts::LossMicrotone, staff);
    const SpelledPitch written{static_cast<std::int8_t>(*step), static_cast<std::int8_t>(whole),
                               static_cast<std::int8_t>(*octave)};
    return Moved(written, staff);
  }

  // After a change of transposition the written pitch is that of the first one.
  [[nodiscard]] SpelledPitch Moved(SpelledPitch pitch, std::size_t staff) const {
    constexpr int kSteps = 7;
    if (staff >= at_.shifts.size() || at_.shifts[staff] == Transposition{}) return pitch;
    const int wanted = pitch.Key() + at_.shifts[staff].chromatic;
    const int absolute = pitch.step + kSteps * pitch.octave + at_.shifts[staff].diatonic;
    const int octave = absolute >= 0 ? absolute / kSteps : -1;
    SpelledPitch moved{static_cast<std::int8_t>(absolute - octave * kSteps), 0,
                       static_cast<std::int8_t>(octave)};
    moved.alter = static_cast<std::int8_t>(wanted - moved.Key());
    return moved;
  }

  // The place of a percussion note, and what sounds there.
  std::optional<SpelledPitch> DrumPitch(const NoteParts& note, std::size_t staff) {
    const pugi::xml_node unpitched = note[NotePart::Unpitched];
    SpelledPitch shown{6, 0, 4};
    if (unpitched.child("display-step")) {
      const auto step = StepOf(Trim(unpitched.child("display-step").text().get()));
      const auto octave = WholeNumber(unpitched.child("display-octave").text().get());
      if (!step || !octave || *octave < 0 || *octave > 9) {
        at_.Fail(staff);
        return std::nullopt;
      }
      shown = {static_cast<std::int8_t>(*step), 0, static_cast<std::int8_t>(*octave)};
    }
    auto& drums = at_.part.drums[staff];
    if (!drums) {
      drums.emplace();
      drums->fill(-1);
    }
    const int sound = InstrumentKey(note[NotePart::Instrument].attribute("id").value());
    if (sound < 0) return shown;
    // Two instruments on one line differ by a sharp or a flat.
    for (const int alter : {0, 1, -1, 2, -2}) {
      shown.alter = static_cast<std::int8_t>(alter);
      const int key = shown.Key();
      if (key < 0 || key > 127) continue;
      int& known = (*drums)[static_cast<std::size_t>(key)];
      if (known >= 0 && known != sound) continue;
      known = sound;
      return shown;
    }
    shown.alter = 0;
    at_.Lose(texts::LossDrum, staff);
    return shown;
  }

  [[nodiscard]] int InstrumentKey(std::string_view id) const {
    for (const auto& [name, instrument] : at_.part.instruments) {
      if (name == id) return instrument.unpitched;
    }
    return -1;
  }

  static void TakeTies(const NoteParts& note, Group& group) {
    const std::uint32_t bit = 1U << (group.item.pitches.size() - 1);
    const auto take = [&](pugi::xml_node tie) {
      const std::string_view type = tie.attribute("type").value();
      if (type == "start") group.ties.onward |= bit;
      if (type == "stop") group.ties.fromBefore |= bit;
    };
    note.ForEach(NotePart::Tie, take);
    note.ForEach(NotePart::Notations, [&take](pugi::xml_node notations) {
      for (const pugi::xml_node tied : notations.children("tied")) take(tied);
    });
  }

  PartCursor at_;
  DirectionReader directions_;
  OpenMarks open_;
  Fraction raw_;  // by durations
  std::map<Fraction, Fraction> moved_;
  Fraction chordStart_;
  std::size_t last_ = SIZE_MAX;  // the group that a chord note joins
  std::size_t piecesEnd_ = 0;    // behind the groups of one note
  unsigned asked_ = 0;
};

}  // namespace

void ReadPart(Reading& reading, Part& part, const std::vector<pugi::xml_node>& measures) {
  PartReader(reading, part).Read(measures);
}

}  // namespace ts5::converters::musicxml
