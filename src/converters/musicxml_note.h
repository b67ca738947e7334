// What hangs on one note of MusicXML: its notations, lyrics and looks. Used inside the reader only.
#pragma once

#include <map>
#include <pugixml.hpp>
#include <string>

#include "converters/musicxml_raw.h"

namespace ts5::converters::musicxml {

// Where the note is, for the report of losses.
struct NotePlace {
  int bar = 0;
  int staff = 0;
};

// What is open from note to note of a part.
struct OpenMarks {
  std::map<std::string, std::size_t> slurs;   // by number: index into Part::slurs
  std::map<std::string, std::size_t> verses;  // by number: index of the verse
};

// group: the index of the note's group in part.groups; the note is the last one of its chord so far.
void ReadNotations(Reading& reading, Part& part, OpenMarks& open, std::size_t group, pugi::xml_node note,
                   NotePlace place);
void ReadLyrics(Reading& reading, Part& part, OpenMarks& open, std::size_t group, pugi::xml_node note,
                NotePlace place);
// Stem, beams and head. The head is of the last note of the chord.
void ReadLooks(Reading& reading, Group& group, pugi::xml_node note, NotePlace place);

// A dynamic mark by MusicXML's name for it, or by other words; "" gives an empty drawing.
[[nodiscard]] DrawingItem DynamicDrawing(pugi::xml_node mark);
// A sign of the table with what its element says: its type and its text.
[[nodiscard]] DrawingItem DrawingOf(std::string_view name, pugi::xml_node element);
[[nodiscard]] std::int8_t PlacementOf(pugi::xml_node element);

// Written noteheads by ScoreNote::value; "normal" is 0.
[[nodiscard]] std::string_view HeadName(std::uint8_t value);

}  // namespace ts5::converters::musicxml
