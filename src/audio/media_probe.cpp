#include "audio/media_probe.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "audio/media_file.h"
#include "platform/base/casts.h"

namespace ts5 {
namespace {

constexpr double kMostSeconds = 1e9;

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
  auto media = OpenMediaFile(path);
  if (!media || media->kind == MediaKind::None) return probe;
  probe.kind = media->kind;
  const auto& wave = media->wave;
  if (wave) {
    probe.format = wave->Format();
    if (const auto type = SampleTypeOf(probe.format)) {
      // What the samples take: a header that says otherwise would give lengths and times that are none.
      const std::size_t frameSize = SampleSize(*type) * probe.format.channels;
      probe.format.blockAlign = static_cast<std::uint16_t>(frameSize);
      probe.format.bytesPerSecond =
          ClampTo<std::uint32_t>(std::uint64_t{probe.format.sampleRate} * frameSize);
      probe.frames = wave->DataSize() / frameSize;
      SetDuration(probe, static_cast<double>(*probe.frames) / probe.format.sampleRate);
      return probe;
    }
    // A compressed wave file lasts as long as its blocks, or its byte rate, say; in a coding that nothing
    // here decodes it is a wave file all the same.
    probe.frames = FramesInBlocks(probe.format, wave->DataSize());
    if (probe.frames || !media->decoder || probe.format.bytesPerSecond != 0) {
      const std::uint32_t rate = probe.frames ? probe.format.sampleRate : probe.format.bytesPerSecond;
      const std::uint64_t units = probe.frames.value_or(wave->DataSize());
      SetDuration(probe, rate == 0 ? 0 : static_cast<double>(units) / rate);
      return probe;
    }
  }
  const MediaInfo& info = media->decoder->Info();
  if (!wave) {
    probe.format = info.format;
    probe.codec = info.codec;
  }
  probe.frames = info.frames;
  probe.encoder = info.encoder;
  probe.delay = info.delay;
  SetDuration(probe, info.seconds);
  return probe;
}

}  // namespace ts5
