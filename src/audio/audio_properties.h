// What the properties page shows of an audio file, as data: labels and values in the order of the page.
#pragma once

#include <string>
#include <vector>

#include "audio/loudness.h"
#include "audio/media_probe.h"
#include "frame/property_row.h"
#include "platform/base/calendar.h"
#include "platform/base/outcome.h"
#include "platform/base/work_watch.h"

namespace ts5 {

struct AudioProperties {
  std::string title;  // of the page: with the file's name
  MediaKind kind = MediaKind::None;
  std::vector<PropertyRow> rows;
};

// What the file says about itself; quick. SourceFailed: the file cannot be opened. WrongFormat: no audio, and
// no attributes either.
[[nodiscard]] Result<AudioProperties> ReadAudioProperties(const std::string& path);
// Compressed files show their size and bit rate beside what all show.
[[nodiscard]] std::vector<PropertyRow> AudioPropertyRows(const MediaProbe& probe, CalendarDate lastWritten,
                                                         std::uint64_t fileSize);

// Of several files together: how many, how large, how long.
[[nodiscard]] std::vector<PropertyRow> SummaryRows(const std::vector<std::string>& paths);

// What only all of its samples tell: loudness and true peak. Takes a moment for a long file. Also Cancelled,
// ReadFailed.
[[nodiscard]] Result<std::vector<PropertyRow>> MeasureAudioProperties(const std::string& path,
                                                                      const WorkWatch& watch = {});
[[nodiscard]] std::vector<PropertyRow> LoudnessRows(const Loudness& loudness);

}  // namespace ts5
