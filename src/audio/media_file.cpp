#include "audio/media_file.h"

#include <algorithm>
#include <array>
#include <utility>

#include "audio/aiff_layout.h"
#include "platform/media/open_media.h"

namespace ts5 {
namespace {

constexpr std::size_t kStart = 16;

// Codings of wave files that cannot be decoded without these fields of the format record. A file that names
// one of them without being of it is noise.
struct BlockCoding {
  std::uint16_t tag;
  std::uint16_t leastBlock;  // bytes of a block, per channel
  std::size_t leastExtra;    // bytes behind the record
};
constexpr BlockCoding kBlockCodings[] = {
    {kTagAdpcm, 7, 4}, {0x11, 4, 2},  {0x31, 33, 2},  {6, 1, 0},      {7, 1, 0},
    {0x160, 1, 4},     {0x161, 1, 6}, {0x162, 1, 18}, {0x163, 1, 18},
};

bool IsPlausible(const WaveFormat& format) {
  const auto* const row = std::ranges::find(kBlockCodings, format.tag, &BlockCoding::tag);
  if (row == std::end(kBlockCodings)) return true;
  return format.blockAlign >= row->leastBlock * format.channels && format.extra.size() >= row->leastExtra;
}

// A RIFF WAVE or AIFF file: ours, to read or to refuse.
Result<MediaFile> OpenOwn(const std::string& path, InputFile file, ByteView start) {
  const bool aiff = IsAiff(start);
  auto wave = aiff ? WaveFile::ReadAiff(std::move(file)) : WaveFile::Read(std::move(file));
  if (!wave) return Failure(wave.error());
  MediaFile media;
  media.kind = aiff && BeginsWithComm(start) ? MediaKind::Aiff : MediaKind::Wave;
  if (!SampleTypeOf(wave->Format())) {
    if (!IsPlausible(wave->Format())) return Failure(Outcome::WrongFormat);
    auto decoder = OpenMedia(path);
    if (!decoder && (aiff || decoder.error() != Outcome::WrongFormat)) return Failure(decoder.error());
    if (decoder) media.decoder = std::move(*decoder);
    if (aiff) return media;
  }
  media.wave = std::move(*wave);
  return media;
}

}  // namespace

Result<MediaFile> OpenMediaFile(const std::string& path) {
  auto file = WaveFile::OpenSound(path);
  if (!file) return Failure(file.error());
  std::array<std::uint8_t, kStart> bytes{};
  const auto got = file->ReadAt(0, bytes);
  if (!got) return Failure(got.error());
  const ByteView start = ByteView(bytes).first(*got);
  if (IsWave(start) || IsAiff(start)) return OpenOwn(path, std::move(*file), start);
  auto decoder = OpenMedia(std::move(*file), path);
  if (!decoder) return Failure(decoder.error());
  MediaFile media;
  media.kind = KindOf((*decoder)->Info());
  media.decoder = std::move(*decoder);
  return media;
}

}  // namespace ts5
