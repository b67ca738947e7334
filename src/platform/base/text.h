// Texts: UTF-8 inside, Windows-1252 in 8-bit files, comparing without regard to case, printf formats.
#pragma once

#include <compare>
#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace ts5 {

// Windows-1252 and back. Bytes without a character in the code page (81, 8D, 8F, 90, 9D) stand for the
// control characters of the same number, so that every 8-bit text survives the round trip. A character
// that has no place in the code page, and every byte that is not UTF-8, becomes '?'.
[[nodiscard]] std::string Utf8FromWindows1252(std::string_view text);
[[nodiscard]] std::string Windows1252FromUtf8(std::string_view text);

// UTF-16 without its mark; a lone surrogate becomes U+FFFD in UTF-8.
[[nodiscard]] std::string Utf8FromUtf16(std::u16string_view text);
[[nodiscard]] std::u16string Utf16FromUtf8(std::string_view text);

[[nodiscard]] bool IsUtf8(std::string_view text);

// Number of characters (code points) of UTF-8 text, and its first count characters, never cut inside one.
[[nodiscard]] std::size_t CharacterCount(std::string_view text);
[[nodiscard]] std::string_view FirstCharacters(std::string_view text, std::size_t count);

// Case mapping of all letters of Windows-1252 (Latin, with umlauts and accents); others stay.
[[nodiscard]] std::string ToLower(std::string_view text);
[[nodiscard]] std::string ToUpper(std::string_view text);

// Order and equality without regard to case, as ToLower maps it.
[[nodiscard]] std::weak_ordering CompareIgnoringCase(std::string_view a, std::string_view b);
[[nodiscard]] bool EqualsIgnoringCase(std::string_view a, std::string_view b);
struct LessIgnoringCase {
  using is_transparent = void;
  bool operator()(std::string_view a, std::string_view b) const { return CompareIgnoringCase(a, b) < 0; }
};

[[nodiscard]] std::vector<std::string_view> Split(std::string_view text, char separator);
[[nodiscard]] std::string_view Trim(std::string_view text);  // blanks, tabs and line ends

// Whole decimal numbers, whatever the locale: nothing when the text holds anything else or overflows.
[[nodiscard]] std::optional<std::int64_t> ParseInteger(std::string_view text);
[[nodiscard]] std::optional<double> ParseNumber(std::string_view text);
// As the C library's atoi reads: leading blanks, an optional sign, digits up to the first other character;
// 0 without digits, clamped to 32 bits.
[[nodiscard]] std::int32_t LeadingInteger(std::string_view text);

// One value for a printf format.
class FormatArgument {
 public:
  template <std::integral T>
  FormatArgument(T value) {  // NOLINT(google-explicit-constructor): arguments are passed as they are
    if constexpr (std::is_signed_v<T>) {
      value_ = static_cast<long long>(value);
    } else {
      value_ = static_cast<unsigned long long>(value);
    }
  }
  FormatArgument(char value) : value_(value) {}              // NOLINT(google-explicit-constructor)
  FormatArgument(double value) : value_(value) {}            // NOLINT(google-explicit-constructor)
  FormatArgument(std::string_view value) : value_(value) {}  // NOLINT(google-explicit-constructor)
  FormatArgument(const std::string& value) : value_(std::string_view(value)) {}  // NOLINT
  FormatArgument(const char* value) : value_(std::string_view(value)) {}         // NOLINT

  [[nodiscard]] const auto& Value() const { return value_; }

 private:
  std::variant<long long, unsigned long long, double, char, std::string_view> value_;
};

// A printf format filled in, checked at run time: %i %u %x %c %s %f with flags, width and precision. An
// argument that does not fit its format never crashes: the text comes back unfilled, and TakeFormatFaults()
// counts it (the tests' listener fails on any).
[[nodiscard]] std::string FormatPrintf(std::string_view format,
                                       std::initializer_list<FormatArgument> arguments);

template <typename... Arguments>
[[nodiscard]] std::string Format(std::string_view format, const Arguments&... arguments) {
  return FormatPrintf(format, {FormatArgument(arguments)...});
}
[[nodiscard]] std::uint64_t TakeFormatFaults();  // since the last call

}  // namespace ts5
