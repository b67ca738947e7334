// "ts5-batch info": what the properties dialog shows of a file.
#include <algorithm>
#include <array>
#include <chrono>

#include "audio/audio_properties.h"
#include "batch/arguments.h"
#include "batch/commands.h"
#include "batch/json_text.h"
#include "batch/texts.h"
#include "converters/xml_properties.h"
#include "frame/file_types.h"
#include "frame/texts.h"
#include "midi/instruments.h"
#include "midi/midi_properties.h"
#include "midi/texts.h"
#include "platform/base/text.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"
#include "score/score_properties.h"

namespace ts5::batch {
namespace {

// A list of the page: labels and values.
struct Page {
  std::string_view kind;  // the name of its format in JSON
  std::vector<PropertyRow> rows;
  std::vector<PropertyRow> attributes;
  Json facts = nullptr;  // what other programs read rather than rows, where the format has it
};

// Times in seconds, bars and tracks from 1.
Json MidiFacts(const MidiSummary& midi) {
  Json json = {{"title", midi.title},
               {"copyright", midi.copyright},
               {"seconds", std::chrono::duration<double>(midi.length).count()},
               {"notes", midi.notes},
               {"lyrics", midi.lyrics},
               {"damaged", midi.Damaged()},
               {"missingTracks", midi.missingTracks}};
  json["keys"] = Json::array();
  for (const MidiKey& key : midi.keys)
    json["keys"].push_back({{"bar", midi.BarAt(key.tick)},
                            {"sharps", key.sharps},
                            {"minor", key.minor},
                            {"text", MidiKeyText(key)}});
  json["metres"] = Json::array();
  for (const TimeSignatureEntry& entry : midi.signatures)
    json["metres"].push_back({{"bar", midi.BarAt(entry.tick)},
                              {"numerator", entry.numerator},
                              {"denominator", entry.denominator}});
  json["tempos"] = Json::array();
  for (const TempoEvent& tempo : midi.tempos)
    json["tempos"].push_back({{"bar", midi.BarAt(tempo.tick)}, {"bpm", 60e6 / tempo.quarter}});
  json["tracks"] = Json::array();
  for (const MidiTrackSummary& track : midi.tracks) {
    Json parts = Json::array();
    for (const MidiPart& part : track.parts)
      parts.push_back({{"channel", part.channel + 1},
                       {"program", part.program},
                       {"drums", part.channel == kDrumChannel},
                       {"notes", part.notes}});
    json["tracks"].push_back({{"name", track.name},
                              {"notes", track.notes},
                              {"damaged", track.damaged},
                              {"parts", std::move(parts)}});
  }
  return json;
}

Result<Page> MidiPage(const std::string& path) {
  const auto properties = ReadMidiProperties(path);
  if (!properties) return Failure(properties.error());
  return Page{"midi", properties->rows, properties->attributes, MidiFacts(properties->summary)};
}

Result<Page> ScorePage(const std::string& path) {
  const auto properties = ReadScoreProperties(path);
  if (!properties) return Failure(properties.error());
  return Page{"score", properties->rows, {}, {}};
}

Result<Page> XmlPage(const std::string& path) {
  if (!converters::IsXmlScoreName(path)) return Failure(Outcome::WrongFormat);
  const auto properties = converters::ReadXmlProperties(path);
  if (!properties)
    return Failure(properties.error() == Outcome::WrongFormat ? Outcome::WrongFormat : Outcome::SourceFailed);
  return Page{"xml", properties->rows, {}, {}};
}

// With what only all samples tell.
Result<Page> AudioPage(const std::string& path) {
  auto properties = ReadAudioProperties(path);
  if (!properties) return Failure(properties.error());
  if (const auto measured = MeasureAudioProperties(path)) {
    properties->rows.insert(properties->rows.end(), measured->begin(), measured->end());
  }
  return Page{IsWaveKind(properties->kind) ? "wave" : "audio", properties->rows, {}, {}};
}

// The readers in the order in which they are tried. SourceFailed ends the search, every other failure means
// that the file has another format.
using PageReader = Result<Page> (*)(const std::string& path);
constexpr std::array<PageReader, 4> kReaders{MidiPage, ScorePage, XmlPage, AudioPage};

Result<Page> ReadPage(const std::string& path) {
  if (!IsUsablePath(path)) return Failure(Outcome::SourceFailed);
  for (const PageReader read : kReaders) {
    auto page = read(path);
    if (page || page.error() == Outcome::SourceFailed) return page;
  }
  return Failure(Outcome::WrongFormat);
}

void PrintRows(Console& console, const std::vector<PropertyRow>& rows) {
  std::size_t width = 0;
  for (const PropertyRow& row : rows) width = std::max(width, CharacterCount(row.label));
  for (const PropertyRow& row : rows) {
    // A value of several lines stays in its column.
    std::string label = row.label + ":";
    for (const std::string_view line : Split(Trim(row.value), '\n')) {
      console.out << "  " << Padded(label, width + 2) << Trim(line) << '\n';
      label.clear();
    }
  }
}

Json JsonRows(const std::vector<PropertyRow>& rows) {
  Json json = Json::array();
  for (const PropertyRow& row : rows) json.push_back({{"label", row.label}, {"value", row.value}});
  return json;
}

}  // namespace

int InfoCommand(CommandLine line, Console& console) {
  bool json = false;
  std::vector<std::string> files;
  Arguments arguments("info", texts::BatchInfoSummary, texts::BatchInfoExamples);
  arguments.Flag("--json", json, texts::BatchHelpJson);
  arguments.Rest("DATEI", files, texts::BatchHelpInfoFiles, 1);
  if (const auto status = arguments.Read(line, console)) return *status;

  int status = kExitSuccess;
  Json all = Json::array();
  for (const std::string& file : files) {
    if (console.Interrupted()) return kExitCancelled;
    const auto page = ReadPage(file);
    const Outcome outcome = page ? Outcome::Success : page.error();
    if (Failed(outcome)) {
      status = kExitFailed;
      const bool track = IsCdTrackText(file) && !FileExists(file);
      const TextId text = track                              ? texts::NoTrackProperties
                          : outcome == Outcome::SourceFailed ? texts::BatchFileNotOpened
                                                             : texts::PropertyUnknownFormat;
      PrintError(console, Format(Text(texts::BatchItemFailed), file, Text(text)));
    }
    if (json) {
      Json row;
      row["file"] = file;
      row["code"] = Code(outcome);
      row["type"] = static_cast<int>(FileTypeOf(file));
      row["kind"] = page ? page->kind : "";
      row["properties"] = page ? JsonRows(page->rows) : Json::array();
      row["attributes"] = page ? JsonRows(page->attributes) : Json::array();
      if (page && !page->facts.is_null()) row[page->kind] = page->facts;
      all.push_back(std::move(row));
    } else if (page) {
      console.out << file << '\n';
      PrintRows(console, page->rows);
      if (!page->attributes.empty()) {
        console.out << Text(texts::BatchRiffAttributes) << '\n';
        PrintRows(console, page->attributes);
      }
    }
  }
  if (json) console.out << JsonText({{"files", all}});
  return status;
}

}  // namespace ts5::batch
