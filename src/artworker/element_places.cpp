#include "artworker/element_places.h"

#include <algorithm>
#include <cmath>

namespace ts5::artworker {
namespace {

constexpr double kTenths = 10;  // in a millimetre
constexpr double kSpineMillimetres = 6.3;
constexpr double kFarthest = 10'000'000;  // tenths of a millimetre, so that all sums stay numbers of 32 bits

// One side of an object, in millimetres: as it is, and as the norm has it. Places are stored for the norm.
struct Side {
  double is;
  double usual;
  bool even;  // all of a disc shrinks alike: what is in its middle stays there

  // How much a distance from the edge, and an extent, grow.
  [[nodiscard]] double OfPlaces() const {
    if (even) return OfExtents();
    return is > 0 ? (2 * is - usual) / is : 1;
  }
  [[nodiscard]] double OfExtents() const { return is / usual; }
};

struct Sides {
  Side across;
  Side down;
};

Sides SidesOf(const ArtworkObject& object, ArtworkObjectId id) {
  const Size norm = kNormSizes[IndexOf(id)];
  const QSizeF extent = ExtentOf(object, id);
  const bool disc = id == ArtworkObjectId::Label;
  const double height = disc ? norm.width : norm.height;
  return {{extent.width(), static_cast<double>(norm.width), disc}, {extent.height(), height, disc}};
}

std::int32_t Stored(double millimetres, double growth) {
  const double tenths = growth != 0 ? millimetres / growth * kTenths : millimetres * kTenths;
  return static_cast<std::int32_t>(std::lround(std::clamp(tenths, -kFarthest, kFarthest)));
}

}  // namespace

QSizeF ExtentOf(const ArtworkObject& object, ArtworkObjectId id) {
  const double width = object.size.width;
  return id == ArtworkObjectId::Label ? QSizeF(width, width) : QSizeF(width, object.size.height);
}

std::vector<double> FoldsOf(const ArtworkObject& object, ArtworkObjectId id) {
  const double width = object.size.width;
  switch (id) {
    case ArtworkObjectId::Inlay:
      return {kSpineMillimetres, width - kSpineMillimetres};
    case ArtworkObjectId::Booklet:
      return {width / 2};
    default:
      return {};
  }
}

QRectF PlaceOf(const ArtworkElement& element, const ArtworkObject& object) {
  const Sides sides = SidesOf(object, element.object);
  const Box& box = element.box;
  const double left = box.left / kTenths * sides.across.OfPlaces();
  const double top = box.top / kTenths * sides.down.OfPlaces();
  // As doubles: the sides of a box may lie as far apart as numbers of 32 bits can.
  const double width = (double{1} * box.right - box.left) / kTenths * sides.across.OfExtents();
  const double height = (double{1} * box.bottom - box.top) / kTenths * sides.down.OfExtents();
  constexpr double kLeast = 0.01;  // of an element without an extent, so that it can still be seen and taken
  return {left, top, std::max(width, kLeast), std::max(height, kLeast)};
}

Box BoxOf(const QRectF& place, const ArtworkObject& object, ArtworkObjectId id) {
  const Sides sides = SidesOf(object, id);
  const std::int32_t left = Stored(place.left(), sides.across.OfPlaces());
  const std::int32_t top = Stored(place.top(), sides.down.OfPlaces());
  return {left, top, left + Stored(place.width(), sides.across.OfExtents()),
          top + Stored(place.height(), sides.down.OfExtents())};
}

}  // namespace ts5::artworker
