// The dialogs of the melody search: the note editor with all its keys and buttons, the options and what binds
// them, stored melodies, the viewer and printing.
#include <gmock/gmock.h>

#include <QPrintPreviewWidget>
#include <QTest>
#include <atomic>
#include <variant>

#include "dialogs_support.h"
#include "frame/texts.h"
#include "frame/ui/print_abort_dialog.h"
#include "frame/ui/print_preview_dialog.h"
#include "frame/ui/print_setup_dialog.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"
#include "platform/files/files.h"
#include "platform/store/registry.h"
#include "search/hit_texts.h"
#include "search/melody_text.h"
#include "search/note_commands.h"
#include "search/texts.h"
#include "search/ui/manage_melodies_dialog.h"
#include "search/ui/note_editor_panel.h"
#include "search/ui/result_line_view.h"
#include "search/ui/result_viewer_dialog.h"
#include "search/ui/results_printer.h"
#include "search/ui/save_melody_dialog.h"
#include "search/ui/search_dialog.h"
#include "search/ui/staff_view.h"
#include "support/midi_devices.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

MelodyElement Note(int pitch, int duration = 240) {
  return {static_cast<std::int16_t>(pitch), static_cast<std::int16_t>(duration)};
}

class SearchDialogTest : public testing::Test {
 public:
  void Open(SearchKind kind = SearchKind::Midi, std::vector<std::string> devices = {"Orgel", "Klavier"}) {
    dialog_ = std::make_unique<SearchDialog>(
        kind, parameters_, store_, std::move(devices),
        [this](const std::string& name) { return OpenDevice(name); }, host_, nullptr);
    dialog_->show();
    QApplication::setActiveWindow(dialog_.get());
    ASSERT_TRUE(QTest::qWaitForWindowActive(dialog_.get()));
    ASSERT_NE(Staff(), nullptr);
  }
  // A device that takes so many messages and has gone then.
  Result<std::unique_ptr<MidiOutput>> OpenDevice(const std::string& name) {
    opened_ = name;
    if (!opens_) return Failure(Outcome::TargetFailed);
    return std::make_unique<test::FakeDevice>([this](std::uint32_t) {
      return ++messages_ > mostMessages_ ? Outcome::WriteFailed : Outcome::Success;
    });
  }
  [[nodiscard]] StaffView* Staff() const { return dialog_->findChild<StaffView*>(); }
  [[nodiscard]] const SearchMelody& Edited() const {
    return Child<NoteEditorPanel>(*dialog_, "notePanel").Melody();
  }
  void Keys(const char* text) { QTest::keyClicks(Staff(), QLatin1String(text)); }
  void Key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QTest::keyClick(Staff(), key, modifiers);
  }
  [[nodiscard]] QToolButton& Button(NoteCommand command) const {
    const auto row = std::ranges::find(NoteCommands(), command, &NoteCommandRow::command);
    for (auto* button : dialog_->findChildren<QToolButton*>()) {
      if (button->toolTip() == QtText(*row->tip)) return *button;
    }
    qFatal("there is no such button");
  }
  SearchParameters Accepted() {
    Press(*dialog_, "okButton");
    EXPECT_EQ(dialog_->result(), QDialog::Accepted);
    return dialog_->Parameters();
  }

  Registry registry_ = std::move(*Registry::Open(kRegistryInMemory));
  MelodyStore store_{registry_};
  SearchParameters parameters_;
  RecordingHost host_;
  bool opens_ = true;
  std::string opened_;
  std::atomic<int> messages_ = 0;
  int mostMessages_ = 1'000'000;
  std::unique_ptr<SearchDialog> dialog_;
};

// What each key means to the editor is the editor's own affair; here they reach it.
TEST_F(SearchDialogTest, TypedKeysReachTheEditor) {
  using Keyed = std::variant<const char*, Qt::Key>;
  struct Case {
    std::vector<Keyed> keys;
    std::vector<MelodyElement> expected;
  };
  const Case cases[] = {
      {{"bB c+d"}, {Note(60), Note(1063)}},  // b has no meaning, and no rest comes first
      {{"4.c .D"}, {Note(60, 360), Note(kRestCode, 360), Note(74)}},
      {{Qt::Key_F4, Qt::Key_F3, "c"}, {Note(60)}},
      {{Qt::Key_F8, Qt::Key_F2, "cd"}, {Note(10024), Note(26)}},
      {{Qt::Key_F8, Qt::Key_F7, "c"}, {Note(60)}},
      {{"cde", Qt::Key_Home, Qt::Key_Backspace, Qt::Key_Right, Qt::Key_Delete}, {Note(60), Note(64)}},
      {{"cde", Qt::Key_Left, Qt::Key_Backspace, Qt::Key_End, "f"}, {Note(60), Note(64), Note(65)}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(&c - cases);
    parameters_ = {};
    Open();
    // The refusal of a rest at the start is a box; it is closed.
    NextMessage refusal;
    for (const Keyed& key : c.keys) {
      if (const auto* text = std::get_if<const char*>(&key)) {
        Keys(*text);
      } else {
        Key(std::get<Qt::Key>(key));
      }
    }
    EXPECT_EQ(Edited().elements, c.expected);
    EXPECT_EQ(refusal.Text(), &c == cases ? QtText(texts::RestAtStart) : QString());
    Key(Qt::Key_Delete, Qt::ControlModifier);
    EXPECT_THAT(Edited().elements, IsEmpty());
  }
}

TEST_F(SearchDialogTest, ClicksAndAMidiKeyboardEnterNotes) {
  Open();
  // A click on the middle line, right of everything, enters the note that stands there.
  const int middle = Staff()->height() / 2;
  QTest::mouseClick(Staff(), Qt::LeftButton, {}, QPoint(Staff()->width() - 30, middle));
  EXPECT_THAT(Edited().elements, ElementsAre(Note(71)));
  Keys("d");
  Child<NoteEditorPanel>(*dialog_, "notePanel").EnterKey(61);
  EXPECT_THAT(Edited().elements, ElementsAre(Note(71), Note(62), Note(1061)));
  Key(Qt::Key_Z, Qt::ControlModifier);
  Key(Qt::Key_Z, Qt::ControlModifier);
  EXPECT_THAT(Edited().elements, ElementsAre(Note(71)));
  Key(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_THAT(Edited().elements, ElementsAre(Note(71), Note(62)));
  // The next time new notes come behind those that are there.
  parameters_ = Accepted();
  parameters_.melody.cursor = 0;
  Open();
  Keys("e");
  EXPECT_THAT(Edited().elements, ElementsAre(Note(71), Note(62), Note(64)));
}

TEST_F(SearchDialogTest, EscapeAsksBeforeItDiscards) {
  Open();
  QTest::keyClick(dialog_.get(), Qt::Key_Escape);
  EXPECT_FALSE(dialog_->isVisible()) << "nothing was changed";
  Open();
  Press(*dialog_, "searchWidelyButton");
  EXPECT_TRUE(Child<QRadioButton>(*dialog_, "rhythmAnyRadio").isChecked());
  EXPECT_TRUE(Child<QRadioButton>(*dialog_, "pitchRelativeRadio").isChecked());
  for (const bool discard : {false, true}) {
    NextMessage question(discard ? QMessageBox::Yes : QMessageBox::No);
    QTest::keyClick(dialog_.get(), Qt::Key_Escape);
    EXPECT_EQ(dialog_->isVisible(), !discard);
  }
}

TEST_F(SearchDialogTest, RefusalsSayWhyAndChangeNothing) {
  Open();
  // Until the staff is full; then the dialog is made wider.
  NextMessage full;
  for (int i = 0; i < 200 && full.Text().isEmpty(); ++i) Keys("c");
  EXPECT_EQ(full.Text(), QtText(texts::NoRoomForNote));
  const std::size_t count = Edited().elements.size();
  EXPECT_GT(count, 10U);
  EXPECT_LT(count, 200U);
  dialog_->resize(dialog_->width() + 200, dialog_->height());
  QTest::qWait(20);
  Keys("c");
  EXPECT_EQ(Edited().elements.size(), count + 1);
}

TEST_F(SearchDialogTest, EveryButtonOfTheToolbarDoesWhatItsTooltipSays) {
  Open();
  using C = NoteCommand;
  SearchMelody expected;
  NoteEditor editor(expected);
  for (const C command : {C::OctaveDown, C::OctaveUp, C::OctaveNormal, C::Flat, C::Sharp, C::Natural,
                          C::BassClef, C::TrebleClef, C::ToggleDot, C::Whole, C::Half, C::Quarter, C::Eighth,
                          C::Sixteenth, C::ThirtySecond}) {
    SCOPED_TRACE(static_cast<int>(command));
    for (int pressed = 0; pressed < 2; ++pressed) {  // pressed again, only the dot changes
      (void)editor.Execute(command);
      QTest::mouseClick(&Button(command), Qt::LeftButton);
      EXPECT_EQ(Edited(), expected);
      EXPECT_EQ(Button(command).isChecked(), editor.IsChosen(command));
      EXPECT_TRUE(Staff()->hasFocus()) << "so that typing goes on";
    }
  }

  // An empty melody: the clef can be chosen, nothing can be played, deleted or saved.
  const auto enabled = [&](bool empty) {
    for (const C command : {C::Play, C::DeleteAll, C::Save}) EXPECT_EQ(Button(command).isEnabled(), !empty);
    for (const C command : {C::TrebleClef, C::BassClef}) EXPECT_EQ(Button(command).isEnabled(), empty);
    EXPECT_TRUE(Button(C::Manage).isEnabled());
  };
  enabled(true);
  Keys("c");
  enabled(false);
  QTest::mouseClick(&Button(C::DeleteAll), Qt::LeftButton);
  EXPECT_THAT(Edited().elements, IsEmpty());
  enabled(true);
}

TEST_F(SearchDialogTest, PlayingLocksTheEntryAndStops) {
  Open();
  Keys("1ccc");
  Key(Qt::Key_F9);
  EXPECT_EQ(opened_, "") << "the mapper";
  EXPECT_FALSE(Child<QWidget>(*dialog_, "midiGroup").isEnabled());
  Keys("d");
  Key(Qt::Key_Backspace);
  Key(Qt::Key_Delete, Qt::ControlModifier);
  EXPECT_EQ(Edited().elements.size(), 3U) << "nothing is entered or deleted meanwhile";
  EXPECT_FALSE(Button(NoteCommand::Save).isEnabled());
  EXPECT_TRUE(Button(NoteCommand::Play).isEnabled());
  Key(Qt::Key_F9);
  EXPECT_TRUE(Child<QWidget>(*dialog_, "midiGroup").isEnabled());
  Keys("d");
  EXPECT_EQ(Edited().elements.size(), 4U);

  // A short melody ends by itself, on the chosen device.
  Key(Qt::Key_Delete, Qt::ControlModifier);
  Keys("3c");
  Child<QComboBox>(*dialog_, "deviceBox").setCurrentIndex(2);
  Key(Qt::Key_F9);
  EXPECT_EQ(opened_, "Klavier");
  EXPECT_TRUE(QTest::qWaitFor([&] { return Child<QWidget>(*dialog_, "midiGroup").isEnabled(); }));

  opens_ = false;
  NextMessage failure;
  Key(Qt::Key_F9);
  EXPECT_EQ(failure.Text(), QtText(texts::MelodyNotPlayed));
}

TEST_F(SearchDialogTest, ADeviceThatGoesEndsThePlayingWithItsMessage) {
  Open();
  Keys("3cdefg");
  mostMessages_ = 3;
  NextMessage message;
  Key(Qt::Key_F9);
  EXPECT_TRUE(QTest::qWaitFor([&] { return !message.Text().isEmpty(); }));
  EXPECT_EQ(message.Text(), QtText(texts::MidiDeviceGone));
  EXPECT_TRUE(Child<QWidget>(*dialog_, "midiGroup").isEnabled());
}

TEST_F(SearchDialogTest, RhythmAndPitchAreNeverBothFree) {
  Open();
  Child<QTabWidget>(*dialog_, "tabs").setCurrentIndex(1);
  const auto click = [&](const char* button, bool rhythmAny, bool pitchIgnore, bool tolerance) {
    Press(*dialog_, button);
    EXPECT_EQ(Child<QWidget>(*dialog_, "rhythmAnyRadio").isEnabled(), rhythmAny) << button;
    EXPECT_EQ(Child<QWidget>(*dialog_, "pitchIgnoreRadio").isEnabled(), pitchIgnore) << button;
    EXPECT_EQ(Child<QWidget>(*dialog_, "toleranceBox").isEnabled(), tolerance) << button;
  };
  click("rhythmAnyRadio", true, false, false);
  click("rhythmRelativeRadio", true, true, true);
  click("pitchIgnoreRadio", false, true, true);
  click("pitchRelativeRadio", true, true, true);
  click("rhythmAnyRadio", true, false, false);
  Press(*dialog_, "firstTrackCheck");
  Press(*dialog_, "drumTrackCheck");
  Child<QComboBox>(*dialog_, "toleranceBox").setCurrentIndex(1);
  EXPECT_EQ(Accepted().options,
            (SearchOptions{RhythmMode::Any, Tolerance::Low, PitchMode::Relative, true, true}));
}

TEST_F(SearchDialogTest, DeviceTempoAndInstrumentAreStored) {
  parameters_.device = 7;  // no longer there
  Open();
  EXPECT_EQ(Child<QComboBox>(*dialog_, "deviceBox").currentText(), QtText(texts::MidiMapper));
  EXPECT_EQ(Child<QComboBox>(*dialog_, "instrumentBox").count(), 128);
  EXPECT_EQ(Child<QComboBox>(*dialog_, "instrumentBox").itemText(127), "Schuss");
  Child<QComboBox>(*dialog_, "deviceBox").setCurrentIndex(1);
  Child<QComboBox>(*dialog_, "instrumentBox").setCurrentIndex(19);
  auto& slider = Child<QSlider>(*dialog_, "tempoSlider");
  EXPECT_EQ(slider.minimum(), 10);
  EXPECT_EQ(slider.maximum(), 240);
  EXPECT_EQ(slider.pageStep(), 10);
  slider.setValue(200);
  EXPECT_EQ(Child<QSpinBox>(*dialog_, "tempoBox").value(), 200);
  const SearchParameters accepted = Accepted();
  EXPECT_EQ(accepted.device, 0);
  EXPECT_EQ(accepted.instrument, 19);
  EXPECT_EQ(accepted.tempo, 200);
}

TEST_F(SearchDialogTest, WithoutADeviceNothingPlaysAndTheScoreSearchHasNoTolerance) {
  Open(SearchKind::Score, {});
  Child<QTabWidget>(*dialog_, "tabs").setCurrentIndex(1);
  EXPECT_FALSE(Child<QWidget>(*dialog_, "midiGroup").isEnabled());
  EXPECT_FALSE(Child<QWidget>(*dialog_, "toleranceBox").isVisible());
  EXPECT_EQ(Child<QCheckBox>(*dialog_, "firstTrackCheck").text(), QtText(texts::FirstStaffOnly));
  EXPECT_EQ(Child<QCheckBox>(*dialog_, "drumTrackCheck").text(), QtText(texts::DrumStaffToo));
  EXPECT_EQ(dialog_->HelpTopic(), "parm_melodiesuche-optionen.htm");
  Child<QTabWidget>(*dialog_, "tabs").setCurrentIndex(0);
  EXPECT_EQ(dialog_->HelpTopic(), "parm_melodiesuche-melodie.htm");
  Staff()->setFocus();
  Keys("c");
  EXPECT_FALSE(Button(NoteCommand::Play).isEnabled());
  EXPECT_EQ(Accepted().device, kNoMidiOutput);
}

TEST_F(SearchDialogTest, OkTrimsAndCancelGivesBackWhatWasThere) {
  parameters_.melody.elements = {Note(10048), Note(50)};
  parameters_.melody.cursor = 1;
  Open();
  EXPECT_EQ(Edited().clef, Clef::Bass) << "by the mark of the first element";
  Key(Qt::Key_End);
  Keys("c  ");
  EXPECT_EQ(Edited().elements.size(), 5U);
  const SearchParameters accepted = Accepted();
  EXPECT_THAT(accepted.melody.elements, ElementsAre(Note(10048), Note(50), Note(36)));
  EXPECT_EQ(accepted.melody.cursor, 3U);

  Open();
  Keys("c");
  Child<QComboBox>(*dialog_, "instrumentBox").setCurrentIndex(5);
  Child<QRadioButton>(*dialog_, "rhythmAnyRadio").click();
  Press(*dialog_, "cancelButton");
  EXPECT_EQ(dialog_->result(), QDialog::Rejected);
  EXPECT_EQ(dialog_->Parameters().melody, parameters_.melody);
}

// --- stored melodies

TEST_F(SearchDialogTest, SavesUnderAnyNameAndAsksBeforeItOverwrites) {
  SearchMelody melody;
  melody.elements = {Note(60), Note(62), Note(kRestCode)};
  ASSERT_TRUE(Succeeded(store_.SaveMelody("Kuckuck", melody)));
  SaveMelodyDialog dialog(store_, melody, host_, nullptr);
  dialog.show();
  auto& name = Child<QLineEdit>(dialog, "nameEdit");
  for (const auto& [text, question] :
       {std::pair{"", texts::MelodyNameMissing}, {"Kuckuck", texts::MelodyExists}}) {
    name.setText(text);
    NextMessage no(*text == 0 ? QMessageBox::Ok : QMessageBox::No);
    Press(dialog, "okButton");
    EXPECT_EQ(no.Text(), QtText(question));
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_EQ(name.selectedText(), text) << "back in the name field";
  }
  name.clear();
  QTest::keyClicks(&name, QString(100, 'x'));
  EXPECT_EQ(name.text().size(), 80);
  name.setText("Drossel");
  Press(dialog, "okButton");
  EXPECT_EQ(dialog.result(), QDialog::Accepted);
  EXPECT_THAT(store_.LoadMelody("Drossel").value(), ElementsAre(Note(60), Note(62)));
}

class ManageTest : public SearchDialogTest {
 protected:
  ManageTest() {
    SearchMelody melody;
    melody.elements = {Note(10048), Note(50)};
    (void)store_.SaveMelody("bass", melody);
    melody.elements.assign(5, Note(60, 30));
    (void)store_.SaveMelody("Amsel", melody);
    (void)store_.SaveMelody("Drossel", melody);
  }
  void OpenManager() {
    manager_ =
        std::make_unique<ManageMelodiesDialog>(store_, SearchMelody{}, sound_, MelodyVoice{}, host_, nullptr);
    manager_->show();
    list_ = &Child<QTreeView>(*manager_, "melodyList");
  }
  [[nodiscard]] QStringList Column(int column) const {
    QStringList texts;
    for (int row = 0; row < list_->model()->rowCount(); ++row)
      texts << list_->model()->index(row, column).data().toString();
    return texts;
  }
  void SelectName(const QString& name) {
    list_->setCurrentIndex(list_->model()->index(static_cast<int>(Column(0).indexOf(name)), 0));
  }
  void Rename(const QString& to) {
    Press(*manager_, "renameButton");
    const QPointer<QLineEdit> editor = list_->findChild<QLineEdit*>();
    ASSERT_FALSE(editor.isNull());
    editor->selectAll();
    QTest::keyClicks(editor, to);
    QTest::keyClick(editor, Qt::Key_Return);
    // What was typed is taken behind the key, and the list filled anew behind the editor's end.
    ASSERT_TRUE(QTest::qWaitFor([&] { return editor.isNull(); }));
    QCoreApplication::processEvents();
  }

  MelodySound sound_{{"Orgel"}, [this](const std::string& name) { return OpenDevice(name); }, nullptr};
  std::unique_ptr<ManageMelodiesDialog> manager_;
  QTreeView* list_ = nullptr;
};

TEST_F(ManageTest, SortsByBothColumnsInBothDirections) {
  OpenManager();
  EXPECT_EQ(host_.prompts.last(), QtText(texts::ManageMelodiesPrompt));
  EXPECT_EQ(Column(0), QStringList({"Amsel", "bass", "Drossel"})) << "without regard to case";
  EXPECT_EQ(Column(1), QStringList({"5", "2", "5"}));
  const auto click = [&](int section) {
    auto* header = list_->header();
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {},
                      QPoint(header->sectionViewportPosition(section) + 5, header->height() / 2));
  };
  click(0);
  EXPECT_EQ(Column(0), QStringList({"Drossel", "bass", "Amsel"}));
  click(1);
  EXPECT_EQ(Column(1).first(), "2");
  click(1);
  EXPECT_EQ(Column(1).last(), "2");
}

TEST_F(ManageTest, RenamesInPlaceAndAsksBeforeItReplaces) {
  OpenManager();
  SelectName("bass");
  Rename("Zeisig");
  EXPECT_EQ(Column(0), QStringList({"Amsel", "Drossel", "Zeisig"}));
  EXPECT_EQ(list_->currentIndex().siblingAtColumn(0).data().toString(), "Zeisig");
  {
    NextMessage no(QMessageBox::No);
    Rename("Amsel");
    EXPECT_EQ(no.Text(), QtText(texts::MelodyTitleExists));
  }
  EXPECT_EQ(Column(0).size(), 3);
  NextMessage yes(QMessageBox::Yes);
  Rename("Amsel");
  EXPECT_EQ(Column(0), QStringList({"Amsel", "Drossel"}));
  EXPECT_THAT(store_.LoadMelody("Amsel").value(), ElementsAre(Note(10048), Note(50)));
}

TEST_F(ManageTest, DeletesLoadsAndShowsAnEmptyStore) {
  OpenManager();
  SelectName("bass");
  {
    NextMessage yes(QMessageBox::Yes);
    Press(*manager_, "loadButton");
    EXPECT_EQ(yes.Text(), QtText(texts::AskReplaceMelody));
  }
  EXPECT_TRUE(manager_->Loaded());
  EXPECT_EQ(manager_->Melody().name, "bass");
  EXPECT_EQ(manager_->Melody().clef, Clef::Bass);
  {
    NextMessage no(QMessageBox::No);
    Press(*manager_, "deleteButton");
    EXPECT_EQ(no.Text(), QtText(texts::AskDeleteMelody));
    EXPECT_EQ(Column(0).size(), 3);
  }
  for (int left = 3; left > 0; --left) {
    NextMessage yes(QMessageBox::Yes);
    Press(*manager_, "deleteButton");
  }
  EXPECT_EQ(Column(0), QStringList(QtText(texts::NoMelodyFound)));
  for (const char* button : {"renameButton", "deleteButton", "loadButton", "playButton"})
    EXPECT_FALSE(Child<QWidget>(*manager_, button).isEnabled()) << button;
}

TEST_F(ManageTest, PlaysAndStops) {
  OpenManager();
  SelectName("Amsel");
  auto& play = Child<QAbstractButton>(*manager_, "playButton");
  play.click();
  EXPECT_EQ(play.text(), QtText(texts::ManageStop));
  EXPECT_TRUE(QTest::qWaitFor([&] { return play.text() == QtText(texts::ManagePlay); }));
  opens_ = false;
  NextMessage message;
  play.click();
  EXPECT_EQ(message.Text(), QtText(texts::StoredMelodyNotPlayed));
}

// --- reading and printing results

SearchResults Results(int hits, SearchKind kind = SearchKind::Midi) {
  SearchResults results;
  SearchRecord record;
  record.kind = kind;
  record.melodyName = "Amsel";
  results.Begin(record, OldSearchResults::Delete, {});
  for (int i = 0; i < hits; ++i) {
    SearchHit hit;
    hit.file = "/home/clara/Musik/Lied " + std::to_string(i / 3) + ".mid";
    hit.track = i % 4;
    hit.bar = i;
    hit.time = kind == SearchKind::Midi ? i * 1000 : i % 4;
    (void)results.Add(hit);
  }
  record.statistics = {7, 2, static_cast<std::uint64_t>(hits)};
  results.End(record);
  return results;
}

std::string AllOf(const ResultLines& lines) {
  return lines.Text(0, lines.count);
}

class PrintingTest : public testing::Test {
 protected:
  [[nodiscard]] static int PagesOf(const std::string& pdf) {
    const std::string text = test::Content(pdf);
    int pages = 0;
    for (std::size_t at = 0; (at = text.find("/Type /Page\n", at)) != std::string::npos; ++at) ++pages;
    return pages;
  }
  test::TemporaryDirectory directory_;
  const PrintSetup setup_ = DefaultPrintSetup(QtText(texts::PdfPrinter));
  RecordingHost host_;
};

TEST_F(PrintingTest, PagesHoldAllHitsAndTheFootStaysTogether) {
  const std::string pdf = directory_.File("a.pdf");
  for (const bool withMusic : {false, true}) {
    int perPage = 0;
    // Counts pages for more and more hits: one page, then exactly one more whenever it must be.
    int before = 1;
    for (int hits = 0; hits < (withMusic ? 40 : 130); ++hits) {
      const SearchResults results = Results(hits);
      int announced = 0;
      int last = 0;
      PrintJob job;
      job.proceed = [&](int page, int pages) {
        announced = pages;
        last = page;
        return true;
      };
      int painted = 0;
      double lowest = 0;
      const HitPainter music = [&](QPainter& painter, const QRectF& place, const SearchHit&, std::size_t) {
        ++painted;
        lowest = std::max(lowest, place.bottom() / painter.device()->height());
      };
      const auto drawing = [&](QPagedPaintDevice& device, const PrintJob& j) {
        return PrintResults(results, false, device, j, withMusic ? music : HitPainter());
      };
      ASSERT_EQ(PrintWith(setup_, QStringLiteral("Probe"), pdf, drawing, job), Printed::Done);
      const int pages = PagesOf(pdf);
      ASSERT_EQ(pages, announced) << hits;
      ASSERT_EQ(last, announced) << hits;
      ASSERT_TRUE(withMusic || pages == before || pages == before + 1) << hits;
      ASSERT_EQ(painted, withMusic ? hits : 0);
      ASSERT_LE(lowest, 1) << "no bars below the page";
      if (pages == 2 && perPage == 0) perPage = hits;
      before = pages;
    }
    EXPECT_GT(perPage, withMusic ? 2 : 20);
    EXPECT_GE(before, 3);
  }
  const SearchResults results = Results(200);
  const ResultLines lines = LinesOf(results);
  const auto drawing = [&](QPagedPaintDevice& device, const PrintJob& job) {
    return PrintResultLines("Suchergebnisse001.txt", lines, device, job);
  };
  EXPECT_EQ(PrintWith(setup_, QStringLiteral("Probe"), pdf, drawing, {}), Printed::Done);
  EXPECT_GE(PagesOf(pdf), 3) << "a result file as it stands";
}

TEST_F(PrintingTest, AnAbortAndAFailureLeaveNothing) {
  const SearchResults results = Results(500, SearchKind::Score);
  const auto drawing = [&](QPagedPaintDevice& device, const PrintJob& job) {
    return PrintResults(results, true, device, job);
  };
  PrintJob job;
  job.proceed = [](int page, int) { return page < 3; };
  EXPECT_EQ(PrintWith(setup_, QStringLiteral("Probe"), directory_.File("a.pdf"), drawing, job),
            Printed::Aborted);
  EXPECT_EQ(PrintWith(setup_, QStringLiteral("Probe"), directory_.File("fehlt/a.pdf"), drawing, {}),
            Printed::Failed);
  EXPECT_EQ(test::Listing(directory_.Path()), "");
  PrintSetup noPrinter = setup_;
  noPrinter.printer = "Gibt es nicht";
  EXPECT_EQ(PrintWith(noPrinter, QStringLiteral("Probe"), {}, drawing, {}), Printed::Failed);
}

TEST_F(PrintingTest, TheSetupKeepsWhatIsChosenAndRefusesImpossibleMargins) {
  PrintSetupDialog dialog({"Büro", "PDF-Datei"}, setup_, {}, host_, nullptr);
  dialog.show();
  EXPECT_EQ(Child<QComboBox>(dialog, "printerBox").currentText(), "PDF-Datei");
  Child<QComboBox>(dialog, "printerBox").setCurrentText("Büro");
  Child<QComboBox>(dialog, "paperBox").setCurrentIndex(2);  // A5
  Child<QRadioButton>(dialog, "landscapeRadio").click();
  Child<QSpinBox>(dialog, "topBox").setValue(100);
  {
    NextMessage message;
    Press(dialog, "okButton");
    EXPECT_EQ(message.Text(), QtText(texts::MarginsTooLarge));
    EXPECT_TRUE(dialog.isVisible());
  }
  Child<QSpinBox>(dialog, "topBox").setValue(30);
  Press(dialog, "okButton");
  EXPECT_EQ(dialog.result(), QDialog::Accepted);
  const PrintSetup chosen = dialog.Setup();
  EXPECT_EQ(chosen.printer, "Büro");
  EXPECT_EQ(chosen.layout.pageSize().id(), QPageSize::A5);
  EXPECT_EQ(chosen.layout.orientation(), QPageLayout::Landscape);
  EXPECT_NEAR(chosen.layout.margins(QPageLayout::Millimeter).top(), 30, 0.1);
}

TEST_F(PrintingTest, ThePreviewShowsThePagesUpToItsLimit) {
  const SearchResults results = Results(20'000);
  PrintPreviewDialog dialog(
      setup_.layout,
      [&](QPagedPaintDevice& device, const PrintJob& job) {
        return PrintResults(results, false, device, job);
      },
      {}, host_, nullptr);
  dialog.show();
  auto& preview = Child<QPrintPreviewWidget>(dialog, "preview");
  EXPECT_TRUE(QTest::qWaitFor([&] { return preview.pageCount() > 1; }));
  EXPECT_EQ(preview.pageCount(), PrintPreviewDialog::kMostPages);
  EXPECT_THAT(Child<QLabel>(dialog, "pageLabel").text().toStdString(), HasSubstr("Seite 1 von "));
  EXPECT_THAT(Child<QLabel>(dialog, "pageLabel").text().toStdString(), HasSubstr("die ersten 200 Seiten"));
  Press(dialog, "nextButton");
  EXPECT_EQ(preview.currentPage(), 2);
  Press(dialog, "lastButton");
  EXPECT_EQ(preview.currentPage(), 200);
  EXPECT_FALSE(Child<QWidget>(dialog, "nextButton").isEnabled());
  Press(dialog, "printButton");
  EXPECT_EQ(dialog.result(), QDialog::Accepted);
}

TEST_F(PrintingTest, TheAbortDialogEndsAPrinting) {
  PrintAbortDialog dialog(QtText(texts::PrintAbortTitle), QtText(texts::PrintAbortText), nullptr);
  EXPECT_EQ(dialog.windowTitle(), QtText(texts::PrintAbortTitle));
  EXPECT_TRUE(dialog.Proceed(1, 100));
  EXPECT_FALSE(dialog.isVisible()) << "not for a glance";
  EXPECT_TRUE(dialog.Proceed(30, 100));
  EXPECT_TRUE(dialog.isVisible());
  Press(dialog, "cancelButton");
  EXPECT_FALSE(dialog.Proceed(31, 100));
}

TEST_F(PrintingTest, TheViewerShowsTheListOrAResultFile) {
  const SearchResults results = Results(4);
  ResultsPrinting printing({}, host_);
  const std::string file =
      directory_.Write("erg.txt", std::string(ResultTagLine()) + "2 Melodie(n) gefunden\r\nAnhang");
  const std::string wrong = directory_.Write("lied.txt", std::string(200, '='));
  ResultViewerDialog dialog(results, false, {}, printing, host_, nullptr);
  dialog.show();
  auto& view = Child<ResultLineView>(dialog, "textView");
  const auto shows = [&view](const char* text) {
    return AllOf(view.Lines()).find(text) != std::string::npos &&
           view.model()->rowCount() == static_cast<int>(view.Lines().count);
  };
  auto& name = Child<QLineEdit>(dialog, "fileEdit");
  EXPECT_EQ(name.maxLength(), 516);
  EXPECT_TRUE(Child<QRadioButton>(dialog, "screenRadio").isChecked());
  EXPECT_TRUE(shows("4 Melodie(n) gefunden"));
  EXPECT_EQ(view.font().pixelSize(), 12);
  EXPECT_FALSE(Child<QWidget>(dialog, "loadButton").isEnabled());

  name.setText(ToQt(wrong));
  NextMessage box;
  Press(dialog, "loadButton");
  EXPECT_TRUE(QTest::qWaitFor([&] { return !box.Text().isEmpty(); }));
  EXPECT_EQ(box.Text(), QtText(texts::NotAResultFile));
  EXPECT_EQ(dialog.LastFile(), "") << "a failure is not remembered";
  name.setText(ToQt(file));
  Press(dialog, "loadButton");
  EXPECT_TRUE(QTest::qWaitFor([&] { return shows("2 Melodie(n) gefunden"); }));
  EXPECT_TRUE(shows("Anhang")) << "the whole file";
  EXPECT_EQ(dialog.LastFile(), file);
  Child<QRadioButton>(dialog, "screenRadio").click();
  EXPECT_TRUE(shows("4 Melodie(n) gefunden"));

  // Lines are copied as they stand, in their order.
  view.selectAll();
  QTest::keyClick(&view, Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(QApplication::clipboard()->text().toStdString(), AllOf(LinesOf(results)));

  // A dialog that is closed while it reads leaves nothing behind.
  {
    ResultViewerDialog closed(results, false, file, printing, host_, nullptr);
    Press(closed, "loadButton");
    Child<QRadioButton>(closed, "fileRadio").click();
    Press(closed, "loadButton");
  }
  QApplication::processEvents();

  const SearchResults none;
  ResultViewerDialog empty(none, false, file, printing, host_, nullptr);
  empty.show();
  EXPECT_FALSE(Child<QWidget>(empty, "screenRadio").isEnabled());
  EXPECT_FALSE(Child<QWidget>(empty, "printButton").isEnabled());
  EXPECT_EQ(Child<QLineEdit>(empty, "fileEdit").text(), ToQt(file)) << "the last file is offered";
}

}  // namespace
}  // namespace ts5
