// Where in a block of notes a match may begin: a quick look that passes over nearly all notes before the
// matcher tries the rest by its exact rules.
//
// A note is passed over only when the matcher would give it up at the note itself or at the one behind it,
// and go on with that one: later notes of a match must not be looked at here, because the notes inside a
// match that breaks are never tried. It is passed over only where its next onset is certain to be found.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "search/note_stream.h"
#include "search/prepared_melody.h"
#include "search/search_options.h"

namespace ts5 {

class MatchStarts {
 public:
  // Whether the stream must measure distances for the search.
  [[nodiscard]] static bool NeedsDistances(const SearchOptions& options) {
    return options.pitch == PitchMode::Ignore && options.rhythm != RhythmMode::Any;
  }
  MatchStarts(const PreparedMelody& melody, const SearchOptions& options);

  // Looks through the stream's current block.
  void Sift(const NoteStream& notes);
  // The first note from the given one on that may begin a match; the block's size when there is none.
  [[nodiscard]] std::size_t Next(std::size_t note) const;

 private:
  using Mask = std::array<std::uint8_t, NoteStream::kBlock>;

  void SiftPitches(const NoteStream& notes, std::size_t end);
  void SiftExactRhythm(const NoteStream& notes, std::size_t end);
  void SiftRelativeRhythm(const NoteStream& notes, std::size_t end);

  const PreparedMelody& melody_;
  SearchOptions options_;
  Mask may_;  // 1: a match may begin
  std::size_t size_ = 0;
};

}  // namespace ts5
