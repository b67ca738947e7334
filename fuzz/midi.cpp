// MIDI files: detection, walking, the conductor scan, what their properties say, and every conversion.
#include <cstdint>
#include <cstdlib>

#include "midi/conductor.h"
#include "midi/midi_converter.h"
#include "midi/midi_events.h"
#include "midi/midi_properties.h"
#include "platform/base/text.h"

namespace {

using namespace ts5;

// What a conversion makes must be read again; a plain file that only changed its container may be as damaged
// as it was.
void CheckWhole(const ConvertedMidi& converted) {
  const MidiFileInfo info = DetectMidiKind(converted.bytes);
  if (info.kind == MidiFileKind::None) abort();
  if ((converted.flags & (kToFormat0 | kToFormat1 | kTimeBaseChanged)) == 0) return;
  if (!MidiTracks(MidiBytesOf(converted.bytes), info.header.trackCount)) abort();
}

void Walk(ByteView file, const MidiFileInfo& info) {
  MidiTrackReader tracks(MidiBytesOf(file), info.header.trackCount);
  for (ByteView track; tracks.Next(track);) {
    (void)ScanConductorTrack(track, info.header.division);
    MidiEventCursor cursor(track);
    for (MidiEvent event; cursor.Next(event);) {
      if (event.encoded.empty() || event.payload.size() > track.size()) abort();
    }
    if (cursor.Damaged() == cursor.AtEndOfTrack()) abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const ByteView file(data, size);
  const MidiFileInfo info = DetectMidiKind(file);
  Walk(file, info);
  const auto summary = SummariseMidi(file);
  if (summary.has_value() != (info.kind != MidiFileKind::None)) abort();
  if (summary) {
    for (const PropertyRow& row : MidiSummaryRows(*summary)) {
      if (!IsUtf8(row.value)) abort();
    }
  }
  for (unsigned bits = 0; bits < 16; ++bits) {
    ConverterParameters parameters;
    parameters.changeContainer = (bits & 1) != 0;
    parameters.toRiff = (bits & 2) != 0;
    parameters.changeFormat = (bits & 4) != 0;
    parameters.changeTimeBase = (bits & 8) != 0;
    const auto converted = ConvertMidi(file, info.kind, parameters, {});
    if (converted && !converted->bytes.empty()) CheckWhole(*converted);
  }
  return 0;
}
