#include "score/score_groups.h"

#include <algorithm>
#include <cmath>

namespace ts5 {
namespace {

constexpr std::uint8_t kGreatestDurationCode = 9;
constexpr std::array<std::uint8_t, 16> kPlayed = {0, 0, 1, 2, 4, 4, 4, 4, 8, 8, 8, 8, 8, 8, 8, 8};
constexpr std::array<std::uint8_t, 16> kPlayedCompound = {0, 0, 3, 3, 3, 3, 6, 6, 6, 6, 6, 6, 12, 12, 12, 12};
constexpr std::array<int, 7> kScale = {0, 2, 4, 5, 7, 9, 11};
constexpr std::array<int, 5> kClefSteps = {42, 35, 28, 42, 42};
constexpr std::int64_t kMostTicks = INT32_MAX;

[[nodiscard]] bool Has(std::uint8_t flags, unsigned bit) {
  return (flags >> bit & 1) != 0;
}

void ReadHeader(ScoreSource& in, ScoreGroup& group) {
  const std::uint8_t flags = in.U8();
  in.Require(!Has(flags, 7));
  group.dots = flags & 3;
  group.flags = flags & (kGroupZeroDuration | kGroupFlag3 | kGroupGrace | kGroupSilent);
  if (Has(flags, 6)) in.Colour();

  const std::uint8_t duration = in.U8();
  in.Require(!Has(duration, 7));
  group.durationCode = duration & 15;
  in.Require(group.durationCode <= kGreatestDurationCode);
  if (Has(duration, 4)) (void)in.CompactSigned();
  if (Has(duration, 5)) {
    const std::uint8_t tuplet = in.U8();
    group.tuplet = {static_cast<std::uint8_t>(tuplet & 15), Has(tuplet, 4), Has(tuplet, 5)};
    in.Require(group.tuplet.number != 0);
  }
  if (Has(duration, 6)) {
    group.drawingsAt = in.Position();
    ReadDrawings(in, group.marks);
  }
  group.articulation = group.marks.articulation;
}

void ReadLyrics(ScoreSource& in, ScoreGroup& group) {
  const std::uint32_t verses = in.CompactUnsigned();
  for (std::uint32_t i = 0; i < verses && in.Ok(); ++i) {
    LyricVerse verse;
    verse.present = in.U8() != 0;
    if (verse.present) {
      verse.flags = in.U8();
      if (Has(verse.flags, 3)) verse.syllable = in.Blob();
      if (Has(verse.flags, 4)) verse.second = in.Blob();
    }
    if (group.lyrics.size() < kMaxVerses) group.lyrics.push_back(verse);
  }
}

void ReadNotes(ScoreSource& in, ScoreGroup& group) {
  group.noteCount = in.CompactUnsigned();
  in.Require(group.noteCount > 0);
  for (std::uint32_t i = 0; i < group.noteCount && in.Ok(); ++i) {
    const std::uint8_t first = in.U8();
    const std::uint8_t second = in.U8();
    const int steps = first & 0x7F;
    ScoreNote note;
    note.position = static_cast<std::int8_t>(steps < 64 ? steps : steps - 128);
    note.accidental = static_cast<std::int8_t>((second >> 3 & 7) - 2);
    note.value = second & 7;
    in.Require(note.value <= 6 && note.accidental <= 2);
    if (group.notes.size() < kMaxChordKeys) group.notes.push_back(note);
  }
}

void ReadChordFlags(ScoreSource& in, std::uint8_t flags, ScoreGroup& group) {
  if (Has(flags, 0)) in.Skip(1);
  if (Has(flags, 1)) {
    const std::int8_t side = in.I8();
    in.Require(side >= -1 && side <= 1);
  }
  if (Has(flags, 2)) {
    const std::uint8_t form = in.U8();
    in.Require(form == 0 || form == 1 || form == 3 || form == 255);
    in.Skip(1);
  }
  if (Has(flags, 3)) {
    group.graceForm = in.U8();
    const std::uint8_t code = in.U8();
    in.Require(group.graceForm <= 5 && code <= 8);
    group.ownArticulation = code;
    if (code != 0) group.articulation = code;
  }
  if (Has(flags, 4)) {
    const std::uint8_t ties = in.U8();
    group.tieFromBefore = Has(ties, 0);
    group.tieOnward = Has(ties, 1);
  }
  if (Has(flags, 5)) in.Skip(2);
}

std::int64_t Base(std::uint8_t code, std::int64_t quarter) {
  if (code == 9) return quarter * 8;
  if (code < 2) return quarter * 4 >> code;
  return quarter >> (code - 2);
}

}  // namespace

TupletCount CountOf(const ScoreTuplet& tuplet) {
  const std::int64_t played = (tuplet.compound ? kPlayedCompound : kPlayed)[tuplet.number & 15];
  const std::int64_t number = tuplet.compound && tuplet.number == 2 ? 4 : tuplet.number;
  return {number, tuplet.doubled ? played * 2 : played};
}

ScoreGroup ReadRest(ScoreSource& in) {
  ScoreGroup group;
  group.isRest = true;
  ReadHeader(in, group);
  const std::uint8_t flags = in.U8();
  in.Require(flags <= 7);
  if (Has(flags, 0)) group.wholeBars = in.CompactUnsigned();
  if (Has(flags, 2)) (void)in.CompactSigned();
  return group;
}

ScoreGroup ReadChord(ScoreSource& in) {
  ScoreGroup group;
  ReadHeader(in, group);
  const std::uint8_t flags = in.U8();
  ReadChordFlags(in, flags, group);
  if (Has(flags, 6)) ReadLyrics(in, group);
  ReadNotes(in, group);
  return group;
}

std::uint32_t GroupDuration(const ScoreGroup& group, std::uint32_t ticksPerQuarter, ScoreTimeSignature time) {
  if ((group.flags & kGroupZeroDuration) != 0) return 0;
  const std::int64_t quarter = ticksPerQuarter;
  std::int64_t duration = 0;
  if (group.isRest && group.wholeBars > 0 && time.power >= 0) {
    const std::int64_t bar = time.power < 32 ? (quarter * 4 >> time.power) * time.numerator : 0;
    duration = bar * std::min<std::int64_t>(group.wholeBars, kMostTicks);
  } else {
    const std::int64_t base = Base(group.durationCode, quarter);
    duration = base;
    for (unsigned i = 1; i <= group.dots; ++i) duration += base >> i;
  }
  duration = std::min(duration, kMostTicks);
  if (group.tuplet.number != 0) {
    const auto [number, played] = CountOf(group.tuplet);
    const auto whole = static_cast<double>(duration);
    const double part = whole / static_cast<double>(number) * static_cast<double>(number - played);
    duration = static_cast<std::int64_t>(std::trunc(whole - part));
  }
  return static_cast<std::uint32_t>(std::clamp<std::int64_t>(duration, 0, kMostTicks));
}

std::uint8_t NoteKey(const ScoreNote& note, ScoreClef clef, int key) {
  int step = note.position + kClefSteps[std::min<std::size_t>(clef.form, kClefSteps.size() - 1)];
  if (clef.octave == 0) step += 7;
  if (clef.octave == 2) step -= 7;
  const int octave = step >= 0 ? step / 7 : -((6 - step) / 7);
  int pitch = (7 * key + 60) % 12 + kScale[static_cast<std::size_t>(step - octave * 7)] + 12 * octave;
  pitch += note.accidental;
  while (pitch < 0) pitch += 12;
  while (pitch > 127) pitch -= 12;
  return static_cast<std::uint8_t>(pitch);
}

NoteGroup DecodeGroup(const ScoreGroup& group, std::uint32_t ticksPerQuarter, ScoreTimeSignature time,
                      ScoreClef clef, int key) {
  NoteGroup decoded;
  decoded.duration = GroupDuration(group, ticksPerQuarter, time);
  decoded.isRest = group.isRest;
  decoded.tieFromBefore = group.tieFromBefore;
  decoded.tieOnward = group.tieOnward;
  decoded.graceForm = group.graceForm;
  decoded.durationCode = group.durationCode;
  decoded.dots = group.dots;
  decoded.flags = group.flags;
  decoded.articulation = group.articulation;
  decoded.marks = group.marks;
  decoded.noteCount = static_cast<std::uint8_t>(std::min(group.notes.size(), kMaxChordKeys));
  for (std::size_t i = 0; i < decoded.noteCount; ++i) decoded.keys[i] = NoteKey(group.notes[i], clef, key);
  return decoded;
}

}  // namespace ts5
