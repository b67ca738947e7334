#include "search/ui/results_printer.h"

#include <QFontMetrics>
#include <QPainter>
#include <QPrinter>
#include <algorithm>
#include <array>

#include "frame/ui/qt_text.h"
#include "platform/text.h"
#include "search/hit_texts.h"

namespace ts5 {
namespace {

constexpr int kTextPoints = 10;
constexpr int kTitlePoints = 13;
// Where the columns begin, in parts of the page's width; the first one is for the file.
constexpr std::array kColumns = {0.0, 0.58, 0.74, 0.87};
constexpr int kFooterLines = 5;  // the rule, the ending and three counts

QFont PrintFont(int points, QFont::Weight weight, const QPrinter& printer) {
  QFont font(QStringLiteral("Arial"));
  font.setPixelSize(std::max(1, points * printer.resolution() / 72));
  font.setWeight(weight);
  return font;
}

// The page in device pixels: how many lines fit, and where they stand.
class Page {
 public:
  Page(QPainter& painter, const QPrinter& printer)
      : painter_(painter),
        title_(PrintFont(kTitlePoints, QFont::DemiBold, printer)),
        text_(PrintFont(kTextPoints, QFont::Normal, printer)),
        titleMetrics_(title_, painter.device()),
        metrics_(text_, painter.device()),
        width_(printer.pageRect(QPrinter::DevicePixel).width()),
        height_(printer.pageRect(QPrinter::DevicePixel).height()) {}

  [[nodiscard]] int LineHeight() const { return metrics_.lineSpacing() * 5 / 4; }
  [[nodiscard]] int HeadHeight() const { return titleMetrics_.lineSpacing() * 3 / 2 + 3 * LineHeight(); }
  [[nodiscard]] int Lines() const {
    return std::max(1, static_cast<int>(height_ - HeadHeight()) / LineHeight());
  }

  void Head(const SearchRecord& record, int number) {
    painter_.setFont(title_);
    Draw(0, 0, width_, QtText(TextId::PrintJobName), Qt::AlignLeft);
    painter_.setFont(text_);
    Draw(0, 0, width_, ToQt(Format(Text(TextId::PrintPage), number)), Qt::AlignRight);
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
      Draw(left, LineTop(line), width,
           metrics_.elidedText(ToQt(row[column]), Qt::ElideMiddle, static_cast<int>(width)), Qt::AlignLeft);
    }
  }
  void Footer(int line, const SearchRecord& record) {
    Rule(LineTop(line) + LineHeight() / 2.0);
    Draw(0, LineTop(++line), width_, ToQt(ResultEnding(record)), Qt::AlignLeft);
    const QString statistics = QtText(TextId::ResultStatistics);
    const double indent = metrics_.horizontalAdvance(statistics);
    Draw(0, LineTop(line + 1), width_, statistics, Qt::AlignLeft);
    for (const std::string& count : ResultCounts(record))
      Draw(indent, LineTop(++line), width_ - indent, ToQt(count), Qt::AlignLeft);
  }

 private:
  [[nodiscard]] double LineTop(int line) const {
    return HeadHeight() + static_cast<double>(line) * LineHeight();
  }
  void Draw(double x, double y, double width, const QString& text, Qt::Alignment alignment) {
    painter_.drawText(QRectF(x, y, width, LineHeight() * 2.0),
                      int(alignment | Qt::AlignTop) | Qt::TextSingleLine, text);
  }
  void Rule(double y) { painter_.drawLine(QPointF(0, y), QPointF(width_, y)); }

  QPainter& painter_;
  QFont title_;
  QFont text_;
  QFontMetrics titleMetrics_;
  QFontMetrics metrics_;
  double width_;
  double height_;
};

}  // namespace

bool PrintResults(const SearchResults& results, bool wholePaths, QPrinter& printer,
                  const PageProceed& proceed) {
  printer.setDocName(QtText(TextId::PrintJobName));
  QPainter painter;
  if (!painter.begin(&printer)) return false;
  Page page(painter, printer);

  const auto rows = static_cast<int>(results.Size());
  const int perPage = page.Lines();
  const int pages = (rows + kFooterLines + perPage - 1) / perPage;
  const SearchRecord& record = results.Record();
  int row = 0;
  for (int number = 1; number <= pages; ++number) {
    if (!proceed(number, pages)) {
      printer.abort();
      return false;
    }
    if (number > 1 && !printer.newPage()) return false;
    page.Head(record, number);
    int line = 0;
    for (; line < perPage && row < rows; ++line, ++row) {
      page.Row(line, PrintedHit(record.kind, results.Hit(static_cast<std::size_t>(row)), wholePaths));
    }
    // The foot stays together: on a page with too little room it begins the next one.
    if (row == rows && (line + kFooterLines <= perPage || line == 0)) {
      page.Footer(line, record);
      break;
    }
  }
  return painter.end();
}

}  // namespace ts5
