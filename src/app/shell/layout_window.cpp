#include "app/shell/layout_window.h"

#include <algorithm>
#include <utility>

#include "app/run/disc_at_hand.h"
#include "app/shell/application.h"
#include "artworker/artworker_parameters.h"
#include "artworker/print_run.h"
#include "artworker/texts.h"
#include "artworker/ui/artworker_window.h"
#include "frame/backgrounds.h"
#include "frame/texts.h"
#include "frame/ui/file_dialogs.h"
#include "frame/ui/qt_text.h"
#include "platform/files/directories.h"
#include "platform/files/paths.h"

namespace ts5 {
namespace {

// The printer that is chosen in the main window; "" for none.
std::string PrinterOf(const Job& job, const DeviceLists& devices) {
  return std::cmp_less(std::max(job.destinationDevice, 0), devices.printers.size())
             ? devices.printers[static_cast<std::size_t>(std::max(job.destinationDevice, 0))]
             : std::string();
}

void ChoosePrinter(Job& job, const DeviceLists& devices) {
  const auto& printer = As<artworker::ArtworkerParameters>(*job.parameters).printer;
  const auto found = std::ranges::find(devices.printers, printer);
  if (found != devices.printers.end())
    job.destinationDevice = static_cast<std::int32_t>(found - devices.printers.begin());
}

}  // namespace

QWidget* OpenLayoutWindow(const JobFinder& find, const WindowLinks& links, Application& application,
                          DialogHost& host, QWidget* owner) {
  const Job* const job = find();
  if (job == nullptr) return nullptr;
  const auto parameters = [find]() -> artworker::ArtworkerParameters* {
    Job* const found = find();
    return found != nullptr ? found->parameters.If<artworker::ArtworkerParameters>() : nullptr;
  };
  parameters()->printer = PrinterOf(*job, application.Devices());
  artworker::ArtworkerWindow::Subject subject{
      .title = job->title,
      .parameters = parameters,
      .running =
          [find] {
            const Job* const found = find();
            return found != nullptr && !found->MayChange();
          },
      .printers = application.Devices().printers,
      .folder = application.GetSettings().artworkerLayoutDirectory,
      .backgrounds = {.load = [&application] { return LoadBackgrounds(application.GetRegistry()); },
                      .save =
                          [&application](const std::vector<ArtworkBackground>& backgrounds) {
                            return SaveBackgrounds(application.GetRegistry(), backgrounds);
                          }},
      .fits = {.load =
                   [&application](const std::string& printer) {
                     return artworker::LoadPrinterFit(application.GetRegistry(), printer);
                   },
               .save =
                   [&application](const std::string& printer, const artworker::PrinterFit& fit) {
                     return artworker::SavePrinterFit(application.GetRegistry(), printer, fit);
                   }},
      .facts =
          [find, &application] {
            const Job* const found = find();
            return found != nullptr ? DiscAtHand(*found, application.GetJobs()) : artworker::DiscFacts{};
          },
      .printerChosen =
          [find, links, &application] {
            if (Job* const found = find()) ChoosePrinter(*found, application.Devices());
            links.showDestination();
          },
      .print = links.run,
      .edited = links.edited};
  return new artworker::ArtworkerWindow(std::move(subject), host, owner);
}

bool PrepareLayoutPrint(Job& job, Application& application, DialogHost& host, QWidget* owner) {
  auto& parameters = As<artworker::ArtworkerParameters>(*job.parameters);
  parameters.printer = PrinterOf(job, application.Devices());
  TakeGround(parameters, application.GetRegistry());
  parameters.disc = DiscAtHand(job, application.GetJobs());
  const bool nothing = parameters.printWhat == 0 && !parameters.calibration;
  if (nothing || parameters.printer != Text(texts::PdfPrinter)) return true;
  std::string start = job.destinationName;
  if (start.empty() && !parameters.fileName.empty()) start = WithExtension(parameters.fileName, "pdf");
  if (start.empty()) start = JoinPath(HomeDirectory(), std::string(Text(texts::ArtworkDocument)) + ".pdf");
  const auto file = AskDestination({.title = QtText(texts::AskPdfFile),
                                    .start = std::move(start),
                                    .filter = Text(texts::PdfFilter),
                                    .helpTopic = QStringLiteral("parm_artworker.htm")},
                                   host, owner);
  if (file) job.destinationName = *file;
  return file.has_value();
}

}  // namespace ts5
