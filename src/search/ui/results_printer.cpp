#include "search/ui/results_printer.h"

#include <QFontMetricsF>
#include <QPagedPaintDevice>
#include <QPainter>
#include <algorithm>
#include <array>

#include "frame/ui/qt_text.h"
#include "platform/base/casts.h"
#include "platform/base/text.h"
#include "search/hit_texts.h"
#include "search/texts.h"
#include "search/ui/melody_painter.h"

namespace ts5 {
namespace {

const QString kFamily = QStringLiteral("Arial");
constexpr int kTextPoints = 10;
constexpr int kTitlePoints = 13;
// Where the columns begin, in parts of the page's width; the first one is for the file.
constexpr std::array kColumns = {0.0, 0.58, 0.74, 0.87};
constexpr int kTextColumns = 82;     // of a result file
constexpr int kTextHeadLines = 2;    // the name and the page number
constexpr int kFooterLines = 5;      // the rule, the ending and three counts
constexpr int kMelodyLines = 5;      // the notes of the melody, over the first hit
constexpr int kMusicLines = 4;       // of a hit with its bars
constexpr double kMusicLeft = 0.42;  // where they begin, in parts of the page's width

QFont PrintFont(const QString& family, double points, QFont::Weight weight, const QPaintDevice& device) {
  QFont font(family);
  font.setPixelSize(std::max(1, static_cast<int>(points * device.logicalDpiY() / 72)));
  font.setWeight(weight);
  return font;
}

// The drawing of one page after another, as far as the job goes.
template <typename DrawPage>
Printed DrawPages(QPagedPaintDevice& device, QPainter& painter, int pages, const PrintJob& job,
                  DrawPage drawPage) {
  for (int number = 1; number <= std::min(pages, job.mostPages); ++number) {
    if (job.proceed && !job.proceed(number, pages)) return Printed::Aborted;
    if (number > 1 && !device.newPage()) return Printed::Failed;
    drawPage(number);
  }
  return painter.end() ? Printed::Done : Printed::Failed;
}

// The page in device pixels: how many lines fit, and where they stand.
class Page {
 public:
  Page(QPainter& painter, const QPaintDevice& device)
      : painter_(painter),
        title_(PrintFont(kFamily, kTitlePoints, QFont::DemiBold, device)),
        text_(PrintFont(kFamily, kTextPoints, QFont::Normal, device)),
        titleMetrics_(title_, &device),
        metrics_(text_, &device),
        width_(device.width()),
        height_(device.height()) {
    painter_.setPen(QPen(Qt::black, std::max(1.0, device.logicalDpiY() / 144.0)));
  }

  [[nodiscard]] double LineHeight() const { return metrics_.lineSpacing() * 1.25; }
  [[nodiscard]] double HeadHeight() const { return titleMetrics_.lineSpacing() * 1.5 + 3 * LineHeight(); }
  [[nodiscard]] int Lines() const {
    return std::max(1, static_cast<int>((height_ - HeadHeight()) / LineHeight()));
  }

  void Head(const SearchRecord& record, int number) {
    painter_.setFont(title_);
    Draw(0, 0, width_, QtText(texts::PrintJobName), Qt::AlignLeft);
    painter_.setFont(text_);
    Draw(0, 0, width_, ToQt(Format(Text(texts::PrintPage), number)), Qt::AlignRight);
    const double second = titleMetrics_.lineSpacing() * 1.5;
    if (number == 1) Draw(0, second, width_, ToQt(ResultTitle(record)), Qt::AlignLeft);
    Draw(0, second + LineHeight(), width_, ToQt(ResultDate(record)), Qt::AlignLeft);
    Rule(second + 2.5 * LineHeight());
  }
  void Row(int line, const HitRow& row) {
    for (std::size_t column = 0; column < row.size(); ++column) {
      const double left = kColumns[column] * width_;
      const double right = column + 1 < row.size() ? kColumns[column + 1] * width_ : width_;
      const double width = right - left - metrics_.averageCharWidth();
      Draw(left, LineTop(line), width, metrics_.elidedText(ToQt(row[column]), Qt::ElideMiddle, width),
           Qt::AlignLeft);
    }
  }
  void Melody(const SearchRecord& record) {
    PaintMelody(painter_, QRectF(0, LineTop(0), width_, (kMelodyLines - 1) * LineHeight()), record.melody,
                record.clef);
  }
  // The texts below each other, the notes beside them.
  void RowWithMusic(int line, const HitRow& row, const SearchHit& hit, std::size_t notes,
                    const HitPainter& music) {
    const double width = kMusicLeft * width_ - metrics_.averageCharWidth();
    const QString place = ToQt(row[1] + ", " + row[2]);
    const QString texts[] = {ToQt(row[0]), place, ToQt(row[3])};
    for (int i = 0; i < 3; ++i)
      Draw(0, LineTop(line + i), width, metrics_.elidedText(texts[i], Qt::ElideMiddle, width), Qt::AlignLeft);
    music(painter_,
          QRectF(kMusicLeft * width_, LineTop(line), (1 - kMusicLeft) * width_,
                 (kMusicLines - 0.4) * LineHeight()),
          hit, notes);
  }
  void Footer(int line, const SearchRecord& record) {
    Rule(LineTop(line) + LineHeight() / 2.0);
    Draw(0, LineTop(++line), width_, ToQt(ResultEnding(record)), Qt::AlignLeft);
    const QString statistics = QtText(texts::ResultStatistics);
    const double indent = metrics_.horizontalAdvance(statistics);
    Draw(0, LineTop(line + 1), width_, statistics, Qt::AlignLeft);
    for (const std::string& count : ResultCounts(record))
      Draw(indent, LineTop(++line), width_ - indent, ToQt(count), Qt::AlignLeft);
  }

 private:
  [[nodiscard]] double LineTop(int line) const { return HeadHeight() + line * LineHeight(); }
  void Draw(double x, double y, double width, const QString& text, Qt::Alignment alignment) {
    painter_.drawText(QRectF(x, y, width, LineHeight() * 2.0),
                      int(alignment | Qt::AlignTop) | Qt::TextSingleLine, text);
  }
  void Rule(double y) { painter_.drawLine(QPointF(0, y), QPointF(width_, y)); }

  QPainter& painter_;
  QFont title_;
  QFont text_;
  QFontMetricsF titleMetrics_;
  QFontMetricsF metrics_;
  double width_;
  double height_;
};

}  // namespace

Printed PrintResults(const SearchResults& results, bool wholePaths, QPagedPaintDevice& device,
                     const PrintJob& job, const HitPainter& music) {
  QPainter painter;
  if (!painter.begin(&device)) return Printed::Failed;
  Page page(painter, device);
  const SearchRecord& record = results.Record();
  const auto rows = static_cast<int>(results.Size());
  const int high = music ? kMusicLines : 1;  // lines of a row
  const int melody = record.melody.empty() ? 0 : kMelodyLines;
  const int onFirst = std::max(1, (page.Lines() - melody) / high);
  const int perPage = std::max(1, page.Lines() / high);
  const int full = rows <= onFirst ? 1 : 1 + (rows - onFirst + perPage - 1) / perPage;
  const auto firstRow = [&](int number) { return number == 1 ? 0 : onFirst + (number - 2) * perPage; };
  // The foot stays together: where too little room is left, it begins a page of its own.
  const int used = (full == 1 ? melody : 0) + (rows - firstRow(full)) * high;
  const bool ownPage = rows > 0 && used + kFooterLines > page.Lines();
  const int pages = full + (ownPage ? 1 : 0);
  return DrawPages(device, painter, pages, job, [&](int number) {
    page.Head(record, number);
    if (number == 1 && melody > 0) page.Melody(record);
    const int first = firstRow(number);
    const int count = std::clamp(rows - first, 0, number == 1 ? onFirst : perPage);
    int line = number == 1 ? melody : 0;
    for (int i = 0; i < count; ++i, line += high) {
      const auto index = static_cast<std::size_t>(first + i);
      const SearchHit hit = results.Hit(index);
      const HitRow row = PrintedHit(record.kind, hit, wholePaths);
      if (music) {
        page.RowWithMusic(line, row, hit, results.Notes(index), music);
      } else {
        page.Row(line, row);
      }
    }
    if (number == pages) page.Footer(line, record);
  });
}

Printed PrintResultLines(const QString& title, const ResultLines& lines, QPagedPaintDevice& device,
                         const PrintJob& job) {
  QPainter painter;
  if (!painter.begin(&device)) return Printed::Failed;
  QFont font = PrintFont(QStringLiteral("Courier New"), kTextPoints, QFont::Normal, device);
  font.setStyleHint(QFont::TypeWriter);
  // So large that the longest usual line fits the page.
  const double fit =
      device.width() / QFontMetricsF(font, &device).horizontalAdvance(QString(kTextColumns, '0'));
  font.setPixelSize(std::max(1, static_cast<int>(font.pixelSize() * std::min(1.0, fit))));
  const QFontMetricsF metrics(font, &device);
  painter.setFont(font);

  const auto count = ClampTo<int>(lines.count);
  const int perPage = std::max(1, static_cast<int>(device.height() / metrics.lineSpacing()) - kTextHeadLines);
  const int pages = std::max(1, (count + perPage - 1) / perPage);
  return DrawPages(device, painter, pages, job, [&](int number) {
    const QString page = ToQt(Format(Text(texts::PrintPage), number));
    const double left = device.width() - metrics.horizontalAdvance(page);
    painter.drawText(QPointF(0, metrics.ascent()),
                     metrics.elidedText(title, Qt::ElideMiddle, left - metrics.averageCharWidth()));
    painter.drawText(QPointF(left, metrics.ascent()), page);
    const int first = (number - 1) * perPage;
    for (int line = first; line < std::min(first + perPage, count); ++line) {
      const double y = (line - first + kTextHeadLines) * metrics.lineSpacing() + metrics.ascent();
      painter.drawText(QPointF(0, y), ToQt(lines.line(static_cast<std::size_t>(line))));
    }
  });
}

}  // namespace ts5
