// What the properties page shows of a MIDI file, as data: labels and values in the order of the page.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "frame/property_row.h"
#include "midi/midi_file.h"
#include "midi/riff_info.h"
#include "platform/calendar.h"
#include "platform/outcome.h"
#include "platform/strings.h"

namespace ts5 {

struct MidiProperties {
  std::string title;                    // of the page: with the file's name
  std::vector<PropertyRow> rows;        // "Eigenschaft", "Wert"
  bool isRiff = false;                  // the page has the list of attributes, be it empty
  std::vector<PropertyRow> attributes;  // "Eigenschaft", "Inhalt"
};

// SourceFailed: the file cannot be opened. WrongFormat: no MIDI file.
[[nodiscard]] Result<MidiProperties> ReadMidiProperties(const std::string& path);

[[nodiscard]] std::vector<PropertyRow> MidiPropertyRows(const MidiFileInfo& info, CalendarDate lastWritten);
[[nodiscard]] std::vector<PropertyRow> RiffAttributeRows(std::span<const RiffInfoEntry> entries);

// The label of an INFO chunk; the id itself when it has none.
[[nodiscard]] std::string_view RiffInfoLabel(std::string_view id);

}  // namespace ts5
