// A line that changes: where it has no room it is shortened in the middle, and whole in its tooltip and for
// screen readers. It asks for no width.
#pragma once

#include <QLabel>

namespace ts5 {

class ElidedLabel : public QLabel {
  Q_OBJECT

 public:
  explicit ElidedLabel(QWidget* parent = nullptr);

  // The tooltip is the text where nothing else is given.
  void ShowLine(const QString& text, const QString& tip = {});
  // In place of a line; broken and never shortened.
  void ShowParagraph(const QString& text);

  [[nodiscard]] QSize sizeHint() const override;
  [[nodiscard]] QSize minimumSizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;
};

}  // namespace ts5
