// The editor of CD layouts by mouse and keys: what the user does reaches the job, and can be taken back.
#include "artworker/ui/artworker_window.h"

#include <gmock/gmock.h>

#include <QTest>

#include "app/shell/named_printers.h"
#include "artworker/layout_file.h"
#include "artworker/ui/element_clipboard.h"
#include "artworker/ui/layout_canvas.h"
#include "artworker/ui/shape_dialogs.h"
#include "artworker/ui/sheets_dialog.h"
#include "artworker/ui/text_dialog.h"
#include "dialogs_support.h"
#include "modules/filter_modules.h"
#include "support/test_data.h"

namespace ts5::artworker {
namespace {

constexpr auto kLabel = ArtworkObjectId::Label;
using C = EditorCommand;

class ArtworkerWindowTest : public testing::Test {
 protected:
  ArtworkerWindowTest() {
    parameters_.undoSteps = 3;
    for (const Box& box : {Box{100, 100, 300, 200}, Box{500, 100, 700, 200}}) {
      ArtworkElement element;
      element.content = Ellipse{};
      element.box = box;
      parameters_.layout.elements.push_back(element);
    }
    QApplication::clipboard()->clear();
  }
  void Open() {
    ArtworkerWindow::Subject subject;
    subject.title = "Probe";
    subject.parameters = [this] { return gone_ ? nullptr : &parameters_; };
    subject.running = [this] { return running_; };
    subject.printers = {"PDF-Datei", "Laser"};
    subject.folder = directory_.Path();
    subject.backgrounds = {.load = [this] { return backgrounds_; },
                           .save =
                               [this](const std::vector<ArtworkBackground>& all) {
                                 backgrounds_ = all;
                                 return Outcome::Success;
                               }};
    subject.facts = [] { return DiscFacts{}; };
    subject.printerChosen = [this] { ++printersChosen_; };
    subject.print = [this] { ++prints_; };
    subject.edited = [this] { ++edits_; };
    subject.fits = {.load = [this](const std::string& printer) { return fits_[printer]; },
                    .save =
                        [this](const std::string& printer, const PrinterFit& fit) {
                          fits_[printer] = fit;
                          return Outcome::Success;
                        }};
    window_ = std::make_unique<ArtworkerWindow>(std::move(subject), host_, nullptr);
    window_->show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window_.get()));
    Canvas().setFocus();
  }
  [[nodiscard]] LayoutCanvas& Canvas() { return window_->CanvasOf(kLabel); }
  [[nodiscard]] const LayoutEditor& Editor() { return window_->Editor(); }
  [[nodiscard]] const Box& BoxAt(std::size_t index) { return parameters_.layout.elements.at(index).box; }
  void Do(C command) { window_->Actions()[command].trigger(); }
  // A place on the object in millimetres, as a point of the canvas.
  [[nodiscard]] QPoint At(double x, double y) {
    return (QPointF(x, y) * Canvas().Scale()).toPoint() +
           QPoint(LayoutCanvas::kMargin, LayoutCanvas::kMargin);
  }
  void Drag(QPoint from, QPoint to, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QTest::mousePress(&Canvas(), Qt::LeftButton, modifiers, from);
    for (const QPoint& at : {(from + to) / 2, to}) {
      QMouseEvent move(QEvent::MouseMove, QPointF(at), Canvas().mapToGlobal(QPointF(at)), Qt::LeftButton,
                       Qt::LeftButton, modifiers);
      QApplication::sendEvent(&Canvas(), &move);
    }
    QTest::mouseRelease(&Canvas(), Qt::LeftButton, modifiers, to);
  }
  void Key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QTest::keyClick(&Canvas(), key, modifiers);
  }

  test::TemporaryDirectory directory_;
  RecordingHost host_;
  ArtworkerParameters parameters_;
  std::vector<ArtworkBackground> backgrounds_ = {{0xFFFFFF, 0xFFFFFF, 0, "Weiß Uni"}};
  bool gone_ = false;
  bool running_ = false;
  int prints_ = 0;
  int edits_ = 0;
  std::map<std::string, PrinterFit> fits_;
  int printersChosen_ = 0;
  std::unique_ptr<ArtworkerWindow> window_;
};

TEST_F(ArtworkerWindowTest, TheMouseMovesAndSizesAndEveryStepCanBeTakenBack) {
  Open();
  const Bytes first = LayoutRecord(parameters_.layout);
  Drag(At(20, 15), At(25, 37), Qt::AltModifier);
  EXPECT_NEAR(BoxAt(0).left, 150, 2);
  EXPECT_NEAR(BoxAt(0).top, 320, 2);
  EXPECT_EQ(BoxAt(0).right - BoxAt(0).left, 200) << "moving changes no size";
  const Box moved = BoxAt(0);
  Drag(At(35, 42), At(45, 62), Qt::AltModifier);
  EXPECT_EQ(BoxAt(0).left, moved.left);
  EXPECT_NEAR(BoxAt(0).right, moved.right + 100, 4);
  EXPECT_NEAR(BoxAt(0).bottom, moved.bottom + 200, 4);
  Drag(At(20, 40), At(20, 40));
  EXPECT_THAT(Editor().Selected(), testing::ElementsAre(0)) << "a click changes nothing";
  Key(Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(BoxAt(0), moved);
  Key(Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(LayoutRecord(parameters_.layout), first);
  EXPECT_FALSE(window_->Actions()[C::Undo].isEnabled());
  Key(Qt::Key_Y, Qt::ControlModifier);
  EXPECT_EQ(BoxAt(0), moved);
}

TEST_F(ArtworkerWindowTest, KeysMoveWithTheirToolAndSizeAlways) {
  Open();
  Key(Qt::Key_PageUp);
  EXPECT_THAT(Editor().Selected(), testing::ElementsAre(0));
  Key(Qt::Key_Right);
  EXPECT_EQ(BoxAt(0).left, 100) << "the design tool moves nothing";
  Do(C::Move);
  Key(Qt::Key_Right);
  EXPECT_NEAR(BoxAt(0).left, 100 + 100 / Canvas().Scale(), 1);
  Key(Qt::Key_Left);
  for (int i = 0; i < 100; ++i) Key(Qt::Key_Left, Qt::ShiftModifier);
  EXPECT_NEAR(BoxAt(0).right - BoxAt(0).left, 10 / Canvas().Scale(), 1) << "one pixel stays";
  Key(Qt::Key_PageDown);
  EXPECT_THAT(Editor().Selected(), testing::ElementsAre(1));
  Drag(At(5, 5), At(100, 30));
  EXPECT_THAT(Editor().Selected(), testing::ElementsAre(0, 1)) << "the rubber band";
  QTest::mouseClick(&Canvas(), Qt::LeftButton, {}, At(60, 15));
  EXPECT_THAT(Editor().Selected(), testing::ElementsAre(1)) << "a click is for one alone";
  QTest::mouseClick(&Canvas(), Qt::LeftButton, Qt::ShiftModifier, At(10, 15));
  QTest::mouseClick(&Canvas(), Qt::LeftButton, Qt::ControlModifier, At(60, 15));
  EXPECT_THAT(Editor().Selected(), testing::ElementsAre(0));
}

TEST_F(ArtworkerWindowTest, ThreeStepsBackAreThreeSteps) {
  Open();
  Do(C::Move);
  Key(Qt::Key_PageUp);
  std::vector<int> lefts;
  for (int i = 0; i < 4; ++i) {
    Key(Qt::Key_Right);
    lefts.push_back(BoxAt(0).left);
  }
  for (int i = 0; i < 4; ++i) Key(Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(BoxAt(0).left, lefts[0]) << "the state after the first change";
  running_ = true;
  {
    NextMessage box;
    Child<QSpinBox>(*window_, "undoBox").setValue(7);
    EXPECT_EQ(box.Text(), "Die maximale Schrittzahl kann nur Zeit nicht geändert werden.");
  }
  EXPECT_EQ(parameters_.undoSteps, 3);
}

TEST_F(ArtworkerWindowTest, ZoomsOutToItsLimitAndBackToTheDesignTool) {
  Open();
  Do(C::ZoomOut);
  for (int i = 0; i < 3; ++i) QTest::mouseClick(&Canvas(), Qt::LeftButton, {}, At(5, 5));
  EXPECT_NEAR(Canvas().Zoom(), 0.7, 1e-9);
  EXPECT_TRUE(window_->Actions()[C::Design].isChecked());
  Do(C::ZoomOut);
  EXPECT_FALSE(window_->Actions()[C::ZoomOut].isChecked()) << "refused";
  EXPECT_TRUE(window_->Actions()[C::OriginalZoom].isEnabled());
  Do(C::OriginalZoom);
  EXPECT_FALSE(window_->Actions()[C::OriginalZoom].isEnabled());
}

TEST_F(ArtworkerWindowTest, DrawsATextAndRefusesTurnedLines) {
  Open();
  Do(C::NewText);
  Drag(At(20, 50), At(21, 51));
  EXPECT_EQ(parameters_.layout.elements.size(), 2U) << "too small";
  Do(C::NewText);
  InNext<TextDialog>([](TextDialog& dialog) {
    auto& text = Child<QPlainTextEdit>(dialog, "textEdit");
    text.setPlainText("Abend");
    QTest::keyClick(&text, Qt::Key_Tab, Qt::ControlModifier);
    Child<QComboBox>(dialog, "turnBox").setCurrentIndex(1);
    {
      NextMessage box;
      Press(dialog, "okButton");
      EXPECT_TRUE(box.Text().startsWith("Der Text enthält Tabstops"));
    }
    text.setPlainText("Ж");
    {
      NextMessage box;
      Press(dialog, "okButton");
      EXPECT_TRUE(box.Text().contains("Ж"));
    }
    text.setPlainText("Abendlied");
    Press(dialog, "okButton");
  });
  Drag(At(20, 50), At(60, 60));
  ASSERT_EQ(parameters_.layout.elements.size(), 3U);
  const auto& field = std::get<TextField>(parameters_.layout.elements[2].content);
  EXPECT_EQ(field.text, "Abendlied");
  EXPECT_EQ(field.orientation, Turn::Quarter);
  EXPECT_NEAR(BoxAt(2).right, 600, 3);
  EXPECT_THAT(Editor().Selected(), testing::ElementsAre(2));
}

TEST_F(ArtworkerWindowTest, AFixedGroundIsDrawnOn) {
  parameters_.layout.elements[0].fixed = true;
  parameters_.layout.elements[0].box = {0, 0, 1170, 1170};
  Open();
  Do(C::NewEllipse);
  QTest::mouseClick(&Canvas(), Qt::LeftButton, {}, At(20, 90));
  EXPECT_THAT(Editor().Selected(), testing::ElementsAre(0)) << "a click chooses it";
  InNext<EllipseDialog>([](EllipseDialog& dialog) { Press(dialog, "okButton"); });
  Drag(At(50, 90), At(60, 95));
  ASSERT_EQ(parameters_.layout.elements.size(), 3U);
  EXPECT_NEAR(BoxAt(2).left, 400, 3) << "from its middle";
  EXPECT_EQ(BoxAt(0), (Box{0, 0, 1170, 1170}));
}

TEST_F(ArtworkerWindowTest, KeysAloneMakeElementsChooseSeveralAndZoom) {
  Open();
  Do(C::NewEllipse);
  InNext<EllipseDialog>([](EllipseDialog& dialog) { Press(dialog, "okButton"); });
  Key(Qt::Key_Space);
  ASSERT_EQ(parameters_.layout.elements.size(), 3U);
  EXPECT_NEAR(BoxAt(2).left + BoxAt(2).right, 1170, 20) << "in the middle";
  Key(Qt::Key_PageUp);
  Key(Qt::Key_PageUp, Qt::ShiftModifier);
  EXPECT_THAT(Editor().Selected(), testing::ElementsAre(0, 1));
  Do(C::ZoomIn);
  Key(Qt::Key_Space);
  EXPECT_NEAR(Canvas().Zoom(), 1.1, 1e-9);
  EXPECT_EQ(parameters_.layout.elements.size(), 3U);
}

TEST_F(ArtworkerWindowTest, AnImageMayHaveABackgroundOrNone) {
  backgrounds_.push_back({1, 2, 1, "Zwei"});
  parameters_.layout.elements[0].content = Image{};
  Open();
  Key(Qt::Key_PageUp);
  InNext<ImageDialog>([](ImageDialog& dialog) {
    auto& box = Child<QComboBox>(dialog, "backgroundBox");
    EXPECT_EQ(box.currentText(), "ohne");
    EXPECT_FALSE(Child<QPushButton>(dialog, "deleteButton").isEnabled()) << "there is nothing to delete";
    box.setCurrentIndex(1);
    EXPECT_TRUE(Child<QPushButton>(dialog, "deleteButton").isEnabled());
    {
      NextMessage message;
      Press(dialog, "okButton");
      EXPECT_EQ(message.Text(), "Geben Sie bitte einen gültigen Dateinamen der Abbildung ein.");
    }
    Child<QLineEdit>(dialog, "fileEdit").setText("/a.png");
    Press(dialog, "okButton");
  });
  Do(C::Edit);
  EXPECT_EQ(parameters_.layout.elements[0].content,
            (decltype(ArtworkElement::content)(Image{{0, 1}, 0, "/a.png"})));
}

TEST_F(ArtworkerWindowTest, TheClipboardTakesElementsTextsAndPictures) {
  Open();
  Key(Qt::Key_A, Qt::ControlModifier);
  Key(Qt::Key_C, Qt::ControlModifier);
  Child<QTabWidget>(*window_, "pages").setCurrentIndex(1);
  Do(C::Paste);
  ASSERT_EQ(parameters_.layout.elements.size(), 4U);
  EXPECT_EQ(parameters_.layout.elements[3].object, ArtworkObjectId::Inlay);
  EXPECT_EQ(BoxAt(3).left - BoxAt(2).left, 400);
  EXPECT_EQ(BoxAt(2).left, 0) << "at the corner that can be seen";
  QApplication::clipboard()->setText("Zwei\nZeilen");
  Do(C::Paste);
  EXPECT_EQ(std::get<TextField>(parameters_.layout.elements.at(4).content).text, "Zwei\nZeilen");
  parameters_.layout.elements.clear();
  QApplication::clipboard()->clear();
  EXPECT_FALSE(window_->Actions()[C::Paste].isEnabled());
  const ArtworkElement picture = ElementOfPicture("/a.png", {600, 300});
  EXPECT_EQ(picture.box.right, 508) << "300 dots to an inch";
}

TEST_F(ArtworkerWindowTest, DeletingAsksAndABackgroundThatGoesIsReplacedEverywhere) {
  backgrounds_.push_back({1, 2, 1, "Zwei"});
  backgrounds_.push_back({3, 4, 2, "Drei"});
  std::get<Ellipse>(parameters_.layout.elements[0].content).fill.background = 2;
  Open();
  Key(Qt::Key_PageUp);
  {
    NextMessage box(QMessageBox::No);
    Key(Qt::Key_Delete);
    EXPECT_EQ(box.Text(), "Wollen Sie dieses Element wirklich löschen?");
  }
  EXPECT_EQ(parameters_.layout.elements.size(), 2U);
  InNext<EllipseDialog>([](EllipseDialog& dialog) {
    EXPECT_TRUE(Child<QPushButton>(dialog, "deleteButton").isEnabled());
    Child<QComboBox>(dialog, "backgroundBox").setCurrentIndex(1);
    Press(dialog, "deleteButton");
    Press(dialog, "cancelButton");
  });
  Do(C::Edit);
  EXPECT_EQ(backgrounds_.size(), 2U);
  EXPECT_EQ(std::get<Ellipse>(parameters_.layout.elements[0].content).fill.background, 1);
  NextMessage box(QMessageBox::Yes);
  Do(C::DeleteAll);
  EXPECT_TRUE(parameters_.layout.elements.empty());
}

TEST_F(ArtworkerWindowTest, MeasuresOutsideTheirLimitsGoBack) {
  Open();
  Child<QTabWidget>(*window_, "pages").setCurrentIndex(3);
  auto& diameter = Child<QSpinBox>(*window_, "widthBox");
  diameter.setValue(45);
  EXPECT_EQ(diameter.value(), 117);
  EXPECT_EQ(parameters_.layout.Object(kLabel).size.width, 117);
  diameter.setValue(110);
  EXPECT_EQ(parameters_.layout.Object(kLabel).size.width, 110);
  EXPECT_EQ(diameter.text(), "11,0 cm");
  Child<QComboBox>(*window_, "printerBox").setCurrentIndex(1);
  emit Child<QComboBox>(*window_, "printerBox").activated(1);
  EXPECT_EQ(parameters_.printer, "Laser");
  EXPECT_EQ(printersChosen_, 1);
  Press(*window_, "printButton");
  EXPECT_EQ(prints_, 1);
  window_->resize(900, 650);
  EXPECT_EQ(parameters_.place[2] - parameters_.place[0], 899) << "the job knows where its window is";
}

TEST_F(ArtworkerWindowTest, SheetsAndPrintersAreSetUp) {
  Open();
  InNext<SheetsDialog>([](SheetsDialog& dialog) {
    Child<QSpinBox>(dialog, "rowsBox").setValue(2);
    EXPECT_EQ(Child<QSpinBox>(dialog, "firstBox").maximum(), 2);
    Child<QSpinBox>(dialog, "firstBox").setValue(2);
    Child<QCheckBox>(dialog, "marksInlay").setChecked(true);
    Child<QCheckBox>(dialog, "shareCheck").setChecked(true);
    Press(dialog, "okButton");
  });
  Press(*window_, "sheetsButton");
  EXPECT_THAT(parameters_.labelGrid, testing::ElementsAre(1, 2));
  EXPECT_EQ(parameters_.labelFirst, 2);
  EXPECT_EQ(parameters_.printMarks, 2);
  EXPECT_TRUE(parameters_.shareSheet);
  InNext<FitDialog>([](FitDialog& dialog) {
    Child<QDoubleSpinBox>(dialog, "leftBox").setValue(21.5);
    Child<QDoubleSpinBox>(dialog, "alongLineBox").setValue(60);
    {
      NextMessage box;
      Press(dialog, "computeButton");
      EXPECT_TRUE(box.Text().startsWith("Diese Maße sind nicht möglich"));
    }
    Child<QDoubleSpinBox>(dialog, "alongLineBox").setValue(100);
    Press(dialog, "computeButton");
    Press(dialog, "okButton");
  });
  Press(*window_, "fitButton");
  EXPECT_EQ(fits_["PDF-Datei"], PrinterFit{.right = -15});
}

TEST_F(ArtworkerWindowTest, EveryElementAndItsTextCanBeReadOut) {
  TextField field;
  SetText(field, "Abendlied");
  parameters_.layout.elements[1].content = field;
  Open();
  Key(Qt::Key_PageUp);
  QAccessibleInterface* const canvas = QAccessible::queryAccessibleInterface(&Canvas());
  ASSERT_NE(canvas, nullptr);
  ASSERT_EQ(canvas->childCount(), 2);
  QAccessibleInterface* const text = canvas->child(1);
  EXPECT_EQ(text->text(QAccessible::Name), "Textfeld: Abendlied");
  EXPECT_TRUE(text->text(QAccessible::Description).contains("mm"));
  EXPECT_EQ(canvas->indexOfChild(text), 1);
  ASSERT_NE(text->textInterface(), nullptr);
  EXPECT_EQ(text->textInterface()->text(5, 9), "lied");
  EXPECT_EQ(canvas->child(0)->textInterface(), nullptr);
  EXPECT_TRUE(canvas->child(0)->state().selected);
  EXPECT_FALSE(text->state().selected);
  EXPECT_FALSE(text->rect().isEmpty());
  ASSERT_NE(text->actionInterface(), nullptr);
  text->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
  EXPECT_THAT(Editor().Selected(), testing::ElementsAre(1));
  EXPECT_EQ(canvas->focusChild(), text);
  EXPECT_EQ(canvas->childAt(text->rect().center().x(), text->rect().center().y()), text);
}

TEST(NamedPrinters, AJobKeepsItsPrinterWhateverItsPlaceInTheList) {
  StoredJobs stored;
  stored.defaultJob.parameters = FindModule(FilterId::Artworker)->create();
  Job& job = stored.defaultJob;
  job.parameters.If<ArtworkerParameters>()->printer = "Laser";
  std::vector<std::string> printers{"Alt", "Laser", "PDF-Datei"};
  FindNamedPrinters(stored, printers);
  EXPECT_EQ(job.destinationDevice, 1);
  printers = {"PDF-Datei"};
  FindNamedPrinters(stored, printers);
  EXPECT_EQ(job.destinationDevice, 1);
  EXPECT_THAT(printers, testing::ElementsAre("PDF-Datei", "Laser"))
      << "it has gone, and nothing takes its place";
  Jobs jobs(std::move(stored), FindModule);
  jobs[0].destinationDevice = 0;
  NamePrinters(jobs, printers);
  EXPECT_EQ(jobs[0].parameters.If<ArtworkerParameters>()->printer, "PDF-Datei");
}

}  // namespace
}  // namespace ts5::artworker
