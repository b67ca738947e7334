// What comes on which sheet, where marks stand, and how a printer is fitted.
#include <gmock/gmock.h>

#include <QImage>
#include <QPainter>
#include <cmath>

#include "artworker/element_places.h"
#include "artworker/print_run.h"
#include "artworker/printer_fit.h"
#include "artworker/printers.h"
#include "artworker/sheet_painter.h"
#include "artworker/sheet_plan.h"

namespace ts5::artworker {
namespace {

using Id = ArtworkObjectId;
using testing::ElementsAre;

std::vector<QPointF> Middles(const Sheet& sheet, const ArtworkLayout& layout) {
  std::vector<QPointF> middles;
  for (const PlacedObject& placed : sheet.objects) middles.push_back(RectOf(layout, placed).center());
  return middles;
}

TEST(Sheets, EveryObjectHasItsOwnUnlessTheyShare) {
  ArtworkerParameters parameters;
  const SheetPlan alone = PlanSheets(parameters);
  ASSERT_EQ(alone.sheets.size(), 3U);
  for (const std::size_t upright : {0U, 1U})
    EXPECT_THAT(Middles(alone.sheets[upright], parameters.layout), ElementsAre(QPointF(105, 148)));
  EXPECT_THAT(Middles(alone.sheets[2], parameters.layout), ElementsAre(QPointF(148, 105)));

  parameters.shareSheet = true;
  const SheetPlan shared = PlanSheets(parameters);
  ASSERT_EQ(shared.sheets.size(), 2U);
  const Sheet& both = shared.sheets[1];
  EXPECT_EQ(both.size, (Size{210, 297}));
  ASSERT_EQ(both.objects.size(), 2U);
  const QRectF inlay = RectOf(parameters.layout, both.objects[0]);
  const QRectF front = RectOf(parameters.layout, both.objects[1]);
  EXPECT_TRUE(both.objects[1].frontOnly);
  EXPECT_EQ(front.size(), QSizeF(121, 120));
  EXPECT_EQ(front.center().x(), 105);
  EXPECT_NEAR(front.top(), 297 - inlay.bottom(), 1e-9);
  EXPECT_NEAR(inlay.top() - front.bottom(), front.top(), 1e-9) << "the same space everywhere";

  SetPaper(parameters.layout, PaperFormat::A3);
  EXPECT_EQ(RectOf(parameters.layout, PlanSheets(parameters).sheets[1].objects[1]).width(), 242);
  SetPaper(parameters.layout, PaperFormat::A5);
  EXPECT_TRUE(PlanSheets(parameters).apart);
  EXPECT_EQ(PlanSheets(parameters).sheets.size(), 3U);
  parameters.printWhat = 4;
  EXPECT_FALSE(PlanSheets(parameters).apart) << "there is nothing to share";
}

TEST(Sheets, LabelsLieEvenlyOrInTheirDistanceAndBeginAtTheFirstFreePlace) {
  ArtworkerParameters parameters;
  parameters.printWhat = 1;
  parameters.labelGrid = {1, 2};
  const auto middles = [&] { return Middles(PlanSheets(parameters).sheets.at(0), parameters.layout); };
  EXPECT_THAT(middles(), ElementsAre(QPointF(105, 74.25), QPointF(105, 222.75)));
  parameters.labelFirst = 2;
  EXPECT_THAT(middles(), ElementsAre(QPointF(105, 222.75)));
  parameters.labelFirst = 9;
  EXPECT_THAT(middles(), ElementsAre(QPointF(105, 222.75))) << "there are two";
  parameters.labelFirst = 2;
  parameters.labelGrid = {2, 2};
  parameters.labelStep = {900, 1205};
  parameters.labelCount = 2;
  parameters.layout.Object(Id::Label).x = 60;
  parameters.layout.Object(Id::Label).y = 70;
  EXPECT_THAT(middles(), ElementsAre(QPointF(150, 70), QPointF(60, 190.5)));
}

TEST(Sheets, OneDocumentForEachPaperWhicheverWayUp) {
  ArtworkerParameters parameters;
  const auto sheets = [&] {
    std::vector<std::size_t> counts;
    for (const SheetPlan& document : ByPaper(PlanSheets(parameters)))
      counts.push_back(document.sheets.size());
    return counts;
  };
  EXPECT_THAT(sheets(), ElementsAre(3)) << "the booklet's A4 lies across";
  parameters.layout.Object(Id::Inlay).sheet = {148, 210};
  EXPECT_THAT(sheets(), ElementsAre(1, 1, 1));
  parameters.printWhat = 5;
  EXPECT_THAT(sheets(), ElementsAre(2));
}

TEST(Sheets, MarksStandBesideTheirObject) {
  constexpr double kDots = 10;  // to a millimetre
  const ArtworkLayout layout = NewLayout();
  const auto drawn = [&](const PlacedObject& placed) {
    QImage image(2100, 2970, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.scale(kDots, kDots);
    PaintMarks(painter, layout, placed);
    return image;
  };
  const auto ink = [](const QImage& image, double x, double y) {
    for (int i = -1; i <= 1; ++i) {
      for (int j = -1; j <= 1; ++j) {
        if (qGray(image.pixel(static_cast<int>(x * kDots) + i, static_cast<int>(y * kDots) + j)) < 128)
          return true;
      }
    }
    return false;
  };
  PrepareDrawing();
  const QRectF inlay(30, 40, 150, 118);
  const QImage around = drawn({Id::Inlay, inlay.topLeft()});
  EXPECT_TRUE(ink(around, 30, 36));
  EXPECT_TRUE(ink(around, 26, 40));
  EXPECT_TRUE(ink(around, 180, 162));
  EXPECT_FALSE(ink(around, 100, 36));
  bool fold = false;
  for (double y = 33.6; y < 38.4; y += 0.1) fold = fold || ink(around, 36.3, y);
  EXPECT_TRUE(fold) << "the spine";
  for (int y = 401; y < 1579; ++y) {
    for (int x = 301; x < 1799; ++x)
      ASSERT_EQ(around.pixel(x, y), qRgb(255, 255, 255)) << "on the object: " << x << ", " << y;
  }
  const QImage disc = drawn({Id::Label, {40, 40}});
  EXPECT_TRUE(ink(disc, 98.5, 98.5)) << "the middle of the hole";
  EXPECT_TRUE(ink(disc, 98.5, 36));
  // Of a front the fold is an edge to cut.
  const QImage front = drawn({Id::Booklet, {-60, 40}, true});
  EXPECT_TRUE(ink(front, 61, 36));
  EXPECT_FALSE(ink(front, 121.5, 36));
}

TEST(PrinterFit, AFittedPrinterMeetsItsPlaces) {
  struct Printer {
    double factor;
    double shift;
  };
  for (const Printer& printer : {Printer{1, 0}, Printer{0.985, 2.3}, Printer{1.012, -1.7}}) {
    PrinterFit fit{.right = 4, .down = -12, .across = 10'050, .along = 9'930};  // a wrong one, to begin with
    const auto onPaper = [&](double at, std::int32_t offset, std::int32_t scale) {
      return printer.factor * (at * scale / kFullFitScale + offset / 10.0) + printer.shift;
    };
    const CalibrationReading reading{.left = onPaper(kMarkPlace, fit.right, fit.across),
                                     .top = onPaper(kMarkPlace, fit.down, fit.along),
                                     .across = onPaper(kMarkPlace + kAcrossLine, fit.right, fit.across) -
                                               onPaper(kMarkPlace, fit.right, fit.across),
                                     .along = onPaper(kMarkPlace + kAlongLine, fit.down, fit.along) -
                                              onPaper(kMarkPlace, fit.down, fit.along)};
    const auto fitted = FitFrom(reading, fit);
    ASSERT_TRUE(fitted);
    for (const double at : {0.0, 105.0, 290.0}) {
      EXPECT_NEAR(onPaper(at, fitted->right, fitted->across), at, 0.07);
      EXPECT_NEAR(onPaper(at, fitted->down, fitted->along), at, 0.07);
    }
  }
  EXPECT_FALSE(FitFrom({.across = 0}, {}));
  EXPECT_FALSE(FitFrom({.across = 150}, {})) << "no printer errs by half";
  EXPECT_FALSE(FitFrom({.left = 80}, {}));
  EXPECT_FALSE(FitFrom({.left = std::nan("")}, {}));
}

TEST(PrinterFit, IsKeptForEachPrinterAndDamagedOnesChangeNothing) {
  auto registry = Registry::Open(kRegistryInMemory);
  ASSERT_TRUE(registry);
  const PrinterFit fit{.right = -5, .down = 12, .across = 10'020, .along = 9'990};
  ASSERT_EQ(SavePrinterFit(*registry, "Büro\\Laser", fit), Outcome::Success);
  EXPECT_EQ(LoadPrinterFit(*registry, "Büro\\Laser"), fit);
  EXPECT_EQ(LoadPrinterFit(*registry, "Laser"), PrinterFit{});
  ASSERT_EQ(SavePrinterFit(*registry, "Büro\\Laser", {}), Outcome::Success);
  EXPECT_EQ(LoadPrinterFit(*registry, "Büro\\Laser"), PrinterFit{});
  const std::string key = R"(HKLM\software\qlw\Stavora-dialog\5.0\Printers\Laser)";
  for (const char* value : {"99999999999", "9000000", "x"}) {
    RegistryValues values;
    values.SetText("Breite", value);
    ASSERT_EQ(registry->Write(key, values), Outcome::Success);
    EXPECT_EQ(LoadPrinterFit(*registry, "Laser"), PrinterFit{}) << value;
  }
}

TEST(Printers, PapersAreFoundInWhatAPrinterLists) {
  const std::string_view options =
      "Duplex/2-Sided: *None On\nPageSize/Media Size: Letter *A4 A5.Borderless\nResolution/x: A3\n";
  EXPECT_TRUE(ListsPaper(options, {297, 210}));
  EXPECT_TRUE(ListsPaper(options, {148, 210}));
  EXPECT_FALSE(ListsPaper(options, {297, 420}));
  EXPECT_FALSE(ListsPaper(options, {120, 120}));
  EXPECT_TRUE(ListsPaper("PageSize/x: A4 Custom.WIDTHxHEIGHT", {120, 120}));
  EXPECT_TRUE(ListsPaper("", {120, 120})) << "it says nothing of papers";
}

}  // namespace
}  // namespace ts5::artworker
