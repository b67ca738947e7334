#include "audio/media_probe.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "audio/texts.h"
#include "audio/wave_file.h"
#include "frame/texts.h"
#include "platform/casts.h"
#include "platform/files.h"
#include "platform/media_reader.h"

namespace ts5 {
namespace {

constexpr double kMostSeconds = 1e9;

// "FORM", the size, "AIFF" or "AIFC", "COMM".
bool BeginsAsAiff(const std::string& path) {
  const auto start = ReadFileStart(path, 16);
  if (!start) return false;
  ByteReader in(*start);
  const bool form = in.Tag() == "FORM";
  in.Skip(4);
  const std::string_view type = in.Tag();
  return form && (type == "AIFF" || type == "AIFC") && in.Tag() == "COMM";
}

MediaKind KindOf(const MediaInfo& info, const std::string& path) {
  switch (info.codec) {
    case MediaCodec::WindowsMedia:
      return info.container == MediaContainer::WindowsMedia ? MediaKind::WindowsMedia : MediaKind::Wave;
    case MediaCodec::Vorbis:
      return info.container == MediaContainer::Ogg ? MediaKind::OggVorbis : MediaKind::None;
    case MediaCodec::Ape:
      return MediaKind::MonkeysAudio;
    default:
      break;
  }
  switch (info.container) {
    case MediaContainer::Wave:
      return MediaKind::Wave;
    case MediaContainer::Aiff:
      return BeginsAsAiff(path) ? MediaKind::Aiff : MediaKind::Wave;
    case MediaContainer::WindowsMedia:
      return MediaKind::WindowsMedia;
    case MediaContainer::Mpeg:
      if (info.codec == MediaCodec::MpegLayer1) return MediaKind::MpegLayer1;
      if (info.codec == MediaCodec::MpegLayer2) return MediaKind::MpegLayer2;
      if (info.codec == MediaCodec::MpegLayer3) return MediaKind::MpegLayer3;
      return MediaKind::None;
    default:
      return MediaKind::None;
  }
}

// Codings of blocks that all hold the same number of frames, and those of one byte per sample.
std::optional<std::uint64_t> FramesInBlocks(const WaveFormat& format, std::uint64_t dataSize) {
  constexpr std::uint16_t kBlocks[] = {kTagAdpcm, 0x11, 0x31};  // ADPCM of two makers, GSM
  constexpr std::uint16_t kBytes[] = {6, 7};                    // A-law, mu-law
  if (format.blockAlign == 0 || format.sampleRate == 0) return std::nullopt;
  if (std::ranges::find(kBytes, format.tag) != std::end(kBytes)) return dataSize / format.blockAlign;
  if (std::ranges::find(kBlocks, format.tag) == std::end(kBlocks)) return std::nullopt;
  ByteReader extra(format.extra);
  const std::uint16_t perBlock = extra.U16Le();
  if (perBlock == 0) return std::nullopt;
  return dataSize / format.blockAlign * perBlock;
}

void SetDuration(MediaProbe& probe, double seconds) {
  probe.seconds = std::clamp(seconds, 0.0, kMostSeconds);
  probe.dataLength = static_cast<std::uint64_t>(std::llround(probe.seconds * probe.format.bytesPerSecond));
}

}  // namespace

std::uint64_t MediaProbe::Milliseconds() const {
  if (format.bytesPerSecond == 0) return 0;
  const std::uint64_t whole = dataLength / format.bytesPerSecond;
  return whole * 1000 + dataLength % format.bytesPerSecond * 1000 / format.bytesPerSecond;
}

MediaProbe ProbeMedia(const std::string& path) {
  MediaProbe probe;
  auto wave = WaveFile::Open(path);
  if (wave) {
    probe.format = wave->Format();
    if (const auto type = SampleTypeOf(probe.format)) {
      probe.kind = MediaKind::Wave;
      // What the samples take: a header that says otherwise would give lengths and times that are none.
      const std::size_t frameSize = SampleSize(*type) * probe.format.channels;
      probe.format.blockAlign = static_cast<std::uint16_t>(frameSize);
      probe.format.bytesPerSecond =
          ClampTo<std::uint32_t>(std::uint64_t{probe.format.sampleRate} * frameSize);
      probe.frames = wave->DataSize() / frameSize;
      SetDuration(probe, static_cast<double>(*probe.frames) / probe.format.sampleRate);
      return probe;
    }
  }
  const auto reader = MediaReader::Open(path);
  // A compressed wave file lasts as long as its blocks, or its byte rate, say; in a coding that nothing here
  // decodes it is a wave file all the same.
  if (wave) probe.frames = FramesInBlocks(probe.format, wave->DataSize());
  if (wave && (probe.frames || !reader || probe.format.bytesPerSecond != 0)) {
    probe.kind = MediaKind::Wave;
    const std::uint32_t rate = probe.frames ? probe.format.sampleRate : probe.format.bytesPerSecond;
    const std::uint64_t units = probe.frames.value_or(wave->DataSize());
    SetDuration(probe, rate == 0 ? 0 : static_cast<double>(units) / rate);
    return probe;
  }
  if (!reader) return {};
  const MediaInfo& info = (*reader)->Info();
  probe.kind = KindOf(info, path);
  if (probe.kind == MediaKind::None) return {};
  if (!wave) probe.format = info.format;
  probe.frames = info.frames;
  SetDuration(probe, info.seconds);
  return probe;
}

TextId KindName(MediaKind kind) {
  switch (kind) {
    case MediaKind::None:
      break;
    case MediaKind::Wave:
      return texts::AudioKindWave;
    case MediaKind::MpegLayer1:
      return texts::AudioKindLayer1;
    case MediaKind::MpegLayer2:
      return texts::AudioKindLayer2;
    case MediaKind::MpegLayer3:
      return texts::AudioKindLayer3;
    case MediaKind::Aiff:
      return texts::AudioKindAiff;
    case MediaKind::WindowsMedia:
      return texts::AudioKindWindowsMedia;
    case MediaKind::OggVorbis:
      return texts::AudioKindOgg;
    case MediaKind::MonkeysAudio:
      return texts::AudioKindApe;
  }
  return texts::UnknownFileFormat;
}

}  // namespace ts5
