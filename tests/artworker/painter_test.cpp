#include <gmock/gmock.h>

#include <QFile>
#include <QImage>
#include <algorithm>
#include <cmath>
#include <fstream>

#include "artworker/object_painter.h"
#include "artworker/pages.h"
#include "artworker/print_run.h"
#include "support/test_data.h"

namespace ts5::artworker {
namespace {

constexpr double kDpi = 254;  // ten dots to a millimetre, one to a unit of an element
constexpr QRgb kWhite = 0xFFFFFFFF;

class Painter : public testing::Test {
 protected:
  static void SetUpTestSuite() { PrepareDrawing(); }

  [[nodiscard]] QImage Drawn(ArtworkObjectId id, bool boundary = false) {
    return PictureOf({layout_, backgrounds_, pictures_, boundary}, id, kDpi);
  }
  TextField& AddText(const std::string& text, Box box) {
    TextField field;
    SetText(field, text);
    layout_.elements = {{ArtworkObjectId::Inlay, field, false, 0, 0, 0, false, box}};
    return std::get<TextField>(layout_.elements[0].content);
  }
  static TextField Filled(Fill fill) {
    TextField field;
    field.fill = fill;
    return field;
  }
  // What is not white.
  static QRect Inked(const QImage& picture) {
    QRect ink;
    for (int y = 0; y < picture.height(); ++y) {
      for (int x = 0; x < picture.width(); ++x) {
        if (picture.pixel(x, y) != kWhite) ink |= QRect(x, y, 1, 1);
      }
    }
    return ink;
  }

  ArtworkLayout layout_ = NewLayout();
  std::vector<ArtworkBackground> backgrounds_ = {{0xFFFFFF, 0xFFFFFF, 0, "w"},
                                                 {0x0000FF, 0xFF0000, 1, "h"},
                                                 {0x0000FF, 0xFF0000, 2, "v"},
                                                 {0x0000FF, 0xFF0000, 3, "d"}};
  Pictures pictures_;
};

TEST_F(Painter, LinesToFoldAndCutLieWhereTheyMust) {
  const QImage inlay = Drawn(ArtworkObjectId::Inlay, true);
  ASSERT_EQ(inlay.size(), QSize(1500, 1180));
  const auto dark = [](const QImage& picture, int x, int y) { return qGray(picture.pixel(x, y)) < 160; };
  for (const int x : {62, 1436}) EXPECT_TRUE(dark(inlay, x, 600) || dark(inlay, x + 1, 600)) << x;
  EXPECT_EQ(inlay.pixel(750, 600), kWhite);
  const QImage label = Drawn(ArtworkObjectId::Label, true);
  const int centre = label.width() / 2;
  for (int degree = 0; degree < 360; degree += 15) {
    const double angle = degree * 3.14159265 / 180;
    const auto inkAt = [&](double radius) {
      for (const double r : {radius - 1, radius, radius + 1}) {
        if (label.pixel(static_cast<int>(centre + r * std::cos(angle)),
                        static_cast<int>(centre + r * std::sin(angle))) != kWhite)
          return true;
      }
      return false;
    };
    EXPECT_TRUE(inkAt(200)) << degree;
    EXPECT_TRUE(inkAt(583.5)) << degree;
    EXPECT_FALSE(inkAt(400)) << degree;
  }
}

TEST_F(Painter, TextFillsItsFieldInEveryModeAndTurn) {
  struct Case {
    const char* text;
    SpaceMode mode;
    Turn turn;
    Box box;
    double width;   // of the ink, in parts of the field; 0: not asked
    double height;  // likewise
  };
  for (const Case& c :
       {Case{"HHHH", SpaceMode::Horizontal, Turn::None, {100, 100, 1100, 1000}, 0.95, 0},
        Case{"HHHH", SpaceMode::Horizontal, Turn::Quarter, {100, 100, 700, 900}, 0, 0.95},
        Case{"HHHHHHHH", SpaceMode::Whole, Turn::None, {100, 100, 1400, 200}, 0.97, 0.55},
        Case{"HHHHHHHH", SpaceMode::Whole, Turn::ThreeQuarters, {100, 50, 200, 1150}, 0.55, 0.97},
        Case{"HH\nHHHHHHHHHH", SpaceMode::Vertical, Turn::None, {100, 100, 400, 1000}, 0.95, 0}}) {
    TextField& field = AddText(c.text, c.box);
    field.spaceMode = c.mode;
    field.orientation = c.turn;
    const QRect ink = Inked(Drawn(ArtworkObjectId::Inlay));
    const double width = c.box.right - c.box.left;
    const double height = c.box.bottom - c.box.top;
    if (c.width > 0) {
      EXPECT_NEAR(ink.width() / width, 1, 1.02 - c.width) << c.text << static_cast<int>(c.turn);
    }
    if (c.height > 0) {
      EXPECT_NEAR(ink.height() / height, 1, 1.02 - c.height) << c.text << static_cast<int>(c.turn);
    }
    EXPECT_TRUE(
        QRect(c.box.left - 2, c.box.top - 2, static_cast<int>(width) + 4, static_cast<int>(height) + 4)
            .contains(ink))
        << c.text;
  }
}

TEST_F(Painter, PlacementsHoldOnThePageWhateverTheTurn) {
  for (const Turn turn : {Turn::None, Turn::Quarter, Turn::Half, Turn::ThreeQuarters}) {
    TextField& field = AddText("H", {100, 100, 1100, 1000});
    field.fixedFont = true;
    field.orientation = turn;
    field.horizontal = Across::Right;
    field.vertical = Down::Top;
    const QRect ink = Inked(Drawn(ArtworkObjectId::Inlay));
    EXPECT_GT(ink.center().x(), 1040) << static_cast<int>(turn);
    EXPECT_LT(ink.center().y(), 160) << static_cast<int>(turn);
  }
}

TEST_F(Painter, GradientsRunFromTheFirstColourToTheSecond) {
  struct Case {
    std::int32_t background;
    QPoint first;
    QPoint last;
  };
  for (const Case& c :
       {Case{1, {302, 500}, {697, 500}}, Case{2, {500, 402}, {500, 797}}, Case{3, {302, 402}, {697, 797}}}) {
    layout_.elements = {
        {ArtworkObjectId::Inlay, Image{{0, 0}, 0, "/fehlt"}, false, 0, 0, 0, false, {}},
        {ArtworkObjectId::Inlay, Filled({0, c.background}), false, 0, 0, 0, false, {300, 400, 700, 800}}};
    const QImage picture = Drawn(ArtworkObjectId::Inlay);
    const QColor first = picture.pixelColor(c.first);
    const QColor last = picture.pixelColor(c.last);
    EXPECT_TRUE(first.red() > 245 && first.blue() < 10) << c.background;
    EXPECT_TRUE(last.red() < 10 && last.blue() > 245) << c.background;
  }
  // A background of 30 per cent is seen as 70.
  backgrounds_[0] = {0x000000, 0x000000, 0, "s"};
  layout_.elements = {{ArtworkObjectId::Inlay, Filled({30, 0}), false, 0, 0, 0, false, {300, 400, 700, 800}}};
  EXPECT_NEAR(Drawn(ArtworkObjectId::Inlay).pixelColor(500, 600).red(), 0.3 * 255, 2);
}

TEST_F(Painter, PicturesAreMirroredAndMissingOnesAreNamed) {
  const test::TemporaryDirectory directory;
  QImage half(100, 50, QImage::Format_RGB32);
  half.fill(Qt::white);
  for (int y = 0; y < 50; ++y) half.setPixel(10, y, 0xFF000000);
  const std::string file = directory.File("b.png");
  ASSERT_TRUE(half.save(QString::fromStdString(file)));
  const auto ink = [&](const std::string& name, std::int32_t mirror) {
    layout_.elements = {
        {ArtworkObjectId::Inlay, Image{{0, 0}, mirror, name}, false, 0, 0, 0, false, {0, 0, 1000, 500}}};
    return Inked(Drawn(ArtworkObjectId::Inlay));
  };
  EXPECT_NEAR(ink(file, 0).center().x(), 105, 8);
  EXPECT_NEAR(ink(file, kMirrorHorizontal).center().x(), 895, 8);
  EXPECT_TRUE(QRect(0, 0, 1000, 500).contains(ink(directory.File("fehlt.png"), 0)));

  // Through a picture what lies below is seen, unless it has a background of its own.
  QImage clear(2, 2, QImage::Format_ARGB32);
  clear.fill(Qt::transparent);
  const std::string glass = directory.File("glas.png");
  ASSERT_TRUE(clear.save(QString::fromStdString(glass)));
  const auto seen = [&](std::int32_t background) {
    layout_.elements = {
        {ArtworkObjectId::Inlay, Filled({0, 1}), false, 0, 0, 0, false, {0, 0, 1000, 500}},
        {ArtworkObjectId::Inlay, Image{{0, background}, 0, glass}, false, 0, 0, 0, false, {0, 0, 1000, 500}}};
    return Drawn(ArtworkObjectId::Inlay).pixelColor(990, 5);
  };
  EXPECT_GT(seen(kNoGround).blue(), 245) << "the end of what runs across below it";
  EXPECT_GT(seen(2).red(), 240) << "the start of its own, which runs down";

  // A drawing that names another file is none to be shown.
  const auto drawing = [&](const std::string& body) {
    const std::string path = directory.File("z.svg");
    std::ofstream(path) << "<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'>" << body
                        << "</svg>";
    return Pictures::SizeOf(path);
  };
  EXPECT_TRUE(drawing("<image href='" + file + "' width='9' height='9'/>").isEmpty());
  EXPECT_TRUE(drawing("<rect style='fill:url(" + file + ")'/>").isEmpty());
  const auto inside = [](const QByteArray& bytes) {
    return "<image href='data:image/png;base64," + bytes.toBase64().toStdString() +
           "' width='9' height='9'/>";
  };
  EXPECT_TRUE(
      drawing(inside("<svg xmlns='http://www.w3.org/2000/svg'><image href='/etc/x.png'/></svg>")).isEmpty())
      << "nor is one inside of it";
  QFile picture(QString::fromStdString(file));
  ASSERT_TRUE(picture.open(QIODevice::ReadOnly));
  const QByteArray whole = picture.readAll();
  EXPECT_EQ(drawing(inside(whole)), QSize(9, 9));

  // One that breaks off, is damaged, or lies about its size is none either.
  const auto sizeOf = [&](QByteArray bytes) {
    return Pictures::SizeOf(directory.Write("p.png", bytes.toStdString()));
  };
  EXPECT_EQ(sizeOf(whole), QSize(100, 50));
  EXPECT_TRUE(sizeOf(whole.first(whole.size() / 2)).isEmpty());
  EXPECT_TRUE(sizeOf(QByteArray(whole).replace("IDAT", "IDAU")).isEmpty());
  EXPECT_TRUE(sizeOf(QByteArray(whole).replace(16, 4, "\x7F\xFF\xFF\xFF")).isEmpty());
}

TEST_F(Painter, ADrawingStaysOneInADocument) {
  const test::TemporaryDirectory directory;
  const std::string file = directory.File("z.svg");
  std::ofstream(file) << "<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'><circle r='4'/></svg>";
  const auto keepsLines = [&](std::int32_t transparency) {
    layout_.elements = {
        {ArtworkObjectId::Inlay, Image{{transparency, 0}, 0, file}, false, 0, 0, 0, false, {0, 0, 900, 900}}};
    const std::string path = directory.File("z.pdf");
    auto staged = StagedFile::Create(path);
    EXPECT_TRUE(staged);
    PdfDocument document(*staged, "z");
    EXPECT_TRUE(document.BeginPage({210, 297}, {}));
    RenderObject(document.Page(), {layout_, backgrounds_, pictures_, false, kPicturesDpi},
                 ArtworkObjectId::Inlay);
    EXPECT_EQ(document.Finish(), Outcome::Success);
    EXPECT_EQ(staged->Commit(), Outcome::Success);
    return test::Content(path).find("/Subtype /Image") == std::string::npos;
  };
  EXPECT_TRUE(keepsLines(0));
  EXPECT_FALSE(keepsLines(40)) << "what is below shines through all of it alike";
}

TEST_F(Painter, ObjectsOfOtherSizesScaleTheirElements) {
  ArtworkElement element{ArtworkObjectId::Label, Ellipse{}, false, 0, 0, 0, false, {0, 0, 1170, 1170}};
  ArtworkObject& label = layout_.Object(ArtworkObjectId::Label);
  label.size = {80, 20};
  EXPECT_EQ(PlaceOf(element, label), QRectF(0, 0, 80, 80));
  element.box = {485, 234, 685, 351};
  EXPECT_NEAR(PlaceOf(element, label).center().x(), 40, 1e-9)
      << "what is in the middle of a disc stays there";
  EXPECT_NEAR(PlaceOf(element, label).top(), 16, 1e-9);
  // Of the others a distance from the edge grows by its part of what the side has more.
  element.object = ArtworkObjectId::Inlay;
  ArtworkObject& inlay = layout_.Object(ArtworkObjectId::Inlay);
  inlay.size = {160, 118};
  element.box = {480, 100, 630, 200};
  EXPECT_EQ(PlaceOf(element, inlay), QRectF(48 + 10 / (160 / 48.0), 10, 16, 10));
  EXPECT_EQ(PageOf({297, 210}).orientation(), QPageLayout::Landscape);  // the sides count
}

}  // namespace
}  // namespace ts5::artworker
