// Melody searches in the real window: from the keys of the note editor to hits that are read, heard, copied,
// printed, written to a file and shown in another program.
#include <gmock/gmock.h>

#include <atomic>
#include <thread>

#include "app/texts.h"
#include "dialogs_support.h"
#include "midi/midi_sequence.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"
#include "platform/programs/sibling_link.h"
#include "platform/store/registry.h"
#include "score/score_writer.h"
#include "search/melody_store.h"
#include "search/search_parameters.h"
#include "search/texts.h"
#include "search/ui/note_editor_panel.h"
#include "search/ui/result_line_view.h"
#include "search/ui/staff_view.h"
#include "support/home.h"
#include "support/matchers.h"
#include "workbench_support.h"

namespace ts5 {
namespace {

using testing::HasSubstr;

// The click opens a dialog over the one that the script is in.
void ClickSoon(QAbstractButton* button) {
  QTimer::singleShot(0, button, &QAbstractButton::click);
}

// Two staves; the lower one has c d e in eighths from the third beat of its second bar on.
Bytes TuneInTheSecondBar() {
  constexpr std::int8_t kC = -7;
  VoiceItems tune = {WholeBarRest(), RestItem(1)};
  for (const int step : {0, 1, 2})
    tune.push_back(ChordItem(3, {{static_cast<std::int8_t>(kC + step), 0, 0}}));
  ScoreDocument score;
  score.staves.resize(2);
  score.systems.push_back({120, {{0, {}, {{WholeBarRest(2)}}}, {1, {}, {tune}}}});
  return WriteScore(score);
}

class SearchStory : public WorkbenchTest {
 protected:
  SearchStory() {
    capture_ = directory_.File("gehört.mid");
    options_.devices->midiOutputs = {"capture:" + capture_};
    for (const char* name : {"mutopia_maple-leaf-rag.mid", "mutopia_satie-gymnopedie-no1.mid",
                             "made_gymnopedie.rmi", "made_gymnopedie.rdl", "freedoom_d_e2m7.mid"}) {
      sources_.push_back(directory_.Write(name, test::Content(test::DataPath(std::string("midi/") + name))));
    }
    sources_.push_back(directory_.Write("kaputt.mid", "kein Midi"));
  }

  // A workbench with the files in its list, and the search for "cde" in any key and rhythm on the screen.
  void BeginSearch(const char* keys = "cde") {
    StartWithList(sources_);
    script_.Expect([keys](QDialog& dialog) {
      auto* staff = dialog.findChild<StaffView*>();
      ASSERT_NE(staff, nullptr) << dialog.metaObject()->className();
      QTest::keyClicks(staff, QLatin1String(keys));
      Child<QTabWidget>(dialog, "tabs").setCurrentIndex(1);
      Child<QRadioButton>(dialog, "rhythmAnyRadio").click();
      Child<QRadioButton>(dialog, "pitchRelativeRadio").click();
      ts5::Press(dialog, "okButton");
    });
    W().Filters().TileOf(FilterId::MidiSearch)->click();
    ASSERT_EQ(ActiveJob().filter, FilterId::MidiSearch);
    W().Target().ScreenChoice()->click();
  }
  void ExpectResults(std::string* texts = nullptr) {
    script_.Expect([texts](QDialog& dialog) {
      ASSERT_TRUE(dialog.inherits("ts5::ResultsDialog")) << dialog.metaObject()->className();
      if (texts != nullptr) {
        for (const auto* field : dialog.findChildren<QLineEdit*>())
          *texts += field->text().toStdString() + " ";
      }
      dialog.accept();
    });
  }
  void Search(std::string* texts = nullptr) {
    ExpectResults(texts);
    W().Actions().Trigger(CommandId::Run);
    ASSERT_TRUE(WaitForEnd(30'000));
  }
  [[nodiscard]] RunPanel& Panel() { return W().Panels().Current(); }
  [[nodiscard]] HitView& Hits() { return *Panel().Hitlist(); }
  [[nodiscard]] QString Cell(int row, int column) {
    return Panel().Hits().index(row, column).data().toString();
  }
  // A key for the window, once the dialogs before it are gone.
  void PressKey(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    ASSERT_TRUE(WaitFor([&] {
      if (QApplication::activeWindow() != &W()) QApplication::setActiveWindow(&W());
      return W().GetDesk().Queue().Current() == nullptr && QApplication::activeWindow() == &W();
    }));
    QWidget* const focus = QApplication::focusWidget();
    QTest::keyClick(focus != nullptr ? focus : &W(), key, modifiers);
  }
  // Another program of the family, as its setup leaves it in the registry.
  void Register(const std::string& name, const char* place, const std::string& path) {
    auto registry = Registry::Open(options_.registryPath);
    ASSERT_THAT(registry, test::IsOk());
    const std::string key = R"(HKEY_LOCAL_MACHINE\software\qlw\)" + name;
    ASSERT_TRUE(Succeeded(registry->SetValue(key, "Current Version", {.data = "3.0"})));
    ASSERT_TRUE(Succeeded(registry->SetValue(key + R"(\3.0)", "WndClass", {.data = name + "Window"})));
    ASSERT_TRUE(Succeeded(registry->SetValue(key + R"(\3.0)", place, {.data = path})));
  }
  // What another program gets of what is done meanwhile.
  std::vector<SiblingMessage> Received(const char* window, int messages, const std::function<void()>& act) {
    auto receiver = SiblingReceiver::Listen(window);
    EXPECT_THAT(receiver, test::IsOk());
    std::vector<SiblingMessage> received;
    std::atomic<bool> all = false;
    std::jthread reader([&] {
      while (receiver && std::ssize(received) < messages) {
        if (auto message = receiver->Receive()) received.push_back(std::move(*message));
      }
      all = true;
    });
    act();
    EXPECT_TRUE(
        WaitFor([&] { return all.load(); }, 30'000));  // the window is asked for the program meanwhile
    return received;
  }
  void SelectHit(int row) {
    Hits().setFocus();
    Hits().setCurrentIndex(Panel().Hits().index(row, 0));
  }
  // Answers the print setup and the file dialog behind it.
  void ExpectPrinting(const std::string& pdf) {
    script_.Expect([](QDialog& dialog) {
      ASSERT_TRUE(dialog.inherits("ts5::PrintSetupDialog")) << dialog.metaObject()->className();
      Child<QComboBox>(dialog, "printerBox").setCurrentText("PDF-Datei");
      ts5::Press(dialog, "okButton");
    });
    script_.Expect([pdf](QDialog& dialog) {
      ASSERT_NE(qobject_cast<QFileDialog*>(&dialog), nullptr);
      dialog.findChild<QLineEdit*>("fileNameEdit")->setText(ToQt(pdf));
      QMetaObject::invokeMethod(&dialog, "accept");
    });
  }

  std::string capture_;
  std::vector<std::string> sources_;
};

// What is seen is what is searched; a directory that is not narrowed down is searched with all below it.
TEST_F(SearchStory, ANarrowedDirectoryIsSearchedAsItIsSeen) {
  BeginSearch();
  directory_.Write("Unten/made_gymnopedie.mid", test::Content(test::DataPath("midi/made_gymnopedie.rmi")));
  W().Actions().Trigger(CommandId::SwitchListMode);
  emit W().Source().DirectoryChosen(directory_.Path());
  ASSERT_TRUE(WaitFor([this] { return W().Source().Model().Size() >= sources_.size() && WaitForListing(); }));
  const auto searchWith = [this](const char* words) {
    W().Source().Filter()->setText(words);
    QTest::keyClick(W().Source().Filter(), Qt::Key_Return);
    Select({});
    std::string texts;
    Search(&texts);
    return texts.substr(0, texts.find(' '));
  };
  EXPECT_EQ(searchWith("gymnopedie"), "3");
  EXPECT_EQ(searchWith(""), "9") << "all that is there, of whatever kind";
  W().Source().Filter()->setText("Unsinn");
  QTest::keyClick(W().Source().Filter(), Qt::Key_Return);
  script_.ExpectBox(QMessageBox::Ok);
  W().Actions().Trigger(CommandId::Run);
  EXPECT_EQ(script_.LastText(), QtText(texts::NothingShown));
}

TEST_F(SearchStory, FromTheKeysToThePrintedPage) {
  StartWithList(sources_);
  // Typed, saved under a name, and taken with OK.
  script_.Expect([](QDialog& dialog) {
    QTest::keyClicks(dialog.findChild<StaffView*>(), "8cde");
    for (auto* button : dialog.findChildren<QToolButton*>()) {
      if (button->toolTip() == QtText(texts::SaveMelodyTitle)) ClickSoon(button);
    }
  });
  script_.Expect([](QDialog& dialog) {
    Child<QLineEdit>(dialog, "nameEdit").setText(QStringLiteral("Drei Töne"));
    ts5::Press(dialog, "okButton");
  });
  script_.Expect([](QDialog& dialog) {
    Child<QTabWidget>(dialog, "tabs").setCurrentIndex(1);
    Child<QRadioButton>(dialog, "rhythmAnyRadio").click();
    Child<QRadioButton>(dialog, "pitchRelativeRadio").click();
    ts5::Press(dialog, "okButton");
  });
  W().Filters().TileOf(FilterId::MidiSearch)->click();
  MelodyStore store(application_->GetRegistry());
  EXPECT_THAT(store.LoadMelody("Drei Töne"), test::IsOk());
  W().Target().ScreenChoice()->click();
  EXPECT_FALSE(Enabled(CommandId::PrintSearchResults));
  EXPECT_FALSE(Enabled(CommandId::PlayHit));

  std::string counts;
  Search(&counts);
  const auto rows = static_cast<int>(Panel().Results().Size());
  ASSERT_GT(rows, 10);
  EXPECT_EQ(Panel().Hits().rowCount(), rows);
  EXPECT_THAT(counts, HasSubstr("6 " + std::to_string(rows) + " 1 "));
  const SearchHit first = Panel().Results().Hit(0);
  EXPECT_EQ(Cell(0, 0).toStdString(), std::string(FileNameOf(first.file)));
  EXPECT_EQ(Cell(0, 1).toInt(), first.track + 1);
  EXPECT_EQ(Cell(0, 2).toInt(), first.bar + 1);
  EXPECT_EQ(Panel().Results().Record().statistics.unsuitable, 1U);

  // Printed.
  const std::string pdf = directory_.File("ergebnisse.pdf");
  ExpectPrinting(pdf);
  EXPECT_TRUE(Enabled(CommandId::PrintSearchResults));
  PressKey(Qt::Key_P, Qt::ControlModifier);
  ASSERT_TRUE(WaitFor([&] { return script_.Done(); }));
  EXPECT_THAT(test::Content(pdf), HasSubstr("%PDF"));

  // Heard: the device records the passage.
  SelectHit(0);
  PressKey(Qt::Key_F9);
  EXPECT_THAT(W().GetDesk().Prompt().toStdString(), HasSubstr("ab Takt"));
  ASSERT_TRUE(WaitFor([&] { return FileExists(capture_); }, 30'000));
  ASSERT_TRUE(WaitFor([&] { return W().GetDesk().Prompt() == QtText(texts::StatusReady); }));
  const auto heard = MidiSequence::FromFile(*ReadFile(capture_));
  ASSERT_THAT(heard, test::IsOk());
  EXPECT_TRUE(std::ranges::any_of(heard->Messages(), &SequenceMessage::IsNoteOn));

  // Its tooltip: the whole name at once, the time by the tempo map as soon as it is known.
  const QPoint place = Hits().visualRect(Panel().Hits().index(0, 0)).center();
  QHelpEvent help(QEvent::ToolTip, place, Hits().viewport()->mapToGlobal(place));
  QApplication::sendEvent(Hits().viewport(), &help);
  EXPECT_TRUE(QToolTip::text().contains(ToQt(first.file)));
  EXPECT_TRUE(WaitFor([] { return QToolTip::text().contains("Zeit mit allen Tempowechseln: 0"); }));

  // Copied.
  Hits().setFocus();
  Hits().selectionModel()->select(QItemSelection(Panel().Hits().index(0, 0), Panel().Hits().index(2, 3)),
                                  QItemSelectionModel::ClearAndSelect);
  QTest::keyClick(&Hits(), Qt::Key_C, Qt::ControlModifier);
  const QStringList lines = QApplication::clipboard()->text().split('\n', Qt::SkipEmptyParts);
  ASSERT_EQ(lines.size(), 3);
  EXPECT_EQ(lines[1], QStringList({Cell(1, 0), Cell(1, 1), Cell(1, 2), Cell(1, 3)}).join('\t'));
}

TEST_F(SearchStory, AResultFileIsWrittenAndReadInTheViewer) {
  BeginSearch();
  const std::string target = directory_.File("Suchergebnisse.txt");
  W().Target().FileChoice()->click();
  Search();
  ASSERT_TRUE(WaitFor([&] { return script_.Done(); }));
  const std::string written = ActiveJob().destinationName;
  ASSERT_TRUE(FileExists(written)) << written;
  EXPECT_EQ(Panel().Results().Size(), 0U) << "nothing on the screen";

  const std::string pdf = directory_.File("datei.pdf");
  for (const bool again : {false, true}) {
    script_.Expect([&](QDialog& dialog) {
      auto& name = Child<QLineEdit>(dialog, "fileEdit");
      EXPECT_EQ(name.text(), again ? ToQt(written) : QString()) << "the last file is remembered";
      name.setText(ToQt(written));
      ts5::Press(dialog, "loadButton");
      const auto& view = Child<ResultLineView>(dialog, "textView");
      EXPECT_TRUE(WaitFor([&] { return view.Lines().count > 0; }));
      EXPECT_THAT(view.Lines().Text(0, view.Lines().count), HasSubstr("mutopia_maple-leaf-rag.mid"));
      if (again) {
        ClickSoon(&Child<QAbstractButton>(dialog, "printButton"));
      } else {
        ts5::Press(dialog, "closeButton");
      }
    });
    if (again) {
      ExpectPrinting(pdf);
      script_.Expect([](QDialog& dialog) { ts5::Press(dialog, "closeButton"); });
    }
    W().Actions().Trigger(CommandId::SearchResults);
    ASSERT_TRUE(WaitFor([&] { return script_.Done(); }));
  }
  EXPECT_THAT(test::Content(pdf), HasSubstr("%PDF"));
}

TEST_F(SearchStory, OldResultsGoAsTheSettingSays) {
  BeginSearch();
  Search();
  const std::size_t once = Panel().Results().Size();
  ASSERT_GT(once, 0U);
  application_->GetSettings().oldSearchResults = OldSearchResults::Ask;
  script_.ExpectBox(QMessageBox::No);
  Search();
  EXPECT_EQ(script_.LastText(), QtText(texts::AskClearResults));
  EXPECT_EQ(Panel().Results().Size(), 2 * once);
  script_.ExpectBox(QMessageBox::Yes);
  Search();
  EXPECT_EQ(Panel().Hits().rowCount(), static_cast<int>(once));

  // A search that cannot begin asks nothing and clears nothing.
  static_cast<SearchParameters&>(*ActiveJob().parameters).melody.elements.clear();
  script_.ExpectBox(QMessageBox::Ok);
  W().Actions().Trigger(CommandId::Run);
  EXPECT_EQ(script_.LastText(), QtText(texts::MelodyMissing));
  EXPECT_EQ(Panel().Results().Size(), once);
}

TEST_F(SearchStory, AnotherFilterLeavesTheResults) {
  BeginSearch();
  Search();
  const std::size_t hits = Panel().Results().Size();
  Select({0});
  ChooseConverter();
  EXPECT_FALSE(Hits().isVisible());
  EXPECT_TRUE(Enabled(CommandId::PrintSearchResults));
  EXPECT_FALSE(Enabled(CommandId::PlayHit));
  script_.Expect([](QDialog& dialog) { dialog.accept(); });
  W().Filters().TileOf(FilterId::MidiSearch)->click();
  EXPECT_TRUE(Hits().isVisible());
  EXPECT_EQ(Panel().Results().Size(), hits);
}

TEST_F(SearchStory, PlayingSaysWhatIsWrongAndStops) {
  BeginSearch();
  Search();
  SelectHit(0);
  ASSERT_TRUE(Enabled(CommandId::PlayHit));
  // Stopped by Esc.
  W().Actions().Trigger(CommandId::PlayHit);
  EXPECT_EQ(W().Actions().Action(CommandId::PlayHit)->text(), QtText(texts::StopHit));
  PressKey(Qt::Key_Escape);
  EXPECT_EQ(W().GetDesk().Prompt(), QtText(texts::StatusReady));
  EXPECT_EQ(W().Actions().Action(CommandId::PlayHit)->text(), QtText(texts::PlayHit));

  // A file that has gone.
  const std::string file = Panel().Results().Hit(0).file;
  const std::string content = test::Content(file);
  (void)RemoveFile(file);
  script_.ExpectBox(QMessageBox::Ok);
  W().Actions().Trigger(CommandId::PlayHit);
  ASSERT_TRUE(WaitFor([&] { return script_.Done(); }));
  EXPECT_EQ(script_.LastText(), QtText(texts::HitNotInFile));
  (void)directory_.Write(std::string(FileNameOf(file)), content);

  // A device that cannot be opened.
  (void)RemoveFile(capture_);
  ASSERT_TRUE(Succeeded(MakeDirectories(capture_)));
  script_.ExpectBox(QMessageBox::Ok);
  W().Actions().Trigger(CommandId::PlayHit);
  ASSERT_TRUE(WaitFor([&] { return script_.Done(); }));
  EXPECT_THAT(script_.LastText(),
              testing::AnyOf(QtText(texts::HitDeviceFailed), QtText(texts::MidiDeviceGone)));
}

TEST_F(SearchStory, ArrowKeysGoFromHitToHitPlayItAndShowItsBars) {
  BeginSearch();
  Search();
  EXPECT_FALSE(Panel().Music()->isVisible()) << "no hit is looked at yet";
  SelectHit(0);
  ASSERT_TRUE(WaitFor([&] { return Panel().Music()->Line().has_value(); }));
  EXPECT_TRUE(Panel().Music()->isVisible());
  EXPECT_FALSE(FileExists(capture_)) << "to select is not to play";
  QTest::keyClick(&Hits(), Qt::Key_Down);
  EXPECT_EQ(Hits().CurrentHit(), 1U);
  ASSERT_TRUE(WaitFor([&] { return W().GetDesk().Prompt().contains("ab Takt"); }));
  ASSERT_TRUE(WaitFor([&] { return Panel().Music()->Line().has_value(); }));
  PressKey(Qt::Key_Escape);
  EXPECT_EQ(W().GetDesk().Prompt(), QtText(texts::StatusReady));
}

TEST_F(SearchStory, TheMenuOfAHitAndTheWayToTheSequencer) {
  (void)directory_.Write("rondel30.exe", "");
  Register("Rondelis", "InstallDir", directory_.Path());
  BeginSearch();
  Search();
  ASSERT_GT(Panel().Results().Size(), 3U);
  SelectHit(3);
  const SearchHit hit = Panel().Results().Hit(3);

  // The context menu, by the key for it.
  QStringList entries;
  QTimer menuTimer;
  QObject::connect(&menuTimer, &QTimer::timeout, [&] {
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    if (menu == nullptr) return;
    menuTimer.stop();
    for (const QAction* action : menu->actions()) entries << action->text().section('\t', 0, 0);
    QAction* show = menu->actions().constFirst();
    menu->close();
    show->trigger();
  });
  menuTimer.start(5);
  QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(5, 5), Hits().mapToGlobal(QPoint(5, 5)));
  const auto received = Received("RondelisWindow", 2, [&] { QApplication::sendEvent(&Hits(), &event); });
  EXPECT_EQ(entries,
            QStringList({"In &Rondelis aufsuchen", "Fundstelle &vorspielen", "Suchergebnisse &kopieren", "",
                         "Suchergebnisse &drucken", "&Suchergebnisse..."}));
  ASSERT_EQ(received.size(), 2U);
  EXPECT_EQ(received[0].id, 0xD7E10001U);
  EXPECT_EQ(received[0].data, Bytes(hit.file.c_str(), hit.file.c_str() + hit.file.size() + 1));
  EXPECT_EQ(received[1].id, 0xD7E20002U);
  ByteReader place(received[1].data);
  EXPECT_EQ(place.U32Le(), static_cast<std::uint32_t>(hit.bar));
  EXPECT_EQ(place.U32Le(), static_cast<std::uint32_t>(hit.track));
  EXPECT_TRUE(WaitFor([&] { return Enabled(CommandId::ShowSearchResult); })) << "for the next hit";
}

// A score: its own words in the dialog, staff, voice and beat in the rows, and the way to the score program.
TEST_F(SearchStory, AScoreIsSearchedByStaffVoiceAndBeat) {
  Register("Stavora", "ExePath", directory_.Write("stavora.exe", ""));
  const std::string file = directory_.Write("lied.stv", AsText(TuneInTheSecondBar()));
  StartWithList({file});
  script_.Expect([](QDialog& dialog) {
    QTest::keyClicks(dialog.findChild<StaffView*>(), QLatin1String("cde"));
    Child<QTabWidget>(dialog, "tabs").setCurrentIndex(1);
    EXPECT_EQ(Child<QCheckBox>(dialog, "firstTrackCheck").text(), QtText(texts::FirstStaffOnly));
    EXPECT_EQ(Child<QCheckBox>(dialog, "drumTrackCheck").text(), QtText(texts::DrumStaffToo));
    EXPECT_FALSE(Child<QComboBox>(dialog, "toleranceBox").isVisible());
    Child<QRadioButton>(dialog, "rhythmRelativeRadio").click();
    ts5::Press(dialog, "okButton");
  });
  W().Filters().TileOf(FilterId::ScoreSearch)->click();
  ASSERT_EQ(ActiveJob().filter, FilterId::ScoreSearch);
  W().Target().ScreenChoice()->click();
  Search();

  ASSERT_EQ(Panel().Results().Size(), 1U);
  QStringList titles;
  QStringList cells;
  for (int column = 0; column < 4; ++column) {
    titles << Panel().Hits().headerData(column, Qt::Horizontal, Qt::DisplayRole).toString();
    cells << Cell(0, column);
  }
  EXPECT_EQ(titles, QStringList({"Datei", "Zeile/Stimme", "Takt", "Schlag"}));
  EXPECT_EQ(cells, QStringList({"lied.stv", "2/1", "2", "3"}));

  SelectHit(0);
  EXPECT_TRUE(Enabled(CommandId::PlayHit));
  ASSERT_TRUE(Enabled(CommandId::ShowSearchResult));
  const auto received =
      Received("StavoraWindow", 3, [&] { W().Actions().Trigger(CommandId::ShowSearchResult); });
  ASSERT_EQ(received.size(), 3U);
  EXPECT_EQ(received[0].data, Bytes(file.c_str(), file.c_str() + file.size() + 1));
  ByteReader range(received[2].data);
  std::vector<std::int32_t> numbers;
  while (!range.AtEnd()) numbers.push_back(range.I32Le());
  EXPECT_EQ(numbers, std::vector<std::int32_t>({0, 1, 0, 2, 0, 1, 0, 5, -1}));
  EXPECT_TRUE(WaitFor([&] { return Enabled(CommandId::ShowSearchResult); }));
}

// A search that brings so many hits, as fast as they can come.
TEST_F(SearchStory, AMillionHitsAppearWhileTheWindowStaysAlive) {
  constexpr int kHits = 1'000'000;
  const auto sent = std::make_shared<std::atomic<bool>>(false);
  fake_ = *FindModule(FilterId::MidiSearch);
  const auto shown = std::make_shared<std::atomic<bool>>(false);
  fake_.run = [sent, shown](ts5::Run& run) {
    SearchHit hit;
    for (int i = 0; i < kHits && !run.Cancelled(); ++i) {
      while (i == 1000 && !*shown && !run.Cancelled()) std::this_thread::yield();  // rows come while it runs
      if (i % 1000 == 0) hit.file = "/musik/Lied " + std::to_string(i / 1000) + ".mid";
      hit.bar = i;
      hit.time = i;
      if (Failed(run.Hit(hit))) break;
    }
    run.Result().counts[1] = kHits;
    *sent = true;
  };
  options_.modules = [this](FilterId filter) {
    return filter == FilterId::MidiSearch ? &fake_ : FindModule(filter);
  };
  BeginSearch();
  ExpectResults();
  W().Actions().Trigger(CommandId::Run);
  EXPECT_TRUE(WaitFor(
      [&] {
        *shown = *shown || Panel().Hits().rowCount() > 0;
        return script_.Done() && ActiveJob().State() == RunState::Idle;
      },
      60'000));
  EXPECT_TRUE(*sent);
  EXPECT_EQ(Panel().Hits().rowCount(), kHits);
  // Going through the list and selecting all of it.
  Hits().scrollToTop();
  Hits().scrollToBottom();
  SelectHit(kHits - 1);
  QApplication::processEvents();
  EXPECT_EQ(Cell(kHits - 1, 2).toInt(), kHits);
  Hits().selectAll();
  EXPECT_EQ(Hits().SelectedHits().size(), static_cast<std::size_t>(kHits));

  script_.Expect([&](QDialog& dialog) {
    auto& view = Child<ResultLineView>(dialog, "textView");
    EXPECT_EQ(view.model()->rowCount(), kHits + 12) << "with head and foot";
    view.scrollToBottom();
    QApplication::processEvents();
    ts5::Press(dialog, "closeButton");
  });
  W().Actions().Trigger(CommandId::SearchResults);
  EXPECT_TRUE(WaitFor([&] { return script_.Done(); }));
}

}  // namespace
}  // namespace ts5
