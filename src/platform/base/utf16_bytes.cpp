#include "platform/base/utf16_bytes.h"

#include "platform/base/text.h"

namespace ts5 {

std::string Utf8FromUtf16Bytes(ByteView bytes, bool bigEndian) {
  ByteReader in(bytes.first(bytes.size() / 2 * 2));
  std::u16string text;
  text.reserve(bytes.size() / 2);
  while (!in.AtEnd()) text += static_cast<char16_t>(bigEndian ? in.U16Be() : in.U16Le());
  return Utf8FromUtf16(text);
}

void AppendUtf16(ByteWriter& out, std::string_view text, bool bigEndian) {
  for (const char16_t unit : Utf16FromUtf8(text)) bigEndian ? out.U16Be(unit) : out.U16Le(unit);
}

}  // namespace ts5
