// "ts5-batch layout": what is in a layout file, layouts as files and as the packed records of jobs, and how a
// printer lays its paper.
#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include "artworker/layout_file.h"
#include "artworker/printer_fit.h"
#include "artworker/texts.h"
#include "batch/arguments.h"
#include "batch/command_target.h"
#include "batch/commands.h"
#include "batch/json_text.h"
#include "batch/store.h"
#include "batch/texts.h"
#include "frame/texts.h"
#include "platform/base/text.h"
#include "platform/files/files.h"

namespace ts5::batch {
namespace {

using namespace artworker;

constexpr std::uint64_t kMaxRecord = std::uint64_t{64} << 20;
constexpr std::array kObjectNames = {"label", "inlay", "booklet"};

int Refuse(Console& console, const std::string& path) {
  PrintError(console, Format(Text(texts::BatchLayoutInvalid), path));
  return kExitFailed;
}

Json Numbers(const Size& size) {
  return Json::array({size.width, size.height});
}

void AddFill(Json& json, const Fill& fill) {
  json["transparency"] = fill.transparency;
  json["background"] = fill.background;
}

void AddContent(Json& /*json*/, const UnknownContent& /*content*/) {}

void AddContent(Json& json, const TextField& field) {
  const FontFields& font = field.font;
  Json text{{"text", field.text},
            {"color", field.colour},
            {"lineSpacing", field.lineSpacing},
            {"spaceMode", static_cast<int>(field.spaceMode)},
            {"fixedFont", field.fixedFont},
            {"orientation", static_cast<int>(field.orientation)},
            {"horizontal", static_cast<int>(field.horizontal)},
            {"vertical", static_cast<int>(field.vertical)},
            {"font",
             {{"face", font.face},
              {"charset", font.charset},
              {"weight", font.weight},
              {"height", font.height},
              {"outPrecision", font.outPrecision},
              {"clipPrecision", font.clipPrecision},
              {"quality", font.quality},
              {"pitchFamily", font.pitchFamily},
              {"italic", font.italic != 0},
              {"underline", font.underline != 0},
              {"strikeOut", font.strikeOut != 0}}}};
  AddFill(text, field.fill);
  json["text"] = std::move(text);
}

void AddContent(Json& json, const Ellipse& ellipse) {
  AddFill(json["ellipse"], ellipse.fill);
}

void AddContent(Json& json, const Image& image) {
  Json& row = json["image"];
  AddFill(row, image.fill);
  row["mirror"] = image.mirror;
  row["file"] = image.file;
}

Json LayoutJson(const ArtworkLayout& layout) {
  Json json{
      {"paper", static_cast<int>(layout.paper)}, {"objects", Json::array()}, {"elements", Json::array()}};
  for (const ArtworkObjectId id : kObjectIds) {
    const ArtworkObject& object = layout.Object(id);
    json["objects"].push_back({{"object", kObjectNames[IndexOf(id)]},
                               {"sheet", Numbers(object.sheet)},
                               {"portrait", object.portrait},
                               {"position", {object.x, object.y}},
                               {"size", Numbers(object.size)}});
  }
  for (const ArtworkElement& element : layout.elements) {
    const Box& box = element.box;
    Json row{{"object", kObjectNames[IndexOf(element.object)]},
             {"kind", KindOf(element)},
             {"fixed", element.fixed},
             {"borderColor", element.borderColour},
             {"borderWidth", element.borderWidth},
             {"borderGap", element.borderGap},
             {"borderRound", element.roundCorners},
             {"dimension", {box.left, box.top, box.right, box.bottom}}};
    std::visit([&row](const auto& content) { AddContent(row, content); }, element.content);
    json["elements"].push_back(std::move(row));
  }
  return json;
}

void PrintLayout(Console& console, const ArtworkLayout& layout) {
  for (const ArtworkObjectId id : kObjectIds) {
    const ArtworkObject& object = layout.Object(id);
    const auto elements = std::ranges::count(layout.elements, id, &ArtworkElement::object);
    console.out << Format(Text(texts::BatchLayoutObject), kObjectNames[IndexOf(id)], object.size.width,
                          object.size.height, object.sheet.width, object.sheet.height, object.x, object.y,
                          elements)
                << '\n';
  }
}

// Between a layout's file and the record of a job: the words of the line, how the target is made of the
// source.
struct Conversion {
  std::string_view command;
  TextId summary;
  std::string_view sourceName;
  TextId sourceHelp;
  std::string_view targetName;
  TextId targetHelp;
  Result<Bytes> (*convert)(const std::string& source);
};

constexpr Conversion kPack{"layout pack",
                           texts::BatchLayoutPackSummary,
                           "DATEI.awl",
                           texts::BatchHelpLayoutFile,
                           "DATEI.bin",
                           texts::BatchHelpRecordFile,
                           [](const std::string& source) -> Result<Bytes> {
                             const auto layout = LoadLayout(source);
                             if (!layout) return Failure(layout.error());
                             return LayoutRecord(*layout);
                           }};
constexpr Conversion kUnpack{"layout unpack",
                             texts::BatchLayoutUnpackSummary,
                             "DATEI.bin",
                             texts::BatchHelpRecordFile,
                             "DATEI.awl",
                             texts::BatchHelpLayoutFile,
                             [](const std::string& source) -> Result<Bytes> {
                               const auto bytes = ReadFile(source, kMaxRecord);
                               const auto layout = bytes ? LayoutFromRecord(*bytes) : Failure(bytes.error());
                               if (!layout) return Failure(layout.error());
                               return LayoutProfile(*layout).Serialise();
                             }};

int ConvertCommand(const Conversion& way, CommandLine line, Console& console) {
  std::string source;
  std::string target;
  std::optional<std::string> overwrite;
  Arguments arguments(way.command, way.summary, texts::BatchLayoutExamples);
  arguments.Required(way.sourceName, source, way.sourceHelp);
  arguments.Required(way.targetName, target, way.targetHelp);
  AddOverwrite(arguments, overwrite);
  if (const auto status = arguments.Read(line, console)) return *status;
  const auto policy = TakeOverwrite(overwrite, way.command, console);
  if (!policy) return kExitUsage;
  const auto bytes = way.convert(source);
  if (!bytes) return Refuse(console, source);
  return WriteCommandFile(console, target, source, *bytes, *policy);
}

// "1.5,-0.5" as two whole numbers of the unit that is so much smaller; nothing for anything else.
std::optional<std::array<std::int32_t, 2>> ParsePair(std::string_view text, double unit) {
  const auto parts = Split(text, ',');
  std::array<std::int32_t, 2> pair{};
  if (parts.size() != pair.size()) return std::nullopt;
  for (std::size_t i = 0; i < pair.size(); ++i) {
    constexpr double kFar = 1e6;
    const auto number = ParseNumber(Trim(parts[i]));
    if (!number || !(std::abs(*number) < kFar)) return std::nullopt;
    pair[i] = static_cast<std::int32_t>(std::lround(*number * unit));
  }
  return pair;
}

struct FitOptions {
  std::optional<std::string> offset;
  std::optional<std::string> scale;
  std::optional<std::string> measured;
};

// The fit as the options change it; nothing when they cannot be read or ask for what is not possible.
std::optional<PrinterFit> ChangedFit(PrinterFit fit, const FitOptions& options) {
  constexpr double kTenths = 10;
  constexpr double kHundredths = 100;
  if (options.measured) {
    const auto parts = Split(*options.measured, ',');
    std::vector<double> numbers;
    for (const std::string_view part : parts) numbers.push_back(ParseNumber(Trim(part)).value_or(-1));
    if (numbers.size() != 4 || std::ranges::any_of(numbers, [](double n) { return !(n >= 0); }))
      return std::nullopt;
    return FitFrom({numbers[0], numbers[1], numbers[2], numbers[3]}, fit);
  }
  if (options.offset) {
    const auto pair = ParsePair(*options.offset, kTenths);
    if (!pair) return std::nullopt;
    fit.right = (*pair)[0];
    fit.down = (*pair)[1];
  }
  if (options.scale) {
    const auto pair = ParsePair(*options.scale, kHundredths);
    if (!pair) return std::nullopt;
    fit.across = (*pair)[0];
    fit.along = (*pair)[1];
  }
  return IsPossible(fit) ? std::optional(fit) : std::nullopt;
}

int FitCommand(CommandLine line, Console& console) {
  constexpr double kTenths = 10;
  constexpr double kHundredths = 100;
  std::string printer;
  FitOptions options;
  bool json = false;
  Arguments arguments("layout fit", texts::BatchLayoutFitSummary, texts::BatchLayoutFitExamples);
  arguments.Required("DRUCKER", printer, texts::BatchHelpPrinter);
  arguments.Option("--offset", "RECHTS,UNTEN", options.offset, texts::BatchHelpFitOffset);
  arguments.Option("--scale", "BREITE,HÖHE", options.scale, texts::BatchHelpFitScale);
  arguments.Option("--measured", "L,O,B,H", options.measured, texts::BatchHelpFitMeasured);
  arguments.Flag("--json", json, texts::BatchHelpJson);
  if (const auto status = arguments.Read(line, console)) return *status;
  const bool change = options.offset || options.scale || options.measured;
  auto registry = OpenRegistry(console, change ? RegistryAccess::ReadWrite : RegistryAccess::ReadOnly);
  if (!registry) return kExitFailed;
  const auto fit = ChangedFit(LoadPrinterFit(*registry, printer), options);
  if (!fit) return WrongUsage(console, "layout fit", Text(texts::FitNotPossible));
  if (change) {
    const Outcome saved = SavePrinterFit(*registry, printer, *fit);
    if (Failed(saved)) {
      PrintError(console, RegistryFailureText(saved, DefaultRegistryPath()));
      return kExitFailed;
    }
  }
  if (json) {
    console.out << JsonText({{"printer", printer},
                             {"offset", {fit->right / kTenths, fit->down / kTenths}},
                             {"scale", {fit->across / kHundredths, fit->along / kHundredths}}});
  } else {
    console.out << Format(Text(texts::BatchLayoutFit), printer, fit->right / kTenths, fit->down / kTenths,
                          fit->across / kHundredths, fit->along / kHundredths)
                << '\n';
  }
  return kExitSuccess;
}

int ShowCommand(CommandLine line, Console& console) {
  std::string path;
  bool json = false;
  Arguments arguments("layout", texts::BatchLayoutSummary, texts::BatchLayoutExamples);
  arguments.Required("DATEI.awl", path, texts::BatchHelpLayoutFile);
  arguments.Flag("--json", json, texts::BatchHelpJson);
  if (const auto status = arguments.Read(line, console)) return *status;
  const auto layout = LoadLayout(path);
  if (!layout) return Refuse(console, path);
  if (json) {
    console.out << JsonText(LayoutJson(*layout));
  } else {
    PrintLayout(console, *layout);
  }
  return kExitSuccess;
}

}  // namespace

int LayoutCommand(CommandLine line, Console& console) {
  if (!line.empty() && line[0] == "pack") return ConvertCommand(kPack, line.subspan(1), console);
  if (!line.empty() && line[0] == "unpack") return ConvertCommand(kUnpack, line.subspan(1), console);
  if (!line.empty() && line[0] == "fit") return FitCommand(line.subspan(1), console);
  return ShowCommand(line, console);
}

}  // namespace ts5::batch
