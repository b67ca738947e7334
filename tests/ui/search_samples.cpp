// Samples of the windows of the melody search, with a melody, some stored ones and a list of hits.
#include <QTabWidget>

#include "dialogs_support.h"
#include "platform/registry.h"
#include "search/melody_store.h"
#include "search/search_results.h"
#include "search/ui/manage_melodies_dialog.h"
#include "search/ui/print_abort_dialog.h"
#include "search/ui/result_viewer_dialog.h"
#include "search/ui/save_melody_dialog.h"
#include "search/ui/search_dialog.h"

namespace ts5 {
namespace {

SearchMelody SampleMelody() {
  SearchMelody melody;
  melody.elements = {{67, 240}, {64, 240}, {kRestCode, 240}, {1066, 120}, {67, 360}, {72, 480}};
  melody.name = "Kuckuck";
  return melody;
}

// What the dialogs work on; it outlives them all.
struct Ground {
  Registry registry = std::move(*Registry::Open(kRegistryInMemory));
  MelodyStore store{registry};
  MelodySound sound{{"Stavora-Synthesizer"}, Opener(), nullptr};
  SearchResults results;

  Ground() {
    for (const char* name : {"Kuckuck", "Ein feste Burg", "Bruder Jakob"}) {
      (void)store.Save(name, SampleMelody());
    }
    SearchRecord record;
    record.melodyName = "Kuckuck";
    record.statistics = {3, 1, 3};
    results.Begin(record, OldSearchResults::Delete, [] { return true; });
    for (const char* file : {"Abendlied.mid", "Frühling.mid", "Wiegenlied.rmi"}) {
      SearchHit hit;
      hit.file = std::string("/home/clara/Musik/Chor/") + file;
      (void)results.Add(hit);
    }
    results.End(record);
  }
  static MidiOpener Opener() {
    return [](const std::string&) { return Failure(Outcome::TargetFailed); };
  }
};

Ground& TheGround() {
  static auto* ground = new Ground;  // gone with the process: windows may outlive what is static
  return *ground;
}

std::unique_ptr<QWidget> SearchPage(DialogHost& host, FilterId filter, int page) {
  SearchParameters parameters;
  parameters.melody = SampleMelody();
  auto dialog = std::make_unique<SearchDialog>(filter, parameters, TheGround().store,
                                               std::vector<std::string>{"Stavora-Synthesizer"},
                                               Ground::Opener(), host, nullptr);
  dialog->findChild<QTabWidget*>()->setCurrentIndex(page);
  return dialog;
}

}  // namespace

std::vector<WindowSample> SearchWindowSamples() {
  return {
      {"MIDIFINDPARAMS-melodie", [](DialogHost& host) { return SearchPage(host, FilterId::MidiSearch, 0); }},
      {"MIDIFINDPARAMS-optionen", [](DialogHost& host) { return SearchPage(host, FilterId::MidiSearch, 1); }},
      {"MIDIFINDPARAMS-partitur",
       [](DialogHost& host) { return SearchPage(host, FilterId::ScoreSearch, 1); }},
      {"SAVEMELODY",
       [](DialogHost& host) {
         return std::make_unique<SaveMelodyDialog>(TheGround().store, SampleMelody(), host, nullptr);
       }},
      {"MANAGEMELODIES",
       [](DialogHost& host) {
         return std::make_unique<ManageMelodiesDialog>(TheGround().store, SampleMelody(), TheGround().sound,
                                                       MelodyVoice{}, host, nullptr);
       }},
      {"RESULTVIEWER",
       [](DialogHost& host) {
         return std::make_unique<ResultViewerDialog>(&TheGround().results, false, std::string(), host,
                                                     nullptr);
       }},
      {"PRINTABORT", [](DialogHost&) { return std::make_unique<PrintAbortDialog>(nullptr); }},
  };
}

}  // namespace ts5
