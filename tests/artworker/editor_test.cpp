// Editing a layout without windows: history, places, selection, moves, guides, backgrounds, filled texts.
#include <gmock/gmock.h>

#include <QFontMetricsF>
#include <QImage>
#include <cmath>
#include <set>

#include "artworker/background_list.h"
#include "artworker/filled_text.h"
#include "artworker/kept_pictures.h"
#include "artworker/layout_editor.h"
#include "artworker/layout_file.h"
#include "artworker/pictures.h"
#include "artworker/print_run.h"
#include "artworker/snapping.h"
#include "artworker/templates.h"
#include "artworker/text_layout.h"
#include "artworker/texts.h"
#include "platform/files/files.h"
#include "support/test_data.h"

namespace ts5::artworker {
namespace {

using testing::ElementsAre;

constexpr auto kInlay = ArtworkObjectId::Inlay;
constexpr double kScale = 4;  // pixels to a millimetre

ArtworkLayout LayoutOf(const std::vector<Box>& boxes) {
  ArtworkLayout layout = NewLayout();
  for (const Box& box : boxes) {
    layout.elements.emplace_back();
    layout.elements.back().object = kInlay;
    layout.elements.back().box = box;
  }
  return layout;
}

std::vector<Box> BoxesOf(const ArtworkLayout& layout) {
  std::vector<Box> boxes;
  for (const ArtworkElement& element : layout.elements) boxes.push_back(element.box);
  return boxes;
}

TEST(History, KeepsTheNewestStepsAndTheWayForward) {
  History<int> history(3);
  for (int state = 0; state < 4; ++state) history.Record(state);  // four changes, from 0 to 4
  EXPECT_FALSE(history.CanRedo());
  std::vector<int> back;
  int now = 4;
  while (const auto state = history.Undo(now)) back.push_back(now = *state);
  EXPECT_THAT(back, ElementsAre(3, 2, 1)) << "after the first change, not before it";
  std::vector<int> forward;
  while (const auto state = history.Redo()) forward.push_back(now = *state);
  EXPECT_THAT(forward, ElementsAre(2, 3, 4));
  EXPECT_EQ(history.Undo(4), 3);
  history.Record(3);  // another change forgets what could be redone
  EXPECT_FALSE(history.CanRedo());
  EXPECT_EQ(history.Undo(9), 3);
}

TEST(Places, GoThereAndBackOnObjectsOfEverySize) {
  for (const ArtworkObjectId id : kObjectIds) {
    for (const int percent : {60, 80, 100, 137}) {
      ArtworkObject object = NewLayout().Object(id);
      object.size = {object.size.width * percent / 100, object.size.height * percent / 100};
      ArtworkElement element;
      element.object = id;
      for (const Box& box : {Box{0, 0, 10, 10}, Box{-37, 12, 401, 99}, Box{333, 444, 334, 445}}) {
        element.box = box;
        QRectF place = PlaceOf(element, object);
        EXPECT_EQ(BoxOf(place, object, id), box);
        place.translate(1e12, -1e12);
        (void)BoxOf(place, object, id);  // whatever comes out, it is a number
      }
    }
  }
}

TEST(Zones, CornersBeforeStripsBeforeTheInside) {
  const QRectF rect(100, 100, 60, 40);
  const struct {
    QPointF point;
    std::optional<Zone> zone;
  } rows[] = {
      {{100, 100}, Zone{.left = true, .top = true}},
      {{105, 95}, Zone{.left = true, .top = true}},
      {{160, 140}, Zone{.right = true, .bottom = true}},
      {{96, 144}, Zone{.left = true, .bottom = true}},
      {{164, 104}, Zone{.top = true, .right = true}},
      {{130, 96}, Zone{.top = true}},
      {{130, 144}, Zone{.bottom = true}},
      {{97, 120}, Zone{.left = true}},
      {{163, 120}, Zone{.right = true}},
      {{130, 120}, Zone{}},
      {{130, 94}, std::nullopt},
      {{94, 120}, std::nullopt},
  };
  for (const auto& row : rows)
    EXPECT_EQ(ZoneAt(rect, row.point), row.zone) << row.point.x() << ' ' << row.point.y();
}

TEST(Hits, TheUppermostButTheEdgeOfWhatIsSelected) {
  const ArtworkLayout layout = LayoutOf({{100, 100, 300, 300}, {50, 50, 400, 400}});
  EXPECT_EQ(HitAt(layout, kInlay, {}, {20 * kScale, 20 * kScale}, kScale)->element, 1U);
  const auto corner = HitAt(layout, kInlay, {0}, {30 * kScale, 30 * kScale}, kScale);
  EXPECT_EQ(corner->element, 0U);
  EXPECT_TRUE(corner->zone.right && corner->zone.bottom);
  EXPECT_FALSE(HitAt(layout, ArtworkObjectId::Label, {}, {80, 80}, kScale));
  EXPECT_THAT(InsideBand(layout, kInlay, {30, 30, 100, 100}, kScale), ElementsAre(0));
  EXPECT_THAT(InsideBand(layout, kInlay, {190, 190, -180, -180}, kScale), ElementsAre(0, 1));
  EXPECT_EQ(NeighbourOf(layout, kInlay, {1}, true), 0U);
  EXPECT_EQ(NeighbourOf(layout, kInlay, {}, false), 1U);
  EXPECT_EQ(NeighbourOf(layout, ArtworkObjectId::Label, {}, true), std::nullopt);
}

TEST(Edits, FixedOnesStayAmongOthersAndNothingShrinksBelowAPixel) {
  ArtworkLayout layout = LayoutOf({{0, 0, 100, 50}, {200, 200, 300, 250}});
  layout.elements[1].fixed = true;
  MoveBy(layout, {0, 1}, {2.5, -1});
  EXPECT_THAT(BoxesOf(layout), ElementsAre(Box{25, -10, 125, 40}, Box{200, 200, 300, 250}));
  MoveBy(layout, {1}, {1, 0});
  EXPECT_EQ(layout.elements[1].box.left, 210);
  for (int i = 0; i < 50; ++i) GrowBy(layout, {0}, {-0.25, 0}, 0.25);
  EXPECT_EQ(layout.elements[0].box, (Box{25, -10, 28, 40}));
  EXPECT_EQ(Resized({0, 0, 10, 10}, Zone{.left = true}, {15, 3}), QRectF(10, 0, 5, 10)) << "turned over";
}

TEST(Edits, AlignsDistributesAndOrders) {
  ArtworkLayout layout = LayoutOf({{0, 0, 100, 100}, {150, 300, 250, 400}, {700, 20, 800, 60}});
  Selection all = {0, 1, 2};
  Distribute(layout, all, Qt::Horizontal);
  EXPECT_EQ(layout.elements[1].box.left, 350);
  Align(layout, all, Alignment::Bottom);
  for (const ArtworkElement& element : layout.elements) EXPECT_EQ(element.box.bottom, 400);
  Align(layout, {0}, Alignment::Right);
  EXPECT_EQ(layout.elements[0].box.right, 1500);
  CentreOnObject(layout, {1}, Qt::Vertical);
  EXPECT_EQ(layout.elements[1].box.top + layout.elements[1].box.bottom, 1180);
  Selection selection = {2};
  SendToBack(layout, selection);
  EXPECT_THAT(selection, ElementsAre(0));
  EXPECT_EQ(layout.elements[0].box.left, 700);
  selection = {0, 2};
  BringToFront(layout, selection);
  EXPECT_THAT(selection, ElementsAre(1, 2));
  Delete(layout, selection);
  EXPECT_EQ(layout.elements.size(), 1U);
}

TEST(Edits, PasteKeepsPlacesToEachOtherAndTakesTheObject) {
  ArtworkLayout layout = LayoutOf({{0, 0, 50, 50}});
  const ArtworkLayout copied = LayoutOf({{300, 300, 400, 400}, {350, 250, 360, 260}});
  Selection selection;
  Paste(layout, selection, copied.elements, ArtworkObjectId::Booklet, {10, 20});
  EXPECT_THAT(selection, ElementsAre(1, 2));
  EXPECT_EQ(layout.elements[1].box, (Box{100, 250, 200, 350}));
  EXPECT_EQ(layout.elements[2].box, (Box{150, 200, 160, 210}));
  EXPECT_EQ(layout.elements[2].object, ArtworkObjectId::Booklet);
}

TEST(Edits, ALayoutTakesNoMoreElementsThanCanBeRead) {
  LayoutEditor editor(LayoutOf(std::vector<Box>(kMaxElements, Box{0, 0, 10, 10})), 3);
  const auto more = [](ArtworkLayout& layout, Selection& selection) { Append(layout, selection, {}); };
  editor.Select({7});
  EXPECT_FALSE(editor.Apply(more));
  EXPECT_EQ(editor.Layout().elements.size(), kMaxElements);
  EXPECT_THAT(editor.Selected(), ElementsAre(7));
  EXPECT_FALSE(editor.CanUndo());
  EXPECT_TRUE(LayoutFromRecord(LayoutRecord(editor.Layout())));
}

TEST(Edits, DrawsFromCornerToCornerAndEllipsesFromTheirCentre) {
  EXPECT_EQ(DrawnBox({50, 50}, {20, 90}, false, false), QRectF(20, 50, 30, 40));
  EXPECT_EQ(DrawnBox({50, 50}, {20, 90}, false, true), QRectF(20, 50, 30, 30));
  EXPECT_EQ(DrawnBox({50, 50}, {60, 30}, true, false), QRectF(40, 30, 20, 40));
  EXPECT_EQ(DrawnBox({50, 50}, {60, 30}, true, true), QRectF(40, 40, 20, 20));
}

TEST(LayoutEditor, EveryChangeIsAStepAndUndoEndsAtTheSameBytes) {
  LayoutEditor editor(LayoutOf({{0, 0, 100, 100}, {200, 0, 300, 100}}), 50);
  const Bytes first = LayoutRecord(editor.Layout());
  EXPECT_FALSE(editor.Apply([](ArtworkLayout&, Selection&) {})) << "nothing has changed";
  EXPECT_FALSE(editor.CanUndo());
  editor.Click(0, false);
  editor.Click(1, true);
  EXPECT_THAT(editor.Selected(), ElementsAre(0, 1));
  editor.Click(1, true);
  editor.Click(0, true);
  EXPECT_THAT(editor.Selected(), ElementsAre(0)) << "one stays";
  for (int i = 0; i < 10; ++i) {
    EXPECT_TRUE(editor.Apply([](ArtworkLayout& layout, Selection& s) { MoveBy(layout, s, {0.5, 1}); }));
  }
  editor.Apply([](ArtworkLayout& layout, Selection& s) { Append(layout, s, layout.elements[0]); });
  const Bytes last = LayoutRecord(editor.Layout());
  editor.Rewrite([](ArtworkLayout& layout) { layout.elements[1].borderColour = 7; });
  int steps = 0;
  while (editor.Undo()) ++steps;
  EXPECT_EQ(steps, 11);
  EXPECT_EQ(editor.Layout().elements[1].borderColour, 7) << "in all states alike";
  EXPECT_TRUE(editor.Selected().empty() || editor.Selected().back() < 2);
  editor.Rewrite([](ArtworkLayout& layout) { layout.elements[1].borderColour = 0; });
  EXPECT_EQ(LayoutRecord(editor.Layout()), first);
  while (editor.Redo()) continue;
  EXPECT_EQ(LayoutRecord(editor.Layout()), last);
}

TEST(Snapping, RestsAtEdgesMiddlesFoldsAndEqualGaps) {
  SnapGround ground{
      .object = {0, 0, 150, 118}, .folds = {6.3}, .others = {{20, 10, 10, 10}, {60, 10, 10, 10}}, .reach = 1};
  const auto offset = [&](const QRectF& rect, const Zone& zone = {}) {
    return SnapOf(rect, zone, ground).offset;
  };
  EXPECT_NEAR(offset({0.6, 50, 8, 8}).x(), -0.6, 1e-9) << "the object's edge";
  EXPECT_NEAR(offset({70.4, 80, 10, 8}).x(), -0.4, 1e-9) << "the other's edge";
  EXPECT_NEAR(offset({5.6, 80, 0.2, 0.2}).x(), 0.5, 1e-9) << "the fold";
  EXPECT_NEAR(offset({39.5, 10.3, 10, 9.4}).x(), 0.5, 1e-9) << "between both";
  EXPECT_NEAR(offset({100.7, 11, 10, 8}).x(), -0.7, 1e-9) << "as far as they are apart";
  EXPECT_EQ(offset({39, 40, 4, 4}), QPointF(0, 0)) << "out of reach";
  EXPECT_NEAR(offset({30, 40, 59.5, 7}, Zone{.right = true}).x(), 0, 1e-9);
  EXPECT_NEAR(offset({33, 40, 27.4, 7}, Zone{.right = true}).x(), -0.4, 1e-9) << "only the edge that moves";
  EXPECT_FALSE(SnapOf({0.6, 50, 8, 8}, {}, ground).guides.empty());
}

TEST(BackgroundList, RefusesNamesAndFollowsWhatIsRemoved) {
  std::vector<ArtworkBackground> stored = {{0xFFFFFF, 0xFFFFFF, 0, "Weiß Uni"}};
  bool works = true;
  BackgroundList list({.load = [&] { return stored; },
                       .save =
                           [&](const std::vector<ArtworkBackground>& all) {
                             if (works) stored = all;
                             return works ? Outcome::Success : Outcome::WriteFailed;
                           }});
  EXPECT_EQ(list.ProposedName(), "Neu 0001");
  EXPECT_EQ(list.Refusal(" "), texts::BackgroundNameMissing);
  EXPECT_EQ(list.Refusal("weiß uni"), texts::BackgroundNameTaken);
  EXPECT_EQ(list.Add({1, 2, 3, "Neu 0001"}), 1U);
  EXPECT_EQ(list.ProposedName(), "Neu 0002");
  EXPECT_EQ(list.FindOrAdd({1, 2, 3, "anders"}), 1U) << "it looks the same";
  EXPECT_EQ(list.FindOrAdd({1, 2, 2, "Neu 0001"}), 2U);
  EXPECT_EQ(stored[2].name, "Neu 0002") << "the name was taken";
  works = false;
  EXPECT_EQ(list.Add({}), std::nullopt);
  EXPECT_FALSE(list.Remove(0));
  EXPECT_EQ(list.All().size(), 3U);
  works = true;
  ArtworkLayout layout = LayoutOf({{}, {}, {}});
  for (int i = 0; i < 3; ++i)
    std::get<TextField>(layout.elements[static_cast<std::size_t>(i)].content).fill.background = i;
  list.onRemoved = [&](std::size_t removed) {
    MapBackgrounds(layout, [&](std::int32_t index) { return IndexWithout(index, removed); });
  };
  EXPECT_TRUE(list.Remove(1));
  std::vector<int> indices;
  for (const auto& e : layout.elements) indices.push_back(std::get<TextField>(e.content).fill.background);
  EXPECT_THAT(indices, ElementsAre(0, 0, 1));
  EXPECT_TRUE(list.Remove(1));
  EXPECT_FALSE(list.Remove(0)) << "there is always one";
}

class Filled : public testing::Test {
 protected:
  static void SetUpTestSuite() { PrepareDrawing(); }
  static TextField FilledField(const std::string& text, const DiscFacts& facts) {
    ArtworkLayout layout = LayoutOf({{0, 0, 600, 400}});
    SetText(std::get<TextField>(layout.elements[0].content), text);
    return std::get<TextField>(FilledLayout(layout, facts).elements[0].content);
  }
  static DiscFacts Disc(int tracks) {
    DiscFacts facts{"Abend", "Chor", {}};
    for (int i = 0; i < tracks; ++i)
      facts.tracks.push_back(
          {"Lied Nummer " + std::to_string(i), i == 1 ? "Gast" : "", std::chrono::seconds(61)});
    return facts;
  }
};

TEST_F(Filled, FieldsComeFromTheDiscAndTextsWithoutStay) {
  EXPECT_EQ(FilledField("{Titel} – {Interpret}, {Spielzeit}", Disc(60)).text,
            kFitMark + "Abend – Chor, 1:01:00");
  EXPECT_EQ(FilledField("Liste:\n{Titelliste}", Disc(2)).text,
            "Liste:\n1  Lied Nummer 0  1:01\n2  Lied Nummer 1 – Gast  1:01");
  EXPECT_EQ(FilledField("{Titel}", {}).text, kFitMark + "{Titel}");
  EXPECT_EQ(FilledField("{Anderes}", Disc(1)).text, kFitMark + "{Anderes}");
}

TEST_F(Filled, AListStaysInItsFieldHoweverLongItIs) {
  for (const int tracks : {1, 7, 30, 99}) {
    const TextField field = FilledField(" {Titelliste} ", Disc(tracks));
    const QRectF rect(1000, 500, 6000, 4000);  // hundredths of a millimetre
    const TextPlan plan = PlanText(field, rect, 100);
    ASSERT_EQ(plan.runs.size(), 3U * static_cast<std::size_t>(tracks));
    const QFontMetricsF metrics(plan.font);
    std::set<double> columns;
    for (const TextRun& run : plan.runs) {
      const QRectF box = plan.transform.mapRect(
          QRectF(run.baseline - QPointF(0, metrics.ascent()),
                 QSizeF(metrics.horizontalAdvance(run.text), metrics.ascent() + metrics.descent())));
      EXPECT_TRUE(rect.adjusted(99, 99, -99, -99).contains(box)) << tracks << ": " << run.text.toStdString();
      if (run.text.startsWith("Lied")) columns.insert(std::round(run.baseline.x()));
    }
    EXPECT_EQ(columns.size() > 1, tracks > 20) << tracks;
  }
}

TEST_F(Filled, ALongTitleShrinksToItsField) {
  DiscFacts facts = Disc(1);
  facts.title = std::string(120, 'W');
  TextField field = FilledField("{Titel}", facts);
  field.spaceMode = SpaceMode::Vertical;
  const TextPlan plan = PlanText(field, QRectF(0, 0, 6000, 4000), 0);
  const double width = QFontMetricsF(plan.font).horizontalAdvance(plan.runs.front().text);
  EXPECT_NEAR(plan.transform.map(QPointF(width, 0)).x() - plan.transform.map(QPointF(0, 0)).x(), 6000, 60);
}

TEST(Templates, EveryShippedLayoutIsWhole) {
  const std::vector<Template> templates = LoadTemplates(TemplateDirectory());
  ASSERT_GE(templates.size(), 8U);
  PrepareDrawing();
  std::vector<ArtworkBackground> stored = {{0x123456, 0, 0, "Eigener"}};
  BackgroundList list({.load = [&] { return stored; },
                       .save =
                           [&](const std::vector<ArtworkBackground>& all) {
                             stored = all;
                             return Outcome::Success;
                           }});
  for (const Template& row : templates) {
    const auto adopted = AdoptTemplate(row, list);
    ASSERT_TRUE(adopted) << row.name;
    for (const ArtworkElement& element : adopted->elements) {
      const auto* const image = std::get_if<Image>(&element.content);
      EXPECT_TRUE(image == nullptr || !Pictures::SizeOf(image->file).isEmpty()) << row.name;
      EXPECT_TRUE(image == nullptr || image->fill.background == kNoGround) << row.name;
    }
    EXPECT_TRUE(LayoutFromRecord(LayoutRecord(*adopted))) << row.name;
  }
  EXPECT_LT(stored.size(), 20U);
}

TEST(KeptPictures, AreNamedByTheirContentAndGoWithTheLayout) {
  const test::TemporaryDirectory directory;
  QImage picture(20, 10, QImage::Format_RGB32);
  picture.fill(Qt::red);
  const auto first = KeepPicture(picture, directory.File("a"));
  ASSERT_TRUE(first);
  EXPECT_EQ(KeepPicture(picture, directory.File("a")), first) << "kept once";
  picture.fill(Qt::blue);
  EXPECT_NE(KeepPicture(picture, directory.File("a")), first);
  EXPECT_FALSE(KeepPicture(QImage(), directory.File("a")));
  directory.Write("file", "x");
  EXPECT_FALSE(KeepPicture(picture, directory.File("file")));

  // The folder may have moved, and come from a machine with drives.
  for (const char* const name : {"file", "/anderswo/file", "q:\\Bilder\\FILE"})
    EXPECT_EQ(FindPicture(name, directory.Path()), directory.File("file")) << name;
  for (const char* const name : {"/anderswo/fehlt", "q:\\Bilder\\fehlt"})
    EXPECT_EQ(FindPicture(name, directory.Path()), name) << "nothing is found";
}

}  // namespace
}  // namespace ts5::artworker
