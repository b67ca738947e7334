#include "score/score_writer.h"

#include <algorithm>
#include <numeric>

#include "platform/base/strings.h"
#include "platform/base/text.h"
#include "score/score_records.h"
#include "score/texts.h"

namespace ts5 {
namespace {

void Zeros(ByteWriter& out, int count) {
  for (int i = 0; i < count; ++i) out.U8(0);
}

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

std::uint32_t DrawingCount(const std::vector<DrawingItem>& items) {
  const auto beyond = std::ranges::count_if(items, IsBeyondScoreFile);
  return static_cast<std::uint32_t>(items.size() - static_cast<std::size_t>(beyond));
}

void WriteDrawingField(ByteWriter& out, char field, const DrawingItem& item) {
  switch (field) {
    case 'h':
      Zeros(out, 5);
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
  WriteCompactUnsigned(out, DrawingCount(items));
  for (const DrawingItem& item : items) {
    if (IsBeyondScoreFile(item)) continue;
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
  const bool drawn = DrawingCount(item.drawings) > 0;
  out.U8(static_cast<std::uint8_t>(group.dots | group.flags));
  out.U8(static_cast<std::uint8_t>(group.durationCode | (tuplet ? 0x20 : 0) | (drawn ? 0x40 : 0)));
  if (tuplet) {
    out.U8(static_cast<std::uint8_t>(group.tuplet.number | (group.tuplet.compound ? 0x10 : 0) |
                                     (group.tuplet.doubled ? 0x20 : 0)));
  }
  if (drawn) WriteDrawings(out, item.drawings);
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

void WriteItemFields(ByteWriter& out, const ScoreItem& item) {
  out.U8(item.kind);
  WriteBlob(out, item.IsGroup() ? WithBeams(item.parameters, item.beams) : item.parameters);
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

void WriteStaffItems(ByteWriter& out, const StaffItems& staff) {
  out.Append(RecordToWrite(staff));
  for (std::size_t v = 0; v < staff.voices.size(); ++v) {
    const VoiceItems& voice = staff.voices[v];
    out.Append(RecordToWrite(v < staff.voiceRecords.size() ? ByteView(staff.voiceRecords[v]) : ByteView(),
                             static_cast<std::uint32_t>(voice.size())));
    for (const ScoreItem& item : voice) out.Append(RecordToWrite(item));
  }
}

void WriteStaff(ByteWriter& out, const StaffLayout& staff) {
  out.U8(0);
  out.U8(kPlainForm);
  out.U8(0);
  WriteCompactSigned(out, staff.spacing);
  Zeros(out, 5);  // two values, three bytes
  out.U8(staff.usesNoteMap ? 5 : 0);
  if (staff.usesNoteMap) {
    out.U8(0);
    out.U8(static_cast<std::uint8_t>(staff.noteMap.size()));
    out.Append(staff.noteMap);
  }
  WriteCompactSigned(out, staff.sound);
  WriteCompactSigned(out, staff.volume);
  WriteCompactSigned(out, staff.transpose);
  WriteText(out, staff.name == Text(texts::ScoreStaffUnnamed) ? std::string_view() : staff.name);
  Zeros(out, 4);
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

Bytes ItemRecord(const ScoreItem& item) {
  ByteWriter out;
  WriteItemFields(out, item);
  return out.Release();
}

Bytes SystemRecord(const SystemItems& system) {
  ByteWriter out;
  out.U8('S');
  Zeros(out, 4);
  WriteCompactUnsigned(out, system.tempo);
  Zeros(out, 3);  // colour, blob, a byte
  WriteCompactUnsigned(out, static_cast<std::uint32_t>(system.staves.size()));
  return out.Release();
}

Bytes StaffRecord(const StaffItems& staff) {
  ByteWriter out;
  out.U8('V');
  WriteTime(out, staff.time);
  out.U8(staff.layout);
  Zeros(out, 4);  // two values, colour, blob
  WriteCompactUnsigned(out, static_cast<std::uint32_t>(staff.voices.size()));
  return out.Release();
}

Bytes VoiceRecord(std::uint32_t objects) {
  ByteWriter out;
  out.U8('C');
  Zeros(out, 2);
  out.U8(kNoFrame);
  Zeros(out, 2);  // a byte, blob
  WriteCompactUnsigned(out, objects);
  return out.Release();
}

namespace {

void WriteParameterBlock(ByteWriter& out, const ScorePageLayout& page) {
  if (!page.given) return out.U8(0);
  const Bytes item = PageItem(page);
  WriteCompactUnsigned(out, static_cast<std::uint32_t>(item.size() + 2));
  out.U8(kPageItem);
  out.U8(static_cast<std::uint8_t>(item.size()));
  out.Append(item);
}

}  // namespace

Bytes InformationRecord(const ScoreDocument& score) {
  ByteWriter out;
  out.Append(kMagicAndVersion);
  Zeros(out, 2);
  WriteText(out, score.author);
  WriteText(out, score.keywords);
  WriteText(out, score.comment);
  Zeros(out, 2);
  out.U8(score.landscape ? 0x10 : 0);
  WriteCompactSigned(out, score.systemSpacing);
  Zeros(out, 8);  // three values, four bytes, a value
  out.U8(kNoFrame);
  WriteCompactUnsigned(out, static_cast<std::uint32_t>(score.staves.size()));
  for (const StaffLayout& staff : score.staves) WriteStaff(out, staff);
  out.U8(0);      // pairs
  Zeros(out, 4);  // four bytes
  WriteParameterBlock(out, score.page);
  WriteDrawings(out, {});
  WriteCompactUnsigned(out, static_cast<std::uint32_t>(score.gallery.size()));
  for (const Bytes& object : score.gallery) WriteBlob(out, object);
  WriteChord(out, ChordItem(2, {ScoreNote{}}));
  Zeros(out, 4);
  out.U8(kNoFrame);
  Zeros(out, 5);  // five values
  WriteCompactUnsigned(out, static_cast<std::uint32_t>(score.systems.size()));
  return out.Release();
}

Bytes WriteScore(const ScoreDocument& score) {
  ByteWriter out;
  out.Append(RecordToWrite(score));
  for (const SystemItems& system : score.systems) {
    out.Append(RecordToWrite(system));
    for (const StaffItems& staff : system.staves) WriteStaffItems(out, staff);
  }
  out.Append(score.tail);
  return out.Release();
}

}  // namespace ts5
