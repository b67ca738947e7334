// The body of a score of the current format: systems, their staves, their voices, and the objects in these.
//
//   ScoreSource in(file, info.bodyOffset);
//   const auto system = ReadSystemHeader(in);           // then system.staves times:
//   const auto staff = ReadStaffHeader(in);             // then staff.voices times:
//   const auto voice = ReadVoiceHeader(in);             // then voice.objects times:
//   const auto object = ReadObject(in);
//   if (!in.Ok()) ...                                   // a wrong mark, an invalid record, or the end
#pragma once

#include <cstdint>
#include <vector>

#include "platform/base/bytes.h"
#include "score/score_groups.h"
#include "score/score_source.h"

namespace ts5 {

enum class ObjectKind : std::uint8_t {
  Rest = 0,
  Chord = 1,
  Clef = 2,
  Key = 3,
  Time = 4,
  BarLine = 5,
  Other = 6,  // no data; so are all kinds above 7
  ChordVariant = 7,
};

enum class BarLineType : std::uint8_t { RepeatEnd = 3, RepeatStart = 4, RepeatBoth = 5 };

struct SystemHeader {
  std::uint32_t tempo = 0;  // quarter notes per minute, 0 not given
  std::uint32_t staves = 0;
};
struct StaffHeader {
  ScoreTimeSignature time;
  std::uint8_t layout = 0;  // index of its staff layout
  std::uint32_t voices = 0;
};
struct VoiceHeader {
  std::uint32_t objects = 0;
};
struct ScoreObject {
  std::uint8_t kind = 0;
  ByteView parameters;
  ScoreGroup group;          // Rest, Chord, ChordVariant
  ScoreClef clef;            // Clef
  int key = 0;               // Key: sharps, negative for flats
  ScoreTimeSignature time;   // Time
  std::uint8_t barLine = 0;  // BarLine: type 0..5

  [[nodiscard]] bool Is(ObjectKind wanted) const { return kind == static_cast<std::uint8_t>(wanted); }
  // A rest or chord that takes its time in the voice.
  [[nodiscard]] bool IsGroup() const { return Is(ObjectKind::Rest) || Is(ObjectKind::Chord); }
};

[[nodiscard]] SystemHeader ReadSystemHeader(ScoreSource& in);
[[nodiscard]] StaffHeader ReadStaffHeader(ScoreSource& in);
[[nodiscard]] VoiceHeader ReadVoiceHeader(ScoreSource& in);
// An object with its data.
[[nodiscard]] ScoreObject ReadObject(ScoreSource& in);

// The numbers that the object parameters hold.
[[nodiscard]] std::vector<float> ObjectValues(ByteView parameters);

}  // namespace ts5
