// The attributes of each element of StvXML, said once for reading and writing: Io takes or gives each value
// under its name. One that has its default is not written. Used inside the reader and the writer only.
#pragma once

#include <cstdint>

#include "score/score_document.h"

namespace ts5::converters::stvx {

inline constexpr std::string_view kRoot = "stvx";
inline constexpr int kVersion = 1;

// Elements of a voice by ObjectKind; kinds from 8 on are "object".
inline constexpr std::string_view kItemNames[] = {"rest", "chord", "clef",  "key",
                                                  "time", "bar",   "other", "variant"};
inline constexpr std::string_view kOtherItem = "object";
// Elements of a group by DrawingKind.
inline constexpr std::string_view kDrawingNames[] = {
    "group",      "flagged-group", "shape", "text",    "other-shape", "marked-line",      "line",  "curve",
    "ended-line", "slur",          "form",  "hairpin", "ending",      "other-ended-line", "frame", "mark"};
inline constexpr std::string_view kOtherDrawing = "drawing";

template <typename Io, typename Drawing>
void DrawingFields(Io& io, Drawing& drawing) {
  io.Number("span", drawing.span, 0, 0, 4095);
  io.Number("value", drawing.value, 0, 0, 255);
  io.Symbols("text", drawing.text);
  io.Text("sign", drawing.sign);
  io.Text("words", drawing.words);
  io.Length("offset", drawing.offset);
  io.Length("extent", drawing.extent);
  io.Number("placement", drawing.placement, 0, -1, 1);
}

template <typename Io, typename Lyric>
void LyricFields(Io& io, Lyric& lyric) {
  io.Text("text", lyric.syllable);
  io.Number("flags", lyric.flags, 0, 0, 255);
}

template <typename Io, typename Note>
void NoteFields(Io& io, Note& note) {
  io.Number("position", note.position, 0, -64, 63);
  io.Number("accidental", note.accidental, 0, -2, 2);
  io.Number("head", note.value, 0, 0, 6);
}

template <typename Io, typename Time>
void TimeFields(Io& io, Time& time) {
  io.Number("numerator", time.numerator, 4, 0, 255);
  io.Number("power", time.power, 2, -1, 126);
}

template <typename Io, typename Group>
void GroupFields(Io& io, Group& group) {
  io.Number("duration", group.durationCode, 2, 0, 9);
  io.Number("dots", group.dots, 0, 0, 3);
  io.Number("flags", group.flags, 0, 0, 60);
  io.Number("tuplet", group.tuplet.number, 0, 0, 15);
  io.Flag("compound", group.tuplet.compound);
  io.Flag("doubled", group.tuplet.doubled);
  io.Number("bars", group.wholeBars, 0U, 0, UINT32_MAX);
  io.Number("grace", group.graceForm, 0, 0, 5);
  io.Number("articulation", group.articulation, 0, 0, 8);
  io.Flag("tied", group.tieFromBefore);
  io.Flag("tie", group.tieOnward);
}

// All of an item but its notes, drawings and lyrics.
template <typename Io, typename Item>
void ItemFields(Io& io, Item& item) {
  switch (static_cast<ObjectKind>(item.kind)) {
    case ObjectKind::Rest:
    case ObjectKind::Chord:
    case ObjectKind::ChordVariant:
      GroupFields(io, item.group);
      io.Number("actual", item.ratio.actual, 0, 0, UINT16_MAX);
      io.Number("normal", item.ratio.normal, 0, 0, UINT16_MAX);
      io.Number("courtesy", item.courtesy, 0U, 0, UINT32_MAX);
      io.Number("bracketed", item.bracketed, 0U, 0, UINT32_MAX);
      io.Text("beams", item.beams);
      io.Letter("stem", item.stem);
      break;
    case ObjectKind::Clef:
      io.Number("form", item.clef.form, 0, 0, 4);
      io.Number("line", item.clef.line, 0, 0, 4);
      io.Number("octave", item.clef.octave, 1, 0, 2);
      break;
    case ObjectKind::Key:
      io.Number("sharps", item.key, 0, -7, 7);
      break;
    case ObjectKind::Time:
      TimeFields(io, item.time);
      break;
    case ObjectKind::BarLine:
      io.Number("type", item.barLine, 0, 0, 5);
      io.Number("times", item.times, 0, 0, 255);
      break;
    default:
      break;
  }
  io.Text("style", item.style);
  io.Bytes("parameters", item.parameters);
  io.Bytes("record", item.record);
}

template <typename Io, typename Staff>
void LayoutFields(Io& io, Staff& staff) {
  io.Text("name", staff.name);
  io.Number("sound", staff.sound, 0, INT32_MIN, INT32_MAX);
  io.Number("volume", staff.volume, 0, INT32_MIN, INT32_MAX);
  io.Number("transpose", staff.transpose, 0, INT32_MIN, INT32_MAX);
  io.Number("spacing", staff.spacing, 0, INT32_MIN, INT32_MAX);
  io.Flag("drums", staff.usesNoteMap);
  io.Map("map", staff.noteMap);
}

template <typename Io, typename Part>
void PartFields(Io& io, Part& part) {
  io.Text("name", part.name);
  io.Text("abbreviation", part.abbreviation);
  io.Text("instrument", part.instrument);
  io.Number("staves", part.staves, 1U, 0, 65535);
  io.Number("diatonic", part.diatonic, 0, -100, 100);
  io.Text("group", part.group);
}

template <typename Io, typename Label>
void LabelFields(Io& io, Label& label) {
  io.Text("number", label.number);
  io.Flag("implicit", label.implicit);
  io.Flag("page", label.newPage);
}

template <typename Io, typename Page>
void PageFields(Io& io, Page& page) {
  io.Number("narrow", page.narrowLines, 0, 0, UINT16_MAX);
  io.Number("normal", page.normalLines, 0, 0, UINT16_MAX);
  io.Number("above", page.above, 0, 0, UINT8_MAX);
  io.Number("below", page.below, 0, 0, UINT8_MAX);
  io.Number("between", page.betweenSystems, 0, 0, UINT8_MAX);
  io.Number("before", page.beforeFirst, 0, 0, UINT8_MAX);
  io.Flag("slashes", page.slashes);
  io.Number("justify", page.justify, 0, 0, UINT8_MAX);
  io.Flag("numbers", page.barNumbers);
  io.Number("bars", page.barsPerSystem, 0, 0, UINT8_MAX);
  io.Number("beaming", page.beaming, 0, 0, UINT8_MAX);
}

template <typename Io, typename Document>
void InfoFields(Io& io, Document& document) {
  io.Text("author", document.author);
  io.Text("keywords", document.keywords);
  io.Text("comment", document.comment);
  io.Flag("landscape", document.landscape);
  io.Number("spacing", document.systemSpacing, 0, INT32_MIN, INT32_MAX);
  io.Text("title", document.credits.title);
  io.Text("movement", document.credits.movement);
  io.Text("lyricist", document.credits.lyricist);
  io.Text("arranger", document.credits.arranger);
  io.Text("rights", document.credits.rights);
  io.Text("software", document.credits.software);
  io.Text("source", document.credits.source);
  io.Bytes("record", document.record);
  io.Bytes("tail", document.tail);
}

template <typename Io, typename System>
void SystemFields(Io& io, System& system) {
  io.Number("tempo", system.tempo, 0U, 0, UINT32_MAX);
  io.Bytes("record", system.record);
}

template <typename Io, typename Staff>
void StaffFields(Io& io, Staff& staff) {
  io.Number("layout", staff.layout, 0, 0, 255);
  TimeFields(io, staff.time);
  io.Bytes("record", staff.record);
}

}  // namespace ts5::converters::stvx
