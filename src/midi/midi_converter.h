// The MIDI converter: changes a file's container, its format and its time base, in this order and any of
// them.
#pragma once

#include <cstdint>
#include <string>

#include "frame/destination.h"
#include "frame/filter_module.h"
#include "midi/converter_fields.h"
#include "midi/midi_file.h"
#include "platform/base/bytes.h"
#include "platform/base/outcome.h"
#include "platform/base/work_watch.h"

namespace ts5 {

// What was done to a file, combined by OR; each step sets at most one.
enum ConverterFlag : std::uint32_t {
  kToSmf = 0x10000,
  kToSequencer = 0x20000,
  kToRiff = 0x40000,
  kFormatRefused = 0x80000,  // RIFF and sequencer files keep their format
  kToFormat0 = 0x100000,
  kToFormat1 = 0x200000,
  kSameTimeBase = 0x400000,
  kTimeBaseChanged = 0x800000,
};

struct ConvertedMidi {
  // The new file; empty when no step had anything to change (none chosen, format refused, time base as
  // wanted): then there is nothing to write, and the file counts as converted all the same.
  Bytes bytes;
  std::uint32_t flags = 0;
  bool fromSequencer = false;  // its audio segments keep their start times when the time base changes
};

// kind: of the file, as DetectMidiKind gives it. Where it says Format0 for a file in another container, the
// container counts. Codes: those of the steps.
[[nodiscard]] Result<ConvertedMidi> ConvertMidi(ByteView file, MidiFileKind kind,
                                                const ConverterParameters& parameters, CalendarDate today,
                                                const WorkWatch& watch = {});

// The container that a file of this container gets.
[[nodiscard]] MidiContainer TargetContainer(const ConverterParameters& parameters, MidiContainer source);
// "mid", "rmi" or "rdl" when the container changes (the source's first bytes decide); else the source's own
// extension, format kept.
[[nodiscard]] TargetRule ConverterTarget(const ConverterParameters& parameters, const std::string& source);

[[nodiscard]] FilterModule MidiConverterModule();

}  // namespace ts5
