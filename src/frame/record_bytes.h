// What the program's own records are put together of, journals and notes alike. Numbers are little-endian;
// a text is its length (4 bytes) and its bytes.
#pragma once

#include <string>
#include <string_view>

#include "platform/base/bytes.h"
#include "platform/base/casts.h"
#include "platform/files/file_mark.h"

namespace ts5 {

inline void Put(ByteWriter& out, std::string_view text) {
  out.U32Le(ClampTo<std::uint32_t>(text.size()));
  out.Append(text);
}
[[nodiscard]] inline std::string TakeText(ByteReader& in) {
  const std::uint32_t size = in.U32Le();
  return std::string(AsText(in.Take(size)));
}

inline void Put(ByteWriter& out, const FileMark& mark) {
  out.U64Le(mark.identity.device);
  out.U64Le(mark.identity.file);
  out.U64Le(mark.size);
  out.U64Le(static_cast<std::uint64_t>(mark.written));
}
[[nodiscard]] inline FileMark TakeMark(ByteReader& in) {
  FileMark mark;
  mark.identity.device = in.U64Le();
  mark.identity.file = in.U64Le();
  mark.size = in.U64Le();
  mark.written = static_cast<std::int64_t>(in.U64Le());
  return mark;
}

}  // namespace ts5
