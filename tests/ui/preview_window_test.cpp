// The look at a score: pages, sizes, messages, and the ways that lead to it.
#include "preview/ui/preview_window.h"

#include <gmock/gmock.h>

#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>

#include "dialogs_support.h"
#include "frame/ui/results_dialog.h"
#include "preview/ui/page_view.h"
#include "search/melody_text.h"
#include "search/score_search.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using preview::PageView;
using preview::PreviewWindow;

// Shows a file and waits until it is there.
void OpenAndWait(PreviewWindow& window, const std::string& path, const std::optional<SearchHit>& hit = {}) {
  QSignalSpy ready(&window, &PreviewWindow::Ready);
  window.Open(path, hit);
  ASSERT_TRUE(ready.count() > 0 || ready.wait(30'000));
}

TEST(PreviewWindowTest, TurnsPagesAndChangesTheSize) {
  RecordingHost host;
  PreviewWindow window(host);
  window.resize(700, 600);
  window.show();
  const std::string path = test::DataPath("musicxml/osmd_MuzioClementi_SonatinaOpus36No3_Part2.xml");
  OpenAndWait(window, path);
  EXPECT_EQ(window.Message(), "");
  EXPECT_TRUE(window.windowTitle().contains("osmd_MuzioClementi"));
  ASSERT_NE(window.Pages(), nullptr);
  const std::size_t count = window.Pages()->Count();
  ASSERT_GE(count, 2U);
  PageView& view = *window.View();
  QTest::keyClick(&view, Qt::Key_PageDown);
  EXPECT_EQ(view.Page(), 1U);
  QTest::keyClick(&view, Qt::Key_End);
  EXPECT_EQ(view.Page(), count - 1);
  QTest::keyClick(&view, Qt::Key_PageDown);
  EXPECT_EQ(view.Page(), count - 1) << "there is no other";
  QTest::keyClick(&view, Qt::Key_Home);
  EXPECT_EQ(view.Page(), 0U);
  const double before = view.Scale();
  QTest::keyClick(&view, Qt::Key_Plus);
  EXPECT_GT(view.Scale(), before);
  view.SetFit(PageView::Fit::Page);
  EXPECT_LT(view.Scale(), before);
  window.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
  QTest::keyClick(&view, Qt::Key_F1);
  EXPECT_EQ(host.topics, QStringList("notenbild.htm"));
  // A hit of the search leads to its page.
  SearchHit last;
  const MelodyQuery anyNote{MelodyFromNumbers("60:240")->elements,
                            {.rhythm = RhythmMode::Any, .pitch = PitchMode::Ignore}};
  const auto keep = [&last](const SearchHit& hit) {
    last = hit;
    return Outcome::Success;
  };
  ASSERT_GT(SearchScoreFile(path, anyNote, keep, {}).hits, 0U);
  view.SetFit(PageView::Fit::Width);
  OpenAndWait(window, path, last);
  EXPECT_EQ(view.Page(), count - 1);
  const preview::SystemPlace place = window.Pages()->PlaceOf(last);
  const double seen = view.verticalScrollBar()->value() + view.viewport()->height();
  EXPECT_GT(view.verticalScrollBar()->value(), 0) << "the last line is further down";
  EXPECT_LE(place.bottom * view.Scale(), seen);
  EXPECT_GE(place.bottom * view.Scale(), view.verticalScrollBar()->value());
}

TEST(PreviewWindowTest, TellsWhatCannotBeShown) {
  test::TemporaryDirectory place;
  RecordingHost host;
  PreviewWindow window(host);
  const std::string score =
      "<score-partwise><part-list><score-part id='a'/></part-list><part id='a'><measure><note>"
      "<pitch><step>X</step><octave>4</octave></pitch><duration>1</duration></note></measure></part></"
      "score-partwise>";
  OpenAndWait(window, place.Write("kaputt.xml", score));
  EXPECT_TRUE(window.Message().contains("Takt 1, Zeile 1")) << window.Message().toStdString();
  OpenAndWait(window, place.File("fehlt.stv"));
  EXPECT_EQ(window.Message(), "Die Partitur kann nicht gezeigt werden.");
  // One that closes while it reads stops.
  auto* const closing = new PreviewWindow(host);
  closing->Open(test::DataPath("musicxml/openscore_Beethoven_Das_Bluemchen_Wunderhold.musicxml"));
  delete closing;
  EXPECT_TRUE(preview::IsScoreName("/a/b.MXL"));
  EXPECT_FALSE(preview::IsScoreName("/a/b.mid"));
}

TEST(PreviewWindowTest, ResultsLeadToTheNotes) {
  RunResult result;
  result.items = {{.source = "/a/lied.mid", .destination = "/a/lied.stv"},
                  {.source = "/a/zwei.mid", .code = -300}};
  RecordingHost host;
  ResultsDialog dialog(result, true, host, nullptr);
  auto* const button = dialog.findChild<QPushButton*>("notationButton");
  ASSERT_NE(button, nullptr);
  EXPECT_TRUE(button->isHidden()) << "unless it is offered";
  dialog.OfferNotation([](const std::string& path) { return preview::IsScoreName(path); });
  EXPECT_FALSE(button->isHidden());
  dialog.findChild<QPushButton*>("detailsButton")->click();
  std::vector<std::string> wanted;
  QObject::connect(&dialog, &ResultsDialog::NotationWanted,
                   [&wanted](const std::string& path) { wanted.push_back(path); });
  auto* const items = dialog.findChild<QAbstractItemView*>("items");
  for (int row = 0; row < 2; ++row) {
    items->setCurrentIndex(items->model()->index(row, 0));
    if (button->isEnabled()) button->click();
  }
  EXPECT_THAT(wanted, testing::ElementsAre("/a/lied.stv"));
}

}  // namespace
}  // namespace ts5
