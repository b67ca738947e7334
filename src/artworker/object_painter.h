// Draws a label, an inlay or a booklet with its elements: the one drawing for the screen, printers, PDF and
// pictures.
#pragma once

#include <string>
#include <vector>

#include "artworker/element_places.h"
#include "artworker/layout.h"
#include "artworker/pictures.h"
#include "frame/backgrounds.h"

class QPainter;

namespace ts5::artworker {

struct ObjectPainting {
  const ArtworkLayout& layout;
  const std::vector<ArtworkBackground>& backgrounds;
  Pictures& pictures;
  bool boundary = false;   // the lines to cut and fold along, below the elements
  double picturesDpi = 0;  // pictures are drawn with no more dots; 0: as many as the device has
  bool draft = false;      // while something is dragged: pictures need not be sharp
};

// Onto the painter, whose unit is a millimetre and whose origin the top left corner of the object's
// rectangle.
void RenderObject(QPainter& painter, const ObjectPainting& painting, ArtworkObjectId id);

// Whether this machine lacks the face; the nearest one is drawn instead.
[[nodiscard]] bool FontMissing(const std::string& face);

}  // namespace ts5::artworker
