// Checked conversions between number types: nothing is cut off silently.
#pragma once

#include <concepts>
#include <limits>
#include <optional>
#include <utility>

namespace ts5 {

// The value as To, or nothing when To cannot hold it.
template <std::integral To, std::integral From>
[[nodiscard]] constexpr std::optional<To> NarrowTo(From value) {
  if (!std::in_range<To>(value)) return std::nullopt;
  return static_cast<To>(value);
}

// The value as To, moved to the nearest value that To can hold.
template <std::integral To, std::integral From>
[[nodiscard]] constexpr To ClampTo(From value) {
  if (std::cmp_less(value, std::numeric_limits<To>::min())) return std::numeric_limits<To>::min();
  if (std::cmp_greater(value, std::numeric_limits<To>::max())) return std::numeric_limits<To>::max();
  return static_cast<To>(value);
}

}  // namespace ts5
