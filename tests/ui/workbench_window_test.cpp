// The window itself: its commands, keys, filter bar, and what assistive technology sees of it.
#include <gmock/gmock.h>

#include "app/look/appearance.h"
#include "app/look/tile_looks.h"
#include "app/shell/filter_panel.h"
#include "app/shell/help_window.h"
#include "app/texts.h"
#include "frame/texts.h"
#include "frame/ui/qt_text.h"
#include "support/accessible.h"
#include "support/window_places.h"
#include "workbench_support.h"

namespace ts5 {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

TEST(CommandTable, EveryCommandHasItsHintAndItsKeysAreItsOwn) {
  std::map<std::string, CommandId> taken;
  for (const Command& command : Commands()) {
    const int number = static_cast<int>(command.id);
    EXPECT_TRUE(TextByNumber(number).has_value()) << number;
    for (const std::string_view keys : {command.keys, command.playerKeys}) {
      for (const std::string_view key : Split(keys, ' ')) {
        if (key.empty()) continue;
        const QKeySequence sequence(ToQt(key), QKeySequence::PortableText);
        ASSERT_FALSE(sequence.toString().isEmpty()) << key;
        EXPECT_TRUE(taken.emplace(sequence.toString().toStdString(), command.id).second)
            << key << " stands twice";
      }
    }
  }
}

TEST(CommandTable, TheRunCommandsAreCalledByFilterAndState) {
  struct Case {
    FilterId filter;
    RunState state;
    const char* button;
    const char* menu;
    const char* stop;
  };
  constexpr const char* kCancel = "A&bbrechen\tStrg-Ende";
  constexpr const char* kStop = "&Stopp\tEsc, Strg-Ende";
  const Case cases[] = {
      {FilterId::MidiConverter, RunState::Idle, "Ausführen", "&Ausführen\tStrg-Enter", kCancel},

      {FilterId::MidiPlayer, RunState::Idle, "Play", "&Play\tLeertaste,Strg-Enter", kStop},

      {FilterId::AudioPlayer, RunState::Waiting, "Pause", "&Pause\tLeertaste,Strg-Enter", kStop},
      {FilterId::AudioPlayer, RunState::Paused, "Play", "&Play\tLeertaste,Strg-Enter", kStop},
      {FilterId::CdBurner, RunState::Idle, "Brennen", "&Brennen\tStrg-Enter", kCancel},

      {FilterId::CdCopier, RunState::Running, "Abbrechen", "&Kopieren\tStrg-Enter", kCancel}};
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << int(c.filter) << " " << int(c.state));
    const RunWording wording = RunWordingOf(c.filter, c.state);
    EXPECT_EQ(Text(wording.button), c.button);
    EXPECT_EQ(Text(wording.menu), c.menu);
    EXPECT_EQ(Text(wording.stopMenu), c.stop);
    EXPECT_EQ(RunButtonStops(c.filter, c.state), std::string_view(c.button) == "Abbrechen");
  }
}

class WindowStory : public WorkbenchTest {};

TEST_F(WindowStory, MenusHoldTheTableAndUnbuiltRoomsAreDisabled) {
  Start();
  const auto menus = W().menuBar()->actions();
  ASSERT_EQ(menus.size(), 5);
  EXPECT_EQ(menus[0]->text(), "&Datei");
  std::size_t entries = 0;
  for (const QAction* menu : menus) {
    for (const QAction* action : menu->menu()->actions()) {
      if (action->isSeparator()) continue;
      ++entries;
      EXPECT_FALSE(action->statusTip().isEmpty()) << action->text().toStdString();
    }
  }
  EXPECT_EQ(entries, static_cast<std::size_t>(std::ranges::count_if(
                         Commands(), [](const Command& command) { return command.menu != MenuId::None; })));
  for (const Command& command : Commands()) {
    if (command.needs == FilterId::None || FindModule(command.needs) != nullptr) continue;
    EXPECT_FALSE(W().Actions().Action(command.id)->isEnabled()) << QtText(command.text).toStdString();
  }
}

TEST_F(WindowStory, EveryControlHasANameAndCanBeReached) {
  WriteMidi("Musik/a.mid");
  Start();
  for (const FilterId filter : {FilterId::MidiConverter, FilterId::MidiSearch, FilterId::MidiPlayer,
                                FilterId::AudioPlayer, FilterId::CdBurner, FilterId::Artworker}) {
    ASSERT_TRUE(W().Active().SwitchFilter(filter));
    for (const bool list : {false, true}) {
      if ((ActiveJob().Mode() == SourceMode::List) != list) W().Actions().Trigger(CommandId::SwitchListMode);
      EXPECT_THAT(NamelessControls(W()).join("\n").toStdString(), IsEmpty());
      EXPECT_THAT(UnreachableControls(W()).join("\n").toStdString(), IsEmpty());
    }
  }
}

// On the screen of this run; the first size leaves room for a title and a panel of the desktop on one of 960
// x 540.
TEST_F(WindowStory, TextsHaveTheirPlacesInEveryLookAndSize) {
  WriteMidi("Musik/Ein Lied mit einem langen Namen, das im Sommer gesungen wird.mid");
  options_.devices->midiOutputs = {"Stavora-Synthesizer"};
  options_.devices->writers = {"STAVORA VIRTUELLER BRENNER"};
  Start();
  for (int i = 1; i < 12; ++i) (void)application_->GetJobs().Create({"Chor Midi-0", "Alle Sätze"});
  application_->GetSettings().showAllFilters = true;
  ActiveJob().directory.path = directory_.File("Musik");
  for (const SkinLayout layout : {SkinLayout::Windows, SkinLayout::Stavora4, SkinLayout::Stavora5}) {
    application_->GetSettings().pendingSkinLayout = layout;
    Start();
    ApplyAppearance(*qApp, layout, false);
    ASSERT_TRUE(WaitForListing());
    for (const FilterId filter : {FilterId::MidiConverter, FilterId::MidiSearch, FilterId::MidiPlayer,
                                  FilterId::CdBurner, FilterId::CdGrabber, FilterId::Artworker}) {
      ASSERT_TRUE(W().Active().SwitchFilter(filter));
      for (const bool list : {false, true}) {
        if ((ActiveJob().Mode() == SourceMode::List) != list)
          W().Actions().Trigger(CommandId::SwitchListMode);
        for (const QSize size : {QSize(900, 470), QSize(1366, 700), QSize(1920, 1000)}) {
          W().resize(size);
          QApplication::processEvents();
          SCOPED_TRACE(testing::Message() << static_cast<int>(layout) << " " << static_cast<int>(filter)
                                          << (list ? " list " : " ") << size.width());
          EXPECT_EQ(W().size(), size);
          EXPECT_EQ(ClippedTexts(W()).join(", ").toStdString(), "");
          EXPECT_EQ(MisplacedTexts(W()).join(", ").toStdString(), "");
          EXPECT_EQ(CutTitles(W()).join(", ").toStdString(), "");
        }
      }
    }
  }
  ApplyAppearance(*qApp, SkinLayout::Stavora5, false);
}

TEST_F(WindowStory, TheAreasAreGoneThroughInReadingOrder) {
  StartConverting();
  const std::vector<const QWidget*> areas{&W().JobButtons(), &W().Filters(), &W().Source(), &W().Target()};
  const auto here = [&] {
    return std::ranges::find_if(areas, [&](auto* area) { return area->isAncestorOf(W().focusWidget()); }) -
           areas.begin();
  };
  W().activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&W()));
  W().JobButtons().JobButton(0)->setFocus();
  std::vector<std::ptrdiff_t> visited{0};
  for (int i = 0; i < 40 && visited.size() <= areas.size(); ++i) {
    QTest::keyClick(W().focusWidget(), Qt::Key_Tab);
    if (here() != visited.back() && here() != std::ssize(areas)) visited.push_back(here());
  }
  EXPECT_THAT(visited, testing::ElementsAre(0, 1, 2, 3, 0));
  // A key goes from area to area, to what is current there, and back.
  W().JobButtons().JobButton(0)->setFocus();
  const QWidget* entered[4];
  for (std::ptrdiff_t i = 0; i < 4; ++i) {
    Press(Qt::Key_F6);
    EXPECT_EQ(here(), (i + 1) % 4);
    entered[i] = W().focusWidget();
  }
  EXPECT_EQ(entered[0], W().Filters().TileOf(FilterId::MidiConverter));
  EXPECT_EQ(entered[3], W().JobButtons().JobButton(0));
  Press(Qt::Key_F6, Qt::ShiftModifier);
  EXPECT_EQ(here(), 3);
}

TEST_F(WindowStory, TheDestinationIsChosenInAFileDialog) {
  StartConverting();
  script_.Expect([](QDialog& dialog) { dialog.reject(); });
  const QString before = W().Target().Field()->text();
  W().Target().BrowseButton()->click();
  EXPECT_EQ(W().Target().Field()->text(), before) << "left without a choice";

  const QString chosen = ToQt(directory_.File("neu.mid"));
  script_.Expect([&](QDialog& dialog) {
    auto* files = qobject_cast<QFileDialog*>(&dialog);
    ASSERT_NE(files, nullptr);
    EXPECT_EQ(W().GetDesk().Prompt(), "Wählen Sie bitte eine Datei als Zielmedium:");
    files->selectFile(chosen);
    dialog.accept();
  });
  W().Target().BrowseButton()->click();
  EXPECT_EQ(W().Target().Field()->text(), chosen);
  EXPECT_EQ(W().GetDesk().Prompt(), "Bereit");
}

TEST_F(WindowStory, TilesCollapseByKeyAndTheirStateIsTheJobs) {
  StartWithList({WriteMidi("a.mid")});
  Select({0});
  TileButton* tile = W().Filters().TileOf(FilterId::MidiConverter);
  ASSERT_TRUE(tile->isVisible());
  const int tall = tile->height();
  tile->setFocus();
  QTest::keyClick(tile, Qt::Key_Minus);
  QApplication::processEvents();
  EXPECT_EQ(tile->height(), kCollapsedTileHeight);
  EXPECT_EQ(tall, ExpandedTileHeight(TileStyle::Modern));
  EXPECT_EQ(tile->toolTip(), "Midi-Konverter");
  EXPECT_TRUE(IsCollapsed(ActiveJob().filterStatus[static_cast<std::size_t>(FilterId::MidiConverter)]));
  QTest::keyClick(tile, Qt::Key_Right);
  EXPECT_TRUE(W().Filters().ToggleOf(FilterId::MidiConverter)->hasFocus());
  QTest::keyClick(W().Filters().ToggleOf(FilterId::MidiConverter), Qt::Key_Space);
  EXPECT_FALSE(IsCollapsed(ActiveJob().filterStatus[static_cast<std::size_t>(FilterId::MidiConverter)]));
}

TEST_F(WindowStory, FixingHidesAllOtherFilters) {
  StartConverting();
  W().Filters().FixControl()->click();
  int shown = 0;
  for (int i = 0; i < static_cast<int>(kFilterCount); ++i) {
    shown += W().Filters().TileOf(static_cast<FilterId>(i))->isVisible() ? 1 : 0;
  }
  EXPECT_EQ(shown, 1);
  EXPECT_TRUE(W().Filters().TileOf(FilterId::MidiConverter)->isVisible());
  Select({});
  EXPECT_FALSE(Enabled(CommandId::Run)) << "nothing that the converter could take";
}

TEST_F(WindowStory, AllFiltersStandInGroupsAndTakeTheWholeList) {
  StartWithList({WriteMidi("a.mid"), WriteMidi("b.mid")});
  Select({});
  FilterPanel& panel = W().Filters();
  EXPECT_FALSE(panel.TileOf(FilterId::MidiConverter)->isVisible());
  panel.AllControl()->click();
  QApplication::processEvents();
  for (std::size_t i = 0; i < kFilterCount; ++i)
    EXPECT_TRUE(panel.TileOf(static_cast<FilterId>(i))->isVisibleTo(&panel)) << i;
  // Players stand above what converts, which stands above the discs.
  const auto y = [&](FilterId filter) { return panel.TileOf(filter)->mapTo(&panel, QPoint()).y(); };
  EXPECT_LT(y(FilterId::ScorePlayer), y(FilterId::ScoreToMidi));
  EXPECT_LT(y(FilterId::XmlConverter), y(FilterId::CdBurner));
  const TileButton* const wave = panel.TileOf(FilterId::WaveConverter);
  EXPECT_FALSE(wave->isEnabled());
  EXPECT_EQ(wave->height(), kCompactTileHeight);
  EXPECT_TRUE(wave->accessibleDescription().contains("Wave-Konverter braucht eine Wave-Datei."));
  EXPECT_TRUE(wave->toolTip().contains("Markieren Sie Dateien dieser Art: .wav, .aif."));
  ChooseConverter();
  EXPECT_EQ(ActiveJob().filter, FilterId::MidiConverter);
  EXPECT_EQ(ActiveJob().files.Selection().size(), 2U);
  EXPECT_TRUE(Enabled(CommandId::Run));
  EXPECT_TRUE(application_->GetSettings().showAllFilters);
  panel.AllControl()->click();
  EXPECT_FALSE(panel.TileOf(FilterId::CdCopier)->isVisible());
}

TEST_F(WindowStory, WithoutDevicesThePanelsSaySo) {
  Start();
  const auto expectOnly = [&](FilterId filter, DeviceKind kind, TextId text) {
    ASSERT_TRUE(W().Active().SwitchFilter(filter));
    const QListWidget* list = W().Target().DeviceList(kind);
    EXPECT_TRUE(list->isVisible());
    ASSERT_EQ(list->count(), 1);
    EXPECT_EQ(list->item(0)->text(), QtText(text));
    EXPECT_FALSE(W().Target().Field()->isVisible());
  };
  expectOnly(FilterId::MidiPlayer, DeviceKind::Midi, texts::NoMidiDevices);
  EXPECT_EQ(W().Target().RunButton()->text(), "Play");
  EXPECT_EQ(W().Actions().Action(CommandId::Run)->text(), "&Play\tLeertaste,Strg-Enter");
  EXPECT_EQ(W().Actions().Accelerators(), AcceleratorTable::Player);
  expectOnly(FilterId::AudioPlayer, DeviceKind::Audio, texts::NoAudioDevices);
}

TEST_F(WindowStory, ContextHelpKnowsTheAreas) {
  Start();
  const HelpCommands& help = W().Help();
  const std::vector<std::pair<const QWidget*, QString>> expected{
      {W().Source().Files(), "quellmedium.htm"},
      {W().Source().Drives(), "quellmedium.htm"},
      {W().Filters().FixControl(), "filtersektion.htm"},
      {W().Target().RunButton(), "zielmedium.htm"},
      {W().JobButtons().NewJobButton(), ""},
      {nullptr, ""}};
  for (const auto& [widget, topic] : expected) EXPECT_EQ(help.TopicOf(widget), topic);
}

TEST_F(WindowStory, HelpTopicsOfTheCommandsExist) {
  for (const Command& command : Commands()) {
    const QString topic = ToQt(command.helpTopic);
    if (topic.isEmpty()) continue;
    EXPECT_NE(HelpPage(topic), HelpPage({})) << topic.toStdString();
  }
}

TEST_F(WindowStory, SplittersAndPlaceAreRemembered) {
  StartListed();
  ActiveJob().sizing = {300, 0, 520, 333};
  W().Active().Show();
  QApplication::processEvents();
  EXPECT_NEAR(W().Filters().width(), 300, 12);
  EXPECT_NEAR(W().Source().Tree()->width(), 220, 12);
  W().setGeometry(40, 50, 1000, 700);
  Start();
  ASSERT_TRUE(application_->GetSettings().mainWindowPosition.has_value());
  EXPECT_EQ(application_->GetSettings().mainWindowPosition->left, 40);
  EXPECT_EQ(ActiveJob().sizing, (SizingRectangle{300, 0, 520, 333}));
}

TEST_F(WindowStory, MaximisingTheListHidesTheRest) {
  Start();
  ToListMode();
  W().Actions().Trigger(CommandId::MaximiseList);
  EXPECT_TRUE(ActiveJob().fileWindowMaximised);
  EXPECT_FALSE(W().Filters().isVisible());
  EXPECT_FALSE(W().Target().isVisible());
  EXPECT_EQ(W().Actions().Action(CommandId::MaximiseList)->text(), "&Dateiliste normalisieren\tF5");
  Start();
  EXPECT_FALSE(W().Filters().isVisible()) << "list mode keeps it";
  Press(Qt::Key_F5);
  EXPECT_TRUE(W().Filters().isVisible());
}

TEST(FilterPanelTest, TheCurrentFilterNeverVanishes) {
  FilterPanel panel(TileLooks(), TileStyle::Modern);
  panel.show();
  const auto* note = panel.findChild<QLabel*>("currentFilterNote");
  std::vector<FilterPanel::Tile> tiles;
  for (std::size_t i = 0; i < kFilterCount; ++i)
    tiles.push_back({.filter = static_cast<FilterId>(i), .shown = true, .enabled = true});
  panel.Show(tiles, FilterId::MidiPlayer, false, false);
  EXPECT_FALSE(note->isVisible());
  const auto checked = [&panel](FilterId filter) {
    return bool(QAccessible::queryAccessibleInterface(panel.TileOf(filter))->state().checked);
  };
  EXPECT_TRUE(checked(FilterId::MidiPlayer));
  panel.TileOf(FilterId::WaveConverter)->click();  // only asks
  EXPECT_FALSE(checked(FilterId::WaveConverter));

  FilterPanel::Tile& player = tiles.at(static_cast<std::size_t>(FilterId::MidiPlayer));
  player.shown = false;
  player.reason = "braucht Musik";
  player.help = "Markieren Sie welche.";
  panel.Show(tiles, FilterId::MidiPlayer, false, false);
  EXPECT_TRUE(note->isVisible());
  EXPECT_EQ(FromQt(note->text()), "Aktueller Filter: Midi-Player (braucht Musik). Markieren Sie welche.");
  panel.Show(tiles, FilterId::WaveConverter, false, false);
  EXPECT_FALSE(note->isVisible());
  EXPECT_TRUE(checked(FilterId::WaveConverter));
  EXPECT_FALSE(checked(FilterId::MidiPlayer));
}

}  // namespace
}  // namespace ts5
