// The notes of one voice of a part, each as a <note> with all that stands within it. Used inside the writer
// only.
#pragma once

#include <array>

#include "converters/musicxml_marks.h"
#include "converters/musicxml_part_to_write.h"
#include "converters/notation_slices.h"
#include "converters/xml_out.h"

namespace ts5::converters::musicxml {

struct VoiceOfNotes {
  std::size_t staff = 0;  // of the part
  unsigned number = 1;    // MusicXML's
  const VoiceMarks& marks;
  const std::vector<std::uint32_t>& accidentals;  // of each event, as AccidentalBits
};

class NoteWriter {
 public:
  NoteWriter(XmlOut& out, const PartToWrite& part, Divisions divisions, VoiceOfNotes voice)
      : out_(out), part_(part), divisions_(divisions), voice_(voice) {}

  // A chord, note by note, or a rest; the slices of a voice come in order.
  void Write(const NotationSlice& slice);

 private:
  void WriteNote(const NotationSlice& slice, std::size_t n);
  void WritePitch(SpelledPitch pitch);
  void WriteValue(const NoteValue& value);
  void WriteAccidental(const NotationSlice& slice, std::size_t n, SpelledPitch pitch);
  void WriteLooks(const NotationSlice& slice, std::size_t n);
  void WriteBeams(const std::string& beams);
  void WriteNotations(const NotationSlice& slice, bool head, std::uint8_t ties);
  void WriteLyrics(const ScoreItem& item);
  [[nodiscard]] std::vector<SlurEnd> SlursOf(const NotationSlice& slice) const;
  [[nodiscard]] bool IsDrums() const { return part_.Layout(voice_.staff).usesNoteMap; }

  XmlOut& out_;
  const PartToWrite& part_;
  Divisions divisions_;
  VoiceOfNotes voice_;
  std::array<bool, kMaxVerses> inWord_{};  // of each verse
};

}  // namespace ts5::converters::musicxml
