// The windows of the score room: what the user does on their pages reaches the parameters and the score that
// plays.
#include <gmock/gmock.h>

#include <QTest>

#include "converters/transcribe/ui/midi_to_score_dialog.h"
#include "dialogs_support.h"
#include "frame/ui/playback_window.h"
#include "platform/files/files.h"
#include "score/parameter_set.h"
#include "score/score_writer.h"
#include "score/ui/score_midi_dialog.h"
#include "score/ui/score_pages.h"
#include "score/ui/score_playback.h"
#include "score/ui/score_properties_dialog.h"
#include "score/ui/sound_menu.h"
#include "score/ui/staff_lights.h"
#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using test::IsOk;
using testing::ElementsAre;

// A flute of two voices with a staccato and a piano, and drums.
ScoreDocument Document() {
  ScoreDocument score;
  score.staves = {{.name = "Flöte", .sound = 73, .volume = 100},
                  {.name = "Trommel", .volume = 100, .usesNoteMap = true}};
  ScoreItem note = ChordItem(2, {{-7, 0, 0}});
  ScoreItem marked = note;
  marked.group.articulation = 1;
  marked.drawings.push_back(TextDrawing("p"));
  SystemItems system;
  system.tempo = 120;
  system.staves = {{0, {}, {{marked, note}, {note, note}}}, {1, {}, {{note, note}}}};
  score.systems.push_back(system);
  return score;
}

class ScoreWindows : public testing::Test {
 protected:
  test::TemporaryDirectory folder_;
  std::string path_ = folder_.Write("lied.stv", AsText(WriteScore(Document())));
  RecordingHost host_;
};

TEST_F(ScoreWindows, PropertiesShowTheValueOfTheSelectedRow) {
  const auto properties = ReadScoreProperties(path_);
  ASSERT_THAT(properties, IsOk());
  ScorePropertiesDialog dialog(*properties, host_, nullptr);
  dialog.show();
  EXPECT_EQ(dialog.windowTitle(), "Datei-Eigenschaften von \"lied.stv\"");
  EXPECT_EQ(host_.prompts.last(), "Betrachten Sie die Eigenschaften der Stavora-Datei und klicken Sie OK");
  auto& list = Child<QListWidget>(dialog, "propertyList");
  const auto& value = Child<QPlainTextEdit>(dialog, "valueEdit");
  ASSERT_EQ(list.count(), 15);
  EXPECT_EQ(value.toPlainText(), "Stavora 3 (2000)");
  list.setCurrentRow(8);
  EXPECT_EQ(value.toPlainText(), "2 :\n1\tFlöte\n2\tTrommel\n");
  list.setCurrentRow(2);
  EXPECT_EQ(value.toPlainText(), "(nicht verfügbar!)");
  Press(dialog, "helpButton");
  EXPECT_EQ(host_.topics, QStringList("Befehle-Datei-Eigenschaften.htm"));
}

TEST_F(ScoreWindows, TheConverterTakesWhatEveryPageSays) {
  ScoreMidiDialog dialog({}, path_, folder_.Path(), host_, nullptr);
  dialog.show();
  EXPECT_EQ(dialog.windowTitle(), "Partitur-Midi-Parameter");
  EXPECT_EQ(host_.prompts.last(),
            "Legen Sie die Artikulations-, Dynamik- und diverse andere Parameter fest und klicken Sie OK");
  QStringList tabs;
  for (int i = 0; i < Child<QTabWidget>(dialog, "pages").count(); ++i)
    tabs << Child<QTabWidget>(dialog, "pages").tabText(i);
  EXPECT_EQ(tabs, (QStringList{"Methode", "Notenzeilen", "Artikulation I", "Artikulation II", "Kanal/Klang",
                               "Dynamik"}));
  EXPECT_TRUE(Child<QWidget>(dialog, "libraryGroup").isEnabled());
  Child<QRadioButton>(dialog, "engineRadio").click();
  EXPECT_FALSE(Child<QWidget>(dialog, "libraryGroup").isEnabled());

  auto& staves = Child<QListWidget>(dialog, "stavesList");
  ASSERT_EQ(staves.count(), 2);
  staves.item(1)->setCheckState(Qt::Unchecked);
  Child<QCheckBox>(dialog, "repeatsCheck").click();
  // The marks that occur can be set, the others not.
  for (const auto& [name, live] : {std::pair{"ProzStaccato", true},
                                   {"ProzVelStaccato", true},
                                   {"ProzTenuto", false},
                                   {"AkzentStark", false},
                                   {"dynamic5", true},
                                   {"dynamic0", false}})
    EXPECT_EQ(Child<QWidget>(dialog, name).isEnabledTo(&dialog), live) << name;
  Child<QSpinBox>(dialog, "ProzStaccato").setValue(-25);
  Child<QSpinBox>(dialog, "NoteShorten").setValue(80);
  Child<QSpinBox>(dialog, "Velocity").setValue(5);  // the least is 10
  Child<QSlider>(dialog, "dynamic5").setValue(50);
  EXPECT_EQ(Child<QLabel>(dialog, "dynamicValue5").text(), "50");
  Child<QCheckBox>(dialog, "DynamicsAllStaves").click();
  Press(dialog, "okButton");
  ASSERT_EQ(dialog.result(), QDialog::Accepted);
  const ScoreToMidiParameters& taken = dialog.Parameters();
  EXPECT_TRUE(taken.UsesEngine());
  EXPECT_FALSE(taken.playRepeats);
  EXPECT_THAT(taken.silentStaves, ElementsAre(false, true));
  EXPECT_EQ(taken.chosenFor, path_);
  EXPECT_EQ(taken.playback.Shape(Articulation::Staccato).length, -25);
  EXPECT_EQ(taken.playback.shortening, 80);
  EXPECT_EQ(taken.playback.baseVelocity, 10);
  EXPECT_EQ(taken.playback.dynamicVelocities[5], 50);
  EXPECT_TRUE(taken.playback.markForAllStaves);
  EXPECT_TRUE(taken.For("/andere.stv").silentStaves.empty());
}

TEST_F(ScoreWindows, ChannelsAndSoundsAreChosenByRow) {
  ScoreMidiDialog dialog({}, path_, {}, host_, nullptr);
  dialog.show();
  Child<QTabWidget>(dialog, "pages").setCurrentIndex(4);
  auto& list = Child<QTreeWidget>(dialog, "soundList");
  const auto row = [&list](int index) {
    QStringList texts;
    for (int i = 0; i < 4; ++i) texts << list.topLevelItem(index)->text(i);
    return texts.join('|');
  };
  ASSERT_EQ(list.topLevelItemCount(), 3);
  EXPECT_EQ(row(0), "Flöte|1|1|Querflöte");
  EXPECT_EQ(row(1), "Flöte|2|2|<wie 1. Stimme>");
  EXPECT_EQ(row(2), "Trommel|1|10|<nicht relevant>");
  list.setCurrentItem(list.topLevelItem(1));
  EXPECT_FALSE(Child<QWidget>(dialog, "soundButton").isEnabled());
  Child<QSpinBox>(dialog, "channelBox").setValue(16);
  EXPECT_EQ(row(1), "Flöte|2|16|<wie 1. Stimme>");
  list.setCurrentItem(list.topLevelItem(0));
  QTimer::singleShot(50, [] { QApplication::activePopupWidget()->close(); });
  Press(dialog, "soundButton");
  EXPECT_EQ(row(0), "Flöte|1|1|Querflöte") << "nothing was chosen";
  auto* const page = list.parentWidget();
  ASSERT_TRUE(QMetaObject::invokeMethod(page, "SoundChosen", Q_ARG(int, 0), Q_ARG(int, 40)));
  EXPECT_EQ(row(0), "Flöte|1|1|Violine");
  Press(dialog, "okButton");
  EXPECT_EQ(dialog.Parameters().playback.channels[0][1], 15);
  EXPECT_EQ(dialog.Parameters().playback.sounds[0], 40);
}

TEST_F(ScoreWindows, ParameterSetsAreLoadedSavedAndLoadedByTheirName) {
  PlaybackParameters stored;
  stored.shortening = 66;
  ASSERT_THAT(SaveParameterSet(stored, {2, 1}, folder_.File("lied.sps")), IsOk());
  ScoreToMidiParameters parameters;
  parameters.automaticSet = true;
  ScoreMidiDialog dialog(parameters, path_, folder_.Path(), host_, nullptr);
  dialog.show();
  const auto& label = Child<QLabel>(dialog, "setLabel");
  EXPECT_EQ(label.text().toStdString(), folder_.File("lied.sps"));
  EXPECT_EQ(Child<QSpinBox>(dialog, "NoteShorten").value(), 66);

  Child<QSpinBox>(dialog, "NoteShorten").setValue(55);
  const std::string other = folder_.File("anders.sps");
  const auto answer = [&other](QFileDialog& files) {
    files.selectFile(QString::fromStdString(other));
    QMetaObject::invokeMethod(&files, "accept", Qt::DirectConnection);
  };
  InNext<QFileDialog>(answer);
  Press(dialog, "saveButton");
  EXPECT_TRUE(FileExists(other));
  EXPECT_EQ(label.text().toStdString(), other);
  Child<QSpinBox>(dialog, "NoteShorten").setValue(10);
  InNext<QFileDialog>(answer);
  Press(dialog, "loadButton");
  EXPECT_EQ(Child<QSpinBox>(dialog, "NoteShorten").value(), 55);

  folder_.Write("anders.sps", "[leer]\r\n");
  NextMessage message;
  InNext<QFileDialog>(answer);
  Press(dialog, "loadButton");
  EXPECT_EQ(message.Text().toStdString(), "Das Parameterset konnte nicht geladen werden.\n" + other);
  EXPECT_EQ(label.text(), "Kein Parameterset geladen");
}

TEST_F(ScoreWindows, WithoutAScoreThePagesSaySo) {
  for (const std::string& source :
       {std::string(), folder_.File("fehlt.stv"), folder_.Write("kaputt.stv", "stv3")}) {
    ScoreMidiDialog dialog({}, source, {}, host_, nullptr);
    dialog.show();
    EXPECT_EQ(Child<QListWidget>(dialog, "stavesList").item(0)->text(),
              "Keine Partitur ausgewählt, die gelesen werden kann");
    EXPECT_FALSE(Child<QWidget>(dialog, "saveButton").isEnabled());
    EXPECT_FALSE(Child<QWidget>(dialog, "channelBox").isEnabled());
    Child<QSpinBox>(dialog, "AkzentStark").setValue(99);
    Press(dialog, "okButton");
    EXPECT_EQ(dialog.Parameters().playback.Shape(Articulation::StrongAccent).velocity, 99);
  }
}

TEST(SoundMenu, HasEveryProgramInItsFamily) {
  const auto menu = SoundMenu(127);
  int program = 0;
  for (const QAction* family : menu->actions()) {
    ASSERT_EQ(family->menu()->actions().size(), 8);
    for (const QAction* action : family->menu()->actions()) {
      EXPECT_EQ(action->data().toInt(), 32000 + program);
      EXPECT_EQ(action->isChecked(), program == 127);
      EXPECT_FALSE(action->text().isEmpty());
      ++program;
    }
  }
  EXPECT_EQ(program, 128);
  EXPECT_EQ(SoundName(6), "Cembalo");
}

class ScorePlaybackTest : public ScoreWindows {
 protected:
  ScorePlaybackTest() {
    window_.show();
    new ScorePlayback(window_,
                      {.parameters = [this] { return &parameters_; },
                       .source = [this] { return source_; },
                       .setDirectory = folder_.Path()},
                      host_);
  }
  bool Reach(const std::function<bool()>& condition) { return QTest::qWaitFor(condition); }

  ScorePlayerParameters parameters_;
  std::string source_ = path_;
  std::shared_ptr<JobRun> run_ = std::make_shared<JobRun>();
  PlaybackWindow window_{{.filter = FilterId::ScorePlayer,
                          .title = "Probe",
                          .run = run_,
                          .options = [this] { return &parameters_; },
                          .play = [] {},
                          .stop = [] {}},
                         host_,
                         nullptr};
};

TEST_F(ScorePlaybackTest, WhileStoppedThePagesAreThoseOfTheSelectedScore) {
  EXPECT_EQ(Child<QTabWidget>(window_, "pages").count(), 6);
  EXPECT_EQ(Child<QListWidget>(window_, "stavesList").count(), 2);
  EXPECT_FALSE(Child<QWidget>(window_, "tempoGroup").isEnabled());
  Child<QListWidget>(window_, "stavesList").item(0)->setCheckState(Qt::Unchecked);
  EXPECT_THAT(parameters_.silentStaves, ElementsAre(true, false)) << "at once, without OK";
  source_.clear();
  EXPECT_TRUE(Reach([&] { return Child<QListWidget>(window_, "stavesList").count() == 1; }));
}

TEST_F(ScorePlaybackTest, WhileAScorePlaysChangesReachItAndItsStavesAreLit) {
  const auto score = ReadScoreAtHand(path_);
  ASSERT_THAT(score, IsOk());
  const auto stage = std::make_shared<ScoreStage>(parameters_);
  ScoreParameters loaded;
  loaded.playback.shortening = 44;
  stage->Open(std::make_shared<ScoreAtHand>(*score), loaded);
  stage->Show(96, {false, true});
  run_->state = RunState::Running;
  run_->player.Report({.title = path_, .duration = std::chrono::seconds(60), .place = BarBeat{3, 2}});
  run_->player.SetStage(stage);

  auto* const lights = window_.findChild<StaffLights*>();
  ASSERT_NE(lights, nullptr);
  EXPECT_TRUE(Reach([&] { return lights->Lit() == std::vector{false, true}; }));
  EXPECT_EQ(lights->accessibleDescription(), "Trommel");
  EXPECT_EQ(Child<QLabel>(window_, "elapsedLabel").text(), "3/2");
  EXPECT_EQ(Child<QLabel>(window_, "tempoLabel").text(), "96 bpm");
  EXPECT_EQ(Child<QSpinBox>(window_, "NoteShorten").value(), 44) << "with the set of the title";
  EXPECT_FALSE(Child<QWidget>(window_, "repeatsCheck").isEnabled());

  Child<QSlider>(window_, "tempoSlider").setValue(150);
  Child<QSpinBox>(window_, "NoteShorten").setValue(70);
  std::uint32_t revision = 0;
  const auto orders = stage->TakeChanges(revision);
  ASSERT_TRUE(orders);
  EXPECT_EQ(orders->tempo, 150U);
  EXPECT_EQ(orders->parameters.playback.shortening, 70);
  EXPECT_EQ(parameters_.playback.shortening, 70) << "for the titles that follow";
  EXPECT_TRUE(Reach([&] { return Child<QWidget>(window_, "ownTempoButton").isEnabled(); }));
  Press(window_, "ownTempoButton");
  EXPECT_EQ(stage->TakeChanges(revision)->tempo, std::nullopt);

  run_->player.SetStage(nullptr);
  EXPECT_TRUE(Reach([&] { return lights->Lit() == std::vector{false, false}; }));
}

TEST_F(ScoreWindows, NumbersOfAScoreMadeOfMidiStayInTheirRanges) {
  transcribe::MidiToScoreDialog dialog({}, host_, nullptr);
  dialog.show();
  EXPECT_EQ(Child<QSpinBox>(dialog, "barsBox").value(), 4);
  Child<QSpinBox>(dialog, "barsBox").setValue(0);
  EXPECT_EQ(Child<QSpinBox>(dialog, "barsBox").text(), "alle");
  Child<QSpinBox>(dialog, "aboveBox").setValue(101);
  {
    NextMessage message;
    Press(dialog, "okButton");
    EXPECT_EQ(message.Text(), "Bitte geben Sie einen Wert zwischen 0 und 100 ein.");
  }
  EXPECT_TRUE(dialog.isVisible());
  EXPECT_EQ(dialog.Parameters().barsPerSystem, 4) << "nothing is taken";
  Child<QSpinBox>(dialog, "aboveBox").setValue(100);
  Child<QSpinBox>(dialog, "normalBox").setValue(1000);
  Child<QRadioButton>(dialog, "landscapeRadio").setChecked(true);
  Child<QComboBox>(dialog, "beamsBox").setCurrentIndex(4);
  Press(dialog, "okButton");
  EXPECT_FALSE(dialog.isVisible());
  EXPECT_EQ(dialog.Parameters().barsPerSystem, 0);
  EXPECT_EQ(dialog.Parameters().above, 100);
  EXPECT_EQ(dialog.Parameters().normalLines, 1000);
  EXPECT_TRUE(dialog.Parameters().landscape);
  EXPECT_EQ(dialog.Parameters().beaming, 4);
}

}  // namespace
}  // namespace ts5
