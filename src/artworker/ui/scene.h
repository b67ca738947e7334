// What the pages of one editor window share: the layout that is being edited and what it is drawn with.
#pragma once

#include <cstdint>
#include <vector>

#include "artworker/background_list.h"
#include "artworker/filled_text.h"
#include "artworker/layout_editor.h"
#include "artworker/pictures.h"

namespace ts5::artworker {

enum class Tool : std::uint8_t { Move, Design, ZoomIn, ZoomOut, Text, Ellipse, Image };

struct Scene {
  LayoutEditor editor;
  BackgroundList backgrounds;
  Pictures pictures = {};
  DiscFacts facts = {};
  Tool tool = Tool::Design;
  bool guides = true;
  std::int32_t boundaries = 0;  // objects that are printed with their lines
};

}  // namespace ts5::artworker
