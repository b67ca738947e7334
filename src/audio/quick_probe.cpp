#include "audio/quick_probe.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "audio/aiff_layout.h"
#include "audio/wave_layout.h"
#include "platform/base/casts.h"
#include "platform/media/mp3_frame.h"
#include "platform/media/mp3_length.h"

namespace ts5 {
namespace {

constexpr std::size_t kStart = 16;
constexpr std::size_t kTwoFrames = 3072;

// A file that is much longer or shorter than its first frame says is cut, or several in one.
bool HasSize(const TaggedMp3& tag, std::uint64_t size) {
  return std::max(tag.bytes, size) - std::min(tag.bytes, size) <= tag.bytes / 16;
}

std::optional<MediaProbe> ProbeTaggedMp3(const InputFile& file) {
  const std::uint64_t begin = BehindId3(file);
  std::array<std::uint8_t, kTwoFrames> bytes{};
  const auto got = file.ReadAt(begin, bytes);
  const ByteView start = ByteView(bytes).first(got.value_or(0));
  const auto first = ParseMp3Header(start);
  if (!first || first->size >= start.size()) return std::nullopt;
  const auto second = ParseMp3Header(start.subspan(first->size));
  if (!second || second->sampleRate != first->sampleRate) return std::nullopt;
  const std::string_view mark = AsText(start).substr(4 + first->sideSize, 4);
  const auto tag = mark == "Xing" || mark == "Info" ? ReadTaggedMp3(file, first->samples) : std::nullopt;
  constexpr std::array<std::string_view, 3> kEncoders{"LAME", "Lavf", "Lavc"};
  const auto isOf = [&tag](std::string_view encoder) { return tag->encoder.starts_with(encoder); };
  if (!tag || !tag->checked || tag->bytes == 0 || !HasSize(*tag, file.Size() - begin) ||
      !std::ranges::any_of(kEncoders, isOf))
    return std::nullopt;

  MediaProbe probe{.kind = MediaKind::MpegLayer3, .codec = MediaCodec::MpegLayer3};
  const std::uint64_t all = tag->blocks * first->samples;
  const std::uint64_t mean = (tag->bytes * 8 * first->sampleRate + all / 2) / all;
  probe.format.tag = kTagMpegLayer3;
  probe.format.channels = first->IsMono() ? 1 : 2;
  probe.format.sampleRate = first->sampleRate;
  probe.format.blockAlign = 1;
  probe.format.bytesPerSecond = ClampTo<std::uint32_t>(
      std::max<std::uint64_t>(1, (tag->constant ? std::uint64_t{second->bitRate} * 1000 : mean) / 8));
  probe.frames = tag->frames;
  probe.encoder = tag->encoder;
  if (tag->delay != 0) probe.delay = tag->delay;
  SetSeconds(probe, static_cast<double>(tag->frames) / first->sampleRate);
  return probe;
}

}  // namespace

std::optional<MediaProbe> ProbeSamples(MediaKind kind, const WaveFile& wave) {
  MediaProbe probe{.kind = kind, .format = wave.Format()};
  const auto type = SampleTypeOf(probe.format);
  if (!type) return std::nullopt;
  // What the samples take: a header that says otherwise would give lengths and times that are none.
  const std::size_t frameSize = SampleSize(*type) * probe.format.channels;
  probe.format.blockAlign = static_cast<std::uint16_t>(frameSize);
  probe.format.bytesPerSecond = ClampTo<std::uint32_t>(std::uint64_t{probe.format.sampleRate} * frameSize);
  probe.frames = wave.DataSize() / frameSize;
  SetSeconds(probe, static_cast<double>(*probe.frames) / probe.format.sampleRate);
  return probe;
}

std::optional<MediaProbe> QuickProbe(InputFile file) {
  std::array<std::uint8_t, kStart> bytes{};
  const auto got = file.ReadAt(0, bytes);
  const ByteView start = ByteView(bytes).first(got.value_or(0));
  const bool aiff = IsAiff(start);
  if (!aiff && !IsWave(start)) return ProbeTaggedMp3(file);
  const auto wave = aiff ? WaveFile::ReadAiff(std::move(file)) : WaveFile::Read(std::move(file));
  if (!wave) return std::nullopt;
  return ProbeSamples(aiff && BeginsWithComm(start) ? MediaKind::Aiff : MediaKind::Wave, *wave);
}

}  // namespace ts5
