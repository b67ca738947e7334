// The list of named two-colour backgrounds, kept below the settings in the registry.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/outcome.h"
#include "platform/store/registry.h"

namespace ts5 {

inline constexpr std::size_t kMaxBackgroundName = 63;  // characters

struct ArtworkBackground {
  std::uint32_t colour1 = 0;  // 0x00BBGGRR
  std::uint32_t colour2 = 0;
  std::uint32_t gradient = 0;  // kind of gradient, 0 none
  std::string name;

  bool operator==(const ArtworkBackground&) const = default;
};

// Never fails: what cannot be read is left out, values that do not fit are 0, a name is cut. Never empty:
// without a stored background the list holds plain white.
[[nodiscard]] std::vector<ArtworkBackground> LoadBackgrounds(const Registry& registry);
// Part of a transaction that is open, or one of its own.
[[nodiscard]] Outcome SaveBackgrounds(Registry& registry, const std::vector<ArtworkBackground>& backgrounds);

}  // namespace ts5
