// The dialogs, driven as a user would: what is live when, what is refused and why, what OK and Cancel give
// back.
#include <gmock/gmock.h>

#include <QTest>

#include "dialogs_support.h"
#include "frame/filter_catalogue.h"
#include "frame/texts.h"
#include "frame/ui/file_dialogs.h"
#include "frame/ui/job_dialog.h"
#include "frame/ui/qt_text.h"
#include "frame/ui/results_dialog.h"
#include "frame/ui/settings_dialog.h"
#include "midi/converter_form.h"
#include "midi/ui/midi_convert_dialog.h"
#include "midi/ui/midi_files_dialog.h"
#include "midi/ui/midi_properties_dialog.h"
#include "midi/ui/riff_attributes_dialog.h"
#include "midi/ui/time_base_box.h"
#include "platform/files/files.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using test::TemporaryDirectory;

void Type(QLineEdit& field, const QString& text) {
  field.setFocus();
  field.selectAll();
  QTest::keyClick(&field, Qt::Key_Delete);
  QTest::keyClicks(&field, text);
}

TEST(ResultsDialogTest, ShowsTheLinesThatHaveALabelAndTheRemarks) {
  RunResult result;
  result.titles = Descriptor(FilterId::MidiConverter).titles;
  result.counts = {2, 1};
  result.remarks = {"Die Quelle hat ein ungültiges Dateiformat."};
  RecordingHost host;
  ResultsDialog dialog(result, true, host, nullptr);
  dialog.show();

  EXPECT_EQ(dialog.windowTitle(), "Ergebnisse der Midi-Konvertierung");
  EXPECT_EQ(Child<QLineEdit>(dialog, "line1Count").text(), "2");
  EXPECT_EQ(Child<QLineEdit>(dialog, "line2Count").accessibleName(),
            "Nicht (ordnungsgemäß) konvertierte Dateien:");
  EXPECT_TRUE(Child<QLineEdit>(dialog, "line2Count").isVisible());
  EXPECT_FALSE(Child<QWidget>(dialog, "line3Label").isVisible());
  EXPECT_FALSE(Child<QWidget>(dialog, "line3Count").isVisible());
  EXPECT_EQ(Child<QPlainTextEdit>(dialog, "remarks").toPlainText(), ToQt(result.remarks.front()));
  EXPECT_FALSE(Child<QWidget>(dialog, "cancelButton").isVisible());

  Press(dialog, "helpButton");
  EXPECT_EQ(host.topics, QStringList("Befehle-aktion-ausführen-ergebnisse.htm"));
  EXPECT_TRUE(dialog.isVisible());
  Press(dialog, "okButton");
  EXPECT_EQ(dialog.result(), QDialog::Accepted);
}

TEST(ResultsDialogTest, CancelIsOfferedOnRequestAndNoRemarksAreNone) {
  RunResult result;
  result.cancelButton = true;
  RecordingHost host;
  ResultsDialog dialog(result, true, host, nullptr);
  dialog.show();
  EXPECT_EQ(Child<QPlainTextEdit>(dialog, "remarks").toPlainText(), "keine");
  EXPECT_FALSE(Child<QWidget>(dialog, "detailsButton").isVisible()) << "there are no items";
  Press(dialog, "cancelButton");
  EXPECT_EQ(dialog.result(), QDialog::Rejected);
}

TEST(JobDialogTest, LimitsTheNamesAndKeepsThePresetOfEmptyFields) {
  RecordingHost host;
  JobDialog dialog(JobDialog::Purpose::Create, {"Job 3", "Beschreibung von Job 3"}, host, nullptr);
  dialog.show();
  EXPECT_EQ(dialog.windowTitle(), "Job erzeugen");
  EXPECT_EQ(host.prompts.last(),
            "Geben Sie einen Jobnamen sowie eine Beschreibung des Jobs ein und klicken Sie OK");
  EXPECT_EQ(dialog.Names(), (JobNames{"Job 3", "Beschreibung von Job 3"}));

  Type(Child<QLineEdit>(dialog, "titleEdit"), "Weihnachtslieder");
  Type(Child<QLineEdit>(dialog, "descriptionEdit"), QString(100, 'x'));
  EXPECT_EQ(dialog.Names(), (JobNames{"Weihnachtsli", std::string(79, 'x')}));

  Type(Child<QLineEdit>(dialog, "titleEdit"), "  ");
  Type(Child<QLineEdit>(dialog, "descriptionEdit"), "");
  EXPECT_EQ(dialog.Names(), (JobNames{"Job 3", "Beschreibung von Job 3"}));

  QTest::keyClick(&dialog, Qt::Key_F1);
  EXPECT_EQ(host.topics.last(), "Befehle-Job-Neu.htm");
  QTest::keyClick(&Child<QLineEdit>(dialog, "titleEdit"), Qt::Key_Return);
  EXPECT_EQ(dialog.result(), QDialog::Accepted);
  EXPECT_EQ(host.prompts.last(), "") << "the status bar has its own text back";
  JobDialog renaming(JobDialog::Purpose::Rename, {"Alt", "Alte Beschreibung"}, host, nullptr);
  EXPECT_EQ(renaming.HelpTopic(), "Befehle-Job-Umbenennen.htm");
}

struct EnablingCase {
  bool noPreset, target, suffix;             // what is checked
  bool choice, directory, suffixBox, field;  // what is live then
};

class SettingsDialogTest : public testing::Test {
 protected:
  SettingsDialogTest() {
    settings_.artworkerLayoutDirectory = directory_.Path();
    settings_.playbackParameterDirectory = directory_.Path();
  }

  TemporaryDirectory directory_;
  Settings settings_;
  RecordingHost host_;
};

TEST_F(SettingsDialogTest, ControlsOfTheConversionPageFollowTheirChoices) {
  const EnablingCase cases[] = {
      {false, false, true, true, false, true, true},    {false, true, true, true, true, true, true},
      {false, true, false, true, true, true, false},    {true, true, true, false, false, false, false},
      {true, false, false, false, false, false, false},
  };
  SettingsDialog dialog(settings_, host_, nullptr);
  dialog.show();
  for (const EnablingCase& c : cases) {
    SCOPED_TRACE(testing::Message() << c.noPreset << c.target << c.suffix);
    Child<QCheckBox>(dialog, "noPresetCheck").setChecked(c.noPreset);
    Child<QRadioButton>(dialog, c.target ? "targetDirectoryRadio" : "sourceDirectoryRadio").setChecked(true);
    Child<QCheckBox>(dialog, "suffixCheck").setChecked(c.suffix);
    EXPECT_EQ(Child<QWidget>(dialog, "sourceDirectoryRadio").isEnabled(), c.choice);
    EXPECT_EQ(Child<QWidget>(dialog, "targetDirectoryRadio").isEnabled(), c.choice);
    EXPECT_EQ(Child<QWidget>(dialog, "targetDirectoryEdit").isEnabled(), c.directory);
    EXPECT_EQ(Child<QWidget>(dialog, "targetDirectoryButton").isEnabled(), c.directory);
    EXPECT_EQ(Child<QWidget>(dialog, "suffixCheck").isEnabled(), c.suffixBox);
    EXPECT_EQ(Child<QWidget>(dialog, "suffixEdit").isEnabled(), c.field);
  }
}

TEST_F(SettingsDialogTest, RefusesWhatIsMissingAndGoesToTheField) {
  SettingsDialog dialog(settings_, host_, nullptr);
  dialog.show();
  QApplication::setActiveWindow(&dialog);
  auto& pages = Child<QTabWidget>(dialog, "pages");
  const auto refusal = [&](const QString& field, int page) {
    NextMessage message;
    Press(dialog, "okButton");
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_EQ(pages.currentIndex(), page);
    EXPECT_EQ(dialog.focusWidget()->objectName(), field);
    EXPECT_EQ(message.Icon(), QMessageBox::Information);
    EXPECT_EQ(message.Title(), QtText(texts::ApplicationTitle));
    EXPECT_EQ(dialog.Accepted(), settings_);
    return message.Text();
  };

  pages.setCurrentIndex(1);
  auto& layouts = Child<QLineEdit>(dialog, "artworkerDirectoryEdit");
  layouts.setText(ToQt(directory_.File("fehlt")));
  EXPECT_EQ(refusal("artworkerDirectoryEdit", 0), QtText(texts::InvalidDirectory));
  EXPECT_EQ(layouts.selectedText(), layouts.text());
  layouts.setText(ToQt(directory_.Path()));
  Child<QRadioButton>(dialog, "targetDirectoryRadio").setChecked(true);
  EXPECT_EQ(refusal("targetDirectoryEdit", 1), QtText(texts::InvalidDestinationDirectory));
  Child<QLineEdit>(dialog, "targetDirectoryEdit").setText(ToQt(directory_.Path()));
  Child<QLineEdit>(dialog, "suffixEdit").clear();
  EXPECT_EQ(refusal("suffixEdit", 1), QtText(texts::NoSuffix));
  Type(Child<QLineEdit>(dialog, "suffixEdit"), "abcde");
  Press(dialog, "okButton");
  EXPECT_EQ(dialog.result(), QDialog::Accepted);
  EXPECT_EQ(dialog.Accepted().suffix, "abcd");
  EXPECT_FALSE(dialog.Accepted().sourceDirectoryAsTarget);
  EXPECT_EQ(dialog.Accepted().targetDirectory, directory_.Path());
}

TEST_F(SettingsDialogTest, AnotherLayoutIsPendingAndEveryRadioIsTaken) {
  SettingsDialog dialog(settings_, host_, nullptr);
  dialog.show();
  Child<QRadioButton>(dialog, "layoutWindows").click();
  Child<QRadioButton>(dialog, "jobSavingAsk").click();
  Child<QRadioButton>(dialog, "searchResultsAppend").click();
  Child<QCheckBox>(dialog, "wholePathCheck").click();
  EXPECT_EQ(dialog.HelpTopic(), "Befehle-Aktion-Einstellungen-Allgemein.htm");
  Child<QTabWidget>(dialog, "pages").setCurrentIndex(1);
  EXPECT_EQ(dialog.HelpTopic(), "Befehle-Aktion-Einstellungen-Konvertierung.htm");
  Press(dialog, "okButton");
  const Settings& accepted = dialog.Accepted();
  EXPECT_EQ(accepted.skinLayout, SkinLayout::Stavora5) << "until the next start";
  EXPECT_EQ(accepted.pendingSkinLayout, SkinLayout::Windows);
  EXPECT_EQ(accepted.jobSaving, JobSaving::Ask);
  EXPECT_EQ(accepted.oldSearchResults, OldSearchResults::Extend);
  EXPECT_TRUE(accepted.searchWholePath);
}

// A Standard MIDI File with two empty tracks, in any container.
std::string SampleMidi(MidiContainer container) {
  const std::string header("\0\0\0\6\0\1\0\2\0\x60", 10);
  const std::string track("MTrk\0\0\0\4\0\xff\x2f\0", 12);
  const std::string body = header + track + track;
  if (container == MidiContainer::Sequencer) return "RDL3" + body;
  if (container == MidiContainer::Smf) return "MThd" + body;
  return std::string("RIFF\x32\0\0\0RMIDdata\x26\0\0\0", 20) + "MThd" + body;
}

TEST(MidiConvertDialogTest, ControlsFollowTheBoxesAndTheSourceNamesTheChoices) {
  struct Case {
    MidiContainer container;
    const char* riff;
    const char* sequencer;
    bool attributesShown;
  };
  const Case cases[] = {
      {MidiContainer::Smf, "&RIFF (.rmi)", "&Rondelis (.rdl)", true},
      {MidiContainer::Riff, "&Midi (.mid)", "&Rondelis (.rdl)", false},
      {MidiContainer::Sequencer, "&RIFF (.rmi)", "&Midi (.mid)", true},
  };
  TemporaryDirectory directory;
  for (const Case& c : cases) {
    SCOPED_TRACE(c.riff);
    const std::string source = directory.Write("lied.mid", SampleMidi(c.container));
    RecordingHost host;
    MidiConvertDialog dialog({}, source, host, nullptr);
    dialog.show();
    EXPECT_EQ(Child<QLabel>(dialog, "currentTimeBaseLabel").text(), "Die aktuelle Zeitbasis beträgt 96.");
    auto& riff = Child<QRadioButton>(dialog, "riffRadio");
    auto& sequencer = Child<QRadioButton>(dialog, "sequencerRadio");
    auto& attributes = Child<QPushButton>(dialog, "attributesButton");
    EXPECT_EQ(riff.text(), c.riff);
    EXPECT_EQ(sequencer.text(), c.sequencer);
    EXPECT_EQ(attributes.isVisible(), c.attributesShown);

    EXPECT_FALSE(riff.isEnabled());
    EXPECT_FALSE(attributes.isEnabled());
    Child<QCheckBox>(dialog, "containerCheck").click();
    EXPECT_TRUE(riff.isEnabled());
    EXPECT_EQ(attributes.isEnabled(), c.attributesShown);
    sequencer.click();
    EXPECT_FALSE(attributes.isEnabled());

    EXPECT_FALSE(Child<QWidget>(dialog, "timeBaseBox").isEnabled());
    Child<QCheckBox>(dialog, "timeBaseCheck").click();
    EXPECT_TRUE(Child<QWidget>(dialog, "timeBaseBox").isEnabled());
    Press(dialog, "okButton");
    EXPECT_TRUE(dialog.Parameters().changeContainer);
    EXPECT_FALSE(dialog.Parameters().toRiff);
    EXPECT_TRUE(dialog.Parameters().changeTimeBase);
  }
}

TEST(MidiConvertDialogTest, RefusesToDoNothing) {
  RecordingHost host;
  ConverterParameters parameters;
  MidiConvertDialog dialog(parameters, {}, host, nullptr);
  dialog.show();
  EXPECT_EQ(host.prompts.last(), "Legen Sie die Konvertierungsparameter fest und klicken Sie OK");
  Child<QCheckBox>(dialog, "formatCheck").setChecked(false);
  NextMessage message;
  Press(dialog, "okButton");
  EXPECT_EQ(message.Text(), "Wählen Sie bitte eine oder mehrere Option aus.");
  EXPECT_TRUE(dialog.isVisible());
  Child<QCheckBox>(dialog, "formatCheck").setChecked(true);
  Press(dialog, "okButton");
  EXPECT_EQ(dialog.result(), QDialog::Accepted);
}

TEST(MidiConvertDialogTest, TellsOfASourceThatCannotBeRead) {
  TemporaryDirectory directory;
  RecordingHost host;
  MidiConvertDialog dialog({}, directory.Write("kaputt.mid", "kein Midi"), host, nullptr);
  NextMessage message;
  dialog.show();
  QTest::qWait(50);
  EXPECT_EQ(message.Text(), "Es traten Probleme beim Ermitteln der Eigenschaften der Quelldatei auf.");
  EXPECT_EQ(message.Icon(), QMessageBox::Warning);
  EXPECT_FALSE(Child<QWidget>(dialog, "currentTimeBaseLabel").isVisible());
}

TEST(TimeBaseBoxTest, ArrowsAndTypingMoveThroughTheTable) {
  TimeBaseBox box;
  box.setValue(11);
  EXPECT_EQ(box.text(), "480");
  QTest::keyClick(&box, Qt::Key_Up);
  EXPECT_EQ(box.text(), "576");
  const std::pair<const char*, int> typed[] = {{"48", 0}, {"96", 2}, {"1", 0}, {"500", 11}, {"9999", 14}};
  for (const auto& [text, index] : typed) {
    box.selectAll();
    QTest::keyClicks(&box, QLatin1String(text));
    box.interpretText();
    EXPECT_EQ(box.value(), index) << text;
  }
}

TEST(RiffAttributesDialogTest, GivesBackWhatWasTyped) {
  RecordingHost host;
  RiffAttributesDialog dialog({"Titel", "Künstler", "Recht", "Zwei\nZeilen"}, host, nullptr);
  dialog.show();
  EXPECT_EQ(dialog.Attributes().description, "Zwei\nZeilen");
  auto& title = Child<QLineEdit>(dialog, "titleEdit");
  title.selectAll();
  title.insert(QString(300, QChar(0xe4)));
  EXPECT_EQ(CharacterCount(dialog.Attributes().title), ConverterParameters::kMaxAttribute);
  EXPECT_EQ(dialog.Attributes().artist, "Künstler");
  EXPECT_EQ(dialog.Attributes().copyright, "Recht");
}

TEST(MidiPropertiesDialogTest, ShowsTheAttributesOfRiffFilesOnly) {
  MidiProperties properties;
  properties.title = "Eigenschaften von \"lied.mid\"";
  properties.rows = {{"Dateiformat", "MIDI-1"}, {"Spuranzahl", "2"}};
  RecordingHost host;
  for (const bool riff : {false, true}) {
    properties.isRiff = riff;
    properties.attributes = {{"Titel", "<b>Abendlied</b>"}};
    const auto dialog = MidiPropertiesDialog(properties, host, nullptr);
    dialog->show();
    EXPECT_EQ(dialog->windowTitle(), ToQt(properties.title));
    EXPECT_EQ(Child<QTreeWidget>(*dialog, "propertyList").topLevelItem(1)->text(1), "2");
    auto& list = Child<QTreeWidget>(*dialog, "attributeList");
    EXPECT_EQ(list.isVisible(), riff);
    EXPECT_FALSE(list.topLevelItem(0)->toolTip(1).contains('<')) << "a text of a file is no markup";
  }
}

TEST(MidiFilesDialogTest, ComparesFilesAndSortsByNumbers) {
  TemporaryDirectory directory;
  directory.Write("kaputt.mid", "MThd");
  RecordingHost host;
  const auto dialog =
      MidiFilesDialog({test::DataPath("midi/mutopia_maple-leaf-rag.mid"), directory.File("kaputt.mid"),
                       test::DataPath("midi/jazzsoft_test-c-major-scale.mid")},
                      host, nullptr);
  auto& list = Child<QTreeWidget>(*dialog, "midiFileList");
  ASSERT_TRUE(QTest::qWaitFor([&] { return list.topLevelItemCount() == 3; }));
  list.sortByColumn(2, Qt::DescendingOrder);
  EXPECT_EQ(list.topLevelItem(0)->text(0), "mutopia_maple-leaf-rag.mid");
  EXPECT_EQ(list.topLevelItem(2)->text(8), "nicht lesbar");
  EXPECT_THAT(FromQt(Child<QLabel>(*dialog, "midiFilesTotal").text()), testing::HasSubstr("3 Dateien"));
}

TEST(FileDialogsTest, FileTypesMatchWithoutRegardToCase) {
  EXPECT_EQ(DialogFilters("Mididatei (*.mid;*.rmi)|*.mid;*.rmi|Alle Dateien (*.*)|*.*|"),
            QStringList({"Mididatei (*.mid *.MID *.rmi *.RMI)", "Alle Dateien (*)"}));
}

TEST(FileDialogsTest, SpeaksGermanAndHelps) {
  TemporaryDirectory directory;
  RecordingHost host;
  QStringList texts;
  QTimer timer;
  QObject::connect(&timer, &QTimer::timeout, [&] {
    auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
    if (dialog == nullptr) return;
    timer.stop();
    for (const auto* button : dialog->findChildren<QPushButton*>()) texts << button->text().remove('&');
    for (auto* button : dialog->findChildren<QPushButton*>()) {
      if (button->text() == "Hilfe") button->click();
    }
    dialog->findChild<QLineEdit*>("fileNameEdit")->setText("liste");
    QMetaObject::invokeMethod(dialog, "accept");
  });
  timer.start(10);
  const auto chosen = AskFileToSave({.title = "Freie Dateiliste speichern",
                                     .start = directory.Path(),
                                     .filter = Text(texts::FileListFilter),
                                     .helpTopic = "Befehle-Datei-Speichern.htm"},
                                    host, nullptr);
  EXPECT_EQ(chosen, directory.Path() + "/liste.sts");
  EXPECT_THAT(texts, testing::IsSupersetOf({"Speichern", "Abbrechen", "Hilfe"}));
  EXPECT_EQ(host.topics, QStringList("Befehle-Datei-Speichern.htm"));
}

}  // namespace
}  // namespace ts5
