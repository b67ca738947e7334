// A score played plainly, as a Standard MIDI File of format 1: what is written sounds as long as it is
// written, dynamic marks are velocities, and there is no model of articulation (score_midi.h has that).
//
// A conductor track with tempo, time and key signatures, then one track per staff that has notes: its name,
// program and volume, its notes, and the words that are sung to them (meta 05, Windows-1252, a hyphen behind
// a syllable whose word goes on, a blank behind all others; verse n on pass n of a repeat). 480 ticks a
// quarter note.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/base/bytes.h"
#include "platform/base/outcome.h"
#include "platform/base/work_watch.h"
#include "score/playback_parameters.h"
#include "score/score_document.h"

namespace ts5 {

struct PlainMidiOptions {
  bool lyrics = true;
  bool repeats = true;
  bool invisible = false;            // play what is not printed
  std::int32_t noteValue = 95;       // per cent of its length that a note sounds, 0..100
  std::vector<bool> silentStaves;    // by staff layout; shorter: they sound
  PlaybackParameters playback = {};  // velocities, dynamics switch, channels and sounds where chosen
};

// NoPlayingTime: a score without bars that last. DamagedScore: longer than a MIDI file can say. Cancelled.
[[nodiscard]] Result<Bytes> PlainMidi(const ScoreDocument& score, const PlainMidiOptions& options,
                                      const WorkWatch& watch = {});

// The library method of the score converter: the same from the bytes of a score file. Also the codes of
// ReadScore.
[[nodiscard]] Result<Bytes> ConvertSTVToMID(ByteView score, const PlainMidiOptions& options,
                                            const WorkWatch& watch = {});

}  // namespace ts5
