// Writes score files of the current format: the counterpart of the readers, from the same tables.
//
//   ScoreDocument score;
//   score.staves.push_back({.name = "Sopran", .sound = 52, .volume = 100});
//   score.systems.push_back({.tempo = 96, .staves = {{.voices = {{ClefItem(0), KeyItem(1), ...}}}}});
//   const Bytes file = WriteScore(score);
//
// Fields that carry no meaning here are written as zero, which every reader takes. Texts are UTF-8.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/bytes.h"
#include "score/score_drawings.h"
#include "score/score_groups.h"
#include "score/score_info.h"
#include "score/score_objects.h"

namespace ts5 {

struct DrawingItem {
  std::uint8_t kind = 0;
  std::uint16_t span = 0;                // in note groups, at most 4095
  Bytes text = {};                       // of a text, in the bytes of the symbol font
  std::uint8_t value = 0;                // of a hairpin (80 diminuendo) or a volta bracket
  std::vector<DrawingItem> nested = {};  // of a group; readers take kMaxDrawingDepth
};
[[nodiscard]] DrawingItem TextDrawing(std::string_view symbols);
[[nodiscard]] DrawingItem HairpinDrawing(std::uint16_t span, bool diminuendo);
[[nodiscard]] DrawingItem VoltaDrawing(std::uint8_t number);
[[nodiscard]] DrawingItem CurveDrawing(std::uint16_t span);

struct LyricItem {
  std::string syllable;    // "": the verse has none here
  std::uint8_t flags = 0;  // bits 1 and 2
};

struct ScoreItem {
  std::uint8_t kind = 0;
  Bytes parameters = {};
  ScoreGroup group = {};  // marks and lyrics are taken from the members below
  std::vector<DrawingItem> drawings = {};
  std::vector<LyricItem> lyrics = {};
  ScoreClef clef = {};
  int key = 0;
  ScoreTimeSignature time = {};
  std::uint8_t barLine = 0;
};
[[nodiscard]] ScoreItem ClefItem(std::uint8_t form, std::uint8_t octave = 1);
[[nodiscard]] ScoreItem KeyItem(int sharps);
[[nodiscard]] ScoreItem TimeItem(std::uint16_t numerator, std::int16_t power);
[[nodiscard]] ScoreItem BarItem(std::uint8_t type = 0);
[[nodiscard]] ScoreItem RestItem(std::uint8_t durationCode, std::uint8_t dots = 0);
[[nodiscard]] ScoreItem WholeBarRest(std::uint32_t bars = 1);
[[nodiscard]] ScoreItem ChordItem(std::uint8_t durationCode, const std::vector<ScoreNote>& notes,
                                  std::uint8_t dots = 0);

using VoiceItems = std::vector<ScoreItem>;
struct StaffItems {
  std::uint8_t layout = 0;
  ScoreTimeSignature time = {};
  std::vector<VoiceItems> voices = {};
};
struct SystemItems {
  std::uint32_t tempo = 0;
  std::vector<StaffItems> staves = {};
};

struct ScoreDocument {
  std::string author = {};
  std::string keywords = {};
  std::string comment = {};
  bool landscape = false;
  std::vector<StaffLayout> staves = {};
  std::int32_t systemSpacing = 0;
  std::vector<Bytes> gallery = {};
  std::vector<SystemItems> systems = {};
};

[[nodiscard]] Bytes WriteScore(const ScoreDocument& score);

// The encodings of single fields.
void WriteCompactUnsigned(ByteWriter& out, std::uint32_t value);
void WriteCompactSigned(ByteWriter& out, std::int32_t value);

}  // namespace ts5
