#include "audio/chunk_walk.h"

#include <algorithm>

namespace ts5 {
namespace {

constexpr std::string_view kUsualIds[] = {"fmt ", "data", "fact", "LIST", "COMM", "SSND"};

bool LooksLikeId(std::string_view id) {
  return std::ranges::all_of(id, [](char c) { return c >= 0x20 && c < 0x7F; });
}

bool IsUsual(std::string_view id) {
  return std::ranges::find(kUsualIds, id) != std::end(kUsualIds);
}

}  // namespace

Result<bool> ChunkWalk::At(std::uint64_t offset, WalkedChunk& chunk) const {
  std::array<std::uint8_t, kChunkHead> bytes{};
  const auto got = file_.ReadAt(offset, bytes);
  if (!got) return Failure(got.error());
  if (*got < bytes.size()) return false;
  std::copy_n(bytes.begin(), chunk.id.size(), chunk.id.begin());
  ByteReader in(ByteView(bytes).subspan(chunk.id.size()));
  chunk.size = order_ == ByteOrder::Little ? in.U32Le() : in.U32Be();
  chunk.offset = offset + kChunkHead;
  return true;
}

Result<bool> ChunkWalk::Here(WalkedChunk& chunk) {
  if (count_++ >= kMostWalkedChunks) return false;
  return At(offset_, chunk);
}

Outcome ChunkWalk::MoveBehind(std::uint64_t end) {
  offset_ = end + end % 2;
  if (end % 2 == 0) return Outcome::Success;
  WalkedChunk padded;
  WalkedChunk bare;
  const auto hasPadded = At(offset_, padded);
  const auto hasBare = At(end, bare);
  if (!hasPadded) return hasPadded.error();
  if (!hasBare) return hasBare.error();
  const bool paddedFits = *hasPadded && LooksLikeId(padded.Id());
  const bool bareFits = *hasBare && LooksLikeId(bare.Id());
  if (bareFits && (!paddedFits || (IsUsual(bare.Id()) && !IsUsual(padded.Id())))) offset_ = end;
  return Outcome::Success;
}

Result<bool> ChunkWalk::ChunksFollow(std::uint64_t offset) const {
  for (int count = 0; count < kMostWalkedChunks && offset < file_.Size(); ++count) {
    WalkedChunk chunk;
    const auto there = At(offset, chunk);
    if (!there) return Failure(there.error());
    if (!*there || !LooksLikeId(chunk.Id())) return false;
    const std::uint64_t end = chunk.offset + chunk.size;
    if (end > file_.Size()) return false;
    offset = end + end % 2;
  }
  return offset >= file_.Size();
}

Result<Bytes> ChunkWalk::Content(const WalkedChunk& chunk, std::size_t limit) const {
  Bytes bytes(std::min<std::size_t>(chunk.size, limit));
  const auto got = file_.ReadAt(chunk.offset, bytes);
  if (!got) return Failure(got.error());
  bytes.resize(*got);
  return bytes;
}

}  // namespace ts5
