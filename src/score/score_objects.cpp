#include "score/score_objects.h"

#include <bit>

namespace ts5 {
namespace {

// The numerator has two bytes, of which the upper one is zero, or one alone; the denominator is never zero,
// which tells the two apart.
ScoreTimeSignature ReadTime(ScoreSource& in) {
  ScoreTimeSignature time;
  time.numerator = in.U8();
  std::uint8_t denominator = in.U8();
  if (denominator == 0) denominator = in.U8();
  time.power = static_cast<std::int16_t>((denominator & 0x7F) - 1);
  return time;
}

ScoreClef ReadClef(ScoreSource& in) {
  const std::uint8_t byte = in.U8();
  const ScoreClef clef{static_cast<std::uint8_t>(byte & 7), static_cast<std::uint8_t>(byte >> 3 & 7),
                       static_cast<std::uint8_t>(byte >> 6)};
  in.Require(clef.form <= 4 && clef.line <= 4 && clef.octave <= 2);
  return clef;
}

int ReadKey(ScoreSource& in) {
  const int key = in.U8() - 7;
  in.Require(key >= -7 && key <= 7);
  return key;
}

std::uint8_t ReadBarLine(ScoreSource& in) {
  const std::uint8_t type = in.U8() & 15;
  in.Require(type <= 5);
  return type;
}

void ReadData(ScoreSource& in, ScoreObject& object) {
  switch (static_cast<ObjectKind>(object.kind)) {
    case ObjectKind::Rest:
      object.group = ReadRest(in);
      break;
    case ObjectKind::Chord:
    case ObjectKind::ChordVariant:
      object.group = ReadChord(in);
      break;
    case ObjectKind::Clef:
      object.clef = ReadClef(in);
      break;
    case ObjectKind::Key:
      object.key = ReadKey(in);
      break;
    case ObjectKind::Time:
      object.time = ReadTime(in);
      break;
    case ObjectKind::BarLine:
      object.barLine = ReadBarLine(in);
      break;
    case ObjectKind::Other:
    default:
      break;
  }
}

}  // namespace

SystemHeader ReadSystemHeader(ScoreSource& in) {
  SystemHeader system;
  in.Require(in.U8() == 'S');
  (void)in.CompactSigned();
  in.Skip(3);
  system.tempo = in.CompactUnsigned();
  in.Colour();
  (void)in.Blob();
  in.Skip(1);
  system.staves = in.CompactUnsigned();
  return system;
}

StaffHeader ReadStaffHeader(ScoreSource& in) {
  StaffHeader staff;
  in.Require(in.U8() == 'V');
  staff.time = ReadTime(in);
  staff.layout = in.U8();
  (void)in.CompactSigned();
  (void)in.CompactSigned();
  in.Colour();
  (void)in.Blob();
  staff.voices = in.CompactUnsigned();
  return staff;
}

VoiceHeader ReadVoiceHeader(ScoreSource& in) {
  VoiceHeader voice;
  in.Require(in.U8() == 'C');
  in.Skip(2);
  in.Frame();
  in.Skip(1);
  (void)in.Blob();
  voice.objects = in.CompactUnsigned();
  return voice;
}

ScoreObject ReadObject(ScoreSource& in) {
  ScoreObject object;
  object.kind = in.U8();
  object.parameters = in.Blob();
  const bool coloured =
      !object.Is(ObjectKind::Rest) && !object.Is(ObjectKind::Chord) && !object.Is(ObjectKind::ChordVariant);
  if (coloured) in.Colour();
  if (in.Ok()) ReadData(in, object);
  return object;
}

std::vector<float> ObjectValues(ByteView parameters) {
  constexpr std::uint8_t kShort = 1;
  constexpr std::uint8_t kValues = 5;
  std::vector<float> values;
  ByteReader in(parameters);
  in.Skip(1);
  while (in.Ok() && !in.AtEnd()) {
    const std::uint8_t type = in.U8();
    const std::uint8_t length = in.U8();
    ByteReader item(in.Take(type == kShort ? 2 : length));
    if (type != kValues) continue;
    while (item.Remaining() >= 4) values.push_back(std::bit_cast<float>(item.U32Le()));
  }
  return values;
}

}  // namespace ts5
