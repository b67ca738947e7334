// RIFF files: chunks of a four-character id, a 32-bit little-endian size and that many bytes, padded to an
// even length; a form or list is a chunk that begins with a type and holds chunks.
//
//   RiffWriter out;
//   const auto form = out.Begin("RIFF", "RMID");
//   const auto data = out.Begin("data");
//   out.Content().Append(midi);
//   if (!out.End(data) || !out.End(form)) return Failure(Outcome::WriteFailed);
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/base/bytes.h"

namespace ts5 {

struct RiffChunk {
  std::string_view id;     // four characters
  std::uint32_t size = 0;  // as the file claims
  ByteView data;           // what there is of it
};

// The chunks of a form's or list's content, one after the other. A chunk that claims more than there is ends
// with the content.
class RiffChunkReader {
 public:
  explicit RiffChunkReader(ByteView content) : in_(content) {}

  [[nodiscard]] bool Next(RiffChunk& chunk) {
    if (in_.Remaining() < 8) return false;
    chunk.id = in_.Tag();
    chunk.size = in_.U32Le();
    chunk.data = in_.Take(std::min<std::size_t>(chunk.size, in_.Remaining()));
    if (chunk.size % 2 != 0 && !in_.AtEnd()) in_.Skip(1);
    return true;
  }

 private:
  ByteReader in_;
};

// What lies behind the type of a file's RIFF form; nothing when it is no such form. It reaches to the end of
// the file: the form's own size is wrong too often to be asked.
[[nodiscard]] inline std::optional<ByteView> RiffFormContent(ByteView file, std::string_view type) {
  ByteReader in(file);
  if (in.Tag() != "RIFF") return std::nullopt;
  in.Skip(4);
  if (in.Tag() != type) return std::nullopt;
  return file.subspan(in.Position());
}

[[nodiscard]] inline std::optional<RiffChunk> FindRiffChunk(ByteView content, std::string_view id) {
  RiffChunkReader chunks(content);
  for (RiffChunk chunk; chunks.Next(chunk);) {
    if (chunk.id == id) return chunk;
  }
  return std::nullopt;
}

// Writes into memory; chunks may lie in each other.
class RiffWriter {
 public:
  // Where the chunk's size is to be written; pass it to End.
  [[nodiscard]] std::size_t Begin(std::string_view id) {
    out_.Append(id);
    out_.U32Le(0);
    return out_.Size();
  }
  [[nodiscard]] std::size_t Begin(std::string_view id, std::string_view type) {
    const std::size_t start = Begin(id);
    out_.Append(type);
    return start;
  }
  // False when the chunk is too long for its size field.
  [[nodiscard]] bool End(std::size_t start) {
    const std::size_t size = out_.Size() - start;
    if (size > UINT32_MAX) return false;
    out_.PatchU32Le(start - 4, static_cast<std::uint32_t>(size));
    if (size % 2 != 0) out_.U8(0);
    return true;
  }
  [[nodiscard]] ByteWriter& Content() { return out_; }

 private:
  ByteWriter out_;
};

}  // namespace ts5
