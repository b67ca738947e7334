#include "platform/base/text.h"

#include <fmt/args.h>
#include <fmt/printf.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <charconv>
#include <cstring>
#include <limits>

#include "platform/base/casts.h"

namespace ts5 {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

// The 32 characters of Windows-1252 that are not those of Latin-1.
constexpr std::array<char16_t, 32> kHighControls = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

void AppendUtf8(std::string& out, char32_t c) {
  if (c < 0x80) {
    out += static_cast<char>(c);
  } else if (c < 0x800) {
    out += static_cast<char>(0xC0 | c >> 6);
    out += static_cast<char>(0x80 | (c & 0x3F));
  } else if (c < 0x10000) {
    out += static_cast<char>(0xE0 | c >> 12);
    out += static_cast<char>(0x80 | (c >> 6 & 0x3F));
    out += static_cast<char>(0x80 | (c & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | c >> 18);
    out += static_cast<char>(0x80 | (c >> 12 & 0x3F));
    out += static_cast<char>(0x80 | (c >> 6 & 0x3F));
    out += static_cast<char>(0x80 | (c & 0x3F));
  }
}

struct Decoded {
  char32_t character;
  std::size_t length;  // bytes taken
  bool valid;
};

// The character at the start of non-empty text. A byte that starts none counts alone.
Decoded DecodeUtf8(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char first = byte(0);
  if (first < 0x80) return {first, 1, true};
  const std::size_t length = first >= 0xF0 && first < 0xF5   ? 4
                             : first >= 0xE0 && first < 0xF0 ? 3
                             : first >= 0xC2 && first < 0xE0 ? 2
                                                             : 0;
  if (length == 0 || length > text.size()) return {kReplacement, 1, false};
  char32_t c = first & (0xFFU >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return {kReplacement, 1, false};
    c = c << 6 | (byte(i) & 0x3F);
  }
  constexpr std::array<char32_t, 5> kLeast = {0, 0, 0x80, 0x800, 0x10000};
  if (c < kLeast[length] || c > 0x10FFFF || (c >= 0xD800 && c < 0xE000)) return {kReplacement, 1, false};
  return {c, length, true};
}

template <typename Visit>
void ForEachCharacter(std::string_view text, Visit visit) {
  while (!text.empty()) {
    const Decoded decoded = DecodeUtf8(text);
    visit(decoded);
    text.remove_prefix(decoded.length);
  }
}

char32_t Lower(char32_t c) {
  if (c < 0x80) return c >= 'A' && c <= 'Z' ? c + 32 : c;
  if (c >= 0xC0 && c <= 0xDE && c != 0xD7) return c + 32;
  if (c == 0x160 || c == 0x152 || c == 0x17D) return c + 1;
  return c == 0x178 ? 0xFF : c;
}

char32_t Upper(char32_t c) {
  if (c < 0x80) return c >= 'a' && c <= 'z' ? c - 32 : c;
  if (c >= 0xE0 && c <= 0xFE && c != 0xF7) return c - 32;
  if (c == 0x161 || c == 0x153 || c == 0x17E) return c - 1;
  return c == 0xFF ? 0x178 : c;
}

// Maps every character; bytes that are not UTF-8 stay as they are.
template <typename Map>
std::string MapCharacters(std::string_view text, Map map) {
  std::string out;
  out.reserve(text.size());
  while (!text.empty()) {
    const Decoded decoded = DecodeUtf8(text);
    if (decoded.valid) {
      AppendUtf8(out, map(decoded.character));
    } else {
      out += text.front();
    }
    text.remove_prefix(decoded.length);
  }
  return out;
}

// The next character in lower case, for comparing; bytes that are not UTF-8 sort behind all characters.
char32_t TakeLower(std::string_view& text) {
  const auto first = static_cast<unsigned char>(text.front());
  if (first < 0x80) {
    text.remove_prefix(1);
    return Lower(first);
  }
  const Decoded decoded = DecodeUtf8(text);
  text.remove_prefix(decoded.length);
  return decoded.valid ? Lower(decoded.character) : 0x110000 + first;
}

std::atomic<std::uint64_t> formatFaults{0};

}  // namespace

std::string Utf8FromWindows1252(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (const char ch : text) {
    const auto byte = static_cast<unsigned char>(ch);
    AppendUtf8(out, byte >= 0x80 && byte < 0xA0 ? char32_t{kHighControls[byte - 0x80U]} : char32_t{byte});
  }
  return out;
}

std::string Windows1252FromUtf8(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  ForEachCharacter(text, [&](const Decoded& decoded) {
    const char32_t c = decoded.character;
    if (c < 0x80 || (c >= 0xA0 && c <= 0xFF)) {
      out += static_cast<char>(c);
      return;
    }
    const auto* const found =
        std::ranges::find(kHighControls, c, [](char16_t known) { return char32_t{known}; });
    out += found == kHighControls.end() ? '?' : static_cast<char>(0x80 + (found - kHighControls.begin()));
  });
  return out;
}

std::string Utf8FromUtf16(std::u16string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t c = text[i];
    if (c >= 0xD800 && c < 0xE000) {
      const bool pair = c < 0xDC00 && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000;
      c = pair ? 0x10000 + ((c - 0xD800) << 10) + (text[++i] - 0xDC00U) : kReplacement;
    }
    AppendUtf8(out, c);
  }
  return out;
}

std::u16string Utf16FromUtf8(std::string_view text) {
  std::u16string out;
  out.reserve(text.size());
  ForEachCharacter(text, [&](const Decoded& decoded) {
    const char32_t c = decoded.character;
    if (c < 0x10000) {
      out += static_cast<char16_t>(c);
    } else {
      out += static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
      out += static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
    }
  });
  return out;
}

bool IsUtf8(std::string_view text) {
  while (!text.empty()) {
    // Most texts are ASCII nearly throughout, of which many bytes are looked at together.
    std::array<std::uint64_t, 4> together{};
    if (text.size() >= sizeof(together)) {
      std::memcpy(together.data(), text.data(), sizeof(together));
      if (((together[0] | together[1] | together[2] | together[3]) & 0x8080808080808080U) == 0) {
        text.remove_prefix(sizeof(together));
        continue;
      }
    }
    const Decoded decoded = DecodeUtf8(text);
    if (!decoded.valid) return false;
    text.remove_prefix(decoded.length);
  }
  return true;
}

std::size_t CharacterCount(std::string_view text) {
  std::size_t count = 0;
  ForEachCharacter(text, [&](const Decoded&) { ++count; });
  return count;
}

std::string_view FirstCharacters(std::string_view text, std::size_t count) {
  std::size_t length = 0;
  while (count-- > 0 && length < text.size()) length += DecodeUtf8(text.substr(length)).length;
  return text.substr(0, length);
}

std::string ToLower(std::string_view text) {
  return MapCharacters(text, Lower);
}
std::string ToUpper(std::string_view text) {
  return MapCharacters(text, Upper);
}

std::weak_ordering CompareIgnoringCase(std::string_view a, std::string_view b) {
  // Equal beginnings need no decoding, up to the last character that cannot have been cut.
  auto equal = static_cast<std::size_t>(
      std::mismatch(a.begin(), a.begin() + static_cast<std::ptrdiff_t>(std::min(a.size(), b.size())),
                    b.begin())
          .first -
      a.begin());
  while (equal > 0 && static_cast<unsigned char>(a[equal - 1]) >= 0x80) --equal;
  a.remove_prefix(equal);
  b.remove_prefix(equal);
  while (!a.empty() && !b.empty()) {
    if (const auto order = TakeLower(a) <=> TakeLower(b); order != 0) return order;
  }
  return a.size() <=> b.size();
}

bool EqualsIgnoringCase(std::string_view a, std::string_view b) {
  return CompareIgnoringCase(a, b) == 0;
}

std::vector<std::string_view> Split(std::string_view text, char separator) {
  std::vector<std::string_view> parts;
  std::size_t start = 0;
  for (std::size_t end = text.find(separator); end != std::string_view::npos;
       end = text.find(separator, start)) {
    parts.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  parts.push_back(text.substr(start));
  return parts;
}

std::string_view Trim(std::string_view text) {
  constexpr std::string_view kBlank = " \t\r\n";
  const std::size_t first = text.find_first_not_of(kBlank);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlank) - first + 1);
}

namespace {

template <typename Number>
std::optional<Number> ParseWhole(std::string_view text) {
  Number value{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  return value;
}

}  // namespace

std::optional<std::int64_t> ParseInteger(std::string_view text) {
  return ParseWhole<std::int64_t>(text);
}
std::optional<double> ParseNumber(std::string_view text) {
  return ParseWhole<double>(text);
}

std::int32_t LeadingInteger(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  const bool negative = !text.empty() && text.front() == '-';
  if (negative || (!text.empty() && text.front() == '+')) text.remove_prefix(1);
  std::int64_t value = 0;
  for (const char c : text) {
    if (c < '0' || c > '9') break;
    value = std::min<std::int64_t>(value * 10 + (c - '0'), std::int64_t{1} << 32);
  }
  return ClampTo<std::int32_t>(negative ? -value : value);
}

std::string FormatPrintf(std::string_view format, std::initializer_list<FormatArgument> arguments) {
  fmt::dynamic_format_arg_store<fmt::printf_context> store;
  for (const FormatArgument& argument : arguments) {
    std::visit([&](const auto& value) { store.push_back(value); }, argument.Value());
  }
  try {
    return fmt::vsprintf(fmt::string_view(format.data(), format.size()), store);
  } catch (const fmt::format_error&) {
    formatFaults.fetch_add(1);
    return std::string(format);
  }
}

std::uint64_t TakeFormatFaults() {
  return formatFaults.exchange(0);
}

}  // namespace ts5
