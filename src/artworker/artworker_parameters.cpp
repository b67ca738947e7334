#include "artworker/artworker_parameters.h"

#include <limits>

#include "artworker/kept_pictures.h"
#include "artworker/layout_file.h"
#include "platform/files/paths.h"
#include "platform/files/real_paths.h"

namespace ts5::artworker {
namespace {

constexpr std::size_t kMaxPath = 259;
constexpr std::int32_t kMostLabelStep = 10 * kMaxSheet;  // tenths of a millimetre
constexpr std::string_view kLayoutName = "ArtLayout";

// The packed layout is a binary value; a damaged one leaves the job with an empty layout.
ParameterField LayoutField() {
  using P = ArtworkerParameters;
  return MakeField<P>(
      {.name = std::string(kLayoutName),
       .description = "LAYOUT.awl",
       .load =
           [](P& own, const RegistryValues& values) {
             const auto record = values.Binary(kLayoutName);
             if (!record) return;
             auto layout = LayoutFromRecord(*record);
             if (!layout) return;
             own.layout = *std::move(layout);
             FindPictures(own.layout, std::string(DirectoryOf(own.fileName)));
           },
       .save = [](const P& own,
                  RegistryValues& values) { values.SetBinary(kLayoutName, LayoutRecord(own.layout)); },
       .set =
           [](P& own, std::string_view path) {
             auto layout = LoadLayout(std::string(path));
             if (!layout) return false;
             own.layout = *std::move(layout);
             FindPictures(own.layout, std::string(DirectoryOf(FullPath(std::string(path)))));
             return true;
           }});
}

}  // namespace

std::vector<ParameterField> ArtworkerFields() {
  using P = ArtworkerParameters;
  constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();
  FieldTable<P> table;
  table.Text("ArtPrinter", &P::printer, kMaxPath)
      .Numbers("ArtDlgPos", &P::place, -kMost, kMost)
      .Integer("UndoSteps", &P::undoSteps, 1, kMaxUndoSteps)
      .Flag("ArtUseMetrics", &P::rulers)
      .Flag("ArtMidOrigin", &P::originInMiddle)
      .Flag("ArtCMDivide", &P::divideCentimetres)
      .Integer("ArtPrintWhat", &P::printWhat, 0, kAllObjects)
      .Integer("ArtPrintBorder", &P::printBorder, 0, kAllObjects)
      .Integer("ArtPrintMarks", &P::printMarks, 0, kAllObjects)
      .Flag("ArtShareSheet", &P::shareSheet)
      .Flag("ArtCalibration", &P::calibration)
      .Numbers("ArtLabelGrid", &P::labelGrid, 1, kMostLabelsInARow)
      .Numbers("ArtLabelStep", &P::labelStep, 0, kMostLabelStep)
      .Integer("ArtLabelFirst", &P::labelFirst, 1, kMostLabels)
      .Integer("ArtLabelCount", &P::labelCount, 0, kMostLabels)
      .Text("ArtFilename", &P::fileName, kMaxPath)
      .Row(LayoutField());
  return table.Build();
}

}  // namespace ts5::artworker
