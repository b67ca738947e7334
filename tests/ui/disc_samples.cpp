// One sample of every window of discs.
#include <QTabWidget>

#include "dialogs_support.h"
#include "disc/ui/burn_dialog.h"
#include "disc/ui/disc_dialogs.h"
#include "disc/ui/grab_dialog.h"
#include "platform/disc/virtual_cd.h"

namespace ts5 {
namespace {

using namespace disc;

std::unique_ptr<QWidget> BurnPage(DialogHost& host, int page) {
  BurnParameters parameters;
  parameters.cdText = true;
  parameters.title = "Abendlieder";
  parameters.performer = "Kammerchor St. Anna";
  auto dialog =
      std::make_unique<BurnDialog>(parameters, 2, RecorderFacts{48, true},
                                   MidiToWaveDevices{{"Stavora-Synthesizer"}, {}, {}}, host, nullptr);
  Child<QTabWidget>(*dialog, "pages").setCurrentIndex(page);
  return dialog;
}

DiscReport SampleReport() {
  DiscReport report;
  report.toc = DiscToc{{{1, true, 0, 13'800, 2}, {2, true, 13'800, 18'450, 2}}, 32'250};
  report.text = {
      {"Abendlieder", "Kammerchor St. Anna"}, 1, {{"Abendlied", ""}, {"Der Mond ist aufgegangen", ""}}};
  report.catalogue = "4012345678901";
  for (const TocTrack& track : report.toc->tracks)
    report.tracks.push_back({track, 150, "DEQLW2400001", report.text.Track(track.number)});
  return report;
}

}  // namespace

std::vector<WindowSample> DiscWindowSamples() {
  return {
      {"BURNPARAMS-1", [](DialogHost& host) { return BurnPage(host, 0); }},
      {"BURNPARAMS-2", [](DialogHost& host) { return BurnPage(host, 1); }},
      {"BURNPARAMS-3", [](DialogHost& host) { return BurnPage(host, 2); }},
      {"BURNPARAMS-4", [](DialogHost& host) { return BurnPage(host, 3); }},
      {"COPYPARAMS",
       [](DialogHost& host) {
         return std::make_unique<CopyDialog>(CopyParameters{}, RecorderFacts{48, true}, host, nullptr);
       }},
      {"GRABPARAMS",
       [](DialogHost& host) {
         GrabParameters parameters;
         parameters.useNames = true;
         return std::make_unique<GrabDialog>(parameters, 12, encode::CompressChoices{}, host, nullptr);
       }},
      {"TRACKBREAK",
       [](DialogHost& host) {
         return std::make_unique<TrackPauseDialog>(2, PauseScope::Selected, host, nullptr);
       }},
      {"DISCINFO",
       [](DialogHost& host) {
         return std::make_unique<DiscInfoDialog>(DiscRows(SampleReport()), host, nullptr);
       }},
      {"TRACKINFO",
       [](DialogHost& host) {
         return std::make_unique<TrackInfoDialog>(CdDrive(VirtualCd(std::nullopt)), SampleReport(), 2, host,
                                                  nullptr);
       }},
      {"DELETEDISK",
       [](DialogHost& host) { return std::make_unique<EraseDialog>("/dev/sr0", host, nullptr); }},
  };
}

}  // namespace ts5
