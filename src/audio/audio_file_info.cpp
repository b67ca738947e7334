#include "audio/audio_file_info.h"

#include "audio/media_probe.h"
#include "audio/quick_file_info.h"
#include "audio/tags/tag_file.h"
#include "platform/files/input_file.h"

namespace ts5 {

Result<tags::Attributes> FileInfoWith(const std::string& path, const tags::Attributes& attributes) {
  const auto file = InputFile::Open(path);
  if (!file) return Failure(file.error());
  const MediaProbe probe = ProbeMedia(path);
  if (probe.kind == MediaKind::None) return Failure(Outcome::WrongFormat);
  return FileInfoOf(probe, file->Size(), attributes);
}

Result<tags::Attributes> ReadFileInfo(const std::string& path) {
  return FileInfoWith(path, tags::ReadAttributes(path).value_or(tags::Attributes()));
}

}  // namespace ts5
