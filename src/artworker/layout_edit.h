// What can be done to the elements of a layout: taking them with the mouse, moving, sizing, aligning and
// ordering them. Pure; places are in millimetres on the object, pixels come in through a scale.
#pragma once

#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "artworker/element_places.h"
#include "artworker/layout.h"

namespace ts5::artworker {

// Indices of elements of one object, in the order in which they were selected.
using Selection = std::vector<std::size_t>;

// What a place on an element does when it is dragged: the whole is moved, or these edges.
struct Zone {
  bool left = false;
  bool top = false;
  bool right = false;
  bool bottom = false;

  [[nodiscard]] bool Moves() const { return !left && !top && !right && !bottom; }
  bool operator==(const Zone&) const = default;
};
// Nothing beside the element. Corners are squares of ten pixels around them, edges strips of five pixels on
// either side. rect and point in pixels.
[[nodiscard]] std::optional<Zone> ZoneAt(const QRectF& rect, QPointF point);

// An element in whole pixels on its object, at that many pixels to a millimetre.
[[nodiscard]] QRectF PixelsOf(const ArtworkElement& element, const ArtworkObject& object, double scale);

struct Hit {
  std::size_t element = 0;
  Zone zone;
};
// The element of the object under the point (pixels on the object): the edge of a selected one, else the
// uppermost.
[[nodiscard]] std::optional<Hit> HitAt(const ArtworkLayout& layout, ArtworkObjectId id,
                                       const Selection& selection, QPointF point, double scale);
// Those that lie completely inside the band (pixels on the object).
[[nodiscard]] Selection InsideBand(const ArtworkLayout& layout, ArtworkObjectId id, const QRectF& band,
                                   double scale);

// All of the object's elements, from the lowest to the uppermost.
[[nodiscard]] Selection ElementsOf(const ArtworkLayout& layout, ArtworkObjectId id);
// The one after or before the selected one, around the end; nothing on an object without elements.
[[nodiscard]] std::optional<std::size_t> NeighbourOf(const ArtworkLayout& layout, ArtworkObjectId id,
                                                     const Selection& selection, bool forward);

// Fixed elements stay where they are as soon as others are selected with them.
[[nodiscard]] bool MayMove(const ArtworkLayout& layout, const Selection& selection, std::size_t index);
// The rectangle around them; empty for none.
[[nodiscard]] QRectF PlaceOfAll(const ArtworkLayout& layout, const Selection& selection);

void SetPlace(ArtworkLayout& layout, std::size_t index, const QRectF& place);
void MoveBy(ArtworkLayout& layout, const Selection& selection, QPointF offset);
// Wider and higher, the left and top edges staying; never below least.
void GrowBy(ArtworkLayout& layout, const Selection& selection, QSizeF growth, double least);
// The edges of the zone moved by the offset, with the sides in their order again.
[[nodiscard]] QRectF Resized(const QRectF& rect, const Zone& zone, QPointF offset);

// To an edge or the middle: of all that is selected, or of the object when it is one element.
enum class Alignment : std::uint8_t { Left, Centre, Right, Top, Middle, Bottom };
void Align(ArtworkLayout& layout, const Selection& selection, Alignment alignment);
// Each element in the middle of the object, across or down.
void CentreOnObject(ArtworkLayout& layout, const Selection& selection, Qt::Orientation direction);
// Equal gaps between at least three elements, the outer ones staying.
void Distribute(ArtworkLayout& layout, const Selection& selection, Qt::Orientation direction);

// Behind or before all others; the selection follows its elements.
void SendToBack(ArtworkLayout& layout, Selection& selection);
void BringToFront(ArtworkLayout& layout, Selection& selection);
void Delete(ArtworkLayout& layout, Selection& selection);
void Append(ArtworkLayout& layout, Selection& selection, ArtworkElement element);
// Above all others and selected, on that object, the top left corner of their common rectangle at the place.
void Paste(ArtworkLayout& layout, Selection& selection, std::span<const ArtworkElement> elements,
           ArtworkObjectId id, QPointF place);

// The rectangle that a drag makes: from corner to corner, or for an ellipse from its centre with these
// half-axes; even: as high as wide.
[[nodiscard]] QRectF DrawnBox(QPointF start, QPointF end, bool fromCentre, bool even);

}  // namespace ts5::artworker
