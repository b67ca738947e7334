// Scores of two staves with anything in them, for what must hold for any score.
#pragma once

#include <random>

#include "score_log.h"

namespace ts5::test {

inline ScoreItem RandomItem(std::mt19937& random, bool repeats) {
  const auto below = [&random](unsigned n) { return static_cast<std::uint8_t>(random() % n); };
  switch (below(12)) {
    case 0:
      return BarItem(repeats ? below(6) : 0);
    case 1:
      return RestItem(below(7), below(3));
    case 2:
      return KeyItem(below(15) - 7);
    case 3:
      return Grace(static_cast<std::int8_t>(below(20) - 10), below(3));
    default:
      break;
  }
  ScoreItem item = ChordItem(below(7), {}, below(2));
  for (unsigned i = 0; i <= below(4); ++i)
    item.group.notes.push_back(Note(static_cast<std::int8_t>(below(30) - 15)));
  item.group.articulation = below(9);
  item.group.tuplet.number = below(8) < 7 ? 0 : static_cast<std::uint8_t>(2 + below(6));
  item.group.flags = below(20) == 0 ? kGroupZeroDuration : 0;
  item = Tied(item, below(6) == 0, below(6) == 0);
  if (below(8) == 0) item.drawings.push_back(HairpinDrawing(below(6), below(2) == 0));
  if (below(8) == 0) item.drawings.push_back(TextDrawing(std::string(1, "fghijpqrsz{|"[below(12)])));
  if (below(8) == 0) item.drawings.push_back(VoltaDrawing(static_cast<std::uint8_t>(1 + below(2))));
  if (below(8) == 0) item.drawings.push_back(CurveDrawing(below(4)));
  return item;
}

// Those of an even seed have repeats.
inline ScoreDocument RandomScore(unsigned seed) {
  std::mt19937 random(seed);
  ScoreDocument document;
  document.staves = {StaffNamed("A"), StaffNamed("B", 40)};
  for (int s = 0; s < 3; ++s) {
    SystemItems system;
    system.tempo = random() % 3 == 0 ? 0U : static_cast<std::uint32_t>(40 + random() % 200);
    for (std::uint8_t layout = 0; layout < 2; ++layout) {
      StaffItems staff{layout, {}, {}};
      for (int v = 0; v < 2; ++v) {
        VoiceItems items;
        for (int i = 0; i < 30; ++i) items.push_back(RandomItem(random, seed % 2 == 0));
        staff.voices.push_back(std::move(items));
      }
      system.staves.push_back(std::move(staff));
    }
    document.systems.push_back(std::move(system));
  }
  return document;
}

}  // namespace ts5::test
