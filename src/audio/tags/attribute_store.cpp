#include "audio/tags/attribute_store.h"

#include <algorithm>

#include "audio/tags/attribute_names.h"
#include "platform/base/text.h"

namespace ts5::tags {
namespace {

constexpr std::string_view kCount = "FileAttributeNum";
constexpr std::string_view kSeparator = "\u00A1";
constexpr std::int64_t kMostStored = 9999;

std::string ValueName(std::size_t number) {
  return Format("%s%03i", "FileAttribute", number);
}

// The text up to the next separator, which is taken off with it; nothing when there is none.
std::optional<std::string_view> TakeField(std::string_view& text) {
  const std::size_t end = text.find(kSeparator);
  if (end == std::string_view::npos) return std::nullopt;
  const std::string_view field = text.substr(0, end);
  text.remove_prefix(end + kSeparator.size());
  return field;
}

std::optional<AttributeType> StoredType(std::string_view text) {
  const auto number = ParseInteger(text);
  if (!number || *number < 0 || *number > static_cast<int>(AttributeType::Guid)) return std::nullopt;
  const auto type = static_cast<AttributeType>(*number);
  return IsBinary(type) ? std::nullopt : std::optional(type);
}

bool IsUsableName(std::string_view name) {
  return !name.empty() && CharacterCount(name) <= kMostAttributeName && IsUtf8(name) &&
         name.find(kSeparator) == std::string_view::npos;
}

std::optional<Attribute> Parse(std::string_view text) {
  const auto type = TakeField(text);
  const auto name = TakeField(text);
  const auto selected = TakeField(text);
  const auto length = TakeField(text);
  if (!type || !name || !selected || !length || !IsUsableName(*name)) return std::nullopt;
  const auto stored = StoredType(*type);
  const AttributeName* const known = FindAttributeName(*name);
  if (!stored || (known != nullptr && known->readOnly)) return std::nullopt;
  const auto value = ValueFromText(*stored, text);
  if (!value || value->empty()) return std::nullopt;
  return Attribute{*stored, std::string(*name), *value, false, *selected == "1"};
}

}  // namespace

void SaveAttributes(const Attributes& attributes, RegistryValues& values) {
  std::size_t saved = 0;
  for (const Attribute& attribute : attributes) {
    if (!attribute.HasValue() || attribute.readOnly || IsBinary(attribute.type)) continue;
    std::string text = std::to_string(static_cast<int>(attribute.type));
    for (const std::string_view field :
         {std::string_view(attribute.name), std::string_view(attribute.selected ? "1" : "0")}) {
      text.append(kSeparator).append(field);
    }
    text.append(kSeparator).append(std::to_string(AttributeLength(attribute))).append(kSeparator);
    values.SetText(ValueName(++saved), text + attribute.value);
  }
  values.SetInteger(kCount, static_cast<std::int64_t>(saved));
}

Attributes LoadAttributes(const RegistryValues& values) {
  Attributes attributes;
  const std::int64_t count = std::min(values.Integer(kCount).value_or(0), kMostStored);
  for (std::int64_t number = 1; number <= count; ++number) {
    const auto text = values.Text(ValueName(static_cast<std::size_t>(number)));
    auto attribute = text ? Parse(*text) : std::nullopt;
    if (attribute && FindAttribute(attributes, attribute->name) == nullptr)
      attributes.push_back(*std::move(attribute));
  }
  return attributes;
}

std::optional<Attribute> ParseAttribute(std::string_view text) {
  const std::size_t equals = text.find('=');
  if (equals == std::string_view::npos) return std::nullopt;
  Attribute attribute = NewAttribute(Trim(text.substr(0, equals)));
  if (!IsUsableName(attribute.name) || attribute.readOnly) return std::nullopt;
  const auto value = ValueFromText(attribute.type, text.substr(equals + 1));
  if (!value) return std::nullopt;
  attribute.value = *value;
  attribute.selected = true;
  return attribute;
}

}  // namespace ts5::tags
