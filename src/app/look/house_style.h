// The widget style under all appearances: the toolkit's Fusion with the program's own signs in message
// boxes and file dialogs, and buttons that bear words only.
#pragma once

#include <QProxyStyle>

namespace ts5 {

class HouseStyle : public QProxyStyle {
 public:
  HouseStyle();

  int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                QStyleHintReturn* answer) const override;
  int pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override;
  void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
  QIcon standardIcon(StandardPixmap sign, const QStyleOption* option, const QWidget* widget) const override;
  QPixmap standardPixmap(StandardPixmap sign, const QStyleOption* option,
                         const QWidget* widget) const override;
};

}  // namespace ts5
