#include "audio/tags/attribute.h"

#include <algorithm>
#include <charconv>
#include <limits>

#include "audio/texts.h"
#include "platform/base/bytes.h"
#include "platform/base/clock.h"
#include "platform/base/text.h"

namespace ts5::tags {
namespace {

constexpr std::int64_t kSecondsFrom1601To1970 = 11644473600;
constexpr std::int64_t kTicksPerSecond = 10000000;
constexpr std::size_t kGuidSize = 16;

std::uint64_t MostOf(AttributeType type) {
  if (type == AttributeType::Word) return std::numeric_limits<std::uint16_t>::max();
  if (type == AttributeType::DWord) return std::numeric_limits<std::uint32_t>::max();
  return std::numeric_limits<std::uint64_t>::max();
}

std::optional<std::uint64_t> ParseUnsigned(std::string_view text) {
  std::uint64_t number = 0;
  const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (fault != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

std::optional<std::string> TruthFromText(std::string_view text) {
  for (const std::string_view word : {"1", "true", "ja"}) {
    if (EqualsIgnoringCase(text, word)) return "1";
  }
  for (const std::string_view word : {"0", "false", "nein"}) {
    if (EqualsIgnoringCase(text, word)) return "0";
  }
  return std::nullopt;
}

std::string GuidText(std::string_view bytes) {
  ByteReader in(AsBytes(bytes));
  const std::uint32_t first = in.U32Le();
  const std::uint16_t second = in.U16Le();
  const std::uint16_t third = in.U16Le();
  std::string text = Format("%08X-%04X-%04X-", first, second, third);
  for (int i = 0; i < 8; ++i) text += Format(i == 2 ? "-%02X" : "%02X", in.U8());
  return text;
}

std::string EncodingTimeText(std::uint64_t fileTime) {
  const CivilTime time = LocalTime(std::chrono::system_clock::from_time_t(UnixSecondsOf(fileTime)));
  return Format(Text(texts::AttributeTime), time.day, time.month, time.year, time.hour, time.minute,
                time.second);
}

std::size_t Utf16Bytes(std::string_view text) {
  return 2 * (Utf16FromUtf8(text).size() + 1);
}

}  // namespace

std::optional<std::string> ValueFromText(AttributeType type, std::string_view text) {
  if (text.empty()) return std::string();
  switch (type) {
    case AttributeType::String:
      if (!IsUtf8(text) || text.find('\0') != std::string_view::npos ||
          (text.size() >= kMostAttributeBytes / 2 && Utf16Bytes(text) > kMostAttributeBytes))
        return std::nullopt;
      return std::string(text);
    case AttributeType::Bool:
      return TruthFromText(Trim(text));
    case AttributeType::DWord:
    case AttributeType::QWord:
    case AttributeType::Word: {
      const auto number = ParseUnsigned(Trim(text));
      if (!number || *number > MostOf(type)) return std::nullopt;
      return std::to_string(*number);
    }
    case AttributeType::Binary:
    case AttributeType::Guid:
      break;
  }
  return std::nullopt;
}

std::size_t AttributeLength(const Attribute& attribute) {
  if (!attribute.HasValue()) return 0;
  switch (attribute.type) {
    case AttributeType::String:
      return Utf16Bytes(attribute.value);
    case AttributeType::DWord:
    case AttributeType::Bool:
      return 4;
    case AttributeType::QWord:
      return 8;
    case AttributeType::Word:
      return 2;
    case AttributeType::Binary:
    case AttributeType::Guid:
      break;
  }
  return attribute.value.size();
}

std::string DisplayValue(const Attribute& attribute) {
  if (!attribute.HasValue()) return {};
  switch (attribute.type) {
    case AttributeType::Bool:
      return std::string(Text(attribute.value == "1" ? texts::AttributeYes : texts::AttributeNo));
    case AttributeType::Guid:
      if (attribute.value.size() == kGuidSize) return GuidText(attribute.value);
      return std::string(Text(texts::AttributeNotShown));
    case AttributeType::Binary:
      return std::string(Text(texts::AttributeNotShown));
    case AttributeType::QWord:
      if (attribute.name == "WM/EncodingTime") {
        const auto number = ParseUnsigned(attribute.value);
        if (!number) return std::string(Text(texts::AttributeUnknown));
        return EncodingTimeText(*number);
      }
      return attribute.value;
    default:
      return attribute.value;
  }
}

std::string CommentValue(const Attribute& attribute) {
  if (attribute.type != AttributeType::Bool || !attribute.HasValue()) return attribute.value;
  return attribute.value == "1" ? "true" : "false";
}

std::int64_t UnixSecondsOf(std::uint64_t fileTime) {
  return static_cast<std::int64_t>(fileTime / kTicksPerSecond) - kSecondsFrom1601To1970;
}

std::uint64_t FileTimeOf(std::int64_t unixSeconds) {
  return static_cast<std::uint64_t>(std::max<std::int64_t>(0, unixSeconds + kSecondsFrom1601To1970)) *
         kTicksPerSecond;
}

const Attribute* FindAttribute(const Attributes& attributes, std::string_view name) {
  const auto found = std::ranges::find_if(
      attributes, [name](const Attribute& attribute) { return EqualsIgnoringCase(attribute.name, name); });
  return found == attributes.end() ? nullptr : &*found;
}

Attribute* FindAttribute(Attributes& attributes, std::string_view name) {
  return const_cast<Attribute*>(FindAttribute(std::as_const(attributes), name));
}

Attributes FixedAttributes() {
  const auto fixed = [](std::string_view name, TextId value) {
    return Attribute{AttributeType::String, std::string(name), std::string(Text(value)), false, true};
  };
  return {fixed("WM/EncodedBy", texts::AttributeEncodedBy),
          fixed("WM/AudioSourceURL", texts::AttributeMakerAddress)};
}

}  // namespace ts5::tags
