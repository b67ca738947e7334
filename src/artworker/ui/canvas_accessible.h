// A canvas for screen readers: a list whose rows are the elements of its object, with their texts and places.
#pragma once

namespace ts5::artworker {

// Once, before the first canvas is made.
void InstallCanvasAccessibility();

}  // namespace ts5::artworker
