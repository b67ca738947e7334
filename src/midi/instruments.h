// The sounds of General MIDI by their German names.
#pragma once

#include <cstdint>
#include <string_view>

namespace ts5 {

inline constexpr std::uint8_t kDrumChannel = 9;  // counted from 0: channel 10 of musicians

// Of a program, 0..127; the nearest of them for a number outside.
[[nodiscard]] std::string_view InstrumentName(std::int32_t program);

}  // namespace ts5
