// What a MIDI file holds, for people who choose among files: title, length, keys, metres, tempos, tracks with
// their instruments and notes, lyrics, and what of it is damaged.
//
// Meta events as the Standard MIDI File has them; karaoke files keep their words in text events ("/" begins a
// line, "\" a verse, "@T" a title). Texts are UTF-8 where they are valid, else Windows-1252; control
// characters become blanks.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "midi/conductor.h"
#include "midi/midi_file.h"
#include "midi/tempo_map.h"
#include "platform/base/bytes.h"
#include "platform/base/work_watch.h"

namespace ts5 {

inline constexpr std::size_t kMaxSummaryFile = std::size_t{64} << 20;  // larger files are not walked

struct MidiKey {
  std::uint64_t tick = 0;
  int sharps = 0;  // -7..7, flats below 0
  bool minor = false;

  friend bool operator==(const MidiKey&, const MidiKey&) = default;
};

// The notes of one channel with one sound.
struct MidiPart {
  std::uint8_t channel = 0;  // 0..15
  std::uint8_t program = 0;  // 0..127; of no meaning on the drum channel
  std::uint64_t notes = 0;

  friend bool operator==(const MidiPart&, const MidiPart&) = default;
};

struct MidiTrackSummary {
  std::string name;             // "" when it has none
  std::vector<MidiPart> parts;  // in order of their first note
  std::uint64_t notes = 0;
  std::uint64_t events = 0;  // that could be read
  bool damaged = false;      // it breaks off
};

struct MidiSummary {
  std::string title;
  std::string copyright;
  std::string lyrics;                 // lines end with '\n'
  std::chrono::nanoseconds length{};  // to the last event; 0 without a division
  std::vector<MidiKey> keys;          // changes in order of tick
  TimeSignatureMap signatures;        // empty when the file says none
  std::vector<TempoEvent> tempos;     // changes in order of tick
  std::vector<MidiTrackSummary> tracks;
  std::uint64_t notes = 0;
  std::uint16_t division = 0;     // ticks per quarter note
  std::size_t missingTracks = 0;  // that the header counts and the file has not
  bool tooLarge = false;          // not walked

  [[nodiscard]] bool Damaged() const;
  // The bar of a tick, counted from 1, as musicians do.
  [[nodiscard]] std::uint64_t BarAt(std::uint64_t tick) const;
};

// From the image of a file in any container. WrongFormat: no MIDI file. Cancelled.
[[nodiscard]] Result<MidiSummary> SummariseMidi(ByteView file, const CancelCheck& cancelled = {});
// Also SourceFailed, ReadFailed and OutOfMemory.
[[nodiscard]] Result<MidiSummary> SummariseMidiFile(const InputFile& input,
                                                    const CancelCheck& cancelled = {});
[[nodiscard]] Result<MidiSummary> SummariseMidiFile(const std::string& path,
                                                    const CancelCheck& cancelled = {});

}  // namespace ts5
