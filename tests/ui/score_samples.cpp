// Samples of the windows of the score room: a choir with drums that plays, and each page of its parameters.
#include <QListWidget>
#include <QTabWidget>

#include "converters/transcribe/ui/midi_to_score_dialog.h"
#include "dialogs_support.h"
#include "frame/ui/playback_window.h"
#include "score/ui/score_midi_dialog.h"
#include "score/ui/score_pages.h"
#include "score/ui/score_playback.h"
#include "score/ui/score_properties_dialog.h"

namespace ts5 {
namespace {

constexpr const char* kScore = "/home/clara/Musik/Chor/Abendlied.stv";

std::shared_ptr<const ScoreAtHand> SampleScore() {
  auto score = std::make_shared<ScoreAtHand>();
  score->path = kScore;
  for (const auto& [name, sound] : {std::pair{"Sopran I", 52},
                                    {"Sopran II", 52},
                                    {"Alt", 53},
                                    {"Tenor", 53},
                                    {"Bass", 53},
                                    {"Querflöte", 73},
                                    {"Orgel", 19}}) {
    score->staves.push_back(
        {name, static_cast<std::uint8_t>(sound == 19 ? 2 : 1), static_cast<std::uint8_t>(sound), false});
  }
  score->staves.push_back({"Schlagzeug", 1, 0, true});
  for (std::size_t i = 0; i < score->staves.size(); ++i)
    score->channels.push_back(
        {static_cast<std::uint8_t>(i + 2), static_cast<std::uint8_t>(i + 1), 0, 0, 0, 0});
  score->channels.back()[0] = kDrumChannel;
  score->articulations = 0b1000101;
  score->dynamics = 0b01101110;
  return score;
}

std::unique_ptr<QWidget> PlayingScore(DialogHost& host, int page) {
  auto run = std::make_shared<JobRun>();
  run->state = RunState::Running;
  run->player.Report({.title = kScore,
                      .position = std::chrono::milliseconds(83'250),
                      .duration = std::chrono::minutes(4),
                      .place = BarBeat{42, 3}});
  ScoreParameters parameters;
  parameters.parameterSet = "/home/clara/.local/share/stavora-ts5/stvparamsets/Abendlied.sps";
  const auto stage = std::make_shared<ScoreStage>(parameters);
  stage->Open(SampleScore(), parameters);
  stage->Show(96, {true, false, true, true, false, false, true, true});
  run->player.SetStage(stage);
  auto options = std::make_shared<ScorePlayerParameters>();
  auto window =
      std::make_unique<PlaybackWindow>(PlaybackWindow::Subject{.filter = FilterId::ScorePlayer,
                                                               .title = "Chorprobe",
                                                               .run = std::move(run),
                                                               .options = [options] { return options.get(); },
                                                               .play = [] {},
                                                               .stop = [] {}},
                                       host, nullptr);
  new ScorePlayback(*window,
                    {.parameters = [options] { return options.get(); },
                     .source = [] { return std::string(); },
                     .setDirectory = {}},
                    host);
  window->Pages().setCurrentIndex(page);
  return window;
}

std::unique_ptr<QWidget> Converter(DialogHost& host) {
  ScoreToMidiParameters parameters;
  parameters.method = 1;
  return std::make_unique<ScoreMidiDialog>(parameters, std::string(), std::string(), host, nullptr);
}

std::unique_ptr<QWidget> Properties(DialogHost& host) {
  using namespace std::chrono_literals;
  ScoreFileInfo info;
  info.magic = kScoreMagic;
  info.author = "Josef Rheinberger";
  info.comment = "Sechsstimmige Motette, op. 69 Nr. 3";
  info.systems = 14;
  const auto score = SampleScore();
  for (const StaffAtHand& staff : score->staves) info.staves.push_back({.name = staff.name});
  auto dialog = std::make_unique<ScorePropertiesDialog>(
      ScoreProperties{"Datei-Eigenschaften von \"Abendlied.stv\"", ScorePropertyRows(info, 2024y / 3 / 12)},
      host, nullptr);
  Child<QListWidget>(*dialog, "propertyList").setCurrentRow(8);
  return dialog;
}

}  // namespace

std::vector<WindowSample> ScoreWindowSamples() {
  return {
      {"PLAYBACK-score", [](DialogHost& host) { return PlayingScore(host, 0); }},
      {"PLAYBACK2", [](DialogHost& host) { return PlayingScore(host, 1); }},
      {"PLAYBACK3", [](DialogHost& host) { return PlayingScore(host, 2); }},
      {"PLAYBACK4", [](DialogHost& host) { return PlayingScore(host, 3); }},
      {"PLAYBACK5", [](DialogHost& host) { return PlayingScore(host, 4); }},
      {"PLAYBACK6", [](DialogHost& host) { return PlayingScore(host, 5); }},
      {"SCOREMIDI", Converter},
      {"MIDSTV",
       [](DialogHost& host) {
         return std::make_unique<transcribe::MidiToScoreDialog>(transcribe::MidiToScoreParameters{}, host,
                                                                nullptr);
       }},
      {"STVPROPS", Properties},
  };
}

}  // namespace ts5
