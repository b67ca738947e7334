// Where elements are on their object, in millimetres from its top left corner.
#pragma once

#include <QRectF>
#include <QSizeF>
#include <vector>

#include "artworker/layout.h"

namespace ts5::artworker {

// Of the object's rectangle; of a label both are the diameter.
[[nodiscard]] QSizeF ExtentOf(const ArtworkObject& object, ArtworkObjectId id);

// Where it is folded, from its left edge: the spines of an inlay, the middle of a booklet.
[[nodiscard]] std::vector<double> FoldsOf(const ArtworkObject& object, ArtworkObjectId id);

// The rectangle of an element, moved and scaled as far as the object is not of norm size.
[[nodiscard]] QRectF PlaceOf(const ArtworkElement& element, const ArtworkObject& object);

// The box of an element that is to be seen at the place: the way back from PlaceOf.
[[nodiscard]] Box BoxOf(const QRectF& place, const ArtworkObject& object, ArtworkObjectId id);

}  // namespace ts5::artworker
