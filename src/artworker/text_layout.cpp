#include "artworker/text_layout.h"

#include <QFontMetricsF>
#include <QStringList>
#include <algorithm>
#include <array>
#include <cmath>

#include "artworker/ink.h"
#include "artworker/track_table.h"

namespace ts5::artworker {
namespace {

constexpr double kTabCharacters = 8;  // average ones from one stop to the next
constexpr double kSmallest = 1e-6;    // base pixels, so that nothing divides by zero

// Where something stands in the space it has.
enum class Place : std::uint8_t { Start, Middle, End };

// Along and across the line of a turned text, as the user's placements on the page mean it.
struct Placement {
  Place along;
  Place across;
};

Place Reversed(Place place) {
  return place == Place::Middle ? place : place == Place::Start ? Place::End : Place::Start;
}

Placement PlacementOf(const TextField& field) {
  const Place horizontal = field.horizontal == Across::Right    ? Place::End
                           : field.horizontal == Across::Centre ? Place::Middle
                                                                : Place::Start;
  const Place vertical = field.vertical == Down::Bottom   ? Place::End
                         : field.vertical == Down::Middle ? Place::Middle
                                                          : Place::Start;
  switch (field.orientation) {
    case Turn::Quarter:
      return {Reversed(vertical), horizontal};
    case Turn::Half:
      return {Reversed(horizontal), Reversed(vertical)};
    case Turn::ThreeQuarters:
      return {vertical, Reversed(horizontal)};
    default:
      return {horizontal, vertical};
  }
}

double Offset(Place place, double space, double size) {
  return place == Place::Start ? 0 : place == Place::Middle ? (space - size) / 2 : space - size;
}

// A line and its pieces. Where space is spread, the line is cut and its pieces are moved: the spacing of a
// font would come out differently on devices of different resolutions.
class Line {
 public:
  Line(const QString& text, const QFontMetricsF& metrics) : metrics_(&metrics) {
    const double stop = std::max(metrics.averageCharWidth() * kTabCharacters, 1.0);
    for (const QString& cell : text.split('\t')) {
      if (!pieces_.empty()) width_ = (std::floor(width_ / stop) + 1) * stop;
      pieces_.push_back({cell, QPointF(width_, 0)});
      width_ += metrics.horizontalAdvance(cell);
    }
    blanks_ = static_cast<int>(text.count(' '));
    characters_ = static_cast<int>(text.size());
  }

  [[nodiscard]] double Width() const { return width_; }

  // Spreads what lacks to the width over the blanks, or between all characters.
  void StretchBlanks(double width) {
    if (blanks_ > 0) Spread(width, blanks_, [](QChar before) { return before == ' '; });
  }
  void StretchAll(double width) {
    if (characters_ > 1) Spread(width, characters_ - 1, [](QChar) { return true; });
  }

  void AddTo(std::vector<TextRun>& runs, QPointF start) const {
    for (TextRun piece : pieces_) {
      piece.baseline += start;
      if (!piece.text.isEmpty()) runs.push_back(std::move(piece));
    }
  }

 private:
  // Cuts behind every character that widens. What is cut is measured by itself, so that a long text takes no
  // longer than its length.
  template <typename Widens>
  void Spread(double width, int gaps, Widens widens) {
    if (width <= width_) return;
    std::vector<TextRun> spread;
    std::vector<int> before;  // gaps, for each of them
    int passed = 0;
    double end = 0;
    for (const TextRun& piece : pieces_) {
      end = piece.baseline.x();
      qsizetype from = 0;
      for (qsizetype at = 1; at <= piece.text.size(); ++at) {
        const bool gap = widens(piece.text[at - 1]) && !piece.text[at - 1].isHighSurrogate();
        if (!gap && at < piece.text.size()) continue;
        spread.push_back({piece.text.mid(from, at - from), QPointF(end, 0)});
        before.push_back(passed);
        end += metrics_->horizontalAdvance(spread.back().text);
        if (gap) ++passed;
        from = at;
      }
    }
    const double each = (width - end) / gaps;
    for (std::size_t i = 0; i < spread.size(); ++i) spread[i].baseline.rx() += each * before[i];
    pieces_ = std::move(spread);
    width_ = width;
  }

  const QFontMetricsF* metrics_;
  std::vector<TextRun> pieces_;
  double width_ = 0;
  int blanks_ = 0;
  int characters_ = 0;
};

// The largest scale at which the text keeps to its space.
double FittingScale(const TextField& field, QSizeF space, double longest, double lineHeight, bool several) {
  const double byWidth = space.width() / std::max(longest, kSmallest);
  if (!several && field.text.starts_with(kFitMark)) return std::min(byWidth, space.height() / lineHeight);
  if (several) return std::min(byWidth, field.lineSpacing * kUnitsPerTenth / lineHeight);
  return field.spaceMode == SpaceMode::Horizontal ? byWidth : space.height() / lineHeight;
}

// From the text's own frame, its origin at the start of the line's space, to the page.
QTransform FrameOf(Turn turn, const QRectF& space) {
  QTransform frame;
  constexpr std::array kDegrees = {0.0, -90.0, 180.0, 90.0};
  const std::array corners = {space.topLeft(), space.bottomLeft(), space.bottomRight(), space.topRight()};
  const auto index = static_cast<std::size_t>(turn);
  frame.translate(corners[index].x(), corners[index].y());
  frame.rotate(kDegrees[index]);
  return frame;
}

}  // namespace

TextPlan PlanText(const TextField& field, const QRectF& rect, double inset) {
  if (field.text.starts_with(kTableMark)) return PlanTracks(field, rect, inset);
  TextPlan plan;
  plan.font = FontOf(field.font);
  const QRectF inner = rect.adjusted(inset, inset, -inset, -inset);
  if (inner.width() <= 0 || inner.height() <= 0 || field.text.empty()) return plan;
  const bool upright = field.orientation == Turn::None || field.orientation == Turn::Half;
  const QSizeF space = upright ? inner.size() : inner.size().transposed();

  const QFontMetricsF metrics(plan.font);
  const double lineHeight = metrics.ascent() + metrics.descent();
  std::vector<Line> lines;
  const std::size_t mark = field.text.starts_with(kFitMark) ? kFitMark.size() : 0;
  for (const QString& text : QString::fromStdString(field.text.substr(mark)).split('\n'))
    lines.emplace_back(text, metrics);
  const auto byWidth = [](const Line& a, const Line& b) { return a.Width() < b.Width(); };
  const double longest = std::ranges::max_element(lines, byWidth)->Width();
  const bool several = lines.size() > 1;
  const double scale =
      field.fixedFont ? FixedScale(field.font) : FittingScale(field, space, longest, lineHeight, several);
  if (qFuzzyIsNull(scale)) return plan;  // no room between the lines: nothing that could be seen
  const QSizeF room = space / scale;
  const Placement placement = PlacementOf(field);

  if (!several && !field.fixedFont && field.spaceMode == SpaceMode::Whole)
    lines.front().StretchAll(room.width());
  const double step = field.lineSpacing * kUnitsPerTenth / scale;
  const double block = lineHeight + step * static_cast<double>(lines.size() - 1);
  double y = Offset(placement.across, room.height(), block) + metrics.ascent();
  for (Line& line : lines) {
    if (several && field.horizontal == Across::Justified) line.StretchBlanks(longest);
    line.AddTo(plan.runs, QPointF(Offset(placement.along, room.width(), line.Width()), y));
    y += step;
  }
  plan.transform = QTransform::fromScale(scale, scale) * FrameOf(field.orientation, inner);
  return plan;
}

}  // namespace ts5::artworker
