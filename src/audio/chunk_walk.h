// Chunks of RIFF (sizes little-endian), RIFX and IFF files (big-endian), read where they lie: a walk over
// files that may be larger than memory and need not keep to the rules.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "platform/base/bytes.h"
#include "platform/base/outcome.h"
#include "platform/files/input_file.h"

namespace ts5 {

enum class ByteOrder : std::uint8_t { Little, Big };

inline constexpr std::size_t kChunkHead = 8;  // id and size
inline constexpr std::size_t kFormHead = 12;  // id, size and type of the form
// More chunks than any music file has; a walk ends there.
inline constexpr int kMostWalkedChunks = 10000;

struct WalkedChunk {
  std::array<std::uint8_t, 4> id{};
  std::uint32_t size = 0;    // as the file claims
  std::uint64_t offset = 0;  // of its content

  [[nodiscard]] std::string_view Id() const { return AsText(id); }
};

class ChunkWalk {
 public:
  // The file outlives the walk, which begins behind the form's head.
  ChunkWalk(const InputFile& file, ByteOrder order) : file_(file), order_(order) {}

  // The chunk at the walk's place; false at the end of the file, or after kMostWalkedChunks. ReadFailed.
  [[nodiscard]] Result<bool> Here(WalkedChunk& chunk);
  // Goes on behind a content of this size (which may be another than the chunk claims) and its byte of
  // padding, which some writers forget. ReadFailed.
  [[nodiscard]] Outcome MoveBehind(std::uint64_t end);
  // Whether whole chunks follow from there up to the end of the file.
  [[nodiscard]] Result<bool> ChunksFollow(std::uint64_t offset) const;

  // The content of a chunk as far as the file has it, at most limit bytes. ReadFailed.
  [[nodiscard]] Result<Bytes> Content(const WalkedChunk& chunk, std::size_t limit) const;

 private:
  [[nodiscard]] Result<bool> At(std::uint64_t offset, WalkedChunk& chunk) const;

  const InputFile& file_;
  ByteOrder order_;
  std::uint64_t offset_ = kFormHead;
  int count_ = 0;
};

}  // namespace ts5
