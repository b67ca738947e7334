// Reads and changes the attributes of audio files: Windows Media, MPEG (ID3v2, ID3v1), Ogg Vorbis, Opus,
// FLAC, Monkey's Audio and WavPack (APEv2), MP4 (ilst), RIFF WAVE (INFO, and ID3v2 where it is there) and
// AIFF (ID3v2).
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "audio/tags/attribute.h"
#include "platform/base/outcome.h"

namespace ts5::tags {

struct AttributeChanges {
  Attributes set;                   // those that are selected, can be written and have a value
  std::vector<std::string> remove;  // names; one that the file does not have is no failure

  [[nodiscard]] bool Empty() const { return set.empty() && remove.empty(); }
};

// What a file has, in no particular order. WrongFormat: no file that can have attributes. SourceFailed: it
// cannot be opened. ReadFailed.
[[nodiscard]] Result<Attributes> ReadAttributes(const std::string& path);

// Changes a copy and renames it over the file, which is untouched until then; nothing happens when all is
// there already. Audio, pictures and everything else of the file stay as they are. The value is the number of
// attributes that the format cannot hold or that could not be read back. Also TargetFailed and WriteFailed.
// id3Version: 3 or 4, for an MPEG file without an ID3v2 tag; existing ones keep theirs.
[[nodiscard]] Result<std::size_t> ChangeAttributes(const std::string& path, const AttributeChanges& changes,
                                                   unsigned id3Version = 3);
// The same in the file itself, for one that is still being made.
[[nodiscard]] Result<std::size_t> ChangeAttributesInPlace(const std::string& path,
                                                          const AttributeChanges& changes,
                                                          unsigned id3Version = 3);

}  // namespace ts5::tags
