#include "score/jump_words.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string>

namespace ts5 {
namespace {

struct Row {
  std::string_view text;  // lower case, letters only
  std::uint8_t word;
};
constexpr Row kRows[] = {
    {"segno", kJumpSegno},
    {"coda", kJumpCoda},
    {"fine", kJumpFine},
    {"tocoda", kJumpToCoda},
    {"alcoda", kJumpToCoda},
    {"zurcoda", kJumpToCoda},
    {"dc", kJumpDaCapo},
    {"dcalfine", kJumpDaCapo},
    {"dcalcoda", kJumpDaCapo},
    {"dacapo", kJumpDaCapo},
    {"dacapoalfine", kJumpDaCapo},
    {"dacapoalcoda", kJumpDaCapo},
    {"ds", kJumpDalSegno},
    {"dsalfine", kJumpDalSegno},
    {"dsalcoda", kJumpDalSegno},
    {"dalsegno", kJumpDalSegno},
    {"dalsegnoalfine", kJumpDalSegno},
    {"dalsegnoalcoda", kJumpDalSegno},
};
constexpr std::size_t kLeastText = 4;  // shorter ones are signs of the symbol font
constexpr std::size_t kMostText = 40;
constexpr std::string_view kTimesSigns[] = {"x", "X", "\xD7", "mal", "-mal"};

std::uint8_t Times(std::string_view text) {
  const std::size_t digits = text.find_first_not_of("0123456789");
  if (digits == 0 || digits > 2 || digits == std::string_view::npos) return 0;
  int times = 0;
  for (const char digit : text.substr(0, digits)) times = times * 10 + (digit - '0');
  text.remove_prefix(digits);
  text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
  const bool known = std::ranges::find(kTimesSigns, text) != std::end(kTimesSigns);
  return known && times >= 2 && times <= 15 ? static_cast<std::uint8_t>(times) : std::uint8_t{0};
}

}  // namespace

JumpWords ReadJumpWords(std::string_view text) {
  if (text.size() > kMostText) return {};
  if (const std::uint8_t times = Times(text); times != 0) return {.times = times};
  if (text.size() < kLeastText) return {};
  std::string letters;
  for (const char c : text) {
    const bool upper = c >= 'A' && c <= 'Z';
    if (upper || (c >= 'a' && c <= 'z')) {
      letters += static_cast<char>(upper ? c - 'A' + 'a' : c);
    } else if (c != '.' && c != ' ') {
      return {};
    }
  }
  const auto row = std::ranges::find(kRows, std::string_view(letters), &Row::text);
  if (row == std::end(kRows)) return {};
  const bool back = (row->word & (kJumpDaCapo | kJumpDalSegno)) != 0;
  return {.words = row->word,
          .toFine = back && row->text.ends_with("fine"),
          .toCoda = back && row->text.ends_with("coda")};
}

}  // namespace ts5
