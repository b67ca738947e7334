#include "audio/quick_file_info.h"

#include <cmath>
#include <utility>

#include "audio/quick_probe.h"
#include "audio/tags/attribute_names.h"
#include "platform/files/input_file.h"

namespace ts5 {
namespace {

constexpr double kTicksPerSecond = 1e7;

tags::Attribute Fact(std::string_view name, std::uint64_t value) {
  tags::Attribute fact = tags::NewAttribute(name);
  fact.value = std::to_string(value);
  return fact;
}

}  // namespace

tags::Attributes FileInfoOf(const MediaProbe& probe, std::uint64_t size, const tags::Attributes& own) {
  const std::uint64_t bitRate = std::uint64_t{probe.format.bytesPerSecond} * 8;
  tags::Attributes info{
      Fact("FileSize", size),
      Fact("Duration", static_cast<std::uint64_t>(std::llround(probe.seconds * kTicksPerSecond))),
      Fact("Bitrate", bitRate),
      Fact("HasAudio", 1),
      Fact("HasVideo", 0),
      Fact("Seekable", 1)};
  for (const tags::Attribute& attribute : own) {
    if (attribute.readOnly && tags::FindAttribute(info, attribute.name) == nullptr) info.push_back(attribute);
  }
  return info;
}

std::optional<tags::Attributes> QuickFileInfo(const std::string& path, const tags::Attributes& own) {
  auto file = InputFile::Open(path);
  if (!file) return std::nullopt;
  const std::uint64_t size = file->Size();
  const auto probe = QuickProbe(std::move(*file));
  if (!probe) return std::nullopt;
  return FileInfoOf(*probe, size, own);
}

}  // namespace ts5
