// JSON texts as values, for the files that the program keeps in that form and for support logs.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "platform/base/outcome.h"

namespace ts5 {

class JsonValue {
 public:
  using Array = std::vector<JsonValue>;
  using Member = std::pair<std::string, JsonValue>;
  using Object = std::vector<Member>;

  JsonValue() = default;                                                 // null
  JsonValue(bool value) : value_(value) {}                               // NOLINT: written as literals
  JsonValue(double value) : value_(value) {}                             // NOLINT
  JsonValue(std::int64_t value) : value_(static_cast<double>(value)) {}  // NOLINT
  JsonValue(std::int32_t value) : JsonValue(std::int64_t{value}) {}      // NOLINT
  JsonValue(std::uint32_t value) : JsonValue(std::int64_t{value}) {}     // NOLINT
  JsonValue(std::string value) : value_(std::move(value)) {}             // NOLINT
  JsonValue(const char* value) : value_(std::string(value)) {}           // NOLINT
  JsonValue(Array value) : value_(std::move(value)) {}                   // NOLINT
  JsonValue(Object value) : value_(std::move(value)) {}                  // NOLINT

  // WrongFormat: no JSON text in UTF-8, or one that is nested too deeply.
  [[nodiscard]] static Result<JsonValue> Parse(std::string_view text);
  // On one line, without a line end. The members of an object come in the order of their names.
  [[nodiscard]] std::string Text() const;

  [[nodiscard]] bool IsNull() const { return std::holds_alternative<std::monostate>(value_); }
  // The member of that name; null when this is no object or has none.
  [[nodiscard]] const JsonValue& operator[](std::string_view name) const;
  [[nodiscard]] const Array& Items() const;  // empty when this is no array
  // A whole number in that range, or nothing.
  [[nodiscard]] std::optional<std::int64_t> Whole(std::int64_t least, std::int64_t most) const;
  [[nodiscard]] std::string String() const;  // "" when this is none
  [[nodiscard]] bool True() const;           // of a boolean

  using Value = std::variant<std::monostate, bool, double, std::string, Array, Object>;
  [[nodiscard]] const Value& Get() const { return value_; }

 private:
  Value value_;
};

}  // namespace ts5
