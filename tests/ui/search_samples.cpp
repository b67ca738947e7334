// Samples of the windows of the melody search, with melodies, some stored ones and a list of hits.
#include <QTabWidget>

#include "dialogs_support.h"
#include "frame/ui/print_abort_dialog.h"
#include "frame/ui/print_preview_dialog.h"
#include "frame/ui/print_setup_dialog.h"
#include "frame/ui/qt_text.h"
#include "platform/store/registry.h"
#include "search/melody_store.h"
#include "search/melody_text.h"
#include "search/search_results.h"
#include "search/texts.h"
#include "search/ui/manage_melodies_dialog.h"
#include "search/ui/result_viewer_dialog.h"
#include "search/ui/results_printer.h"
#include "search/ui/save_melody_dialog.h"
#include "search/ui/search_dialog.h"

namespace ts5 {
namespace {

// All values, accidentals and heights, in both clefs.
constexpr const char* kTreble = "4.c.8d4e+f8g0a6h<F4>c<F3>2C 1c6+d3-h<F2>3-e08 4.g.<F3>-h+f";
constexpr const char* kBass = "<F8>4cd-e2f8gah<F4>CH<F2>4cd3 6 8 4 2 1 c";

SearchMelody Melody(const char* keys) {
  return *MelodyFromKeys(keys);
}

// What the dialogs work on; it outlives them all.
struct Ground {
  Registry registry = std::move(*Registry::Open(kRegistryInMemory));
  MelodyStore store{registry};
  MelodySound sound{{"Stavora-Synthesizer"}, Opener(), nullptr};
  SearchResults results;

  Ground() {
    for (const char* name : {"Kuckuck", "Ode an die Freude: Thema", "Bruder Jakob"})
      (void)store.SaveMelody(name, Melody(*name == 'K' ? "ge" : "eefggfedccdee"));
    SearchRecord record;
    record.melodyName = "Ode an die Freude: Thema";
    record.start = {2024, 3, 12, 17, 4, 5};
    record.end = {2024, 3, 12, 17, 4, 7};
    record.statistics = {117, 2, 60};
    results.Begin(record, OldSearchResults::Delete, {});
    const char* files[] = {"/home/clara/Musik/Beethoven/Sinfonie Nr. 9 d-Moll op. 125, 4. Satz.mid",
                           "/home/clara/Musik/Chor/Freude, schöner Götterfunken.rmi",
                           "/home/clara/Musik/Klavier/Variationen.rdl"};
    for (int i = 0; i < 60; ++i) {
      SearchHit hit;
      hit.file = files[i / 25];
      hit.track = i % 5;
      hit.bar = 8 * (i % 25) + 3;
      hit.time = 7430 * (i % 25) + 1200;
      (void)results.Add(hit);
    }
  }
  static MidiOpener Opener() {
    return [](const std::string&) { return Failure(Outcome::TargetFailed); };
  }
};

Ground& TheGround() {
  static auto* ground = new Ground;  // gone with the process: windows may outlive what is static
  return *ground;
}

std::unique_ptr<QWidget> SearchPage(DialogHost& host, SearchKind kind, int page, const char* keys) {
  SearchParameters parameters;
  parameters.melody = Melody(keys);
  auto dialog = std::make_unique<SearchDialog>(kind, parameters, TheGround().store,
                                               std::vector<std::string>{"Stavora-Synthesizer"},
                                               Ground::Opener(), host, nullptr);
  dialog->findChild<QTabWidget*>()->setCurrentIndex(page);
  return dialog;
}

Printed DrawHits(QPagedPaintDevice& device, const PrintJob& job) {
  return PrintResults(TheGround().results, false, device, job);
}

}  // namespace

std::vector<WindowSample> SearchWindowSamples() {
  return {
      {"MIDIFINDPARAMS-melodie",
       [](DialogHost& host) { return SearchPage(host, SearchKind::Midi, 0, kTreble); }},
      {"MIDIFINDPARAMS-bass", [](DialogHost& host) { return SearchPage(host, SearchKind::Midi, 0, kBass); }},
      {"MIDIFINDPARAMS-optionen",
       [](DialogHost& host) { return SearchPage(host, SearchKind::Midi, 1, "cde"); }},
      {"MIDIFINDPARAMS-partitur",
       [](DialogHost& host) { return SearchPage(host, SearchKind::Score, 1, "cde"); }},
      {"SAVEMELODY",
       [](DialogHost& host) {
         return std::make_unique<SaveMelodyDialog>(TheGround().store, Melody("cde"), host, nullptr);
       }},
      {"MANAGEMELODIES",
       [](DialogHost& host) {
         return std::make_unique<ManageMelodiesDialog>(TheGround().store, Melody("cde"), TheGround().sound,
                                                       MelodyVoice{}, host, nullptr);
       }},
      {"RESULTVIEWER",
       [](DialogHost& host) {
         static auto* printing = new ResultsPrinting({}, host);
         return std::make_unique<ResultViewerDialog>(TheGround().results, false, std::string(), *printing,
                                                     host, nullptr);
       }},
      {"PRINTSETUP",
       [](DialogHost& host) {
         const QString pdf = QStringLiteral("PDF-Datei");
         return std::make_unique<PrintSetupDialog>(QStringList{"Büro", pdf}, DefaultPrintSetup(pdf),
                                                   QString(), host, nullptr);
       }},
      {"PRINTPREVIEW",
       [](DialogHost& host) {
         return std::make_unique<PrintPreviewDialog>(DefaultPrintSetup({}).layout, DrawHits, QString(), host,
                                                     nullptr);
       }},
      {"PRINTABORT",
       [](DialogHost&) {
         auto dialog = std::make_unique<PrintAbortDialog>(QtText(texts::PrintAbortTitle),
                                                          QtText(texts::PrintAbortText), nullptr);
         (void)dialog->Proceed(30, 200);
         return dialog;
       }},
  };
}

}  // namespace ts5
