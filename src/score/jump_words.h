// The words with which a score says where to go on: Da Capo, Dal Segno, Fine, Coda, and how often a repeat is
// played. They are texts that hang on note groups.
//
// Words of jumps hold for the end of the bar in which they stand, a segno for its start. Points, blanks and
// case do not count: "D.C. al Fine", "Da capo al fine" and "DC al FINE" are the same. After a jump repeats
// are not taken and the last endings are played; the coda is what stands behind the jump.
#pragma once

#include <cstdint>
#include <string_view>

namespace ts5 {

// Bits of JumpWords::words, and of ScoreBar::jumps.
inline constexpr std::uint8_t kJumpSegno = 0x01;   // at the start of the bar
inline constexpr std::uint8_t kJumpCoda = 0x02;    // at the start: where "to coda" leads
inline constexpr std::uint8_t kJumpToCoda = 0x04;  // at the end, like those below
inline constexpr std::uint8_t kJumpFine = 0x08;
inline constexpr std::uint8_t kJumpDaCapo = 0x10;
inline constexpr std::uint8_t kJumpDalSegno = 0x20;

struct JumpWords {
  std::uint8_t words = 0;
  std::uint8_t times = 0;  // "3x": the repeat is played so often (2..15); 0 nothing said
  bool toFine = false;     // the jump back ends at the fine, or goes on at the coda
  bool toCoda = false;
};

// Windows-1252. A text that says something else gives nothing.
[[nodiscard]] JumpWords ReadJumpWords(std::string_view text);

}  // namespace ts5
