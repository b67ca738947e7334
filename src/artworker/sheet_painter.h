// Draws objects at their places on a sheet, with the marks beside them, and the page that shows how a printer
// lays its paper. The painter's unit is a millimetre, its origin the top left corner of the sheet.
#pragma once

#include <string>

#include "artworker/object_painter.h"
#include "artworker/printer_fit.h"
#include "artworker/sheet_plan.h"

namespace ts5::artworker {

void PaintPlaced(QPainter& painter, const ObjectPainting& painting, const PlacedObject& placed);

// Where to cut and where to fold, outside of the object; of a label the middle of its hole as well.
void PaintMarks(QPainter& painter, const ArtworkLayout& layout, const PlacedObject& placed);

// Two marks and two lines to be measured, a ruler at each edge, and what to do with it all. fit: with which
// the page is printed.
void PaintCalibration(QPainter& painter, Size sheet, const std::string& printer, const PrinterFit& fit);

}  // namespace ts5::artworker
