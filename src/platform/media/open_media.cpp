#include "platform/media/open_media.h"

#include <utility>

#include "platform/media/empty_ape.h"
#include "platform/media/ffmpeg_reader.h"
#include "platform/media/vorbis_reader.h"

namespace ts5 {

Result<std::unique_ptr<MediaReader>> OpenMedia(const std::string& path) {
  auto file = InputFile::Open(path);
  if (!file) return Failure(file.error());
  return OpenMedia(std::move(*file), path);
}

Result<std::unique_ptr<MediaReader>> OpenMedia(InputFile file, const std::string& name) {
  if (IsOggVorbis(file)) return OpenVorbis(std::move(file));
  if (auto empty = OpenEmptyApe(file)) return empty;
  return OpenWithFfmpeg(std::move(file), name);
}

}  // namespace ts5
