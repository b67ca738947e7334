#include "midi/midi_properties.h"

#include <algorithm>

#include "platform/paths.h"
#include "platform/text.h"

namespace ts5 {

namespace {

struct InfoLabel {
  std::string_view id;
  TextId label;
};
constexpr InfoLabel kInfoLabels[] = {
    {"IARL", TextId::RiffInfoIarl}, {"IART", TextId::RiffInfoIart}, {"ICMS", TextId::RiffInfoIcms},
    {"ICMT", TextId::RiffInfoIcmt}, {"ICOP", TextId::RiffInfoIcop}, {"ICRD", TextId::RiffInfoIcrd},
    {"ICRP", TextId::RiffInfoIcrp}, {"IDIM", TextId::RiffInfoIdim}, {"IDPI", TextId::RiffInfoIdpi},
    {"IGNR", TextId::RiffInfoIgnr}, {"IKEY", TextId::RiffInfoIkey}, {"ILGT", TextId::RiffInfoIlgt},
    {"IMED", TextId::RiffInfoImed}, {"INAM", TextId::RiffInfoInam}, {"IPLT", TextId::RiffInfoIplt},
    {"IPRD", TextId::RiffInfoIprd}, {"ISBJ", TextId::RiffInfoIsbj}, {"IENG", TextId::RiffInfoIeng},
    {"ISFT", TextId::RiffInfoIsft}, {"ISHP", TextId::RiffInfoIshp}, {"ISRC", TextId::RiffInfoIsrc},
    {"ISRF", TextId::RiffInfoIsrf}, {"ITCH", TextId::RiffInfoItch}, {"ISMP", TextId::RiffInfoIsmp},
    {"IDIT", TextId::RiffInfoIdit},
};

TextId FormatName(MidiFileKind kind) {
  switch (kind) {
    case MidiFileKind::Riff:
      return TextId::PropertyFormatRiff;
    case MidiFileKind::Sequencer:
      return TextId::PropertyFormatSequencer;
    case MidiFileKind::Format0:
      return TextId::PropertyFormatMidi0;
    case MidiFileKind::Format1:
      return TextId::PropertyFormatMidi1;
    case MidiFileKind::None:
      break;
  }
  return TextId::PropertyUnknownFormat;
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
      {Copy(TextId::PropertyFileFormat), Copy(FormatName(info.kind))},
      {Copy(TextId::PropertyLastWritten), Format(Text(TextId::PropertyDate), day, month, year)},
      {Copy(TextId::PropertyTrackCount), std::to_string(info.header.trackCount)},
      {Copy(TextId::PropertyTimeFormat),
       Copy(timeCode ? TextId::PropertyTimeCode : TextId::PropertyTicksPerQuarter)},
      {Copy(TextId::PropertyDivision), std::to_string(info.header.division)},
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
  properties.title = Format(Text(TextId::PropertiesTitle), FileNameOf(path));
  properties.rows = MidiPropertyRows(*info, *written);
  if (const auto entries = ReadRiffInfo(path)) {
    properties.isRiff = true;
    properties.attributes = RiffAttributeRows(*entries);
  }
  return properties;
}

}  // namespace ts5
