// What an Artworker job holds: its layout, and how the editor and the printing are set.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "artworker/filled_text.h"
#include "artworker/layout.h"
#include "artworker/printer_fit.h"
#include "frame/backgrounds.h"
#include "frame/parameters.h"

namespace ts5::artworker {

inline constexpr std::int32_t kAllObjects = 7;  // bit 0 label, bit 1 inlay, bit 2 booklet
inline constexpr std::int32_t kMaxUndoSteps = 999;
inline constexpr std::int32_t kMostLabelsInARow = 10;
inline constexpr std::int32_t kMostLabels = kMostLabelsInARow * kMostLabelsInARow;

struct ArtworkerParameters : ClonableParameters<ArtworkerParameters> {
  std::string printer;                                   // by its name; "" the first one
  std::array<std::int32_t, 4> place = {-1, -1, -1, -1};  // of the editor: left, top, right, bottom
  std::int32_t undoSteps = 50;
  bool rulers = true;
  bool originInMiddle = false;  // of the rulers; else on the left
  bool divideCentimetres = true;
  std::int32_t printWhat = kAllObjects;  // a set of objects
  std::int32_t printBorder = 0;          // likewise: with the lines to cut and fold along
  std::int32_t printMarks = 0;           // likewise: with marks beside them for it
  bool shareSheet = false;               // the front of the booklet and the inlay come on one sheet
  bool calibration = false;              // a page to measure the printer with comes last
  // Sheets of labels: how many side by side and below one another, and how far apart their middles are, in
  // tenths of a millimetre; 0 spreads them evenly, else the first one is where the label's own place is.
  std::array<std::int32_t, 2> labelGrid = {1, 1};
  std::array<std::int32_t, 2> labelStep = {0, 0};
  std::int32_t labelFirst = 1;  // the first place of the sheet that is free
  std::int32_t labelCount = 0;  // how many are printed; 0: on all places
  std::string fileName;         // of the layout, "" when it was not loaded from a file
  ArtworkLayout layout = NewLayout();
  // What is there when the job runs; not kept with it. Backgrounds: the shared list, empty for plain white.
  std::vector<ArtworkBackground> backgrounds;
  DiscFacts disc;  // fills the fields of texts
  PrinterFit fit;  // of the printer
};

[[nodiscard]] std::vector<ParameterField> ArtworkerFields();

[[nodiscard]] constexpr bool Holds(std::int32_t objects, ArtworkObjectId id) {
  return (objects >> IndexOf(id) & 1) != 0;
}

}  // namespace ts5::artworker
