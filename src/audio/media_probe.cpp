#include "audio/media_probe.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "audio/media_file.h"
#include "audio/quick_probe.h"

namespace ts5 {
namespace {

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

}  // namespace

MediaProbe ProbeMedia(const std::string& path) {
  if (auto file = InputFile::Open(path)) {
    if (auto probe = QuickProbe(std::move(*file))) return *std::move(probe);
  }
  MediaProbe probe;
  auto media = OpenMediaFile(path);
  if (!media || media->kind == MediaKind::None) return probe;
  probe.kind = media->kind;
  const auto& wave = media->wave;
  if (wave) {
    if (auto samples = ProbeSamples(media->kind, *wave)) return *std::move(samples);
    probe.format = wave->Format();
    // A compressed wave file lasts as long as its blocks, or its byte rate, say; in a coding that nothing
    // here decodes it is a wave file all the same.
    probe.frames = FramesInBlocks(probe.format, wave->DataSize());
    if (probe.frames || !media->decoder || probe.format.bytesPerSecond != 0) {
      const std::uint32_t rate = probe.frames ? probe.format.sampleRate : probe.format.bytesPerSecond;
      const std::uint64_t units = probe.frames.value_or(wave->DataSize());
      SetSeconds(probe, rate == 0 ? 0 : static_cast<double>(units) / rate);
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
  SetSeconds(probe, info.seconds);
  return probe;
}

}  // namespace ts5
