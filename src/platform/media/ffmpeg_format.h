// What FFmpeg says of a file and its stream, in our words.
#pragma once

#include <cstdint>

#include "platform/media/ffmpeg.h"
#include "platform/media/media_reader.h"
#include "platform/media/wave_format.h"

namespace ts5::ffmpeg {

// By the name of the demuxer.
[[nodiscard]] MediaContainer ContainerNamed(const char* name);
[[nodiscard]] MediaCodec CodecOf(AVCodecID id);
// As in wave files.
[[nodiscard]] WaveFormat FormatOf(const AVCodecParameters& codec);
[[nodiscard]] std::uint32_t MaskOf(const AVChannelLayout& layout);
// Of a sample as it is decoded; 0 for floats.
[[nodiscard]] std::uint32_t BitsOf(const AVCodecContext& codec);

// Frames first..first+count of a decoded block; false for samples of a kind that no decoder here gives.
[[nodiscard]] bool CopyFrames(const AVFrame& frame, std::size_t first, std::size_t count,
                              std::size_t channels, double* out);

}  // namespace ts5::ffmpeg
