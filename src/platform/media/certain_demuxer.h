// Which of FFmpeg's demuxers reads a file that leaves no doubt.
#pragma once

#include "platform/files/input_file.h"
#include "platform/media/ffmpeg.h"

namespace ts5::ffmpeg {

// nullptr for all others: the library asks all of its demuxers then, which takes longer than opening the
// file.
[[nodiscard]] const AVInputFormat* CertainDemuxer(const InputFile& file);

}  // namespace ts5::ffmpeg
