#include "platform/media/ffmpeg_format.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace ts5::ffmpeg {
namespace {

struct NamedContainer {
  const char* name;
  MediaContainer container;
};
constexpr NamedContainer kContainers[] = {
    {"wav", MediaContainer::Wave}, {"w64", MediaContainer::Wave},         {"aiff", MediaContainer::Aiff},
    {"mp3", MediaContainer::Mpeg}, {"mpeg", MediaContainer::Mpeg},        {"mpegts", MediaContainer::Mpeg},
    {"ape", MediaContainer::Ape},  {"asf", MediaContainer::WindowsMedia},
};

// Containers without a tag of their own get the one that the codec has in wave files.
std::uint16_t TagOf(const AVCodecParameters& codec) {
  switch (codec.codec_id) {
    case AV_CODEC_ID_MP1:
    case AV_CODEC_ID_MP2:
      return kTagMpeg;
    case AV_CODEC_ID_MP3:
      return kTagMpegLayer3;
    case AV_CODEC_ID_PCM_F32BE:
    case AV_CODEC_ID_PCM_F32LE:
    case AV_CODEC_ID_PCM_F64BE:
    case AV_CODEC_ID_PCM_F64LE:
      return kTagFloat;
    case AV_CODEC_ID_PCM_S8:
    case AV_CODEC_ID_PCM_U8:
    case AV_CODEC_ID_PCM_S16BE:
    case AV_CODEC_ID_PCM_S16LE:
    case AV_CODEC_ID_PCM_S24BE:
    case AV_CODEC_ID_PCM_S24LE:
    case AV_CODEC_ID_PCM_S32BE:
    case AV_CODEC_ID_PCM_S32LE:
      return kTagPcm;
    default:
      return static_cast<std::uint16_t>(codec.codec_tag);
  }
}

template <typename T>
double Scaled(T sample) {
  if constexpr (std::is_same_v<T, std::uint8_t>) {
    return (sample - 128) / 128.0;
  } else if constexpr (std::is_integral_v<T>) {
    return static_cast<double>(sample) / (static_cast<double>(std::numeric_limits<T>::max()) + 1);
  } else {
    constexpr double kMost = std::numeric_limits<float>::max();
    return std::isfinite(sample) ? std::clamp<double>(sample, -kMost, kMost) : 0;
  }
}

// Frames first..first+count of a decoded block, from memory that need not be aligned for T.
template <typename T>
void CopyAs(const AVFrame& frame, bool planar, std::size_t first, std::size_t count, std::size_t channels,
            double* out) {
  for (std::size_t channel = 0; channel < channels; ++channel) {
    const std::uint8_t* in = planar ? frame.extended_data[channel] : frame.extended_data[0];
    const std::size_t step = planar ? 1 : channels;
    std::size_t index = planar ? first : first * channels + channel;
    for (std::size_t i = 0; i < count; ++i, index += step) {
      T sample;
      std::memcpy(&sample, in + index * sizeof(T), sizeof(T));
      out[i * channels + channel] = Scaled(sample);
    }
  }
}

}  // namespace

MediaContainer ContainerNamed(const char* name) {
  for (const NamedContainer& row : kContainers) {
    if (std::strcmp(row.name, name) == 0) return row.container;
  }
  return MediaContainer::Other;
}

MediaCodec CodecOf(AVCodecID id) {
  switch (id) {
    case AV_CODEC_ID_MP1:
      return MediaCodec::MpegLayer1;
    case AV_CODEC_ID_MP2:
      return MediaCodec::MpegLayer2;
    case AV_CODEC_ID_MP3:
      return MediaCodec::MpegLayer3;
    case AV_CODEC_ID_WMAV1:
    case AV_CODEC_ID_WMAV2:
    case AV_CODEC_ID_WMAPRO:
    case AV_CODEC_ID_WMALOSSLESS:
    case AV_CODEC_ID_WMAVOICE:
      return MediaCodec::WindowsMedia;
    case AV_CODEC_ID_APE:
      return MediaCodec::Ape;
    case AV_CODEC_ID_FLAC:
      return MediaCodec::Flac;
    case AV_CODEC_ID_OPUS:
      return MediaCodec::Opus;
    case AV_CODEC_ID_AAC:
      return MediaCodec::Aac;
    case AV_CODEC_ID_ALAC:
      return MediaCodec::Alac;
    default:
      return MediaCodec::Other;
  }
}

WaveFormat FormatOf(const AVCodecParameters& codec) {
  WaveFormat format;
  format.tag = TagOf(codec);
  format.channels = static_cast<std::uint16_t>(codec.ch_layout.nb_channels);
  format.sampleRate = static_cast<std::uint32_t>(codec.sample_rate);
  const int bits = av_get_bits_per_sample(codec.codec_id);
  format.bitsPerSample = static_cast<std::uint16_t>(bits != 0 ? bits : codec.bits_per_coded_sample);
  if (format.tag == kTagPcm || format.tag == kTagFloat)
    return PcmFormat(format.sampleRate, format.bitsPerSample, format.channels, format.tag);
  format.blockAlign = static_cast<std::uint16_t>(std::clamp(codec.block_align, 1, 0xFFFF));
  format.bytesPerSecond = static_cast<std::uint32_t>(std::clamp<std::int64_t>(
      codec.bit_rate > 0 ? codec.bit_rate / 8 : std::int64_t{format.sampleRate} * format.channels * 2, 1,
      INT32_MAX));
  return format;
}

std::uint32_t MaskOf(const AVChannelLayout& layout) {
  if (layout.order == AV_CHANNEL_ORDER_NATIVE) return static_cast<std::uint32_t>(layout.u.mask);
  return UsualChannelMask(static_cast<std::uint32_t>(layout.nb_channels));
}

std::uint32_t BitsOf(const AVCodecContext& codec) {
  switch (av_get_packed_sample_fmt(codec.sample_fmt)) {
    case AV_SAMPLE_FMT_U8:
      return 8;
    case AV_SAMPLE_FMT_S16:
      return 16;
    case AV_SAMPLE_FMT_S32:
      return codec.bits_per_raw_sample > 0 ? static_cast<std::uint32_t>(codec.bits_per_raw_sample) : 32;
    default:
      return 0;
  }
}

bool CopyFrames(const AVFrame& frame, std::size_t first, std::size_t count, std::size_t channels,
                double* out) {
  const auto format = static_cast<AVSampleFormat>(frame.format);
  const bool planar = av_sample_fmt_is_planar(format) != 0;
  switch (av_get_packed_sample_fmt(format)) {
    case AV_SAMPLE_FMT_U8:
      CopyAs<std::uint8_t>(frame, planar, first, count, channels, out);
      return true;
    case AV_SAMPLE_FMT_S16:
      CopyAs<std::int16_t>(frame, planar, first, count, channels, out);
      return true;
    case AV_SAMPLE_FMT_S32:
      CopyAs<std::int32_t>(frame, planar, first, count, channels, out);
      return true;
    case AV_SAMPLE_FMT_FLT:
      CopyAs<float>(frame, planar, first, count, channels, out);
      return true;
    case AV_SAMPLE_FMT_DBL:
      CopyAs<double>(frame, planar, first, count, channels, out);
      return true;
    default:
      return false;
  }
}

}  // namespace ts5::ffmpeg
