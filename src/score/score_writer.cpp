#include "score/score_writer.h"

#include <algorithm>
#include <numeric>

#include "platform/text.h"

namespace ts5 {
namespace {

constexpr std::string_view kMagicAndVersion = "stv3-v";
constexpr std::uint8_t kPlainForm = 1;
constexpr std::uint32_t kNoFrame = 1;

void WriteBlob(ByteWriter& out, ByteView bytes) {
  WriteCompactUnsigned(out, static_cast<std::uint32_t>(bytes.size()));
  out.Append(bytes);
}

void WriteText(ByteWriter& out, std::string_view text) {
  const std::string bytes = Windows1252FromUtf8(text);
  WriteBlob(out, AsBytes(bytes));
}

void WriteDrawings(ByteWriter& out, const std::vector<DrawingItem>& items);

void WriteDrawingField(ByteWriter& out, char field, const DrawingItem& item) {
  switch (field) {
    case 'h':
      out.Fill(5, 0);
      out.U16Le(item.span);
      break;
    case '1':
    case '2':
    case '4':
      out.Fill(static_cast<std::size_t>(field - '0'), 0);
      break;
    case 'v':
      out.U8(item.value);
      break;
    case 't':
      WriteBlob(out, item.text);
      break;
    case 'n':
      WriteDrawings(out, item.nested);
      break;
    case 'f':
    case 'o':
      out.U8(kNoFrame);  // which is the form without further bytes, too
      break;
    default:
      out.U8(0);  // an empty value, colour, blob or list
  }
}

void WriteDrawings(ByteWriter& out, const std::vector<DrawingItem>& items) {
  WriteCompactUnsigned(out, static_cast<std::uint32_t>(items.size()));
  for (const DrawingItem& item : items) {
    out.U8(item.kind);
    if (item.kind >= kDrawingFields.size()) continue;
    for (const char field : kDrawingFields[item.kind]) WriteDrawingField(out, field, item);
  }
}

std::uint8_t Bits(std::initializer_list<bool> bits) {
  unsigned value = 0;
  unsigned shift = 0;
  for (const bool bit : bits) value |= static_cast<unsigned>(bit) << shift++;
  return static_cast<std::uint8_t>(value);
}

void WriteGroupHeader(ByteWriter& out, const ScoreItem& item) {
  const ScoreGroup& group = item.group;
  const bool tuplet = group.tuplet.number != 0;
  out.U8(static_cast<std::uint8_t>(group.dots | group.flags));
  out.U8(static_cast<std::uint8_t>(group.durationCode | (tuplet ? 0x20 : 0) |
                                   (item.drawings.empty() ? 0 : 0x40)));
  if (tuplet) {
    out.U8(static_cast<std::uint8_t>(group.tuplet.number | (group.tuplet.compound ? 0x10 : 0) |
                                     (group.tuplet.doubled ? 0x20 : 0)));
  }
  if (!item.drawings.empty()) WriteDrawings(out, item.drawings);
}

void WriteRest(ByteWriter& out, const ScoreItem& item) {
  WriteGroupHeader(out, item);
  out.U8(item.group.wholeBars > 0 ? 1 : 0);
  if (item.group.wholeBars > 0) WriteCompactUnsigned(out, item.group.wholeBars);
}

void WriteLyrics(ByteWriter& out, const std::vector<LyricItem>& lyrics) {
  WriteCompactUnsigned(out, static_cast<std::uint32_t>(lyrics.size()));
  for (const LyricItem& verse : lyrics) {
    out.U8(verse.syllable.empty() ? 0 : 1);
    if (verse.syllable.empty()) continue;
    out.U8(static_cast<std::uint8_t>((verse.flags & 6) | 8));
    WriteText(out, verse.syllable);
  }
}

void WriteChord(ByteWriter& out, const ScoreItem& item) {
  const ScoreGroup& group = item.group;
  WriteGroupHeader(out, item);
  const bool played = group.graceForm != 0 || group.articulation != 0;
  const bool tied = group.tieFromBefore || group.tieOnward;
  out.U8(Bits({false, false, false, played, tied, false, !item.lyrics.empty()}));
  if (played) {
    out.U8(group.graceForm);
    out.U8(group.articulation);
  }
  if (tied) out.U8(Bits({group.tieFromBefore, group.tieOnward}));
  if (!item.lyrics.empty()) WriteLyrics(out, item.lyrics);
  WriteCompactUnsigned(out, static_cast<std::uint32_t>(group.notes.size()));
  for (const ScoreNote& note : group.notes) {
    out.U8(static_cast<std::uint8_t>(note.position & 0x7F));
    out.U8(static_cast<std::uint8_t>(note.value | (note.accidental + 2) << 3));
  }
}

void WriteTime(ByteWriter& out, ScoreTimeSignature time) {
  out.U16Le(time.numerator);
  out.U8(static_cast<std::uint8_t>(time.power + 1));
}

void WriteItem(ByteWriter& out, const ScoreItem& item) {
  out.U8(item.kind);
  WriteBlob(out, item.parameters);
  const auto kind = static_cast<ObjectKind>(item.kind);
  if (kind == ObjectKind::Rest) return WriteRest(out, item);
  if (kind == ObjectKind::Chord || kind == ObjectKind::ChordVariant) return WriteChord(out, item);
  out.U8(0);  // black
  if (kind == ObjectKind::Clef)
    out.U8(static_cast<std::uint8_t>(item.clef.form | item.clef.line << 3 | item.clef.octave << 6));
  if (kind == ObjectKind::Key) out.U8(static_cast<std::uint8_t>(item.key + 7));
  if (kind == ObjectKind::Time) WriteTime(out, item.time);
  if (kind == ObjectKind::BarLine) out.U8(item.barLine);
}

void WriteSystem(ByteWriter& out, const SystemItems& system) {
  out.U8('S');
  out.Fill(4, 0);
  WriteCompactUnsigned(out, system.tempo);
  out.Fill(3, 0);  // colour, blob, a byte
  WriteCompactUnsigned(out, static_cast<std::uint32_t>(system.staves.size()));
  for (const StaffItems& staff : system.staves) {
    out.U8('V');
    WriteTime(out, staff.time);
    out.U8(staff.layout);
    out.Fill(4, 0);  // two values, colour, blob
    WriteCompactUnsigned(out, static_cast<std::uint32_t>(staff.voices.size()));
    for (const VoiceItems& voice : staff.voices) {
      out.U8('C');
      out.Fill(2, 0);
      out.U8(kNoFrame);
      out.Fill(2, 0);  // a byte, blob
      WriteCompactUnsigned(out, static_cast<std::uint32_t>(voice.size()));
      for (const ScoreItem& item : voice) WriteItem(out, item);
    }
  }
}

void WriteStaff(ByteWriter& out, const StaffLayout& staff) {
  out.U8(0);
  out.U8(kPlainForm);
  out.U8(0);
  WriteCompactSigned(out, staff.spacing);
  out.Fill(5, 0);  // two values, three bytes
  out.U8(staff.usesNoteMap ? 5 : 0);
  if (staff.usesNoteMap) {
    out.U8(0);
    out.U8(static_cast<std::uint8_t>(staff.noteMap.size()));
    out.Append(staff.noteMap);
  }
  WriteCompactSigned(out, staff.sound);
  WriteCompactSigned(out, staff.volume);
  WriteCompactSigned(out, staff.transpose);
  WriteText(out, staff.name);
  out.Fill(4, 0);
}

ScoreItem Item(ObjectKind kind) {
  ScoreItem item;
  item.kind = static_cast<std::uint8_t>(kind);
  return item;
}

}  // namespace

void WriteCompactUnsigned(ByteWriter& out, std::uint32_t value) {
  if (value < 254) {
    out.U8(static_cast<std::uint8_t>(value));
  } else if (value <= UINT16_MAX) {
    out.U8(254);
    out.U16Le(static_cast<std::uint16_t>(value));
  } else {
    out.U8(255);
    out.U32Le(value);
  }
}

void WriteCompactSigned(ByteWriter& out, std::int32_t value) {
  if (value > INT8_MIN && value < INT8_MAX) {
    out.U8(static_cast<std::uint8_t>(value));
  } else if (value > 0 && value <= UINT16_MAX) {
    out.U8(0x80);
    out.U16Le(static_cast<std::uint16_t>(value));
  } else {
    out.U8(0x7F);
    out.U32Le(static_cast<std::uint32_t>(value));
  }
}

Bytes WriteScore(const ScoreDocument& score) {
  ByteWriter out;
  out.Append(kMagicAndVersion);
  out.Fill(2, 0);
  WriteText(out, score.author);
  WriteText(out, score.keywords);
  WriteText(out, score.comment);
  out.Fill(2, 0);
  out.U8(score.landscape ? 0x10 : 0);
  WriteCompactSigned(out, score.systemSpacing);
  out.Fill(8, 0);  // three values, four bytes, a value
  out.U8(kNoFrame);
  WriteCompactUnsigned(out, static_cast<std::uint32_t>(score.staves.size()));
  for (const StaffLayout& staff : score.staves) WriteStaff(out, staff);
  out.U8(0);       // pairs
  out.Fill(4, 0);  // four bytes
  out.U8(0);       // parameters
  WriteDrawings(out, {});
  WriteCompactUnsigned(out, static_cast<std::uint32_t>(score.gallery.size()));
  for (const Bytes& object : score.gallery) WriteBlob(out, object);
  WriteChord(out, ChordItem(2, {ScoreNote{}}));
  out.Fill(4, 0);
  out.U8(kNoFrame);
  out.Fill(5, 0);  // five values
  WriteCompactUnsigned(out, static_cast<std::uint32_t>(score.systems.size()));
  for (const SystemItems& system : score.systems) WriteSystem(out, system);
  return out.Release();
}

DrawingItem TextDrawing(std::string_view symbols) {
  DrawingItem item;
  item.kind = static_cast<std::uint8_t>(DrawingKind::Text);
  const ByteView bytes = AsBytes(symbols);
  item.text.assign(bytes.begin(), bytes.end());
  return item;
}

DrawingItem HairpinDrawing(std::uint16_t span, bool diminuendo) {
  DrawingItem item;
  item.kind = static_cast<std::uint8_t>(DrawingKind::Hairpin);
  item.span = span;
  item.value = diminuendo ? 0x80 : 0;
  return item;
}

DrawingItem VoltaDrawing(std::uint8_t number) {
  DrawingItem item;
  item.kind = static_cast<std::uint8_t>(DrawingKind::Volta);
  item.value = static_cast<std::uint8_t>(number << 4 | number);
  return item;
}

DrawingItem CurveDrawing(std::uint16_t span) {
  DrawingItem item;
  item.kind = static_cast<std::uint8_t>(DrawingKind::FourPointCurve);
  item.span = span;
  return item;
}

ScoreItem ClefItem(std::uint8_t form, std::uint8_t octave) {
  ScoreItem item = Item(ObjectKind::Clef);
  item.clef = {form, 0, octave};
  return item;
}

ScoreItem KeyItem(int sharps) {
  ScoreItem item = Item(ObjectKind::Key);
  item.key = sharps;
  return item;
}

ScoreItem TimeItem(std::uint16_t numerator, std::int16_t power) {
  ScoreItem item = Item(ObjectKind::Time);
  item.time = {numerator, power};
  return item;
}

ScoreItem BarItem(std::uint8_t type) {
  ScoreItem item = Item(ObjectKind::BarLine);
  item.barLine = type;
  return item;
}

ScoreItem RestItem(std::uint8_t durationCode, std::uint8_t dots) {
  ScoreItem item = Item(ObjectKind::Rest);
  item.group.isRest = true;
  item.group.durationCode = durationCode;
  item.group.dots = dots;
  return item;
}

ScoreItem WholeBarRest(std::uint32_t bars) {
  ScoreItem item = RestItem(0);
  item.group.wholeBars = bars;
  return item;
}

ScoreItem ChordItem(std::uint8_t durationCode, const std::vector<ScoreNote>& notes, std::uint8_t dots) {
  ScoreItem item = Item(ObjectKind::Chord);
  item.group.durationCode = durationCode;
  item.group.dots = dots;
  item.group.notes = notes;
  return item;
}

}  // namespace ts5
