// The attributes of a job in the registry: "FileAttribute001"... and their number "FileAttributeNum". A value
// is "TYPE¡NAME¡SELECTED¡LENGTH¡TEXT"; the separator is the character 0xA1 of Windows-1252.
#pragma once

#include "audio/tags/attribute.h"
#include "frame/parameters.h"
#include "platform/store/registry_values.h"

namespace ts5::tags {

// Only attributes that have a value that is a text or a number, and can be written.
void SaveAttributes(const Attributes& attributes, RegistryValues& values);
// What is missing or does not fit, and what is read-only, is left out.
[[nodiscard]] Attributes LoadAttributes(const RegistryValues& values);

// One attribute as "NAME=VALUE"; selected. Nothing: no name, a read-only or binary one, or a value that does
// not fit its type.
[[nodiscard]] std::optional<Attribute> ParseAttribute(std::string_view text);

// The row of a filter's field table that stores its attributes. --set takes "NAME=VALUE", once for
// each.
template <typename P>
[[nodiscard]] ParameterField AttributesField(Attributes P::*member) {
  FieldOf<P> field;
  field.name = "FileAttribute";
  field.load = [member](P& p, const RegistryValues& values) { p.*member = LoadAttributes(values); };
  field.save = [member](const P& p, RegistryValues& values) { SaveAttributes(p.*member, values); };
  field.set = [member](P& p, std::string_view text) {
    auto attribute = ParseAttribute(text);
    if (!attribute) return false;
    Attributes& all = p.*member;
    if (Attribute* const there = FindAttribute(all, attribute->name)) {
      *there = *std::move(attribute);
    } else {
      all.push_back(*std::move(attribute));
    }
    return true;
  };
  field.description = "NAME=WERT";
  return MakeField(std::move(field));
}

}  // namespace ts5::tags
