// How the filters of the catalogue look on their tiles.
#pragma once

#include <vector>

#include "app/look/tile_button.h"
#include "frame/settings.h"

namespace ts5 {

[[nodiscard]] TileStyle StyleOf(SkinLayout layout);
// One for each filter, in the order of the catalogue.
[[nodiscard]] std::vector<TileButton::Look> TileLooks();

}  // namespace ts5
