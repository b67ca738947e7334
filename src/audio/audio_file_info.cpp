#include "audio/audio_file_info.h"

#include <cmath>

#include "audio/media_probe.h"
#include "audio/tags/attribute_names.h"
#include "audio/tags/tag_file.h"
#include "platform/files/input_file.h"

namespace ts5 {
namespace {

constexpr double kTicksPerSecond = 1e7;

Attribute Fact(std::string_view name, std::uint64_t value) {
  Attribute fact = NewAttribute(name);
  fact.value = std::to_string(value);
  return fact;
}

}  // namespace

Result<Attributes> FileInfoWith(const std::string& path, const Attributes& attributes) {
  const auto file = InputFile::Open(path);
  if (!file) return Failure(file.error());
  const MediaProbe probe = ProbeMedia(path);
  if (probe.kind == MediaKind::None) return Failure(Outcome::WrongFormat);
  const std::uint64_t bitRate = std::uint64_t{probe.format.bytesPerSecond} * 8;
  Attributes info{Fact("FileSize", file->Size()),
                  Fact("Duration", static_cast<std::uint64_t>(std::llround(probe.seconds * kTicksPerSecond))),
                  Fact("Bitrate", bitRate),
                  Fact("HasAudio", 1),
                  Fact("HasVideo", 0),
                  Fact("Seekable", 1)};
  for (const Attribute& attribute : attributes) {
    if (attribute.readOnly && FindAttribute(info, attribute.name) == nullptr) info.push_back(attribute);
  }
  return info;
}

Result<Attributes> ReadFileInfo(const std::string& path) {
  return FileInfoWith(path, ReadAttributes(path).value_or(Attributes()));
}

}  // namespace ts5
