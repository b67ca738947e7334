// The type of a file by its name, and the strip of file icons: a type's number is the index of its icon.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace ts5 {

// The strip holds two images per icon, at 2k and 2k + 1; types use the odd one.
enum class FileTypeId : std::int32_t {
  Wave = 11,
  Mp3 = 13,
  Mp2 = 15,
  Midi = 17,
  Unsupported = 19,
  Score = 23,
  Sequencer = 31,
  WindowsMedia = 55,
  CdTrack = 59,
  Mpga = 77,
  Aiff = 85,
  Picture = 89,
  Xml = 91,
  StvXml = 93,
  Ogg = 95,
  Ape = 97,
  Flac = 99,
  Opus = 101,
  M4a = 103,
};

// By the text after the last '.', without regard to case. Without a '.' it is the name of a CD track, unless
// it is a path: one with a drive letter's colon or a leading separator is Unsupported.
[[nodiscard]] FileTypeId FileTypeOf(std::string_view name);

// Whether a list entry names a track of an audio CD instead of a file: no '.', no ':', no absolute path.
[[nodiscard]] bool IsCdTrackText(std::string_view entry);

// The icons of the strip in order; entry k has the indices 2k and 2k + 1.
[[nodiscard]] std::span<const std::string_view> FileIcons();
// The icon at an index of the strip, e.g. 11 -> "WAVEICON"; "" outside.
[[nodiscard]] std::string_view FileIconName(int index);
[[nodiscard]] inline std::string_view FileIconName(FileTypeId type) {
  return FileIconName(static_cast<int>(type));
}

}  // namespace ts5
