#include "artworker/layout_edit.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace ts5::artworker {
namespace {

constexpr double kGrip = 5;  // pixels on either side of an edge

bool Near(double a, double b) {
  return std::abs(a - b) <= kGrip;
}
bool Between(double value, double a, double b) {
  return value > a + kGrip && value < b - kGrip;
}

const ArtworkObject& ObjectOf(const ArtworkLayout& layout, std::size_t index) {
  return layout.Object(layout.elements[index].object);
}
QRectF PlaceAt(const ArtworkLayout& layout, std::size_t index) {
  return PlaceOf(layout.elements[index], ObjectOf(layout, index));
}

bool Holds(const Selection& selection, std::size_t index) {
  return std::ranges::find(selection, index) != selection.end();
}

// Puts the elements into another order: the new index of each is that in order. The selection follows.
void Reorder(ArtworkLayout& layout, Selection& selection, const std::vector<std::size_t>& order) {
  std::vector<ArtworkElement> elements;
  elements.reserve(order.size());
  std::vector<std::size_t> placeOf(order.size());
  for (std::size_t i = 0; i < order.size(); ++i) {
    elements.push_back(std::move(layout.elements[order[i]]));
    placeOf[order[i]] = i;
  }
  layout.elements = std::move(elements);
  for (std::size_t& index : selection) index = placeOf[index];
}

std::vector<std::size_t> OrderOf(const ArtworkLayout& layout) {
  std::vector<std::size_t> order(layout.elements.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  return order;
}

// Where a rectangle is along one direction.
struct Span {
  double start;
  double length;
};
Span SpanOf(const QRectF& rect, Qt::Orientation direction) {
  return direction == Qt::Horizontal ? Span{rect.left(), rect.width()} : Span{rect.top(), rect.height()};
}
QPointF Along(Qt::Orientation direction, double distance) {
  return direction == Qt::Horizontal ? QPointF(distance, 0) : QPointF(0, distance);
}

QPointF AlignmentOffset(const QRectF& rect, const QRectF& frame, Alignment alignment) {
  switch (alignment) {
    case Alignment::Left:
      return {frame.left() - rect.left(), 0};
    case Alignment::Centre:
      return {frame.center().x() - rect.center().x(), 0};
    case Alignment::Right:
      return {frame.right() - rect.right(), 0};
    case Alignment::Top:
      return {0, frame.top() - rect.top()};
    case Alignment::Middle:
      return {0, frame.center().y() - rect.center().y()};
    case Alignment::Bottom:
      return {0, frame.bottom() - rect.bottom()};
  }
  return {};
}

}  // namespace

std::optional<Zone> ZoneAt(const QRectF& rect, QPointF point) {
  const bool left = Near(point.x(), rect.left());
  const bool right = Near(point.x(), rect.right());
  const bool top = Near(point.y(), rect.top());
  const bool bottom = Near(point.y(), rect.bottom());
  // In an element of a few pixels all corners overlap; the one at the bottom right makes it larger again.
  if (right && bottom) return Zone{.right = true, .bottom = true};
  if (left && top) return Zone{.left = true, .top = true};
  if (left && bottom) return Zone{.left = true, .bottom = true};
  if (right && top) return Zone{.top = true, .right = true};
  if (Between(point.x(), rect.left(), rect.right())) {
    if (bottom) return Zone{.bottom = true};
    if (top) return Zone{.top = true};
  }
  if (Between(point.y(), rect.top(), rect.bottom())) {
    if (right) return Zone{.right = true};
    if (left) return Zone{.left = true};
  }
  return rect.contains(point) ? std::optional(Zone{}) : std::nullopt;
}

QRectF PixelsOf(const ArtworkElement& element, const ArtworkObject& object, double scale) {
  const QRectF place = PlaceOf(element, object);
  const QPointF topLeft(std::round(place.left() * scale), std::round(place.top() * scale));
  return {topLeft, QSizeF(std::max(1.0, std::round(place.right() * scale) - topLeft.x()),
                          std::max(1.0, std::round(place.bottom() * scale) - topLeft.y()))};
}

std::optional<Hit> HitAt(const ArtworkLayout& layout, ArtworkObjectId id, const Selection& selection,
                         QPointF point, double scale) {
  const auto zoneOf = [&](std::size_t index) {
    return ZoneAt(PixelsOf(layout.elements[index], layout.Object(id), scale), point);
  };
  for (const std::size_t index : selection) {
    const auto zone = zoneOf(index);
    if (zone && !zone->Moves()) return Hit{index, *zone};
  }
  for (std::size_t index = layout.elements.size(); index-- > 0;) {
    if (layout.elements[index].object != id) continue;
    if (const auto zone = zoneOf(index)) return Hit{index, *zone};
  }
  return std::nullopt;
}

Selection InsideBand(const ArtworkLayout& layout, ArtworkObjectId id, const QRectF& band, double scale) {
  Selection inside = ElementsOf(layout, id);
  std::erase_if(inside, [&](std::size_t index) {
    return !band.normalized().contains(PixelsOf(layout.elements[index], layout.Object(id), scale));
  });
  return inside;
}

Selection ElementsOf(const ArtworkLayout& layout, ArtworkObjectId id) {
  Selection elements;
  for (std::size_t index = 0; index < layout.elements.size(); ++index) {
    if (layout.elements[index].object == id) elements.push_back(index);
  }
  return elements;
}

std::optional<std::size_t> NeighbourOf(const ArtworkLayout& layout, ArtworkObjectId id,
                                       const Selection& selection, bool forward) {
  const Selection all = ElementsOf(layout, id);
  if (all.empty()) return std::nullopt;
  const auto at = selection.empty() ? all.end() : std::ranges::find(all, selection.back());
  if (at == all.end()) return forward ? all.front() : all.back();
  if (forward) return std::next(at) == all.end() ? all.front() : *std::next(at);
  return at == all.begin() ? all.back() : *std::prev(at);
}

bool MayMove(const ArtworkLayout& layout, const Selection& selection, std::size_t index) {
  return selection.size() < 2 || !layout.elements[index].fixed;
}

QRectF PlaceOfAll(const ArtworkLayout& layout, const Selection& selection) {
  QRectF all;
  for (const std::size_t index : selection) all |= PlaceAt(layout, index);
  return all;
}

void SetPlace(ArtworkLayout& layout, std::size_t index, const QRectF& place) {
  ArtworkElement& element = layout.elements[index];
  element.box = BoxOf(place, layout.Object(element.object), element.object);
}

void MoveBy(ArtworkLayout& layout, const Selection& selection, QPointF offset) {
  for (const std::size_t index : selection) {
    if (!MayMove(layout, selection, index)) continue;
    Box& box = layout.elements[index].box;
    const Box moved = BoxOf(PlaceAt(layout, index).translated(offset), ObjectOf(layout, index),
                            layout.elements[index].object);
    // The extent stays to the tenth, however often it is moved.
    box.right = moved.left + (box.right - box.left);
    box.bottom = moved.top + (box.bottom - box.top);
    box.left = moved.left;
    box.top = moved.top;
  }
}

void GrowBy(ArtworkLayout& layout, const Selection& selection, QSizeF growth, double least) {
  for (const std::size_t index : selection) {
    if (!MayMove(layout, selection, index)) continue;
    QRectF place = PlaceAt(layout, index);
    if (growth.width() != 0) place.setWidth(std::max(least, place.width() + growth.width()));
    if (growth.height() != 0) place.setHeight(std::max(least, place.height() + growth.height()));
    SetPlace(layout, index, place);
  }
}

QRectF Resized(const QRectF& rect, const Zone& zone, QPointF offset) {
  return rect
      .adjusted(zone.left ? offset.x() : 0, zone.top ? offset.y() : 0, zone.right ? offset.x() : 0,
                zone.bottom ? offset.y() : 0)
      .normalized();
}

void Align(ArtworkLayout& layout, const Selection& selection, Alignment alignment) {
  if (selection.empty()) return;
  const ArtworkObjectId id = layout.elements[selection.front()].object;
  const QRectF frame =
      selection.size() > 1 ? PlaceOfAll(layout, selection) : QRectF({0, 0}, ExtentOf(layout.Object(id), id));
  for (const std::size_t index : selection) {
    if (!MayMove(layout, selection, index)) continue;
    MoveBy(layout, {index}, AlignmentOffset(PlaceAt(layout, index), frame, alignment));
  }
}

void CentreOnObject(ArtworkLayout& layout, const Selection& selection, Qt::Orientation direction) {
  for (const std::size_t index : selection) {
    if (MayMove(layout, selection, index))
      Align(layout, {index}, direction == Qt::Horizontal ? Alignment::Centre : Alignment::Middle);
  }
}

void Distribute(ArtworkLayout& layout, const Selection& selection, Qt::Orientation direction) {
  if (selection.size() < 3) return;
  Selection order = selection;
  const auto span = [&](std::size_t index) { return SpanOf(PlaceAt(layout, index), direction); };
  std::ranges::stable_sort(order, {}, [&](std::size_t index) { return span(index).start; });
  const Span whole = SpanOf(PlaceOfAll(layout, selection), direction);
  double gap = whole.length;
  for (const std::size_t index : order) gap -= span(index).length;
  gap /= static_cast<double>(order.size() - 1);
  double at = whole.start;
  for (const std::size_t index : order) {
    const Span now = span(index);
    if (MayMove(layout, selection, index)) MoveBy(layout, {index}, Along(direction, at - now.start));
    at += now.length + gap;
  }
}

void SendToBack(ArtworkLayout& layout, Selection& selection) {
  std::vector<std::size_t> order = OrderOf(layout);
  std::stable_partition(order.begin(), order.end(),
                        [&](std::size_t index) { return Holds(selection, index); });
  Reorder(layout, selection, order);
}

void BringToFront(ArtworkLayout& layout, Selection& selection) {
  std::vector<std::size_t> order = OrderOf(layout);
  std::stable_partition(order.begin(), order.end(),
                        [&](std::size_t index) { return !Holds(selection, index); });
  Reorder(layout, selection, order);
}

void Delete(ArtworkLayout& layout, Selection& selection) {
  std::ranges::sort(selection, std::greater());
  for (const std::size_t index : selection)
    layout.elements.erase(layout.elements.begin() + static_cast<std::ptrdiff_t>(index));
  selection.clear();
}

void Append(ArtworkLayout& layout, Selection& selection, ArtworkElement element) {
  layout.elements.push_back(std::move(element));
  selection = {layout.elements.size() - 1};
}

void Paste(ArtworkLayout& layout, Selection& selection, std::span<const ArtworkElement> elements,
           ArtworkObjectId id, QPointF place) {
  selection.clear();
  for (const ArtworkElement& element : elements) {
    layout.elements.push_back(element);
    layout.elements.back().object = id;
    selection.push_back(layout.elements.size() - 1);
  }
  const QPointF offset = place - PlaceOfAll(layout, selection).topLeft();
  for (const std::size_t index : selection) MoveBy(layout, {index}, offset);
}

QRectF DrawnBox(QPointF start, QPointF end, bool fromCentre, bool even) {
  const QPointF drawn = end - start;
  if (fromCentre) {
    const QPointF half(std::abs(drawn.x()), even ? std::abs(drawn.x()) : std::abs(drawn.y()));
    return {start - half, start + half};
  }
  const double height = even ? std::copysign(std::abs(drawn.x()), drawn.y()) : drawn.y();
  return QRectF(start, QSizeF(drawn.x(), height)).normalized();
}

}  // namespace ts5::artworker
