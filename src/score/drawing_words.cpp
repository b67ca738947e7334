#include "score/drawing_words.h"

#include <algorithm>
#include <charconv>

#include "platform/base/text.h"

namespace ts5 {

JumpMark JumpOf(const DrawingItem& drawing) {
  struct Sign {
    std::string_view name;
    std::uint8_t jump;
  };
  constexpr Sign kSigns[] = {{"segno", kJumpSegno}, {"coda", kJumpCoda},     {"tocoda", kJumpToCoda},
                             {"fine", kJumpFine},   {"dacapo", kJumpDaCapo}, {"dalsegno", kJumpDalSegno}};
  const bool plain = drawing.sign.empty() || drawing.sign == "words";
  const auto* const sign = std::ranges::find(kSigns, drawing.sign, &Sign::name);
  if (!plain && sign == std::end(kSigns)) return {};
  const JumpWords said =
      ReadJumpWords(drawing.words.empty() ? AsText(drawing.text) : Windows1252FromUtf8(drawing.words));
  const std::uint8_t jumps = plain ? said.words : sign->jump;
  const bool back = (jumps & (kJumpDaCapo | kJumpDalSegno)) != 0;
  return {jumps, back && said.toFine, back && said.toCoda};
}

double TempoOf(const DrawingItem& drawing) {
  struct Unit {
    std::string_view name;
    double quarters;
  };
  constexpr Unit kUnits[] = {{"breve", 8},    {"whole", 4},   {"half", 2},     {"quarter", 1},
                             {"eighth", 0.5}, {"16th", 0.25}, {"32nd", 0.125}, {"long", 16}};
  if (drawing.sign != "tempo") return 0;
  std::string_view text = drawing.words;
  double unit = 1;
  if (const std::size_t equal = text.find('='); equal != std::string_view::npos) {
    std::string_view name = text.substr(0, equal);
    double dots = 1;
    for (; name.ends_with('.'); name.remove_suffix(1)) dots /= 2;
    const auto* const found = std::ranges::find(kUnits, name, &Unit::name);
    if (found == std::end(kUnits)) return 0;
    unit = found->quarters * (2 - dots);
    text.remove_prefix(equal + 1);
  }
  double perMinute = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), perMinute);
  const double quarters = error == std::errc() ? perMinute * unit : 0;
  constexpr double kMostQuarters = 10'000;
  return quarters > 0 && quarters <= kMostQuarters ? quarters : 0;
}

}  // namespace ts5
