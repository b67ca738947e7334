#include "app/look/tile_looks.h"

#include "frame/filter_catalogue.h"
#include "frame/ui/qt_text.h"
#include "resources/icons.h"

namespace ts5 {
namespace {

// Colours of the catalogue have red in the low byte.
QColor ColourOf(std::uint32_t colour) {
  return {static_cast<int>(colour & 0xFF), static_cast<int>(colour >> 8 & 0xFF),
          static_cast<int>(colour >> 16 & 0xFF)};
}

}  // namespace

TileStyle StyleOf(SkinLayout layout) {
  switch (layout) {
    case SkinLayout::Windows:
      return TileStyle::Plain;
    case SkinLayout::Stavora4:
      return TileStyle::Classic;
    case SkinLayout::Stavora5:
      break;
  }
  return TileStyle::Modern;
}

std::vector<TileButton::Look> TileLooks() {
  std::vector<TileButton::Look> looks;
  for (const FilterDescriptor& filter : FilterCatalogue()) {
    looks.push_back({ToQt(filter.Name()), ToQt(filter.Description()), ColourOf(filter.colour2),
                     ColourOf(filter.colour1), FilterIcon(filter.id)});
  }
  return looks;
}

}  // namespace ts5
