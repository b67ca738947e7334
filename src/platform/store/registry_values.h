// The values of one registry key: named texts and binary values, in memory.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "platform/base/bytes.h"
#include "platform/base/text.h"

namespace ts5 {

struct RegistryValue {
  enum class Kind : std::uint8_t { Text, Binary };
  Kind kind = Kind::Text;
  std::string data;  // UTF-8 text, or the bytes as they are

  bool operator==(const RegistryValue&) const = default;
};

// Names are found without regard to case and keep the spelling they were first given.
class RegistryValues {
 public:
  using Map = std::map<std::string, RegistryValue, LessIgnoringCase>;

  [[nodiscard]] const RegistryValue* Find(std::string_view name) const {
    const auto found = values_.find(name);
    return found == values_.end() ? nullptr : &found->second;
  }
  // A text value; nothing when it is missing or binary.
  [[nodiscard]] std::optional<std::string_view> Text(std::string_view name) const {
    const RegistryValue* value = Find(name);
    if (value == nullptr || value->kind != RegistryValue::Kind::Text) return std::nullopt;
    return value->data;
  }
  // A text value that holds a whole decimal number.
  [[nodiscard]] std::optional<std::int64_t> Integer(std::string_view name) const {
    const auto text = Text(name);
    return text ? ParseInteger(Trim(*text)) : std::nullopt;
  }
  [[nodiscard]] std::optional<ByteView> Binary(std::string_view name) const {
    const RegistryValue* value = Find(name);
    if (value == nullptr || value->kind != RegistryValue::Kind::Binary) return std::nullopt;
    return AsBytes(value->data);
  }

  void SetText(std::string_view name, std::string_view text) {
    Set(name, {RegistryValue::Kind::Text, std::string(text)});
  }
  void SetInteger(std::string_view name, std::int64_t value) { SetText(name, std::to_string(value)); }
  void SetBinary(std::string_view name, ByteView bytes) {
    Set(name, {RegistryValue::Kind::Binary, std::string(AsText(bytes))});
  }
  void Set(std::string_view name, RegistryValue value) {
    // Values that come in order, as those of long lists do, need no search.
    if (!values_.empty() && values_.key_comp()(values_.rbegin()->first, name)) {
      values_.emplace_hint(values_.end(), std::string(name), std::move(value));
    } else {
      values_.insert_or_assign(std::string(name), std::move(value));
    }
  }
  bool Erase(std::string_view name) {
    const auto found = values_.find(name);
    if (found == values_.end()) return false;
    values_.erase(found);
    return true;
  }

  [[nodiscard]] const Map& All() const { return values_; }
  bool operator==(const RegistryValues&) const = default;

 private:
  Map values_;
};

}  // namespace ts5
