// Audio attributes: what a file says about the music in it. Names and types are those of Windows Media; every
// other format stores them in its own fields, see attribute_names.h.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ts5::tags {

enum class AttributeType : std::uint8_t {
  DWord = 0,
  String = 1,
  Binary = 2,
  Bool = 3,
  QWord = 4,
  Word = 5,
  Guid = 6,
};

struct Attribute {
  AttributeType type = AttributeType::String;
  std::string name;
  // Texts in UTF-8, numbers in decimal, truth as "1" and "0", binary values and GUIDs as their bytes. Empty:
  // the attribute has no value.
  std::string value;
  bool readOnly = false;  // it describes the file
  bool selected = false;  // it is to be written

  [[nodiscard]] bool HasValue() const { return !value.empty(); }
  [[nodiscard]] bool ToBeWritten() const { return selected && !readOnly && HasValue(); }
  friend bool operator==(const Attribute&, const Attribute&) = default;
};
using Attributes = std::vector<Attribute>;

// Texts and binary values hold at most so many bytes (texts as UTF-16 with their end), names so many
// characters.
inline constexpr std::size_t kMostAttributeBytes = 65535;
inline constexpr std::size_t kMostAttributeName = 67;

[[nodiscard]] constexpr bool IsBinary(AttributeType type) {
  return type == AttributeType::Binary || type == AttributeType::Guid;
}

// A value as it was typed or stored, in the form that Attribute keeps: nothing when it does not fit the type.
// Truth may be "1", "0", "true", "false", "ja", "nein". Binary types take no text. An empty text is no value.
[[nodiscard]] std::optional<std::string> ValueFromText(AttributeType type, std::string_view text);

// How many bytes the value takes in Windows Media.
[[nodiscard]] std::size_t AttributeLength(const Attribute& attribute);

// As users read it: "Ja" and "Nein", a date for times of encoding, a GUID in its groups; see the text table
// for what cannot be shown.
[[nodiscard]] std::string DisplayValue(const Attribute& attribute);
// As comments and items of other formats hold it: "true" and "false", the rest as it is kept.
[[nodiscard]] std::string CommentValue(const Attribute& attribute);

// Moments of "WM/EncodingTime": 100 nanoseconds since 1601, UTC.
[[nodiscard]] std::int64_t UnixSecondsOf(std::uint64_t fileTime);
[[nodiscard]] std::uint64_t FileTimeOf(std::int64_t unixSeconds);

[[nodiscard]] Attribute* FindAttribute(Attributes& attributes, std::string_view name);
[[nodiscard]] const Attribute* FindAttribute(const Attributes& attributes, std::string_view name);

// What this system writes into every file that it encodes.
[[nodiscard]] Attributes FixedAttributes();

}  // namespace ts5::tags
