#include "platform/store/registry_blob.h"

#include <algorithm>

namespace ts5 {
namespace {

constexpr std::size_t kMaxShared = 255;
constexpr std::size_t kValueOverhead = 128;  // what a value takes in memory besides its texts

void PutText(ByteWriter& out, std::string_view text, std::string_view before) {
  const std::size_t most = std::min({text.size(), before.size(), kMaxShared});
  const auto shared = static_cast<std::size_t>(
      std::mismatch(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(most), before.begin()).first -
      text.begin());
  out.U8(static_cast<std::uint8_t>(shared));
  std::size_t rest = text.size() - shared;
  for (; rest >= 0x80; rest >>= 7) out.U8(static_cast<std::uint8_t>(rest | 0x80));
  out.U8(static_cast<std::uint8_t>(rest));
  out.Append(text.substr(shared));
}

// Turns the text before into this one; false when the block contradicts itself.
bool TakeText(ByteReader& in, std::string& text) {
  const std::size_t shared = in.U8();
  std::uint64_t rest = 0;
  for (unsigned shift = 0; shift < 35; shift += 7) {
    const std::uint8_t byte = in.U8();
    rest |= std::uint64_t{byte & 0x7FU} << shift;
    if ((byte & 0x80) == 0) break;
    if (shift == 28) return false;
  }
  if (shared > text.size()) return false;
  text.resize(shared);
  text += AsText(in.Take(static_cast<std::size_t>(rest)));
  return in.Ok();
}

}  // namespace

std::size_t SizeInMemory(const RegistryValues& values) {
  std::size_t size = 0;
  for (const auto& [name, value] : values.All()) size += name.size() + value.data.size() + kValueOverhead;
  return size;
}

Bytes PackValues(const RegistryValues& values) {
  ByteWriter out;
  std::string_view nameBefore;
  std::string_view dataBefore;
  for (const auto& [name, value] : values.All()) {
    out.U8(value.kind == RegistryValue::Kind::Binary ? 1 : 0);
    PutText(out, name, nameBefore);
    PutText(out, value.data, dataBefore);
    nameBefore = name;
    dataBefore = value.data;
  }
  return out.Release();
}

Result<RegistryValues> UnpackValues(ByteView block) {
  ByteReader in(block);
  RegistryValues values;
  std::string name;
  RegistryValue value;
  std::size_t taken = 0;
  while (!in.AtEnd()) {
    const std::uint8_t kind = in.U8();
    if (kind > 1 || !TakeText(in, name) || !TakeText(in, value.data)) return Failure(Outcome::WrongFormat);
    taken += name.size() + value.data.size() + kValueOverhead;
    if (taken > kMaxValuesInMemory) return Failure(Outcome::WrongFormat);
    value.kind = kind == 1 ? RegistryValue::Kind::Binary : RegistryValue::Kind::Text;
    values.Set(name, value);
  }
  return values;
}

}  // namespace ts5
