#include "audio/aiff_layout.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>

#include "audio/chunk_walk.h"

namespace ts5 {
namespace {

constexpr std::size_t kCommon = 18;           // bytes of COMM before the coding
constexpr std::size_t kCommonAndCoding = 22;  // in AIFF-C
constexpr std::size_t kSoundHead = 8;         // offset and block size before the samples
constexpr std::uint32_t kMostRate = 1U << 20;
constexpr std::uint32_t kMostChannels = 64;

struct Coding {
  std::string_view id;
  std::uint16_t tag;
  std::uint16_t bits;  // 0: as COMM says
  ByteOrder order;
  bool signedBytes;
};
constexpr Coding kCodings[] = {
    {"NONE", kTagPcm, 0, ByteOrder::Big, true},     {"twos", kTagPcm, 0, ByteOrder::Big, true},
    {"sowt", kTagPcm, 0, ByteOrder::Little, true},  {"raw ", kTagPcm, 8, ByteOrder::Big, false},
    {"in24", kTagPcm, 24, ByteOrder::Big, true},    {"in32", kTagPcm, 32, ByteOrder::Big, true},
    {"42ni", kTagPcm, 24, ByteOrder::Little, true}, {"23ni", kTagPcm, 32, ByteOrder::Little, true},
    {"fl32", kTagFloat, 32, ByteOrder::Big, false}, {"FL32", kTagFloat, 32, ByteOrder::Big, false},
    {"fl64", kTagFloat, 64, ByteOrder::Big, false}, {"FL64", kTagFloat, 64, ByteOrder::Big, false},
};

// IEEE 754 extended, 80 bits; 0 for what is no sample rate.
std::uint32_t RateOf(ByteReader& in) {
  const std::uint16_t exponent = in.U16Be();
  const std::uint64_t mantissa = in.U64Be();
  constexpr int kBias = 16383 + 63;
  const double rate = std::ldexp(static_cast<double>(mantissa), static_cast<int>(exponent) - kBias);
  return exponent < 0x8000 && rate >= 1 && rate <= kMostRate ? static_cast<std::uint32_t>(std::llround(rate))
                                                             : 0;
}

struct Common {
  std::uint16_t channels = 0;
  std::uint32_t frames = 0;
  std::uint16_t bits = 0;
  std::uint32_t rate = 0;
  std::string coding = "NONE";
};

std::optional<Common> ParseCommon(ByteView bytes) {
  ByteReader in(bytes);
  Common common;
  common.channels = in.U16Be();
  common.frames = in.U32Be();
  common.bits = in.U16Be();
  common.rate = RateOf(in);
  if (!in.Ok() || common.channels == 0 || common.channels > kMostChannels || common.rate == 0)
    return std::nullopt;
  if (bytes.size() >= kCommonAndCoding) common.coding = std::string(in.Tag());
  return common;
}

struct Sound {
  std::uint64_t offset = 0;
  std::uint64_t size = 0;  // what there is of it
};

Result<std::optional<Sound>> SoundIn(const InputFile& file, const ChunkWalk& walk, const WalkedChunk& chunk) {
  const auto head = walk.Content(chunk, kSoundHead);
  if (!head) return Failure(head.error());
  if (head->size() < kSoundHead) return std::optional<Sound>();
  const std::uint64_t begin = chunk.offset + kSoundHead + ByteReader(*head).U32Be();
  const std::uint64_t end = std::min<std::uint64_t>(chunk.offset + chunk.size, file.Size());
  return std::optional<Sound>({begin, end - std::min(begin, end)});
}

Result<WaveLayout> LayoutOf(const Common& common, const Sound& sound) {
  WaveLayout layout;
  const auto* const coding = std::ranges::find(kCodings, std::string_view(common.coding), &Coding::id);
  if (coding == std::end(kCodings)) {
    layout.format = {.tag = kTagUnknown, .channels = common.channels, .sampleRate = common.rate};
    if (common.frames != 0 && sound.size == 0) return Failure(Outcome::SourceFailed);
    return layout;
  }
  const int bits = coding->bits != 0 ? coding->bits : (common.bits + 7) / 8 * 8;
  layout.format = PcmFormat(common.rate, static_cast<std::uint16_t>(bits), common.channels, coding->tag);
  if (!SampleTypeOf(layout.format)) return Failure(Outcome::WrongFormat);
  layout.order = coding->order;
  layout.signedBytes = bits == 8 && coding->signedBytes;
  layout.dataOffset = sound.offset;
  const std::uint64_t frameSize = layout.format.blockAlign;
  // A count of 0 before samples was never filled in.
  const std::uint64_t counted = common.frames == 0 ? sound.size : common.frames * frameSize;
  layout.dataSize = std::min(counted, sound.size) / frameSize * frameSize;
  if (common.frames != 0 && layout.dataSize == 0) return Failure(Outcome::SourceFailed);
  return layout;
}

}  // namespace

bool IsAiff(ByteView start) {
  ByteReader in(start);
  const bool form = in.Tag() == "FORM";
  in.Skip(4);
  const std::string_view type = in.Tag();
  return form && (type == "AIFF" || type == "AIFC");
}

bool BeginsWithComm(ByteView start) {
  return IsAiff(start) && start.size() >= kFormHead + 4 && AsText(start.subspan(kFormHead, 4)) == "COMM";
}

Result<WaveLayout> ReadAiffLayout(const InputFile& file) {
  std::array<std::uint8_t, kFormHead> head{};
  const auto got = file.ReadAt(0, head);
  if (!got) return Failure(got.error());
  if (!IsAiff(ByteView(head).first(*got))) return Failure(Outcome::WrongFormat);

  ChunkWalk walk(file, ByteOrder::Big);
  std::optional<Common> common;
  std::optional<Sound> sound;
  WalkedChunk chunk;
  while (!(common && sound)) {
    const auto there = walk.Here(chunk);
    if (!there) return Failure(there.error());
    if (!*there) break;
    if (chunk.Id() == "COMM" && !common) {
      const auto bytes = walk.Content(chunk, kCommonAndCoding);
      if (!bytes) return Failure(bytes.error());
      common = ParseCommon(*bytes);
      if (bytes->size() < kCommon || !common) return Failure(Outcome::WrongFormat);
    }
    if (chunk.Id() == "SSND" && !sound) {
      const auto found = SoundIn(file, walk, chunk);
      if (!found) return Failure(found.error());
      sound = *found;
    }
    if (const Outcome moved = walk.MoveBehind(chunk.offset + chunk.size); Failed(moved))
      return Failure(moved);
  }
  if (!common) return Failure(Outcome::WrongFormat);
  return LayoutOf(*common, sound.value_or(Sound{}));
}

}  // namespace ts5
