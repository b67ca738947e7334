#include "app/run/hit_music.h"

#include <QPainter>
#include <utility>

#include "app/texts.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"
#include "platform/files/paths.h"
#include "preview/ui/line_painter.h"

namespace ts5 {
namespace {

constexpr int kHeight = 84;
constexpr int kLeastHeight = 44;  // where the window is small
constexpr int kMargin = 4;
constexpr double kLargestSpace = 7;  // pixels

}  // namespace

struct HitMusic::Reading {
  preview::HitLines lines;  // the worker's alone
  std::atomic<std::uint64_t> wanted = 0;
};

HitMusic::HitMusic(QWidget* parent) : QWidget(parent), reading_(std::make_shared<Reading>()) {
  setObjectName("hitMusic");
  setAccessibleName(QtText(texts::HitMusicName));
  setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Maximum);
  setMinimumHeight(kLeastHeight);
  hide();
}

HitMusic::~HitMusic() {
  ++reading_->wanted;
}

QSize HitMusic::sizeHint() const {
  return {0, kHeight};
}

void HitMusic::Show(const std::optional<SearchHit>& hit, std::size_t notes) {
  if (hit == hit_) return;
  hit_ = hit;
  line_.reset();
  failed_ = false;
  setVisible(hit_.has_value());
  update();
  const std::uint64_t round = ++reading_->wanted;
  worker_.DropAll();
  if (!hit_) return;
  setAccessibleDescription(
      ToQt(Format(Text(texts::HitMusicPlace), FileNameOf(hit_->file), std::int64_t{hit_->bar} + 1)));
  worker_.Start([this, hit = *hit_, notes, round, reading = reading_]() -> BackgroundWorker::Done {
    if (reading->wanted != round) return {};
    auto line = reading->lines.Draw(hit, notes, [&] { return reading->wanted != round; });
    return [this, round, reading, line = std::move(line)] {
      if (reading->wanted != round) return;
      failed_ = !line;
      line_ = line ? std::optional(*line) : std::nullopt;
      update();
    };
  });
}

void HitMusic::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  const QRect place = rect().adjusted(kMargin, kMargin, -kMargin, -kMargin);
  painter.fillRect(rect(), palette().base());
  if (line_) {
    preview::PaintLine(painter, place, *line_, kLargestSpace, palette().color(QPalette::Text));
  } else if (failed_) {
    painter.setPen(palette().color(QPalette::PlaceholderText));
    painter.drawText(place, Qt::AlignCenter | Qt::TextWordWrap, QtText(texts::HitMusicFailed));
  }
}

}  // namespace ts5
