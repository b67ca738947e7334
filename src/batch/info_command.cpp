// "ts5-batch info": what the properties dialog shows of a file.
#include <algorithm>
#include <array>

#include "audio/audio_properties.h"
#include "batch/arguments.h"
#include "batch/commands.h"
#include "batch/json_text.h"
#include "batch/texts.h"
#include "frame/file_types.h"
#include "midi/midi_properties.h"
#include "midi/texts.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "score/score_properties.h"

namespace ts5::batch {
namespace {

// A list of the page: labels and values.
struct Page {
  std::string_view kind;  // the name of its format in JSON
  std::vector<PropertyRow> rows;
  std::vector<PropertyRow> attributes;
};

Result<Page> MidiPage(const std::string& path) {
  const auto properties = ReadMidiProperties(path);
  if (!properties) return Failure(properties.error());
  return Page{"midi", properties->rows, properties->attributes};
}

Result<Page> ScorePage(const std::string& path) {
  const auto properties = ReadScoreProperties(path);
  if (!properties) return Failure(properties.error());
  return Page{"score", properties->rows, {}};
}

// With what only all samples tell.
Result<Page> AudioPage(const std::string& path) {
  auto properties = ReadAudioProperties(path);
  if (!properties) return Failure(properties.error());
  if (const auto measured = MeasureAudioProperties(path)) {
    properties->rows.insert(properties->rows.end(), measured->begin(), measured->end());
  }
  return Page{IsWaveKind(properties->kind) ? "wave" : "audio", properties->rows, {}};
}

// The readers in the order in which they are tried. SourceFailed ends the search, every other failure means
// that the file has another format.
using PageReader = Result<Page> (*)(const std::string& path);
constexpr std::array<PageReader, 3> kReaders{MidiPage, ScorePage, AudioPage};

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
      const TextId text =
          outcome == Outcome::SourceFailed ? texts::BatchFileNotOpened : texts::PropertyUnknownFormat;
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
