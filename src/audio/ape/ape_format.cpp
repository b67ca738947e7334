#include "audio/ape/ape_format.h"

namespace ts5::ape {
namespace {

constexpr std::uint16_t kVersion = 3990;
constexpr std::uint16_t kFlag8Bits = 1;
constexpr std::uint16_t kFlag24Bits = 8;
constexpr std::uint16_t kFlagMakeWaveHead = 32;

std::uint16_t Flags(std::uint32_t bits) {
  std::uint16_t flags = kFlagMakeWaveHead;
  if (bits == 8) flags |= kFlag8Bits;
  if (bits == 24) flags |= kFlag24Bits;
  return flags;
}

}  // namespace

Level LevelOf(std::uint32_t stored) {
  const bool known = stored >= 1000 && stored <= 5000 && stored % 1000 == 0;
  return known ? static_cast<Level>(stored) : Level::High;
}

Outcome Check(const Format& format) {
  const bool depth = format.bits == 8 || format.bits == 16 || format.bits == 24;
  const bool channels = format.channels == 1 || format.channels == 2;
  return depth && channels && format.sampleRate > 0 ? Outcome::Success : Outcome::FormatRefused;
}

Bytes Descriptor(const Totals& totals, std::size_t seekTableSize, const Md5& md5) {
  ByteWriter out;
  out.Append("MAC ");
  out.U16Le(kVersion);
  out.U16Le(0);
  out.U32Le(kDescriptorSize);
  out.U32Le(kHeaderSize);
  out.U32Le(static_cast<std::uint32_t>(seekTableSize));
  out.U32Le(0);  // of the wave file's head
  out.U64Le(totals.audioBytes);
  out.U32Le(0);  // of what followed the samples in the wave file
  out.Append(ByteView(md5));
  return out.Release();
}

Bytes Header(const Format& format, const Totals& totals) {
  const std::uint64_t frames = (totals.blocks + kFrameBlocks - 1) / kFrameBlocks;
  const std::uint64_t before = frames > 0 ? (frames - 1) * kFrameBlocks : 0;
  ByteWriter out;
  out.U16Le(static_cast<std::uint16_t>(format.level));
  out.U16Le(Flags(format.bits));
  out.U32Le(kFrameBlocks);
  out.U32Le(static_cast<std::uint32_t>(totals.blocks - before));
  out.U32Le(static_cast<std::uint32_t>(frames));
  out.U16Le(static_cast<std::uint16_t>(format.bits));
  out.U16Le(static_cast<std::uint16_t>(format.channels));
  out.U32Le(format.sampleRate);
  return out.Release();
}

}  // namespace ts5::ape
