// Pages of scores as pictures, to be looked at: score_pictures DIRECTORY FILE...
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <cstdio>

#include "converters/score_formats.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"
#include "preview/score_pages.h"
#include "preview/ui/sketch_painter.h"

int main(int argc, char** argv) {
  QGuiApplication application(argc, argv);
  constexpr double kPixels = 8;  // of a space
  for (int i = 2; i < argc; ++i) {
    const auto file = ts5::ReadFile(argv[i]);
    auto score = file ? ts5::ReadAnyScore(*file) : ts5::ScoreResult<ts5::ScoreWithLosses>();
    if (!file || !score) {
      std::fprintf(stderr, "%s cannot be read\n", argv[i]);
      return 1;
    }
    const ts5::preview::ScorePages pages(std::move(score->document));
    for (std::size_t page = 0; page < pages.Count() && page < 3; ++page) {
      QImage image(static_cast<int>(pages.Size().width * kPixels),
                   static_cast<int>(pages.Size().height * kPixels), QImage::Format_RGB32);
      image.fill(Qt::white);
      QPainter painter(&image);
      painter.setRenderHint(QPainter::Antialiasing);
      painter.scale(kPixels, kPixels);
      ts5::preview::PaintSketch(painter, pages.Draw(page), Qt::black);
      painter.end();
      const std::string name(ts5::FileNameOf(argv[i]));
      image.save(QString::fromStdString(std::string(argv[1]) + "/" + name + "-" + std::to_string(page + 1) +
                                        ".png"));
    }
  }
  return 0;
}
