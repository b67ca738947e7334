// The file as the demuxer sees it.
#pragma once

#include <cstdint>

#include "platform/files/input_file.h"

namespace ts5::ffmpeg {

struct FileStream {
  InputFile file;
  std::uint64_t position = 0;
  bool failed = false;  // an I/O error, or the file ended before its size

  // As avio_alloc_context takes them; self: the stream.
  static int Read(void* self, std::uint8_t* out, int size);
  static std::int64_t Seek(void* self, std::int64_t offset, int whence);
};

}  // namespace ts5::ffmpeg
