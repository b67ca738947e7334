// Any bytes are a layout file, or a packed layout: what is read is written and read again as the same, and is
// drawn.
#include <QImage>
#include <QPainter>
#include <algorithm>
#include <cstdlib>

#include "artworker/layout_file.h"
#include "artworker/print_run.h"
#include "artworker/sheet_painter.h"
#include "artworker/sheet_plan.h"

using namespace ts5;
using namespace ts5::artworker;

namespace {

// Its written form stays as it is from the first writing on.
void WriteAgain(const ArtworkLayout& layout) {
  const Bytes record = LayoutRecord(layout);
  const auto again = LayoutFromRecord(record);
  if (!again || LayoutRecord(*again) != record) std::abort();
  const auto file = LayoutFromProfile(LayoutProfile(*again));
  if (!file || LayoutRecord(*file) != record) std::abort();
  for (const ArtworkElement& element : layout.elements) {
    const ArtworkObject& object = layout.Object(element.object);
    if (PlaceOf(element, object).isEmpty()) std::abort();
    (void)BoxOf(PlaceOf(element, object), object, element.object);
  }
}

// Its sheets, a dot for each millimetre; pictures of files are left out.
void Draw(ArtworkLayout layout) {
  for (ArtworkElement& element : layout.elements) {
    if (auto* const image = std::get_if<Image>(&element.content)) image->file.clear();
  }
  const std::vector<ArtworkBackground> backgrounds{{0, kMaxColour, 3, "schräg"}};
  ArtworkerParameters parameters;
  parameters.layout =
      FilledLayout(layout, {.title = "Lied", .performer = "Chor", .tracks = {{"Lied", "", {}}}});
  parameters.shareSheet = true;
  Pictures pictures;
  for (const Sheet& sheet : PlanSheets(parameters).sheets) {
    QImage page(std::min(sheet.size.width, 300), std::min(sheet.size.height, 300), QImage::Format_RGB32);
    page.fill(Qt::white);
    QPainter painter(&page);
    for (const PlacedObject& placed : sheet.objects) {
      PaintPlaced(painter, {parameters.layout, backgrounds, pictures, true}, placed);
      PaintMarks(painter, parameters.layout, placed);
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  PrepareDrawing();
  if (const auto layout = LayoutFromRecord({data, size})) {
    WriteAgain(*layout);
    Draw(*layout);
  }
  const auto profile = Profile::Parse({data, size});
  if (!profile) return 0;
  if (const auto layout = LayoutFromProfile(*profile)) {
    WriteAgain(*layout);
    Draw(*layout);
  }
  return 0;
}
