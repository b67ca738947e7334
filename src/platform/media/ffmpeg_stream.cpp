#include "platform/media/ffmpeg_stream.h"

#include <cstdio>

#include "platform/media/ffmpeg.h"

namespace ts5::ffmpeg {

int FileStream::Read(void* self, std::uint8_t* out, int size) {
  auto& stream = *static_cast<FileStream*>(self);
  const auto got = stream.file.ReadAt(stream.position, {out, static_cast<std::size_t>(size)});
  if (!got) {
    stream.failed = true;
    return AVERROR(EIO);
  }
  if (*got == 0) {
    stream.failed = stream.failed || stream.position < stream.file.Size();
    return AVERROR_EOF;
  }
  stream.position += *got;
  return static_cast<int>(*got);
}

std::int64_t FileStream::Seek(void* self, std::int64_t offset, int whence) {
  auto& stream = *static_cast<FileStream*>(self);
  const auto size = static_cast<std::int64_t>(stream.file.Size());
  switch (whence & ~AVSEEK_FORCE) {
    case AVSEEK_SIZE:
      return size;
    case SEEK_SET:
      break;
    case SEEK_CUR:
      offset += static_cast<std::int64_t>(stream.position);
      break;
    case SEEK_END:
      offset += size;
      break;
    default:
      return AVERROR(EINVAL);
  }
  if (offset < 0) return AVERROR(EINVAL);
  stream.position = static_cast<std::uint64_t>(offset);
  return offset;
}

}  // namespace ts5::ffmpeg
