#include "artworker/ink.h"

#include <QFontMetricsF>
#include <QLinearGradient>
#include <QString>
#include <algorithm>
#include <cmath>

namespace ts5::artworker {
namespace {

enum Gradient : std::uint32_t { kPlain = 0, kHorizontal = 1, kVertical = 2, kDiagonal = 3 };

constexpr double kScreenDpi = 96;
constexpr double kMillimetresPerInch = 25.4;

}  // namespace

QColor ColourOf(std::uint32_t colour) {
  return {static_cast<int>(colour & 0xFF), static_cast<int>(colour >> 8 & 0xFF),
          static_cast<int>(colour >> 16 & 0xFF)};
}

QBrush BrushOf(std::span<const ArtworkBackground> backgrounds, std::int32_t index, const QRectF& rect) {
  if (std::cmp_greater_equal(index, backgrounds.size())) return Qt::white;
  const ArtworkBackground& background = backgrounds[static_cast<std::size_t>(index)];
  QPointF end = rect.topLeft();
  switch (background.gradient) {
    case kHorizontal:
      end = rect.topRight();
      break;
    case kVertical:
      end = rect.bottomLeft();
      break;
    // Lines of one colour run at 45 degrees, whatever the sides; the last one passes through the far corner.
    case kDiagonal:
      end += QPointF(1, 1) * ((rect.width() + rect.height()) / 2);
      break;
    default:
      return ColourOf(background.colour1);
  }
  QLinearGradient gradient(rect.topLeft(), end);
  gradient.setColorAt(0, ColourOf(background.colour1));
  gradient.setColorAt(1, ColourOf(background.colour2));
  return gradient;
}

double Opacity(std::int32_t transparency) {
  return (100 - std::clamp(transparency, 0, 100)) / 100.0;
}

QFont FontOf(const FontFields& fields) {
  QFont font(QString::fromStdString(fields.face));
  font.setPixelSize(kBaseFontPixels);
  font.setWeight(static_cast<QFont::Weight>(std::clamp(fields.weight, 1, 1000)));
  font.setItalic(fields.italic != 0);
  font.setUnderline(fields.underline != 0);
  font.setStrikeOut(fields.strikeOut != 0);
  font.setHintingPreference(QFont::PreferNoHinting);
  return font;
}

double FixedScale(const FontFields& fields) {
  const double units = std::abs(fields.height) * kMillimetresPerInch / kScreenDpi * kUnitsPerMillimetre;
  if (fields.height <= 0) return units / kBaseFontPixels;
  const QFontMetricsF metrics(FontOf(fields));
  return units / (metrics.ascent() + metrics.descent());
}

}  // namespace ts5::artworker
