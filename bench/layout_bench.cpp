// Layouts: a booklet of fifty elements with five pictures of twelve megapixels, drawn as the editor draws it,
// and printed with label and inlay; steps back over two hundred elements.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <QImage>
#include <QPainter>
#include <cstdint>
#include <filesystem>
#include <random>
#include <string>

#include "artworker/layout_editor.h"
#include "artworker/layout_file.h"
#include "artworker/object_painter.h"
#include "artworker/pages.h"
#include "artworker/print_run.h"
#include "artworker/sheet_painter.h"

namespace ts5::artworker {
namespace {

constexpr double kScreenScale = 96 / 25.4;  // pixels per millimetre at zoom 1
constexpr int kPictures = 5;

// Photographs: soft shapes with grain, 4000 x 3000.
class Photographs {
 public:
  Photographs() {
    PrepareDrawing();
    std::filesystem::create_directories(directory_);
    std::minstd_rand random(1);
    for (int i = 0; i < kPictures; ++i) {
      QImage image(4000, 3000, QImage::Format_RGB32);
      for (int y = 0; y < image.height(); ++y) {
        auto* const line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x) {
          const int grain = static_cast<int>(random() % 24);
          line[x] = qRgb((x / 20 + i * 40) % 200 + grain, (y / 15) % 200 + grain, (x + y) / 40 % 200 + grain);
        }
      }
      (void)image.save(QString::fromStdString(Name(i)), "JPEG", 90);
      bytes_ += std::filesystem::file_size(Name(i));
    }
  }
  ~Photographs() { std::filesystem::remove_all(directory_); }
  Photographs(const Photographs&) = delete;
  Photographs& operator=(const Photographs&) = delete;

  [[nodiscard]] std::string Name(int index) const {
    return (directory_ / (std::to_string(index % kPictures) + ".jpg")).string();
  }
  [[nodiscard]] std::uint64_t Bytes() const { return bytes_; }
  [[nodiscard]] std::string File(const char* name) const { return (directory_ / name).string(); }

 private:
  std::filesystem::path directory_ =
      std::filesystem::temp_directory_path() / ("ts5-layout-bench-" + std::to_string(getpid()));
  std::uint64_t bytes_ = 0;
};

const Photographs& Photos() {
  static const Photographs photographs;
  return photographs;
}

const std::vector<ArtworkBackground>& Grounds() {
  static const std::vector<ArtworkBackground> grounds{{0xFFFFFF, 0xFFFFFF, 0, "Weiß"},
                                                      {0x7A4E1D, 0xF7D38F, 3, "Morgen"}};
  return grounds;
}

// Elements in a grid: texts, ellipses, and the pictures among the first.
ArtworkLayout Crowded(int elements, ArtworkObjectId id) {
  ArtworkLayout layout = NewLayout();
  for (int i = 0; i < elements; ++i) {
    ArtworkElement element;
    element.object = id;
    const int left = i % 10 * 230 + 20;
    const int top = i / 10 % 5 * 220 + 20;
    element.box = {left, top, left + 300, top + 200};
    element.borderWidth = 3;
    if (i % 10 == 4) {
      element.content = Image{{20, 0}, 0, Photos().Name(i / 10)};
    } else if (i % 3 == 0) {
      element.content = Ellipse{{40, 1}};
      element.roundCorners = true;
    } else {
      TextField field;
      SetText(field, "Abendlied Nummer " + std::to_string(i));
      field.fill = {30, 1};
      element.content = field;
    }
    layout.elements.push_back(std::move(element));
  }
  return layout;
}

void Paint(QImage& screen, const ArtworkLayout& layout, Pictures& pictures, bool draft) {
  QPainter painter(&screen);
  painter.scale(kScreenScale, kScreenScale);
  RenderObject(
      painter,
      {.layout = layout, .backgrounds = Grounds(), .pictures = pictures, .boundary = false, .draft = draft},
      ArtworkObjectId::Booklet);
}

// An element moves with every iteration: after a change (0), while it is dragged (1).
void Redraw(benchmark::State& state) {
  ArtworkLayout layout = Crowded(50, ArtworkObjectId::Booklet);
  Pictures pictures;
  QImage screen((QSizeF(242, 120) * kScreenScale).toSize(), QImage::Format_RGB32);
  Paint(screen, layout, pictures, false);  // the pictures are read
  for (auto _ : state) {
    for (const std::size_t moved : {std::size_t{4}, std::size_t{7}}) {
      layout.elements[moved].box.left += 1;
      layout.elements[moved].box.right += 1;
    }
    Paint(screen, layout, pictures, state.range(0) == 1);
  }
}
BENCHMARK(Redraw)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

// What it costs to see the pictures for the first time.
void FirstSight(benchmark::State& state) {
  const ArtworkLayout layout = Crowded(50, ArtworkObjectId::Booklet);
  QImage screen((QSizeF(242, 120) * kScreenScale).toSize(), QImage::Format_RGB32);
  for (auto _ : state) {
    Pictures pictures;
    Paint(screen, layout, pictures, false);
  }
}
BENCHMARK(FirstSight)->Unit(benchmark::kMillisecond);

void ThreePages(benchmark::State& state) {
  ArtworkLayout layout = NewLayout();
  for (const ArtworkObjectId id : kObjectIds) {
    ArtworkLayout one = Crowded(50, id);
    layout.elements.insert(layout.elements.end(), one.elements.begin(), one.elements.end());
  }
  const std::string path = Photos().File("seiten.pdf");
  for (auto _ : state) {
    Pictures pictures;
    auto file = StagedFile::Create(path);
    if (!file) return state.SkipWithError("no file");
    PdfDocument document(*file, "Bench");
    for (const ArtworkObjectId id : kObjectIds) {
      if (!document.BeginPage(layout.Object(id).sheet, {})) return state.SkipWithError("no page");
      PaintPlaced(document.Page(), {layout, Grounds(), pictures, true, kPicturesDpi}, {id, QPointF(20, 20)});
    }
    if (Failed(document.Finish()) || Failed(file->Commit())) return state.SkipWithError("not written");
  }
  state.counters["of the pictures' bytes"] =
      static_cast<double>(std::filesystem::file_size(path)) / static_cast<double>(Photos().Bytes());
}
BENCHMARK(ThreePages)->Unit(benchmark::kMillisecond);

void UndoAndRedo(benchmark::State& state) {
  LayoutEditor editor(Crowded(200, ArtworkObjectId::Booklet), 50);
  for (int i = 0; i < 50; ++i)
    editor.Apply([i](ArtworkLayout& layout, Selection&) {
      layout.elements[static_cast<std::size_t>(i)].box.left += 5;
    });
  for (auto _ : state) {
    benchmark::DoNotOptimize(editor.Undo());
    benchmark::DoNotOptimize(editor.Redo());
  }
}
BENCHMARK(UndoAndRedo)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace ts5::artworker
