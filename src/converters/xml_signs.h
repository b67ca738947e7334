// The signs of MusicXML and what they are in a document: one table for the reader and the writer.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "score/score_document.h"

namespace ts5::converters {

// Where MusicXML has a sign.
enum class SignGroup : std::uint8_t { Articulation, Ornament, Technical, Notation, Direction };

// Bits of the object mask (XMLConvProps): what a conversion takes along. Notes, endings and special bar lines
// always are.
inline constexpr std::uint32_t kMaskArticulations = 0x01;
inline constexpr std::uint32_t kMaskDynamics = 0x02;
inline constexpr std::uint32_t kMaskHairpins = 0x04;
inline constexpr std::uint32_t kMaskSlurs = 0x08;
inline constexpr std::uint32_t kMaskOrnaments = 0x10;
inline constexpr std::uint32_t kMaskLyrics = 0x20;
inline constexpr std::uint32_t kMaskTexts = 0x40;
inline constexpr std::uint32_t kMaskAll = 0x7F;

struct XmlSign {
  std::string_view name;  // MusicXML's
  SignGroup group;
  std::string_view symbols = {};  // how score files write it, "" they cannot
  std::uint8_t articulation = 0;  // or by this code of the chord
};
// The sign of that name; nullptr for one that is not in the table.
[[nodiscard]] const XmlSign* FindSign(std::string_view name, SignGroup group);
// In any group.
[[nodiscard]] const XmlSign* FindSign(std::string_view name);
// The sign of an articulation code (1..8).
[[nodiscard]] const XmlSign* SignOfArticulation(std::uint8_t code);

struct XmlDynamic {
  std::string_view name;
  std::string_view symbols;
  bool exact = true;  // false: the nearest that score files have
};
[[nodiscard]] const XmlDynamic* FindDynamic(std::string_view name);
// The name for what a text in the symbol font says; "" for other texts.
[[nodiscard]] std::string_view DynamicOfSymbols(std::string_view symbols);

// The bit of the mask that a drawing belongs to; 0 for one that is always taken along.
[[nodiscard]] std::uint32_t MaskBitOf(const DrawingItem& drawing);

}  // namespace ts5::converters
