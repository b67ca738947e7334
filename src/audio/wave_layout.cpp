#include "audio/wave_layout.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <type_traits>
#include <utility>

namespace ts5 {
namespace {

constexpr std::size_t kChunkHeader = kChunkHead;
constexpr std::size_t kLeastFormat = 16;
constexpr std::size_t kMostFormat = 18 + 0xFFFF;
constexpr std::uint32_t kOpenSize = 0xFFFFFFFF;

void Turn(std::span<std::uint8_t> bytes) {
  std::ranges::reverse(bytes);
}

// A format record of big-endian numbers, made little-endian: that of PCM and, by its sub-format, of the
// extensible kind, whose identifier is a number of 32 bits, two of 16 and eight bytes.
void TurnFormat(Bytes& record) {
  constexpr std::size_t kFields[] = {2, 2, 4, 4, 2, 2, 2, 2, 4, 4, 2, 2};
  std::size_t at = 0;
  for (const std::size_t size : kFields) {
    if (at + size > record.size()) return;
    Turn(std::span(record).subspan(at, size));
    at += size;
  }
}

class LayoutReader {
 public:
  LayoutReader(const InputFile& file, bool rf64, ByteOrder order)
      : file_(file), walk_(file, order), rf64_(rf64), order_(order) {}

  Result<WaveLayout> Read() {
    WalkedChunk chunk;
    while (!(format_ && data_)) {
      const auto there = walk_.Here(chunk);
      if (!there) return Failure(there.error());
      if (!*there) break;
      if (const Outcome taken = Take(chunk); Failed(taken)) return Failure(taken);
    }
    if (!format_ || !data_) return Failure(Outcome::WrongFormat);
    const std::uint64_t frame = std::max<std::uint64_t>(format_->blockAlign, 1);
    if (data_->claimed >= frame && data_->claimed != kOpenSize && data_->size < frame)
      return Failure(Outcome::SourceFailed);
    if (order_ == ByteOrder::Big && !SampleTypeOf(*format_)) return Failure(Outcome::WrongFormat);
    return WaveLayout{
        .format = *format_, .dataOffset = data_->offset, .dataSize = data_->size, .order = order_};
  }

 private:
  struct Data {
    std::uint64_t offset;
    std::uint64_t size;  // what there is
    std::uint32_t claimed;
  };

  Outcome Take(const WalkedChunk& chunk) {
    std::uint64_t size = chunk.size;
    Outcome taken = Outcome::Success;
    if (chunk.Id() == "fmt " && !format_) taken = TakeFormat(chunk);
    if (chunk.Id() == "ds64" && rf64_) taken = TakeLongSizes(chunk);
    if (chunk.Id() == "data" && !data_) {
      const auto actual = DataSize(chunk.offset, chunk.size);
      if (!actual) return actual.error();
      size = *actual;
      data_ = Data{chunk.offset, size, chunk.size};
    }
    return Failed(taken) ? taken : walk_.MoveBehind(chunk.offset + size);
  }

  Outcome TakeFormat(const WalkedChunk& chunk) {
    if (chunk.size < kLeastFormat) return Outcome::WrongFormat;
    auto bytes = walk_.Content(chunk, kMostFormat);
    if (!bytes) return bytes.error();
    if (order_ == ByteOrder::Big) TurnFormat(*bytes);
    format_ = ParseWaveFormat(*bytes);
    return format_ ? Outcome::Success : Outcome::WrongFormat;
  }

  Outcome TakeLongSizes(const WalkedChunk& chunk) {
    const auto bytes = walk_.Content(chunk, 16);
    if (!bytes) return bytes.error();
    ByteReader in(*bytes);
    in.Skip(8);
    longData_ = in.U64Le();
    return Outcome::Success;
  }

  Result<std::uint64_t> DataSize(std::uint64_t begin, std::uint32_t claimed) const {
    const std::uint64_t left = file_.Size() - std::min(file_.Size(), begin);
    if (claimed == kOpenSize) return rf64_ && longData_ != 0 ? std::min(longData_, left) : left;
    if (claimed == 0 && left != 0) {
      // An empty chunk among others, or one whose size was never written.
      const auto chunks = walk_.ChunksFollow(begin);
      if (!chunks) return Failure(chunks.error());
      return *chunks ? 0 : left;
    }
    return std::min<std::uint64_t>(claimed, left);
  }

  const InputFile& file_;
  ChunkWalk walk_;
  bool rf64_;
  ByteOrder order_;
  std::uint64_t longData_ = 0;
  std::optional<WaveFormat> format_;
  std::optional<Data> data_;
};

// What follows the size of the form: its type, the chunks and the padding.
std::uint64_t FormSize(const WaveFormat& format, std::uint64_t dataSize, bool rf64) {
  const std::uint64_t chunks =
      4 + (rf64 ? 36 : 0) + kChunkHeader + WaveFormatBytes(format).size() + kChunkHeader + 4 + kChunkHeader;
  return chunks + dataSize + dataSize % 2;
}

}  // namespace

bool IsWave(ByteView start) {
  ByteReader in(start);
  const std::string_view id = in.Tag();
  in.Skip(4);
  return (id == "RIFF" || id == "RIFX" || id == "RF64") && in.Tag() == "WAVE";
}

Result<WaveLayout> ReadWaveLayout(const InputFile& file) {
  std::array<std::uint8_t, kFormHead> head{};
  const auto got = file.ReadAt(0, head);
  if (!got) return Failure(got.error());
  if (!IsWave(ByteView(head).first(*got))) return Failure(Outcome::WrongFormat);
  const std::string_view id = ByteReader(head).Tag();
  return LayoutReader(file, id == "RF64", id == "RIFX" ? ByteOrder::Big : ByteOrder::Little).Read();
}

void BringToRiff(const WaveLayout& layout, std::span<std::uint8_t> samples) {
  if (layout.signedBytes) {
    for (std::uint8_t& sample : samples) sample ^= 0x80;
  }
  if (layout.order == ByteOrder::Little) return;
  const auto turnAll = [samples]<std::size_t kSize>(std::integral_constant<std::size_t, kSize>) {
    for (std::size_t at = 0; at + kSize <= samples.size(); at += kSize) {
      for (std::size_t i = 0; i < kSize / 2; ++i) std::swap(samples[at + i], samples[at + kSize - 1 - i]);
    }
  };
  const auto type = SampleTypeOf(layout.format);
  switch (type ? SampleSize(*type) : 1) {
    case 2:
      return turnAll(std::integral_constant<std::size_t, 2>());
    case 3:
      return turnAll(std::integral_constant<std::size_t, 3>());
    case 4:
      return turnAll(std::integral_constant<std::size_t, 4>());
    case 8:
      return turnAll(std::integral_constant<std::size_t, 8>());
    default:
      return;
  }
}

bool NeedsRf64(const WaveFormat& format, std::uint64_t dataSize) {
  return FormSize(format, dataSize, false) >= kOpenSize;
}

Bytes WaveHeader(const WaveFormat& format, std::uint64_t dataSize, std::uint32_t fact, bool rf64) {
  const Bytes record = WaveFormatBytes(format);
  const std::uint64_t formSize = FormSize(format, dataSize, rf64);
  ByteWriter out;
  out.Append(rf64 ? "RF64" : "RIFF");
  out.U32Le(rf64 ? kOpenSize : static_cast<std::uint32_t>(formSize));
  out.Append("WAVE");
  if (rf64) {
    out.Append("ds64");
    out.U32Le(28);
    out.U64Le(formSize);
    out.U64Le(dataSize);
    out.U64Le(format.blockAlign == 0 ? 0 : dataSize / format.blockAlign);
    out.U32Le(0);  // no further sizes
  }
  out.Append("fmt ");
  out.U32Le(static_cast<std::uint32_t>(record.size()));
  out.Append(record);
  out.Append("fact");
  out.U32Le(4);
  out.U32Le(fact);
  out.Append("data");
  out.U32Le(rf64 ? kOpenSize : static_cast<std::uint32_t>(dataSize));
  return out.Release();
}

}  // namespace ts5
