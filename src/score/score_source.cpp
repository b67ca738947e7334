#include "score/score_source.h"

#include <array>

namespace ts5 {
namespace {

constexpr std::array<std::uint32_t, 16> kPalette = {
    0x000000, 0x000080, 0x008000, 0x008080, 0x800000, 0x800080, 0x808000, 0x808080,
    0xC0C0C0, 0x0000FF, 0x00FF00, 0x00FFFF, 0xFF0000, 0xFF00FF, 0xFFFF00, 0xFFFFFF,
};
constexpr std::size_t kFrameBytes = 28;

}  // namespace

bool ScoreSource::Stop() const {
  constexpr unsigned kAskEvery = 4096;  // records
  if (!stopped_ && ++asked_ % kAskEvery == 0) stopped_ = (*stop_)();
  return stopped_;
}

std::uint32_t ScoreSource::CompactUnsigned() {
  const std::uint8_t first = U8();
  if (first == 254) return U16();
  if (first == 255) return U32();
  return first;
}

std::int32_t ScoreSource::CompactSigned() {
  const std::uint8_t first = U8();
  if (first == 0x80) return U16();
  if (first == 0x7F) return static_cast<std::int32_t>(U32());
  return static_cast<std::int8_t>(first);
}

ByteView ScoreSource::Blob() {
  const std::uint32_t size = CompactUnsigned();
  return Take(size);
}

ByteView ScoreSource::OldText() {
  const std::int16_t size = I16();
  if (size <= 0) {
    Skip(1);
    return {};
  }
  const ByteView text = Take(static_cast<std::size_t>(size));
  Skip(1);
  return text;
}

std::uint32_t ScoreSource::Colour() {
  const std::uint8_t first = U8();
  if (first < kPalette.size()) return kPalette[first];
  const std::uint32_t red = U8();
  const std::uint32_t green = U8();
  return red | green << 8 | static_cast<std::uint32_t>(U8()) << 16;
}

void ScoreSource::Frame() {
  if (CompactUnsigned() != 0) return;
  Skip(kFrameBytes);
  Colour();
  (void)Blob();
}

}  // namespace ts5
