// The names of attributes and the fields of other formats that mean the same: the one table of them.
#pragma once

#include <span>
#include <string_view>

#include "audio/tags/attribute.h"

namespace ts5::tags {

struct AttributeName {
  std::string_view name;  // of Windows Media, e.g. "WM/AlbumTitle"
  AttributeType type = AttributeType::String;
  bool readOnly = false;
  // "" where a format has no field of its own for it.
  std::string_view id3;      // frame of ID3v2.4; .3 has its own for some, which are converted
  std::string_view comment;  // Ogg comment
  std::string_view ape;      // item key of APEv2
  std::string_view info;     // chunk of the RIFF list INFO
  std::string_view mp4;      // atom of the list ilst; its first letter may be the copyright sign
};

// In the order in which they are offered.
[[nodiscard]] std::span<const AttributeName> AttributeNames();
// Names are found without regard to case; nothing for other ones, which are texts that any file may have.
[[nodiscard]] const AttributeName* FindAttributeName(std::string_view name);

// The name whose field this is, without regard to case.
[[nodiscard]] const AttributeName* NameOfField(std::string_view AttributeName::*field,
                                               std::string_view value);

// A new attribute of that name, with its type and no value.
[[nodiscard]] Attribute NewAttribute(std::string_view name);

}  // namespace ts5::tags
