// The frames of an ID3v2 tag (versions 2.3 and 2.4 of id3.org), in whatever file the tag lies.
#pragma once

#include <taglib/id3v2framefactory.h>
#include <taglib/id3v2tag.h>

#include <string>

#include "audio/tags/attribute.h"

namespace ts5::tags {

// Keeps frames of version 2.3 that 2.4 knows no longer, which would be thrown away otherwise.
[[nodiscard]] TagLib::ID3v2::FrameFactory* KeepingFrames();

[[nodiscard]] Attributes ReadId3(const TagLib::ID3v2::Tag& tag);
// version: 3 or 4, in which the tag will be written. False: the tag has no place for it.
[[nodiscard]] bool SetId3(TagLib::ID3v2::Tag& tag, const Attribute& attribute, unsigned version);
void RemoveId3(TagLib::ID3v2::Tag& tag, const std::string& name);

}  // namespace ts5::tags
