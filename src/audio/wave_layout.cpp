#include "audio/wave_layout.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>

namespace ts5 {
namespace {

constexpr std::size_t kChunkHeader = 8;
constexpr std::size_t kFormHeader = 12;
constexpr std::size_t kLeastFormat = 16;
constexpr std::size_t kMostFormat = 18 + 0xFFFF;
constexpr int kMostChunks = 10000;  // before the two that are looked for; more are no wave file
constexpr std::uint32_t kOpenSize = 0xFFFFFFFF;

struct Chunk {
  std::array<std::uint8_t, 4> id{};
  std::uint32_t size = 0;  // as the file claims

  [[nodiscard]] std::string_view Id() const { return AsText(id); }
};

Result<std::optional<Chunk>> ChunkAt(const InputFile& file, std::uint64_t offset) {
  std::array<std::uint8_t, kChunkHeader> bytes{};
  const auto got = file.ReadAt(offset, bytes);
  if (!got) return Failure(got.error());
  if (*got < bytes.size()) return std::optional<Chunk>();
  Chunk chunk;
  std::copy_n(bytes.begin(), 4, chunk.id.begin());
  ByteReader in(bytes);
  in.Skip(4);
  chunk.size = in.U32Le();
  return std::optional(chunk);
}

bool LooksLikeId(std::string_view id) {
  return std::ranges::all_of(id, [](char c) { return c >= 0x20 && c < 0x7F; });
}

// Whether whole chunks follow up to the end of the file.
Result<bool> ChunksFollow(const InputFile& file, std::uint64_t offset) {
  for (int count = 0; count < kMostChunks && offset < file.Size(); ++count) {
    const auto chunk = ChunkAt(file, offset);
    if (!chunk) return Failure(chunk.error());
    if (!*chunk || !LooksLikeId((*chunk)->Id())) return false;
    const std::uint64_t end = offset + kChunkHeader + (*chunk)->size;
    if (end > file.Size()) return false;
    offset = end + end % 2;
  }
  return offset >= file.Size();
}

class LayoutReader {
 public:
  explicit LayoutReader(const InputFile& file) : file_(file) {}

  Result<WaveLayout> Read() {
    if (const Outcome form = ReadForm(); Failed(form)) return Failure(form);
    for (int count = 0; count < kMostChunks && !(format_ && data_); ++count) {
      const auto chunk = ChunkAt(file_, offset_);
      if (!chunk) return Failure(chunk.error());
      if (!*chunk) break;
      if (const Outcome taken = Take(**chunk); Failed(taken)) return Failure(taken);
    }
    if (!format_ || !data_) return Failure(Outcome::WrongFormat);
    return WaveLayout{*format_, data_->offset, data_->size};
  }

 private:
  struct Place {
    std::uint64_t offset;
    std::uint64_t size;
  };

  Outcome ReadForm() {
    std::array<std::uint8_t, kFormHeader> bytes{};
    const auto got = file_.ReadAt(0, bytes);
    if (!got) return got.error();
    ByteReader in(ByteView(bytes).first(*got));
    const std::string_view id = in.Tag();
    in.Skip(4);
    if ((id != "RIFF" && id != "RF64") || in.Tag() != "WAVE") return Outcome::WrongFormat;
    rf64_ = id == "RF64";
    offset_ = kFormHeader;
    return Outcome::Success;
  }

  Outcome Take(const Chunk& chunk) {
    const std::uint64_t begin = offset_ + kChunkHeader;
    std::uint64_t size = chunk.size;
    Outcome taken = Outcome::Success;
    if (chunk.Id() == "fmt " && !format_) taken = TakeFormat(begin, chunk.size);
    if (chunk.Id() == "ds64" && rf64_) taken = TakeLongSizes(begin);
    if (chunk.Id() == "data" && !data_) {
      const auto actual = DataSize(begin, chunk.size);
      if (!actual) return actual.error();
      size = *actual;
      data_ = Place{begin, size};
    }
    return Failed(taken) ? taken : MoveBehind(begin + size);
  }

  Outcome TakeFormat(std::uint64_t begin, std::uint32_t size) {
    if (size < kLeastFormat) return Outcome::WrongFormat;
    Bytes bytes(std::min<std::size_t>(size, kMostFormat));
    const auto got = file_.ReadAt(begin, bytes);
    if (!got) return got.error();
    format_ = ParseWaveFormat(ByteView(bytes).first(*got));
    return format_ ? Outcome::Success : Outcome::WrongFormat;
  }

  Outcome TakeLongSizes(std::uint64_t begin) {
    std::array<std::uint8_t, 16> bytes{};
    const auto got = file_.ReadAt(begin, bytes);
    if (!got) return got.error();
    ByteReader in(ByteView(bytes).first(*got));
    in.Skip(8);
    longData_ = in.U64Le();
    return Outcome::Success;
  }

  Result<std::uint64_t> DataSize(std::uint64_t begin, std::uint32_t claimed) const {
    const std::uint64_t left = file_.Size() - std::min(file_.Size(), begin);
    if (claimed == kOpenSize) return rf64_ && longData_ != 0 ? std::min(longData_, left) : left;
    if (claimed == 0 && left != 0) {
      // An empty chunk among others, or one whose size was never written.
      const auto chunks = ChunksFollow(file_, begin);
      if (!chunks) return Failure(chunks.error());
      return *chunks ? 0 : left;
    }
    return std::min<std::uint64_t>(claimed, left);
  }

  // Behind a chunk of odd length there is a byte of padding, which some writers forget.
  Outcome MoveBehind(std::uint64_t end) {
    offset_ = end + end % 2;
    if (end % 2 == 0) return Outcome::Success;
    const auto padded = ChunkAt(file_, offset_);
    const auto bare = ChunkAt(file_, end);
    if (!padded) return padded.error();
    if (!bare) return bare.error();
    const bool paddedFits = *padded && LooksLikeId((*padded)->Id());
    if (!paddedFits && *bare && LooksLikeId((*bare)->Id())) offset_ = end;
    return Outcome::Success;
  }

  const InputFile& file_;
  std::uint64_t offset_ = 0;
  bool rf64_ = false;
  std::uint64_t longData_ = 0;
  std::optional<WaveFormat> format_;
  std::optional<Place> data_;
};

// What follows the size of the form: its type, the chunks and the padding.
std::uint64_t FormSize(const WaveFormat& format, std::uint64_t dataSize, bool rf64) {
  const std::uint64_t chunks =
      4 + (rf64 ? 36 : 0) + kChunkHeader + WaveFormatBytes(format).size() + kChunkHeader + 4 + kChunkHeader;
  return chunks + dataSize + dataSize % 2;
}

}  // namespace

Result<WaveLayout> ReadWaveLayout(const InputFile& file) {
  return LayoutReader(file).Read();
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
