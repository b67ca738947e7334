// A MIDI sequence as samples: what the built-in synthesiser makes of it, as fast as it can. The same events
// as the MIDI player sends, each in its place to the sample frame.
//
// After the last event all notes are let go, and the piece ends when what still sounds has died away: when
// nothing of a fifth of a second reaches the last bit of a 16-bit sample, at the latest after half a minute.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "midi/midi_sequence.h"
#include "platform/base/outcome.h"
#include "platform/media/pcm_stream.h"

namespace ts5 {

inline constexpr std::uint32_t kLongestDecaySeconds = 30;
// Longer pieces (damaged files, mostly) are refused.
inline constexpr std::chrono::hours kLongestSynthesis{12};

// Rests that no music has, but damaged files do: this long between two notes, or behind the last one.
inline constexpr std::chrono::minutes kLongRest{10};
inline constexpr std::chrono::seconds kLongEnd{60};
// The longest such rest of the sequence; nothing when it has none.
[[nodiscard]] std::optional<std::chrono::nanoseconds> LongSilence(const MidiSequence& sequence);

// Stereo samples of the sequence. soundFont: "" for the installed one. SourceFailed, LibraryFailed: as
// Synthesizer::Create; DamagedMidi: longer than kLongestSynthesis.
[[nodiscard]] Result<std::unique_ptr<PcmSource>> SynthesisSource(MidiSequence sequence,
                                                                 std::uint32_t sampleRate,
                                                                 const std::string& soundFont = {});

}  // namespace ts5
