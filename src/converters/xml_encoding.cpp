#include "converters/xml_encoding.h"

#include <iconv.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "platform/base/text.h"

namespace ts5::converters {
namespace {

struct Signature {
  std::string_view bytes;
  const char* encoding;
  std::size_t mark;  // bytes of its mark, which are no text
};
// The longer ones first.
constexpr Signature kSignatures[] = {
    {std::string_view("\xFF\xFE\0\0", 4), "UTF-32LE", 4},
    {std::string_view("\0\0\xFE\xFF", 4), "UTF-32BE", 4},
    {std::string_view("<\0\0\0", 4), "UTF-32LE", 0},
    {std::string_view("\0\0\0<", 4), "UTF-32BE", 0},
    {"\xEF\xBB\xBF", "UTF-8", 3},
    {"\xFF\xFE", "UTF-16LE", 2},
    {"\xFE\xFF", "UTF-16BE", 2},
    {std::string_view("<\0", 2), "UTF-16LE", 0},
    {std::string_view("\0<", 2), "UTF-16BE", 0},
};
constexpr std::size_t kDeclarationBytes = 256;
constexpr unsigned kBlocksBetween = 64;  // of a conversion, between two looks at the stop

// The encoding that an XML declaration in single bytes names; "" none.
std::string Declared(std::string_view text) {
  text = text.substr(0, kDeclarationBytes);
  if (!text.starts_with("<?xml")) return {};
  text = text.substr(0, text.find("?>"));
  const std::size_t name = text.find("encoding");
  if (name == std::string_view::npos) return {};
  const std::size_t open = text.find_first_of("'\"", name);
  if (open == std::string_view::npos) return {};
  const std::size_t close = text.find(text[open], open + 1);
  return close == std::string_view::npos ? std::string()
                                         : std::string(text.substr(open + 1, close - open - 1));
}

class Converter {
 public:
  explicit Converter(const char* encoding) : handle_(iconv_open("UTF-8", encoding)) {}
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;
  ~Converter() {
    if (Ok()) iconv_close(handle_);
  }
  [[nodiscard]] bool Ok() const { return handle_ != reinterpret_cast<iconv_t>(-1); }

  Result<std::string> Convert(std::string_view text, const CancelCheck& cancelled) {
    std::string converted;
    converted.reserve(text.size());
    std::array<char, 16384> buffer{};
    char* in = const_cast<char*>(text.data());  // iconv's interface; it does not write there
    std::size_t left = text.size();
    for (unsigned blocks = 0; left > 0; ++blocks) {
      if (blocks % kBlocksBetween == 0 && cancelled && cancelled()) return Failure(Outcome::Cancelled);
      char* out = buffer.data();
      std::size_t room = buffer.size();
      const bool whole = iconv(handle_, &in, &left, &out, &room) != static_cast<std::size_t>(-1);
      converted.append(buffer.data(), buffer.size() - room);
      if (!whole && errno != E2BIG) return Failure(Outcome::WrongFormat);
    }
    return converted;
  }

 private:
  iconv_t handle_;
};

// Hands the text over in pieces that end between characters; false when it is to stop.
template <typename Take>
bool InPieces(std::string_view text, const CancelCheck& cancelled, const Take& take) {
  constexpr std::size_t kPiece = std::size_t{4} << 20;
  while (!text.empty()) {
    if (cancelled && cancelled()) return false;
    std::size_t size = std::min(kPiece, text.size());
    for (int back = 0; back < 3 && size < text.size() && (text[size] & 0xC0) == 0x80; ++back) --size;
    take(text.substr(0, size));
    text.remove_prefix(size);
  }
  return true;
}

// What calls itself UTF-8 and is not is nearly always Windows-1252.
Result<std::string> Utf8Text(std::string_view text, const CancelCheck& cancelled) {
  bool valid = true;
  if (!InPieces(text, cancelled, [&](std::string_view piece) { valid = valid && IsUtf8(piece); }))
    return Failure(Outcome::Cancelled);
  if (valid) return std::string(text);
  std::string converted;
  const auto convert = [&](std::string_view piece) { converted += Utf8FromWindows1252(piece); };
  if (!InPieces(text, cancelled, convert)) return Failure(Outcome::Cancelled);
  return converted;
}

}  // namespace

Result<std::string> XmlText(ByteView file, const CancelCheck& cancelled) {
  std::string_view text = AsText(file);
  std::string encoding;
  for (const Signature& signature : kSignatures) {
    if (!text.starts_with(signature.bytes)) continue;
    encoding = signature.encoding;
    text.remove_prefix(signature.mark);
    break;
  }
  if (encoding.empty()) encoding = Declared(text);
  // A text that can be read up to there is of single bytes, whatever it calls itself.
  const std::string family = ToUpper(encoding).substr(0, 6);
  const bool wide = family == "UTF-16" || family == "UTF-32";
  if (encoding.empty() || (wide && text.starts_with("<?xml")) || EqualsIgnoringCase(encoding, "UTF-8"))
    return Utf8Text(text, cancelled);
  Converter converter(encoding.c_str());
  if (!converter.Ok()) return Failure(Outcome::WrongFormat);
  return converter.Convert(text, cancelled);
}

}  // namespace ts5::converters
