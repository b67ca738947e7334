// Makes the systems of a document from bars, for readers of formats that know bars and pitches.
//
//   ScoreDocument score;                       // with its staves
//   std::vector<BarColumn> bars;               // [staff][voice] items of each bar
//   AppendBars(score, std::move(bars), 4);
//   const auto moved = PlaceNotes(score);      // ScoreItem::pitches become notes
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/base/work_watch.h"
#include "score/score_bars.h"
#include "score/score_document.h"

namespace ts5 {

// One bar through all staves. A clef, key or time signature stands in the first voice of its staff; keys and
// times at the start of the bar.
struct BarColumn {
  std::vector<std::vector<VoiceItems>> staves = {};  // of each staff layout; without bar lines
  Fraction length = {};                              // 0: as long as its longest voice
  ScoreTimeSignature time = {};                      // in force
  std::uint8_t line = kBarLinePlain;                 // at its end
  std::string lineStyle = {};
  std::uint8_t times = 0;
  std::uint32_t tempo = 0;  // at its start, quarter notes a minute; one that changes begins a system
  bool newSystem = false;
  bool repeatStart = false;  // of the very first bar; elsewhere the bar line before says it
  ScoreBarLabel label = {};
};

// The bars become systems of at most barsPerSystem bars (0: no limit). Voices that are shorter than their bar
// or missing get gaps, so that all keep step; each system begins with the clefs and keys in force. Labels go
// to document.bars.
// Like PlaceNotes, it leaves off where it is told to stop.
void AppendBars(ScoreDocument& document, std::vector<BarColumn> bars, unsigned barsPerSystem,
                const CancelCheck& cancelled = {});

// The item of an event, to be changed.
[[nodiscard]] ScoreItem& ItemOf(ScoreDocument& document, std::size_t staff, std::size_t voice,
                                const ScoreEvent& event);

// A chord whose pitches do not all have a note of their own under their clef and key.
struct MovedNotes {
  std::uint32_t bar = 0;
  std::size_t staff = 0;
  std::uint32_t count = 0;
};
// Gives every chord with pitches its notes, under the clef and key in force, and clears the pitches.
std::vector<MovedNotes> PlaceNotes(ScoreDocument& document, const CancelCheck& cancelled = {});

}  // namespace ts5
