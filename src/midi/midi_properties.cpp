#include "midi/midi_properties.h"

#include <algorithm>
#include <array>
#include <utility>

#include "midi/instruments.h"
#include "midi/texts.h"
#include "platform/base/text.h"
#include "platform/files/paths.h"

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

constexpr std::size_t kMarksInOneLine = 4;    // changes of key and metre
constexpr std::size_t kMarksInTempoMap = 24;  // lines
constexpr std::size_t kMaxTrackRows = 200;
constexpr std::size_t kLyricLines = 16;

std::string More(std::size_t count) {
  return Format(Text(texts::MidiPropertyMore), count);
}

std::string Joined(const std::vector<std::string>& parts, std::string_view separator) {
  std::string text;
  for (const std::string& part : parts) {
    if (!text.empty()) text += separator;
    text += part;
  }
  return text;
}

// The first changes, each but one at the very start with its bar.
template <typename Mark, typename TextOf>
std::string MarksText(const MidiSummary& summary, const std::vector<Mark>& marks, TextOf textOf) {
  std::vector<std::string> parts;
  for (const Mark& mark : marks) {
    if (parts.size() == kMarksInOneLine) {
      parts.push_back(More(marks.size() - kMarksInOneLine));
      break;
    }
    const std::uint64_t bar = summary.BarAt(mark.tick);
    parts.push_back(bar <= 1 ? textOf(mark) : Format(Text(texts::MidiPropertyFromBar), textOf(mark), bar));
  }
  return Joined(parts, ", ");
}

// "92,5": one decimal place where it is needed.
std::string BeatsText(std::uint32_t quarter) {
  const std::uint64_t tenths = (600'000'000ULL + quarter / 2) / quarter;
  const std::string whole = std::to_string(tenths / 10);
  return tenths % 10 == 0 ? whole : whole + "," + std::to_string(tenths % 10);
}

std::string NotesText(std::uint64_t notes) {
  if (notes == 0) return Copy(texts::MidiPropertyNoNotes);
  return notes == 1 ? Copy(texts::MidiPropertyOneNote) : Format(Text(texts::MidiPropertyManyNotes), notes);
}

std::string PartText(const MidiPart& part) {
  const std::string_view sound =
      part.channel == kDrumChannel ? Text(texts::MidiPropertyDrums) : InstrumentName(part.program);
  return Format(Text(texts::MidiPropertyPart), sound, part.channel + 1);
}

std::string TrackText(const MidiTrackSummary& track) {
  std::vector<std::string> parts;
  for (const MidiPart& part : track.parts) {
    if (parts.size() == kMarksInOneLine) {
      parts.push_back(More(track.parts.size() - kMarksInOneLine));
      break;
    }
    parts.push_back(PartText(part));
  }
  parts.push_back(NotesText(track.notes));
  const std::string text = Joined(parts, ", ");
  return track.name.empty() ? text : Format(Text(texts::MidiPropertyTrackNamed), track.name, text);
}

// The lines of a text up to a number, and how many more there are.
std::string FirstLines(const std::vector<std::string>& lines, std::size_t count) {
  std::vector<std::string> shown(lines.begin(),
                                 lines.begin() + static_cast<std::ptrdiff_t>(std::min(count, lines.size())));
  if (lines.size() > count) shown.push_back(More(lines.size() - count));
  return Joined(shown, "\n");
}

std::string TempoMapText(const MidiSummary& summary) {
  std::vector<std::string> lines;
  for (const TempoEvent& tempo : summary.tempos)
    lines.push_back(
        Format(Text(texts::MidiPropertyTempoAt), summary.BarAt(tempo.tick), BeatsText(tempo.quarter)));
  return FirstLines(lines, kMarksInTempoMap);
}

std::string LyricsText(const std::string& lyrics) {
  std::vector<std::string> lines;
  for (const std::string_view line : Split(lyrics, '\n')) lines.emplace_back(line);
  return FirstLines(lines, kLyricLines);
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

std::string MidiLengthText(std::chrono::nanoseconds length) {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(length).count();
  return seconds < 3600 ? Format(Text(texts::MidiPropertyLengthValue), seconds / 60, seconds % 60)
                        : Format(Text(texts::MidiPropertyLongLengthValue), seconds / 3600, seconds / 60 % 60,
                                 seconds % 60);
}

std::string MidiKeyText(const MidiKey& key) {
  // By the number of sharps from -7.
  constexpr std::array<std::string_view, 15> kMajor{"Ces", "Ges", "Des", "As", "Es", "B",   "F",  "C",
                                                    "G",   "D",   "A",   "E",  "H",  "Fis", "Cis"};
  constexpr std::array<std::string_view, 15> kMinor{"as", "es", "b",   "f",   "c",   "g",   "d",  "a",
                                                    "e",  "h",  "fis", "cis", "gis", "dis", "ais"};
  const auto at = static_cast<std::size_t>(std::clamp(key.sharps, -7, 7) + 7);
  return key.minor ? Format(Text(texts::MidiPropertyMinor), kMinor[at])
                   : Format(Text(texts::MidiPropertyMajor), kMajor[at]);
}

std::string MidiKeysText(const MidiSummary& summary) {
  return MarksText(summary, summary.keys, MidiKeyText);
}

std::string MidiMetresText(const MidiSummary& summary) {
  return MarksText(summary, summary.signatures, [](const TimeSignatureEntry& entry) {
    return std::to_string(entry.numerator) + "/" + std::to_string(entry.denominator);
  });
}

std::string MidiTempoText(const MidiSummary& summary) {
  if (summary.tempos.empty()) return {};
  const auto [fastest, slowest] = std::ranges::minmax(summary.tempos, {}, &TempoEvent::quarter);
  if (fastest.quarter == slowest.quarter)
    return Format(Text(texts::MidiPropertyTempoValue), BeatsText(fastest.quarter));
  return Format(Text(texts::MidiPropertyTempoRange), BeatsText(slowest.quarter), BeatsText(fastest.quarter),
                summary.tempos.size() - 1);
}

std::string MidiStateText(const MidiSummary& summary) {
  if (summary.tooLarge) return Copy(texts::MidiFaultTooLarge);
  std::vector<std::string> faults;
  if (summary.division == 0) faults.push_back(Copy(texts::MidiFaultDivision));
  if (summary.missingTracks != 0)
    faults.push_back(Format(Text(texts::MidiFaultTracks), summary.tracks.size() + summary.missingTracks,
                            summary.tracks.size()));
  for (std::size_t i = 0; i < summary.tracks.size() && faults.size() < kMarksInOneLine; ++i) {
    if (summary.tracks[i].damaged)
      faults.push_back(Format(Text(texts::MidiFaultTrack), i + 1, summary.tracks[i].events));
  }
  return faults.empty() ? Copy(texts::MidiPropertySound) : Joined(faults, "\n");
}

std::vector<PropertyRow> MidiSummaryRows(const MidiSummary& summary) {
  std::vector<PropertyRow> rows;
  const auto add = [&rows](TextId label, std::string value) {
    if (!value.empty()) rows.push_back({Copy(label), std::move(value)});
  };
  add(texts::MidiPropertyState, MidiStateText(summary));
  if (summary.tooLarge) return rows;
  const auto orNotSaid = [](std::string text) { return text.empty() ? Copy(texts::MidiNotSaid) : text; };
  add(texts::MidiPropertyTitle, summary.title);
  add(texts::MidiPropertyCopyright, summary.copyright);
  add(texts::MidiPropertyLength, MidiLengthText(summary.length));
  add(texts::MidiPropertyKey, orNotSaid(MidiKeysText(summary)));
  add(texts::MidiPropertyMetre, orNotSaid(MidiMetresText(summary)));
  add(texts::MidiPropertyTempo, orNotSaid(MidiTempoText(summary)));
  if (summary.tempos.size() > 1) add(texts::MidiPropertyTempoMap, TempoMapText(summary));
  add(texts::MidiPropertyNotes, std::to_string(summary.notes));
  const std::size_t shown = std::min(summary.tracks.size(), kMaxTrackRows);
  for (std::size_t i = 0; i < shown; ++i)
    rows.push_back({Format(Text(texts::MidiPropertyTrack), i + 1), TrackText(summary.tracks[i])});
  if (shown < summary.tracks.size()) rows.push_back({{}, More(summary.tracks.size() - shown)});
  add(texts::MidiPropertyLyrics, LyricsText(summary.lyrics));
  return rows;
}

std::vector<PropertyRow> RiffAttributeRows(std::span<const RiffInfoEntry> entries) {
  std::vector<PropertyRow> rows;
  for (const RiffInfoEntry& entry : entries)
    rows.push_back({std::string(RiffInfoLabel(entry.id)), entry.text});
  return rows;
}

Result<MidiProperties> ReadMidiProperties(const std::string& path) {
  const auto input = InputFile::Open(path);
  if (!input) return Failure(Outcome::SourceFailed);
  const auto info = ReadMidiFileHeader(*input);
  if (!info) return Failure(info.error());
  const auto written = LastWriteDate(path);
  if (!written) return Failure(written.error());

  MidiProperties properties;
  properties.title = Format(Text(texts::PropertiesTitle), FileNameOf(path));
  properties.rows = MidiPropertyRows(*info, *written);
  if (auto summary = SummariseMidiFile(*input)) {
    properties.summary = *std::move(summary);
    const auto rows = MidiSummaryRows(properties.summary);
    properties.rows.insert(properties.rows.end(), rows.begin(), rows.end());
  }
  if (info->kind != MidiFileKind::Riff) return properties;
  if (const auto entries = ReadRiffInfo(path)) {
    properties.isRiff = true;
    properties.attributes = RiffAttributeRows(*entries);
  }
  return properties;
}

}  // namespace ts5
