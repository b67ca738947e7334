#include "midi/instruments.h"

#include <algorithm>

#include "midi/texts.h"

namespace ts5 {

std::string_view InstrumentName(std::int32_t program) {
  const int number = static_cast<int>(texts::Instrument001) + std::clamp(program, 0, 127);
  return TextByNumber(number).value_or(std::string_view{});
}

}  // namespace ts5
