#include "midi/midi_properties.h"

#include <algorithm>

#include "midi/texts.h"
#include "platform/paths.h"
#include "platform/text.h"

namespace ts5 {

namespace {

struct InfoLabel {
  std::string_view id;
  TextId label;
};
constexpr InfoLabel kInfoLabels[] = {
    {"IARL", texts::RiffInfoIarl}, {"IART", texts::RiffInfoIart}, {"ICMS", texts::RiffInfoIcms},
    {"ICMT", texts::RiffInfoIcmt}, {"ICOP", texts::RiffInfoIcop}, {"ICRD", texts::RiffInfoIcrd},
    {"ICRP", texts::RiffInfoIcrp}, {"IDIM", texts::RiffInfoIdim}, {"IDPI", texts::RiffInfoIdpi},
    {"IGNR", texts::RiffInfoIgnr}, {"IKEY", texts::RiffInfoIkey}, {"ILGT", texts::RiffInfoIlgt},
    {"IMED", texts::RiffInfoImed}, {"INAM", texts::RiffInfoInam}, {"IPLT", texts::RiffInfoIplt},
    {"IPRD", texts::RiffInfoIprd}, {"ISBJ", texts::RiffInfoIsbj}, {"IENG", texts::RiffInfoIeng},
    {"ISFT", texts::RiffInfoIsft}, {"ISHP", texts::RiffInfoIshp}, {"ISRC", texts::RiffInfoIsrc},
    {"ISRF", texts::RiffInfoIsrf}, {"ITCH", texts::RiffInfoItch}, {"ISMP", texts::RiffInfoIsmp},
    {"IDIT", texts::RiffInfoIdit},
};

TextId FormatName(MidiFileKind kind) {
  switch (kind) {
    case MidiFileKind::Riff:
      return texts::PropertyFormatRiff;
    case MidiFileKind::Sequencer:
      return texts::PropertyFormatSequencer;
    case MidiFileKind::Format0:
      return texts::PropertyFormatMidi0;
    case MidiFileKind::Format1:
      return texts::PropertyFormatMidi1;
    case MidiFileKind::None:
      break;
  }
  return texts::PropertyUnknownFormat;
}

std::string Copy(TextId id) {
  return std::string(Text(id));
}

}  // namespace

std::string_view RiffInfoLabel(std::string_view id) {
  const auto row = std::ranges::find(kInfoLabels, id, &InfoLabel::id);
  return row == std::end(kInfoLabels) ? id : Text(row->label);
}

std::vector<PropertyRow> MidiPropertyRows(const MidiFileInfo& info, CalendarDate lastWritten) {
  const auto [day, month, year] = NumbersOf(lastWritten);
  const bool timeCode = (info.header.division & 0x8000) != 0;
  return {
      {Copy(texts::PropertyFileFormat), Copy(FormatName(info.kind))},
      {Copy(texts::PropertyLastWritten), Format(Text(texts::PropertyDate), day, month, year)},
      {Copy(texts::PropertyTrackCount), std::to_string(info.header.trackCount)},
      {Copy(texts::PropertyTimeFormat),
       Copy(timeCode ? texts::PropertyTimeCode : texts::PropertyTicksPerQuarter)},
      {Copy(texts::PropertyDivision), std::to_string(info.header.division)},
  };
}

std::vector<PropertyRow> RiffAttributeRows(std::span<const RiffInfoEntry> entries) {
  std::vector<PropertyRow> rows;
  for (const RiffInfoEntry& entry : entries)
    rows.push_back({std::string(RiffInfoLabel(entry.id)), entry.text});
  return rows;
}

Result<MidiProperties> ReadMidiProperties(const std::string& path) {
  const auto info = ReadMidiFileHeader(path);
  if (!info) return Failure(info.error());
  const auto written = LastWriteDate(path);
  if (!written) return Failure(written.error());

  MidiProperties properties;
  properties.title = Format(Text(texts::PropertiesTitle), FileNameOf(path));
  properties.rows = MidiPropertyRows(*info, *written);
  if (const auto entries = ReadRiffInfo(path)) {
    properties.isRiff = true;
    properties.attributes = RiffAttributeRows(*entries);
  }
  return properties;
}

}  // namespace ts5
