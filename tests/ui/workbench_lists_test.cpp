// File lists and the directory view in the window.
#include <gmock/gmock.h>

#include <filesystem>

#include "frame/texts.h"
#include "platform/files/paths.h"
#include "support/home.h"
#include "workbench_support.h"

namespace ts5 {
namespace {

using testing::HasSubstr;
using testing::Not;

class ListStory : public WorkbenchTest {
 protected:
  bool WaitForPlace(const std::string& path) {
    return WaitFor([&] {
      return W().Source().TreeModel().PathOf(W().Source().Tree()->currentIndex()) == directory_.File(path);
    });
  }
  // A directory with three files, shown by its place in the tree.
  void StartInDirectory() {
    WriteMidi("Musik/a.mid");
    WriteMidi("Musik/b.mid");
    directory_.Write("Musik/c.wav", "RIFF");
    StartListed();
    ShowDirectory(directory_.File("Musik"));
    ASSERT_EQ(W().Source().Model().Size(), 3U);
  }
  std::size_t RowOf(const std::string& name) {
    for (std::size_t row = 0; row < W().Source().Model().Size(); ++row) {
      if (W().Source().Model().At(row).path.ends_with("/" + name)) return row;
    }
    return W().Source().Model().Size();
  }
  // Renames in place, as with the keyboard.
  void RenameTo(const QString& name) {
    W().Actions().Trigger(CommandId::Rename);
    auto* editor = W().Source().Files()->findChild<QLineEdit*>();
    ASSERT_NE(editor, nullptr);
    EXPECT_EQ(W().Actions().Accelerators(), AcceleratorTable::Off);
    editor->setText(name);
    QTest::keyClick(editor, Qt::Key_Return);
    ASSERT_TRUE(WaitFor([this] { return W().Actions().Accelerators() == AcceleratorTable::Standard; }));
    ASSERT_TRUE(WaitFor([this] { return script_.Done(); }));
    QApplication::processEvents();
  }
};

TEST_F(ListStory, UnsupportedFilesAreCountedAndLeftOut) {
  StartWithList({WriteMidi("a.mid"), WriteMidi("b.mid")});
  script_.ExpectBox(QMessageBox::Ok);
  Drop({directory_.Write("a.txt", ""), WriteMidi("c.mid"), directory_.Write("b.txt", "")});
  EXPECT_EQ(W().Source().Files()->model()->rowCount(), 3);
  EXPECT_THAT(script_.LastText().toStdString(), HasSubstr("2 Datei(en)"));
}

TEST_F(ListStory, AHundredThousandFilesComeAtOnce) {
  std::vector<std::string> files;
  for (int i = 0; i < 100'000; ++i) files.push_back("/musik/ordner/lied" + std::to_string(i) + ".mid");
  StartWithList(files);
  W().Source().Files()->selectAll();
  QApplication::processEvents();
  W().Source().Files()->scrollToTop();
  QApplication::processEvents();
  EXPECT_EQ(ActiveJob().files.Selection().size(), 100'000U);
  // The row at hand stays in sight when the list gets less room.
  FileView& view = *W().Source().Files();
  view.selectionModel()->setCurrentIndex(view.model()->index(99'999, 0), QItemSelectionModel::NoUpdate);
  view.scrollTo(view.currentIndex());
  W().resize(W().width(), W().height() - 150);
  QApplication::processEvents();
  EXPECT_TRUE(view.viewport()->rect().contains(view.visualRect(view.currentIndex()).center()));
  script_.ExpectBox(QMessageBox::Yes);
  W().Actions().Trigger(CommandId::Delete);
  EXPECT_TRUE(ActiveJob().files.Empty());
  EXPECT_THAT(script_.LastText().toStdString(), HasSubstr("100000 Dateien"));
}

TEST_F(ListStory, EmptyPlacesOfferWhatCanBeDoneAndFilesAreCounted) {
  WriteMidi("Musik/a.mid");
  WriteMidi("Musik/b.mid");
  StartListed();
  const EmptyNote* const note = W().Source().Note();
  const auto offers = [&](const char* name) {
    const auto* const button = note->findChild<QPushButton*>(name);
    return button->isVisible() && button->isEnabled();
  };
  const auto* const count = W().Source().findChild<QLabel*>("fileCount");
  EXPECT_TRUE(offers("chooseMusic") && offers("showExamples") && !offers("chooseFiles"));
  EXPECT_EQ(count->text(), "");
  ShowDirectory(directory_.File("Musik"));
  EXPECT_FALSE(note->isVisible());
  EXPECT_EQ(count->text(), "2 Dateien");
  Press(Qt::Key_A, Qt::ControlModifier | Qt::ShiftModifier);
  W().Active().Settle();
  EXPECT_TRUE(count->text().startsWith("2 von 2 markiert"));
  EXPECT_EQ(ActiveJob().directory.names.size(), 2U);
  ToListMode();
  EXPECT_TRUE(offers("chooseFiles") && offers("showExamples") && !offers("chooseMusic"));
  EXPECT_FALSE(Enabled(CommandId::SelectAllFiles));
  Drop({directory_.File("Musik/a.mid")});
  EXPECT_FALSE(note->isVisible());
}

TEST_F(ListStory, TheContextMenuActsOnTheFilesUnderTheMouse) {
  StartWithList({WriteMidi("a.mid"), WriteMidi("b.mid")});
  Select({1});
  FileView& view = *W().Source().Files();
  bool shown = false;
  QTimer::singleShot(50, [&] {
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    shown = true;
    EXPECT_EQ(menu->actions().value(1)->text(), "&Eigenschaften...\tStrg-E") << "behind what plays the file";
    QTest::keyClick(menu, Qt::Key_O);  // "Nach oben"
  });
  QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(5, 5),
                          view.viewport()->mapToGlobal(QPoint(5, 5)));
  QApplication::sendEvent(view.viewport(), &event);
  EXPECT_TRUE(shown);
  EXPECT_TRUE(ActiveJob().files[0].path.ends_with("b.mid"));
  if (QWidget* menu = QApplication::activePopupWidget()) menu->close();
}

TEST_F(ListStory, EntriesMoveAndTheSelectionGoesAlong) {
  StartWithList({WriteMidi("a.mid"), WriteMidi("b.mid"), WriteMidi("c.mid")});
  Select({2});
  Press(Qt::Key_Up, Qt::ControlModifier);
  EXPECT_TRUE(ActiveJob().files[1].path.ends_with("c.mid"));
  EXPECT_EQ(W().Source().Files()->SelectedRows(), std::vector<std::size_t>{1});
  Select({0});
  EXPECT_FALSE(Enabled(CommandId::MoveUp)) << "the first one does not move up";
}

TEST_F(ListStory, AListIsSavedLoadedAndReplaced) {
  Start();
  ToListMode();
  const std::string present = WriteMidi("da.mid");
  const std::string list = directory_.Write("liste.sts", "[sts5 Filelist]\r\nFiles=2\r\n1=" + present +
                                                             "\r\n2=" + directory_.File("weg.mid") + "\r\n");
  script_.ExpectBox(QMessageBox::Ok);
  W().OpenAtStart({list});
  EXPECT_TRUE(ActiveJob().Mode() == SourceMode::List);
  ASSERT_EQ(ActiveJob().files.Size(), 1U);
  EXPECT_THAT(script_.LastText().toStdString(), HasSubstr("1 Datei(en) konnten nicht geladen werden."));
  script_.ExpectBox(QMessageBox::No);
  W().Actions().Trigger(CommandId::ClearList);
  EXPECT_EQ(ActiveJob().files.Size(), 1U);
  script_.ExpectBox(QMessageBox::Yes);
  W().Actions().Trigger(CommandId::ClearList);
  EXPECT_TRUE(ActiveJob().files.Empty());
  EXPECT_FALSE(Enabled(CommandId::ClearList));
  // A directory from outside becomes the source; files beside it go to the list.
  WriteMidi("Ordner.mid/drin.mid");
  W().OpenFiles({directory_.File("Ordner.mid")});
  EXPECT_EQ(ActiveJob().Mode(), SourceMode::Directory);
  EXPECT_EQ(ActiveJob().directory.path, directory_.File("Ordner.mid"));
  script_.ExpectBox(QMessageBox::Ok);
  W().OpenFiles({directory_.File("Ordner.mid"), directory_.File("nirgends.mid"), present});
  EXPECT_THAT(script_.LastText().toStdString(), HasSubstr("1 Datei(en) konnten nicht geladen werden."));
  EXPECT_EQ(ActiveJob().Mode(), SourceMode::List);
  EXPECT_EQ(ActiveJob().files.Size(), 1U);
}

TEST_F(ListStory, ADropThatMeetsNoListSaysSo) {
  StartInDirectory();
  script_.ExpectBox(QMessageBox::Ok);
  Drop({WriteMidi("x.mid")});
  EXPECT_EQ(script_.LastText(), QtText(texts::NoWindowForFiles));
  EXPECT_TRUE(ActiveJob().files.Empty());
  // The strip below the directory stands for the list.
  emit W().Source().Strip()->FilesDropped({directory_.File("x.mid")});
  EXPECT_EQ(ActiveJob().files.Size(), 1U);
  EXPECT_THAT(W().Source().Strip()->text().toStdString(), HasSubstr("(1)"));
}

TEST_F(ListStory, CopiedFilesArePastedIntoTheList) {
  StartInDirectory();
  Select({RowOf("a.mid"), RowOf("b.mid")});
  QTest::keyClick(W().Source().Files(), Qt::Key_C, Qt::ControlModifier);
  ToListMode();
  QTest::keyClick(W().Source().Files(), Qt::Key_V, Qt::ControlModifier);
  EXPECT_EQ(ActiveJob().files.Size(), 2U);
  // Until the files of the directory are there, the keys go to its tree and not to the target.
  W().Source().Files()->setFocus();
  W().Actions().Trigger(CommandId::SwitchListMode);
  EXPECT_EQ(W().focusWidget(), W().Source().Tree());
}

TEST_F(ListStory, RenamingAsksAboutExtensionsThatNoFilterTakes) {
  StartInDirectory();
  Select({RowOf("a.mid")});
  script_.ExpectBox(QMessageBox::No);
  RenameTo("a");
  EXPECT_EQ(script_.LastText(), QtText(texts::AskRenameUnsupported));
  EXPECT_THAT(test::Listing(directory_.File("Musik")), HasSubstr("a.mid"));
  RenameTo("neu.mid");
  EXPECT_THAT(test::Listing(directory_.File("Musik")), HasSubstr("neu.mid"));
  ASSERT_TRUE(WaitForListing());
  EXPECT_EQ(W().Source().Files()->SelectedRows(), std::vector<std::size_t>{RowOf("neu.mid")});
  script_.ExpectBox(QMessageBox::Ok);
  RenameTo("b.mid");
  EXPECT_EQ(script_.LastText(), QtText(texts::RenameFailed)) << "never over another file";
}

TEST_F(ListStory, TheFieldNamesOnlyWhatTheFilterMakesOfTheSelection) {
  StartInDirectory();
  const auto field = [this] { return std::string(FileNameOf(FromQt(W().Target().Field()->text()))); };
  Select({RowOf("a.mid")});
  ASSERT_TRUE(W().Active().SwitchFilter(FilterId::MidiToWave));
  EXPECT_EQ(field(), "a.wav");
  Select({RowOf("c.wav")});
  EXPECT_EQ(field(), "") << "no source of this filter, and never its target";
  Select({RowOf("b.mid")});
  ASSERT_TRUE(W().Active().SwitchFilter(FilterId::MidiSearch));
  EXPECT_EQ(field(), "b.txt");
  Select({});
  emit W().Source().DirectoryChosen(directory_.Path());
  EXPECT_EQ(W().Target().Field()->text(), ToQt(directory_.File("Suchergebnisse001.txt"))) << "of the tree";
  ASSERT_TRUE(W().Active().SwitchFilter(FilterId::MidiConverter));
  EXPECT_EQ(field(), "");
}

TEST_F(ListStory, TheSourceDirectoryGoesAndComesBack) {
  StartInDirectory();
  Select({0, 1});
  EXPECT_EQ(ActiveJob().directory.names.size(), 2U);
  std::filesystem::remove_all(directory_.File("Musik"));
  ASSERT_TRUE(WaitFor([this] { return W().Source().Model().Size() == 0; }));
  ASSERT_TRUE(WaitForListing());
  EXPECT_TRUE(ActiveJob().directory.names.empty());
  EXPECT_FALSE(Enabled(CommandId::Delete));
  WriteMidi("Musik/neu.mid");
  W().Active().Show();
  EXPECT_TRUE(WaitFor([this] { return W().Source().Model().Size() == 1; }));
}

TEST_F(ListStory, NewFilesAppearByThemselvesAndTheSelectionStays) {
  StartInDirectory();
  Select({RowOf("b.mid")});
  WriteMidi("Musik/aa.mid");
  ASSERT_TRUE(WaitFor([this] { return W().Source().Model().Size() == 4 && WaitForListing(); }));
  EXPECT_EQ(W().Source().Files()->SelectedRows(), std::vector<std::size_t>{RowOf("b.mid")});
}

TEST_F(ListStory, DeletedFilesGoToTheWastebasket) {
  const test::Home data;
  StartInDirectory();
  Select({RowOf("a.mid"), RowOf("b.mid")});
  script_.ExpectBox(QMessageBox::No);
  Press(Qt::Key_Delete);
  EXPECT_EQ(script_.LastText(), "Wollen Sie die ausgewählten 2 Dateien wirklich löschen?");
  EXPECT_EQ(test::Listing(directory_.File("Musik")), "a.mid b.mid c.wav");
  script_.ExpectBox(QMessageBox::Yes);
  Press(Qt::Key_Delete);
  ASSERT_TRUE(WaitFor([this] { return W().Source().Model().Size() == 1 && WaitForListing(); }));
  EXPECT_EQ(test::Listing(directory_.File("Musik")), "c.wav");
  EXPECT_EQ(test::Listing(data.File("Trash/files")), "a.mid b.mid");
  EXPECT_TRUE(ActiveJob().directory.names.empty());

  // Without a wastebasket nothing is deleted, and the user is told.
  std::filesystem::remove_all(data.File("Trash"));
  data.Write("Trash", "hier kann kein Verzeichnis entstehen");
  Select({RowOf("c.wav")});
  script_.ExpectBox(QMessageBox::Yes);
  script_.ExpectBox(QMessageBox::Ok);
  Press(Qt::Key_Delete);
  ASSERT_TRUE(WaitFor([this] { return script_.Done(); }));
  EXPECT_EQ(script_.LastText(), ToQt(FileNotDeletedText(directory_.File("Musik/c.wav"))));
  EXPECT_EQ(test::Listing(directory_.File("Musik")), "c.wav");
  // Of many only the first are told one by one.
  for (const char* name : {"d.mid", "e.mid", "f.mid", "g.mid"}) WriteMidi(std::string("Musik/") + name);
  ASSERT_TRUE(WaitFor([this] { return W().Source().Model().Size() == 5 && WaitForListing(); }));
  Select({0, 1, 2, 3, 4});
  script_.ExpectBox(QMessageBox::Yes);
  for (int i = 0; i < 3; ++i) script_.ExpectBox(QMessageBox::Ok);
  Press(Qt::Key_Delete);
  ASSERT_TRUE(WaitFor([this] { return script_.Done(); }));
  EXPECT_TRUE(script_.LastText().endsWith("Weitere Dateien, die nicht gelöscht werden konnten: 2"));
}

TEST_F(ListStory, ADriveThatCannotBeOpenedIsRefused) {
  options_.volumes = VolumeTable::Of(directory_.Path(), "", {"/dev/sr99"});
  StartListed();
  const std::int32_t drive = ActiveJob().sourceDrive;
  script_.ExpectBox(QMessageBox::Ok);
  emit W().Source().Drives()->DriveTaken(2);
  ASSERT_TRUE(WaitFor([this] { return script_.Done(); })) << "as soon as the drive has been asked";
  ASSERT_TRUE(WaitForListing());
  EXPECT_EQ(script_.LastText(), ToQt(DriveFailedText(2)));
  EXPECT_EQ(ActiveJob().sourceDrive, drive);
  EXPECT_EQ(W().Source().Drives()->currentData().toInt(), drive);
}

TEST_F(ListStory, ArrowsGoThroughTheDrivesAndEnterTakesOne) {
  StartListed();
  DriveSelector* drives = W().Source().Drives();
  drives->setFocus();
  QTest::keyClick(drives, Qt::Key_Home);
  EXPECT_FALSE(ActiveJob().Mode() == SourceMode::List) << "looked at, not taken";
  QTest::keyClick(drives, Qt::Key_Return);
  EXPECT_TRUE(ActiveJob().Mode() == SourceMode::List);
  EXPECT_FALSE(W().Source().Tree()->isVisible());
  // A drive is left and found again in the same directory; the first time it is its root.
  const std::string below = directory_.File("Musik");
  std::filesystem::create_directories(below);
  const auto take = [&](int drive) {
    drives->setCurrentIndex(drives->findData(drive));
    QTest::keyClick(drives, Qt::Key_Return);
    EXPECT_TRUE(WaitForListing());
    return ActiveJob().directory.path;
  };
  take(0);
  emit W().Source().DirectoryChosen(below);
  EXPECT_EQ(take(1), "/");
  EXPECT_EQ(take(0), below);
  // A new directory is found in the tree.
  std::filesystem::create_directories(below + "/neu/a");
  W().Source().TreeModel().Reveal(below + "/neu/a");
  EXPECT_TRUE(WaitFor([&] {
    return W().Source().TreeModel().PathOf(W().Source().Tree()->currentIndex()) == below + "/neu/a";
  }));
}

TEST_F(ListStory, TheTreeReadsDownToTheDirectoryOfTheJob) {
  WriteMidi("Musik/Chor/Alt/a.mid");
  Start();
  W().Source().TreeModel().Reveal(directory_.File("Musik/Chor/Alt"));
  ASSERT_TRUE(WaitForPlace("Musik/Chor/Alt"));
  DirectoryTreeModel& tree = W().Source().TreeModel();
  EXPECT_FALSE(tree.hasChildren(W().Source().Tree()->currentIndex()));
  // A path that does not exist leads as far as there is something.
  W().Source().TreeModel().Reveal(directory_.File("Musik/Chor/Bass"));
  EXPECT_TRUE(WaitForPlace("Musik/Chor"));
  QWidget* const below = W().Source().Tree()->viewport();
  QTest::mouseClick(below, Qt::LeftButton, {}, below->rect().bottomRight() - QPoint(4, 4));
  EXPECT_TRUE(W().Source().Tree()->selectionModel()->hasSelection())
      << "a click beside them takes it off none";
}

TEST_F(ListStory, TheDirectoryOfTheJobIsShownWhereverTheFocusIs) {
  WriteMidi("Musik/Chor/a.mid");
  Start();
  ActiveJob().directory.path = directory_.File("Musik/Chor");
  Start();  // the focus is in the tree, which has not found its directory yet
  ASSERT_TRUE(WaitFor([this] { return W().Source().Model().Size() == 1; }));
  EXPECT_EQ(ActiveJob().directory.path, directory_.File("Musik/Chor"));
  EXPECT_TRUE(WaitForPlace("Musik/Chor"));
}

TEST_F(ListStory, ADirectoryHasAPlaceholderUntilItIsOpened) {
  WriteMidi("Musik/Chor/a.mid");
  Start();
  DirectoryTreeModel& tree = W().Source().TreeModel();
  ASSERT_TRUE(WaitFor([&] { return tree.rowCount(tree.RootIndex()) == 1; }));
  const QPersistentModelIndex music = tree.index(0, 0, tree.RootIndex());
  ASSERT_EQ(tree.rowCount(music), 1);
  const QModelIndex placeholder = tree.index(0, 0, music);
  EXPECT_EQ(placeholder.data().toString(), "::::::::::");
  EXPECT_EQ(tree.flags(placeholder), Qt::NoItemFlags);
  EXPECT_EQ(tree.PathOf(placeholder), "");
  W().Source().Tree()->expand(music);
  ASSERT_TRUE(WaitFor([&] { return tree.index(0, 0, music).data().toString() == "Chor"; }));
  EXPECT_EQ(tree.rowCount(music), 1);
}

TEST_F(ListStory, TheTreeFollowsDirectoriesThatComeAndGo) {
  WriteMidi("Musik/Chor/Alt/a.mid");
  WriteMidi("Musik/Band/b.mid");
  Start();
  SourceArea& source = W().Source();
  DirectoryTreeModel& tree = source.TreeModel();
  tree.Reveal(directory_.File("Musik/Chor/Alt"));
  ASSERT_TRUE(WaitForPlace("Musik/Chor/Alt"));
  const QPersistentModelIndex music = source.Tree()->currentIndex().parent().parent();
  ASSERT_EQ(tree.rowCount(music), 2);

  std::filesystem::create_directory(directory_.File("Musik/Orgel"));
  EXPECT_TRUE(WaitFor([&] { return tree.rowCount(music) == 3; }));
  EXPECT_EQ(tree.PathOf(source.Tree()->currentIndex()), directory_.File("Musik/Chor/Alt"));

  // The directory that is shown goes with its parent: what is left of its path is shown, no neighbour.
  std::filesystem::remove_all(directory_.File("Musik/Chor"));
  EXPECT_TRUE(WaitFor([&] { return tree.rowCount(music) == 2; }));
  EXPECT_TRUE(WaitForPlace("Musik"));
  EXPECT_TRUE(WaitFor([&] { return ActiveJob().directory.path == directory_.File("Musik"); }));
}

// What a user sees of a row in a column; "" where that is not shown.
std::string CellOf(const FileViewModel& model, std::size_t row, FileColumn column) {
  for (int i = 0; i < model.columnCount(); ++i) {
    if (model.ColumnAt(i) == column) return FromQt(model.index(static_cast<int>(row), i).data().toString());
  }
  return {};
}

class ArrangedList : public ListStory {
 protected:
  // Three MIDI files of a second, three and two seconds, and a file that is none.
  void WriteMusic() {
    for (const auto& [name, quarters] :
         {std::pair{"Musik/Lied 10.mid", 2}, {"Musik/lied 9.mid", 6}, {"Musik/Alt.mid", 4}}) {
      std::string midi("MThd\0\0\0\6\0\0\0\1\0\1MTrk\0\0\0\x10\0\xFF\x58\4\3\2\x18\x08\0\x90\x3C\x40", 34);
      midi += static_cast<char>(quarters);
      midi += std::string("\xFF\x2F\0", 3);
      directory_.Write(name, midi);
    }
    directory_.Write("Musik/x.wav", "RIFF");
  }
  void StartWithMusic() {
    WriteMusic();
    StartListed();
    ShowDirectory(directory_.File("Musik"));
    const FileViewModel& model = W().Source().Model();
    ASSERT_TRUE(WaitFor([&] {
      for (std::size_t row = 0; row < model.Size(); ++row) {
        if (model.IsUnread(row)) return false;
      }
      return true;
    }));
  }

  std::vector<std::string> Names() {
    std::vector<std::string> names;
    for (std::size_t row = 0; row < W().Source().Model().Size(); ++row)
      names.emplace_back(FileNameOf(W().Source().Model().At(row).path));
    return names;
  }
  void Click(FileColumn column) { emit W().Source().Files()->TitleClicked(column); }
  void Filter(const QString& text) {
    W().Source().Filter()->setText(text);
    QTest::keyClick(W().Source().Filter(), Qt::Key_Return);
  }
  std::string CountText() { return FromQt(W().Source().findChild<QLabel*>("fileCount")->text()); }
};

TEST_F(ArrangedList, ColumnsSayWhatIsInTheFilesAndSortThem) {
  StartWithMusic();
  const FileViewModel& model = W().Source().Model();
  const std::size_t alt = RowOf("Alt.mid");
  EXPECT_EQ(CellOf(model, alt, FileColumn::Length), "0:02");
  EXPECT_EQ(CellOf(model, alt, FileColumn::Metre), "3/4");
  EXPECT_EQ(CellOf(model, alt, FileColumn::Voices), "1 Stimme");
  EXPECT_EQ(CellOf(model, RowOf("x.wav"), FileColumn::Length), "") << "it has none";
  EXPECT_EQ(CellOf(model, RowOf("x.wav"), FileColumn::Size), "4 B");

  Select({RowOf("Alt.mid"), RowOf("lied 9.mid")});
  Click(FileColumn::Length);
  EXPECT_THAT(Names(), testing::ElementsAre("Lied 10.mid", "Alt.mid", "lied 9.mid", "x.wav"));
  EXPECT_THAT(ActiveJob().directory.names, testing::ElementsAre("Alt.mid", "lied 9.mid"));
  Click(FileColumn::Length);
  EXPECT_THAT(Names(), testing::ElementsAre("lied 9.mid", "Alt.mid", "Lied 10.mid", "x.wav"));
  EXPECT_THAT(ActiveJob().directory.names, testing::ElementsAre("lied 9.mid", "Alt.mid"))
      << "a run goes by the order that is seen";
  EXPECT_EQ(CountText(), "2 von 4 markiert, 5 s");

  // It is so the next time, too, and what was read is there at once.
  StartListed();
  EXPECT_THAT(Names(), testing::ElementsAre("lied 9.mid", "Alt.mid", "Lied 10.mid", "x.wav"));
  Click(FileColumn::Length);
  EXPECT_EQ(Names().front(), "x.wav") << "the directory's own order";
  Click(FileColumn::Name);
  EXPECT_THAT(Names(), testing::ElementsAre("Alt.mid", "lied 9.mid", "Lied 10.mid", "x.wav"));
}

TEST_F(ArrangedList, WhatTheFilterHidesIsNotMarked) {
  StartWithMusic();
  EXPECT_TRUE(W().Actions().Action(CommandId::FilterList)->isEnabled()) << "as soon as there are files";
  W().Source().Files()->selectAll();
  Filter("lied");
  EXPECT_EQ(ActiveJob().directory.names.size(), 2U);
  EXPECT_EQ(CountText(), "2 von 4 markiert, 4 s");
  EXPECT_EQ(W().Source().Files()->SelectedRows().size(), 2U);
  Select({});
  EXPECT_EQ(CountText(), "2 von 4 gezeigt");
  QTest::keyClick(W().Source().Filter(), Qt::Key_Escape);
  EXPECT_EQ(Names().size(), 4U);
  EXPECT_TRUE(ActiveJob().directory.names.empty());
  Filter("Alt");
  ShowDirectory(directory_.Path());
  EXPECT_EQ(W().Source().Filter()->text(), "") << "it was for the other directory";
}

TEST_F(ArrangedList, TheFreeListKeepsItsOrderUntilTheUserSaysSo) {
  WriteMusic();
  StartWithList({directory_.File("Musik/Lied 10.mid"), directory_.File("Musik/x.wav"),
                 directory_.File("Musik/lied 9.mid")});
  const auto list = [&] {
    std::vector<std::string> names;
    for (const FileListEntry& entry : ActiveJob().files.Entries()) names.emplace_back(FileNameOf(entry.path));
    return names;
  };
  Select({0});
  Click(FileColumn::Name);
  EXPECT_THAT(Names(), testing::ElementsAre("lied 9.mid", "Lied 10.mid", "x.wav"));
  EXPECT_THAT(list(), testing::ElementsAre("Lied 10.mid", "x.wav", "lied 9.mid"));
  EXPECT_EQ(W().Source().Files()->SelectedRows(), std::vector<std::size_t>{1});
  EXPECT_EQ(ActiveJob().files.Selection(), std::vector<std::size_t>{0});
  EXPECT_FALSE(Enabled(CommandId::MoveUp));
  // Commands reach the entry that is seen.
  Select({0});
  RenameTo("a.mid");
  EXPECT_THAT(list(), testing::ElementsAre("Lied 10.mid", "x.wav", "a.mid"));
  W().Actions().Trigger(CommandId::TakeOrder);
  EXPECT_THAT(list(), testing::ElementsAre("a.mid", "Lied 10.mid", "x.wav"));
  EXPECT_EQ(W().Source().Files()->SelectedRows(), std::vector<std::size_t>{0});
  EXPECT_FALSE(Enabled(CommandId::TakeOrder));
  Filter("x.wav");
  Select({0});
  script_.ExpectBox(QMessageBox::Yes);
  W().Actions().Trigger(CommandId::Delete);
  EXPECT_THAT(list(), testing::ElementsAre("a.mid", "Lied 10.mid"));
}

TEST_F(ArrangedList, SubdirectoriesAreShownAndNamedInTheJob) {
  WriteMusic();
  WriteMidi("Musik/Chor/Alt/a.mid");
  StartListed();
  ShowDirectory(directory_.File("Musik"));
  auto* const box = W().Source().findChild<QCheckBox*>("withSubdirectories");
  ASSERT_TRUE(box->isVisible() && box->isEnabled());
  box->click();
  ASSERT_TRUE(WaitFor([&] { return Names().size() == 5; }));
  ASSERT_TRUE(WaitForListing());
  const std::size_t row = RowOf("Alt/a.mid");
  EXPECT_EQ(CellOf(W().Source().Model(), row, FileColumn::Directory), "Chor/Alt");
  Select({row});
  EXPECT_THAT(ActiveJob().directory.names, testing::ElementsAre("Chor/Alt/a.mid"));
  EXPECT_EQ(ItemSource(ActiveJob(), 0), directory_.File("Musik/Chor/Alt/a.mid"));
  StartListed();
  EXPECT_EQ(Names().size(), 5U);
  ASSERT_EQ(W().Source().Model().ColumnAt(1), FileColumn::Directory);
  EXPECT_FALSE(W().Source().Files()->isColumnHidden(1)) << "as a column before the window had its size";
  EXPECT_EQ(W().Source().Files()->SelectedRows(), std::vector<std::size_t>{RowOf("Alt/a.mid")});
  // A file that comes below is noticed as well.
  WriteMidi("Musik/Chor/Alt/b.mid");
  EXPECT_TRUE(WaitFor([&] { return Names().size() == 6; }));
}

TEST_F(ArrangedList, ColumnsFitTheWindowAndKeepTheirWidths) {
  StartWithMusic();
  const auto files = [this] { return W().Source().Files(); };
  const auto section = [&](FileColumn column) {
    int found = 0;
    while (W().Source().Model().ColumnAt(found) != column) ++found;
    return found;
  };
  for (const int width : {1900, 1280, 900}) {
    W().resize(width, 700);
    QApplication::processEvents();
    EXPECT_EQ(files()->horizontalScrollBar()->maximum(), 0) << width;
    EXPECT_EQ(files()->isColumnHidden(section(FileColumn::Date)), width == 900);
  }
  files()->header()->resizeSection(section(FileColumn::Length), 111);
  ShowDirectory(directory_.Path());
  StartListed();
  EXPECT_EQ(files()->columnWidth(section(FileColumn::Length)), 111);
  EXPECT_EQ(W().Source().Model().columnCount(), 8) << "a width chooses no columns";
  // Before the window is shown there is no room for facts; a list of files begins with another column.
  ToListMode();
  Drop({WriteMidi("a.mid")});
  Start();
  EXPECT_FALSE(files()->isColumnHidden(section(FileColumn::Directory)));
}

TEST_F(ArrangedList, ColumnsAreChosenInTheMenu) {
  StartWithMusic();
  QTimer::singleShot(0, [] {
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    for (QAction* action : menu->actions()) {
      if (action->isCheckable()) action->setChecked(action->text() == "Takt");
    }
    menu->close();
  });
  W().Actions().Trigger(CommandId::ListColumns);
  EXPECT_EQ(W().Source().Model().columnCount(), 2);
  StartListed();
  EXPECT_EQ(W().Source().Model().columnCount(), 2);
  EXPECT_EQ(CellOf(W().Source().Model(), RowOf("Alt.mid"), FileColumn::Metre), "3/4");
}

}  // namespace
}  // namespace ts5
