// One tile of the filter bar: a button with the filter's vertical gradient, its name and, while it is
// expanded, its description. A tile that cannot be chosen says why instead.
#pragma once

#include <QAbstractButton>
#include <QColor>
#include <QIcon>

namespace ts5 {

// How tiles are drawn: plain is the bare gradient, the other two are drawn in the manner of their appearance.
enum class TileStyle { Plain, Classic, Modern };

inline constexpr int kCollapsedTileHeight = 19;
inline constexpr int kCompactTileHeight = 38;  // name and one line
[[nodiscard]] constexpr int ExpandedTileHeight(TileStyle style) {
  return style == TileStyle::Plain ? 66 : 63;
}

class TileButton : public QAbstractButton {
  Q_OBJECT

 public:
  struct Look {
    QString name;
    QString description;
    QColor top;
    QColor bottom;
    QIcon icon;
  };

  TileButton(Look look, TileStyle style, QWidget* parent);

  void SetExpanded(bool expanded);
  // reason: why it does not fit, in place of the description; help: what else there is to say of it; compact:
  // it is not tall when it is expanded.
  void SetState(const QString& reason, const QString& help, bool compact);
  void SetCurrent(bool current);
  [[nodiscard]] bool IsCurrent() const { return current_; }
  [[nodiscard]] bool IsExpanded() const { return expanded_; }

  [[nodiscard]] QSize sizeHint() const override;
  [[nodiscard]] QSize minimumSizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void enterEvent(QEnterEvent* event) override;
  void leaveEvent(QEvent* event) override;
  void nextCheckState() override {}  // a press asks for the filter; what is current is told by SetCurrent

 private:
  void PaintPlain(QPainter& painter) const;
  void PaintClassic(QPainter& painter) const;
  void PaintModern(QPainter& painter) const;
  // The icon on a chip of its own ground, as the gradients have every colour; gives the area beside it.
  [[nodiscard]] QRect PaintIcon(QPainter& painter, const QRect& area) const;
  void PaintTexts(QPainter& painter, const QRect& area, const QColor& ink, const QColor& faint,
                  bool halo) const;

  void ShowTexts();

  Look look_;
  TileStyle style_;
  QString reason_;
  QString help_;
  bool compact_ = false;
  bool expanded_ = true;
  bool current_ = false;
};

}  // namespace ts5
