#include "converters/musicxml_note_writer.h"

#include <algorithm>

#include "converters/musicxml_mark_writer.h"
#include "converters/musicxml_note.h"

namespace ts5::converters::musicxml {
namespace {

constexpr std::array<std::string_view, 7> kSteps = {"C", "D", "E", "F", "G", "A", "B"};
constexpr std::array<std::string_view, 10> kTypes = {"whole", "half", "quarter", "eighth", "16th",
                                                     "32nd",  "64th", "128th",   "256th",  "breve"};

std::string_view AccidentalName(int alter) {
  constexpr std::array<std::string_view, 7> kNames = {"triple-flat", "flat-flat",    "flat",        "natural",
                                                      "sharp",       "double-sharp", "triple-sharp"};
  return alter < -3 || alter > 3 ? std::string_view() : kNames[static_cast<std::size_t>(alter + 3)];
}

}  // namespace

void NoteWriter::Write(const NotationSlice& slice) {
  const std::size_t notes = slice.event->IsRest() ? 1 : slice.event->item->group.notes.size();
  for (std::size_t n = 0; n < notes; ++n) WriteNote(slice, n);
}

void NoteWriter::WriteNote(const NotationSlice& slice, std::size_t n) {
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
    WritePitch(pitch);
  }
  if (!slice.grace)
    out_.Leaf("duration", divisions_.Ticks(slice.start + slice.length) - divisions_.Ticks(slice.start));
  const std::uint8_t ties = TiesOf(slice, n);
  if ((ties & kTieFromBefore) != 0) out_.Empty("tie", {{"type", "stop"}});
  if ((ties & kTieOnward) != 0) out_.Empty("tie", {{"type", "start"}});
  if (!event.IsRest() && IsDrums()) {
    const auto keys = SoundingKeys(event, part_.Layout(voice_.staff));
    out_.Empty("instrument", {{"id", part_.id + "-I" + std::to_string(keys[n] + 1)}});
  }
  out_.Leaf("voice", voice_.number);
  if (!slice.measureRest) WriteValue(slice.value);
  WriteAccidental(slice, n, pitch);
  if (slice.value.ratio.actual != 0) {
    out_.Open("time-modification");
    out_.Leaf("actual-notes", slice.value.ratio.actual);
    out_.Leaf("normal-notes", slice.value.ratio.normal);
    out_.Close();
  }
  WriteLooks(slice, n);
  WriteNotations(slice, n == 0, ties);
  if (n == 0 && slice.first) WriteLyrics(item);
  out_.Close();
}

void NoteWriter::WritePitch(SpelledPitch pitch) {
  const auto step = kSteps[static_cast<std::size_t>(pitch.step)];
  const int octave = std::clamp<int>(pitch.octave, 0, 9);
  if (IsDrums()) {
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

void NoteWriter::WriteValue(const NoteValue& value) {
  out_.Leaf("type", kTypes[std::min<std::size_t>(value.code, kTypes.size() - 1)]);
  for (unsigned dot = 0; dot < value.dots; ++dot) out_.Empty("dot");
}

void NoteWriter::WriteAccidental(const NotationSlice& slice, std::size_t n, SpelledPitch pitch) {
  const ScoreItem& item = *slice.event->item;
  if (slice.event->IsRest() || !slice.first || n >= kMaxChordKeys || IsDrums()) return;
  const bool needed = (voice_.accidentals[slice.index] >> n & 1U) != 0;
  const bool courtesy = (item.courtesy >> n & 1U) != 0;
  if (!needed && !courtesy) return;
  out_.Leaf(
      "accidental", AccidentalName(pitch.alter),
      {{"cautionary", needed ? "" : "yes"}, {"parentheses", (item.bracketed >> n & 1U) != 0 ? "yes" : ""}});
}

void NoteWriter::WriteLooks(const NotationSlice& slice, std::size_t n) {
  const ScoreItem& item = *slice.event->item;
  if (item.stem != 0) out_.Leaf("stem", item.stem == 'u' ? "up" : item.stem == 'd' ? "down" : "none");
  if (!item.group.isRest && item.group.notes[n].value != 0)
    out_.Leaf("notehead", HeadName(item.group.notes[n].value));
  if (part_.part.staves > 1) out_.Leaf("staff", voice_.staff + 1);
  if (n == 0) WriteBeams(slice.beams);
}

void NoteWriter::WriteBeams(const std::string& beams) {
  constexpr std::pair<char, std::string_view> kBeams[] = {
      {'b', "begin"}, {'c', "continue"}, {'e', "end"}, {'f', "forward hook"}, {'h', "backward hook"}};
  for (std::size_t level = 0; level < beams.size(); ++level) {
    const auto* const found =
        std::ranges::find(kBeams, beams[level], &std::pair<char, std::string_view>::first);
    if (found != std::end(kBeams)) out_.Leaf("beam", found->second, {{"number", std::to_string(level + 1)}});
  }
}

// What ends comes before what begins.
std::vector<SlurEnd> NoteWriter::SlursOf(const NotationSlice& slice) const {
  std::vector<SlurEnd> slurs;
  if (const auto found = voice_.marks.slurs.find(slice.index); found != voice_.marks.slurs.end()) {
    for (const SlurEnd& end : found->second) {
      if (end.start ? slice.first : slice.last) slurs.push_back(end);
    }
  }
  std::ranges::stable_sort(slurs, {}, &SlurEnd::start);
  return slurs;
}

void NoteWriter::WriteNotations(const NotationSlice& slice, bool head, std::uint8_t ties) {
  NotationSigns signs;
  const ScoreItem& item = *slice.event->item;
  if (slice.first) signs = head ? SignsOf(item) : SignsOfEachNote(item);
  const std::vector<SlurEnd> slurs = head ? SlursOf(slice) : std::vector<SlurEnd>();
  const bool tuplet = head && slice.tupletStart != slice.tupletStop;
  if (ties == 0 && !tuplet && slurs.empty() && signs.Empty()) return;
  out_.Open("notations");
  if ((ties & kTieFromBefore) != 0) out_.Empty("tied", {{"type", "stop"}});
  if ((ties & kTieOnward) != 0) out_.Empty("tied", {{"type", "start"}});
  for (const SlurEnd& slur : slurs) {
    out_.Empty("slur", {{"type", slur.start ? "start" : "stop"},
                        {"number", std::to_string(slur.number)},
                        {"placement", PlacementName(slur.placement)}});
  }
  if (tuplet && slice.tupletStop) out_.Empty("tuplet", {{"type", "stop"}});
  if (tuplet && slice.tupletStart) out_.Empty("tuplet", {{"type", "start"}, {"bracket", "yes"}});
  WriteSigns(out_, signs);
  out_.Close();
}

void NoteWriter::WriteLyrics(const ScoreItem& item) {
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
    out_.Open("lyric", {{"number", std::to_string(verse + 1)}});
    if (!text.empty()) {
      bool& inWord = inWord_[verse];
      out_.Leaf("syllabic", inWord ? (hyphen ? "middle" : "end") : (hyphen ? "begin" : "single"));
      inWord = hyphen;
      out_.Leaf("text", text);
    }
    if (extender) out_.Empty("extend");
    out_.Close();
  }
}

}  // namespace ts5::converters::musicxml
