#include "audio/tags/tag_keys.h"

#include "platform/base/text.h"

namespace ts5::tags {

std::string Joined(const TagLib::StringList& values) {
  return FromTag(values.toString("; "));
}

void AddKeyed(Attributes& attributes, std::string_view AttributeName::*column, std::string_view key,
              const std::string& value) {
  const AttributeName* const ofField = NameOfField(column, key);
  Attribute attribute = NewAttribute(ofField != nullptr ? ofField->name : key);
  const auto fitting = ValueFromText(attribute.type, value);
  if (fitting && !attribute.readOnly) {
    attribute.value = *fitting;
  } else {
    // Another program's use of the name: a text like any other.
    attribute = {AttributeType::String, std::string(key), value, false, false};
  }
  attribute.selected = true;
  Attribute* const there = FindAttribute(attributes, attribute.name);
  if (there == nullptr) {
    attributes.push_back(std::move(attribute));
  } else if (ofField != nullptr) {
    *there = std::move(attribute);
  }
}

std::vector<std::string> KeysOf(std::string_view AttributeName::*column, std::string_view name) {
  const AttributeName* const known = FindAttributeName(name);
  if (known == nullptr) return {std::string(name)};
  std::vector<std::string> keys{std::string(known->name)};
  const std::string_view own = known->*column;
  if (!own.empty() && !EqualsIgnoringCase(own, known->name)) keys.emplace_back(own);
  return keys;
}

}  // namespace ts5::tags
