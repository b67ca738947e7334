#include "batch/print_options.h"

#include <array>

#include "artworker/artworker_parameters.h"
#include "artworker/kept_pictures.h"
#include "artworker/layout_file.h"
#include "artworker/print_run.h"
#include "batch/command_target.h"
#include "batch/job_surroundings.h"
#include "batch/stored_jobs.h"
#include "batch/texts.h"
#include "frame/target_naming.h"
#include "frame/texts.h"
#include "modules/disc_facts.h"
#include "platform/base/text.h"
#include "platform/files/paths.h"
#include "platform/files/real_paths.h"

namespace ts5::batch {
namespace {

constexpr std::int64_t kPresetDpi = 300;
constexpr std::int64_t kMaxDpi = 2400;
constexpr std::array kPictureNames = {"label.png", "inlay.png", "booklet.png"};

std::optional<std::int64_t> DpiOf(const PrintOptions& options) {
  const auto dpi = options.dpi ? ParseInteger(*options.dpi) : kPresetDpi;
  return dpi && *dpi >= 1 && *dpi <= kMaxDpi ? dpi : std::nullopt;
}

}  // namespace

void AddPrintOptions(Arguments& arguments, PrintOptions& options) {
  arguments.Option("--layout", "DATEI.awl", options.layout, texts::BatchHelpLayout);
  arguments.Option("--printer", "NAME", options.printer, texts::BatchHelpPrinter);
  arguments.Option("--disc-job", "NUMMER-ODER-TITEL", options.disc, texts::BatchHelpDiscJob);
  arguments.Option("--png", "VERZ", options.pictures, texts::BatchHelpPng);
  arguments.Option("--dpi", "N", options.dpi, texts::BatchHelpDpi);
}

std::optional<int> TakePrinting(const PrintOptions& options, const Registry& registry,
                                std::string_view command, Console& console, Job& job) {
  auto* const parameters = job.parameters.If<artworker::ArtworkerParameters>();
  if (parameters == nullptr) return std::nullopt;
  if (!DpiOf(options)) return WrongUsage(console, command, Format(Text(texts::BatchDpiWrong), *options.dpi));
  if (options.layout) {
    auto layout = artworker::LoadLayout(*options.layout);
    if (!layout) {
      PrintError(console, Format(Text(texts::BatchLayoutInvalid), *options.layout));
      return kExitFailed;
    }
    FindPictures(*layout, std::string(DirectoryOf(FullPath(*options.layout))));
    parameters->layout = std::move(*layout);
    parameters->fileName = *options.layout;
  }
  if (options.printer) parameters->printer = *options.printer;
  TakeGround(*parameters, registry);
  artworker::PrepareDrawing();
  return std::nullopt;
}

std::optional<std::string> TakeDisc(const PrintOptions& options, Console& console, Job& job) {
  auto* const parameters = job.parameters.If<artworker::ArtworkerParameters>();
  if (parameters == nullptr) return std::nullopt;
  const Job* source = &job;
  std::optional<StoredState> store;
  if (options.disc) {
    store = LoadStoredState(console, SystemJobSurroundings());
    source = store ? FindJob(store->jobs, *options.disc) : nullptr;
    if (source == nullptr) return Format(Text(texts::BatchDiscJobUnknown), *options.disc);
  }
  parameters->disc = FactsOfSources(*source, DiscReading::Thorough);
  return std::nullopt;
}

void PreparePrinting(const Registry& registry, std::span<const Job* const> jobs, Job& job) {
  auto* const parameters = job.parameters.If<artworker::ArtworkerParameters>();
  if (parameters == nullptr) return;
  TakeGround(*parameters, registry);
  parameters->disc = FactsOfDisc(job, jobs, DiscReading::Thorough);
  artworker::PrepareDrawing();
}

int WritePictures(const PrintOptions& options, const Job& job, DestinationRules rules, Console& console) {
  const auto& parameters = As<artworker::ArtworkerParameters>(*job.parameters);
  const auto dpi = static_cast<double>(DpiOf(options).value_or(kPresetDpi));
  rules.origin = NameOrigin::Command;
  const DestinationFiles files = SystemDestinationFiles();
  TargetNaming naming(job, rules, files);
  for (const artworker::ArtworkObjectId id : artworker::kObjectIds) {
    if (!artworker::Holds(parameters.printWhat, id)) continue;
    const auto png = artworker::PictureFile(parameters, id, dpi);
    const std::string path = JoinPath(*options.pictures, kPictureNames[artworker::IndexOf(id)]);
    if (!png) {
      PrintError(console, Format(Text(texts::BatchPictureNotWritten), path));
      return kExitFailed;
    }
    const auto taken = WriteTarget(console, naming, path, *png, texts::BatchPictureNotWritten);
    if (!taken) return kExitFailed;
    console.out << *taken << '\n';
  }
  return kExitSuccess;
}

}  // namespace ts5::batch
