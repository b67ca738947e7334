// What the properties page shows of a MIDI file, as data: labels and values in the order of the page.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "frame/property_row.h"
#include "midi/midi_file.h"
#include "midi/midi_summary.h"
#include "midi/riff_info.h"
#include "platform/base/calendar.h"
#include "platform/base/outcome.h"
#include "platform/base/strings.h"

namespace ts5 {

struct MidiProperties {
  std::string title;                    // of the page: with the file's name
  std::vector<PropertyRow> rows;        // "Eigenschaft", "Wert"
  bool isRiff = false;                  // the page has the list of attributes, be it empty
  std::vector<PropertyRow> attributes;  // "Eigenschaft", "Inhalt"
  MidiSummary summary;
};

// SourceFailed: the file cannot be opened. WrongFormat: no MIDI file.
[[nodiscard]] Result<MidiProperties> ReadMidiProperties(const std::string& path);

[[nodiscard]] std::vector<PropertyRow> MidiPropertyRows(const MidiFileInfo& info, CalendarDate lastWritten);
// What the file holds: behind the rows of the page.
[[nodiscard]] std::vector<PropertyRow> MidiSummaryRows(const MidiSummary& summary);
[[nodiscard]] std::vector<PropertyRow> RiffAttributeRows(std::span<const RiffInfoEntry> entries);

// The label of an INFO chunk; the id itself when it has none.
[[nodiscard]] std::string_view RiffInfoLabel(std::string_view id);

// Values of a summary in one line, "" where the file says nothing; the state always says something.
[[nodiscard]] std::string MidiLengthText(std::chrono::nanoseconds length);  // "3:07 min"
[[nodiscard]] std::string MidiKeyText(const MidiKey& key);                  // "fis-Moll"
[[nodiscard]] std::string MidiKeysText(const MidiSummary& summary);         // "C-Dur, a-Moll ab Takt 17"
[[nodiscard]] std::string MidiMetresText(const MidiSummary& summary);       // "4/4, 3/4 ab Takt 9"
[[nodiscard]] std::string MidiTempoText(const MidiSummary& summary);        // "60 bis 92,5 BPM, 14 Wechsel"
[[nodiscard]] std::string MidiStateText(const MidiSummary& summary);

}  // namespace ts5
