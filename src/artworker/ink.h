// Colours, fonts and fills of a layout as the drawing takes them.
#pragma once

#include <QBrush>
#include <QColor>
#include <QFont>
#include <QRectF>
#include <cstdint>
#include <span>

#include "artworker/layout.h"
#include "frame/backgrounds.h"

namespace ts5::artworker {

// The drawing's unit: a hundredth of a millimetre.
inline constexpr double kUnitsPerMillimetre = 100;
inline constexpr double kUnitsPerTenth = 10;
// Fonts are measured at this size and scaled to the one that fits.
inline constexpr int kBaseFontPixels = 1000;

[[nodiscard]] QColor ColourOf(std::uint32_t colour);  // 0x00BBGGRR

// The background of that index over the rectangle: plain, or a gradient from its left, top or top left end.
// White for an index that the list lacks.
[[nodiscard]] QBrush BrushOf(std::span<const ArtworkBackground> backgrounds, std::int32_t index,
                             const QRectF& rect);

// What is left of the ground below: 1 covers it, 0 leaves it.
[[nodiscard]] double Opacity(std::int32_t transparency);

// Of kBaseFontPixels, without hinting, so that all its measures grow evenly.
[[nodiscard]] QFont FontOf(const FontFields& fields);
// How far the stored size scales that font: as large on paper as on a screen of 96 dpi.
[[nodiscard]] double FixedScale(const FontFields& fields);

}  // namespace ts5::artworker
