// The title and INFO list of RIFF MIDI files: four attributes and a date, written behind the data chunk, and
// the list of what a file has of them. Texts are UTF-8 here and Windows-1252 in the file.
#pragma once

#include <string>
#include <vector>

#include "platform/base/bytes.h"
#include "platform/base/calendar.h"
#include "platform/base/outcome.h"
#include "platform/base/riff.h"

namespace ts5 {

struct RiffAttributes {
  std::string title;
  std::string artist;  // composer or artist
  std::string copyright;
  std::string description;
};

// Writes the chunk DISP (the title as text) and the list INFO (IART, ICOP, ISBJ, ICRD as day/month/year)
// where the writer stands. An attribute left empty is written as "(nicht verwendet)". ChunkNotWritten: a text
// is too long for a chunk.
[[nodiscard]] Outcome WriteRiffInfo(RiffWriter& out, const RiffAttributes& attributes, CalendarDate created);

struct RiffInfoEntry {
  std::string id;    // "IART"
  std::string text;  // up to its terminating zero

  friend bool operator==(const RiffInfoEntry&, const RiffInfoEntry&) = default;
};

// All chunks of all INFO lists in a RIFF form of any type, in file order. WrongFormat: no RIFF form.
[[nodiscard]] Result<std::vector<RiffInfoEntry>> ReadRiffInfo(ByteView file);
// Also SourceFailed and ReadFailed.
[[nodiscard]] Result<std::vector<RiffInfoEntry>> ReadRiffInfo(const std::string& path);

}  // namespace ts5
