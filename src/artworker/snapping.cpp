#include "artworker/snapping.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>

namespace ts5::artworker {
namespace {

// A rectangle's extent in the direction that is looked at (from, to) and across it.
struct Extent {
  double from;
  double to;
  double acrossFrom;
  double acrossTo;

  [[nodiscard]] double Middle() const { return (from + to) / 2; }
  [[nodiscard]] bool Beside(const Extent& other) const {
    return acrossFrom < other.acrossTo && other.acrossFrom < acrossTo;
  }
};

Extent ExtentIn(const QRectF& rect, Qt::Orientation direction) {
  return direction == Qt::Horizontal ? Extent{rect.left(), rect.right(), rect.top(), rect.bottom()}
                                     : Extent{rect.top(), rect.bottom(), rect.left(), rect.right()};
}

// A rest that is within reach, with what shows it.
struct Rest {
  double offset = 0;
  std::vector<Guide> guides;
};

class Direction {
 public:
  Direction(const QRectF& rect, const SnapGround& ground, Qt::Orientation direction)
      : direction_(direction), ground_(ground), moving_(ExtentIn(rect, direction)) {
    object_ = ExtentIn(ground.object, direction);
    for (const QRectF& other : ground.others) others_.push_back(ExtentIn(other, direction));
  }

  // Edges that may rest: those at the start, in the middle, at the end.
  [[nodiscard]] Rest Best(bool start, bool middle, bool end, bool gaps) {
    if (start) TryLines(moving_.from);
    if (middle) TryLines(moving_.Middle());
    if (end) TryLines(moving_.to);
    if (gaps) TryGaps();
    return best_ ? *std::move(best_) : Rest{};
  }

 private:
  [[nodiscard]] QPointF Point(double along, double across) const {
    return direction_ == Qt::Horizontal ? QPointF(along, across) : QPointF(across, along);
  }

  void Take(double offset, std::vector<Guide> guides) {
    if (std::abs(offset) > ground_.reach) return;
    // Among equals the first one, so that edges come before gaps.
    if (best_ && std::abs(best_->offset) <= std::abs(offset)) return;
    best_ = Rest{offset, std::move(guides)};
  }

  void TryLine(double edge, double line, double acrossFrom, double acrossTo) {
    const double from = std::min(acrossFrom, moving_.acrossFrom);
    const double to = std::max(acrossTo, moving_.acrossTo);
    Take(line - edge, {{Point(line, from), Point(line, to)}});
  }

  void TryLines(double edge) {
    for (const double line : {object_.Middle(), object_.from, object_.to})
      TryLine(edge, line, object_.acrossFrom, object_.acrossTo);
    if (direction_ == Qt::Horizontal) {
      for (const double fold : ground_.folds) TryLine(edge, fold, object_.acrossFrom, object_.acrossTo);
    }
    for (const Extent& other : others_) {
      for (const double line : {other.from, other.Middle(), other.to})
        TryLine(edge, line, other.acrossFrom, other.acrossTo);
    }
  }

  // The nearest neighbour that ends before, or begins behind, the place.
  [[nodiscard]] const Extent* Before(double place) const {
    const Extent* nearest = nullptr;
    for (const Extent& other : others_) {
      if (other.Beside(moving_) && other.to <= place && (nearest == nullptr || other.to > nearest->to))
        nearest = &other;
    }
    return nearest;
  }
  [[nodiscard]] const Extent* Behind(double place) const {
    const Extent* nearest = nullptr;
    for (const Extent& other : others_) {
      if (other.Beside(moving_) && other.from >= place && (nearest == nullptr || other.from < nearest->from))
        nearest = &other;
    }
    return nearest;
  }

  [[nodiscard]] Guide Gap(double from, double to) const {
    const double across = (moving_.acrossFrom + moving_.acrossTo) / 2;
    return {Point(from, across), Point(to, across)};
  }

  void TryGaps() {
    const double length = moving_.to - moving_.from;
    const Extent* const before = Before(moving_.from + ground_.reach);
    const Extent* const behind = Behind(moving_.to - ground_.reach);
    if (before != nullptr && behind != nullptr) {
      const double gap = (behind->from - before->to - length) / 2;
      const double from = before->to + gap;
      Take(from - moving_.from, {Gap(before->to, from), Gap(from + length, behind->from)});
    }
    if (before != nullptr) {
      if (const Extent* const first = Before(before->from)) {
        const double gap = before->from - first->to;
        Take(before->to + gap - moving_.from,
             {Gap(first->to, before->from), Gap(before->to, before->to + gap)});
      }
    }
    if (behind != nullptr) {
      if (const Extent* const last = Behind(behind->to)) {
        const double gap = last->from - behind->to;
        Take(behind->from - gap - moving_.to,
             {Gap(behind->from - gap, behind->from), Gap(behind->to, last->from)});
      }
    }
  }

  Qt::Orientation direction_;
  const SnapGround& ground_;
  Extent moving_;
  Extent object_{};
  std::vector<Extent> others_;
  std::optional<Rest> best_;
};

}  // namespace

Snap SnapOf(const QRectF& rect, const Zone& zone, const SnapGround& ground) {
  const bool moves = zone.Moves();
  Rest across =
      Direction(rect, ground, Qt::Horizontal).Best(moves || zone.left, moves, moves || zone.right, moves);
  Rest down =
      Direction(rect, ground, Qt::Vertical).Best(moves || zone.top, moves, moves || zone.bottom, moves);
  Snap snap{QPointF(across.offset, down.offset), std::move(across.guides)};
  snap.guides.insert(snap.guides.end(), down.guides.begin(), down.guides.end());
  return snap;
}

}  // namespace ts5::artworker
