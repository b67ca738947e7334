// The filter bar at the left: one tile per offered filter, each with a small button that collapses or expands
// it, and the control that fixes the current filter. It shows what it is given and reports what the user
// wants.
//
// Keys: Up and Down move between the tiles, Right and Left between a tile and its small button, Enter and the
// space bar press, '+' and '-' expand and collapse.
#pragma once

#include <QScrollArea>
#include <QToolButton>
#include <QWidget>
#include <array>
#include <span>
#include <vector>

#include "app/tile_button.h"
#include "frame/filter_id.h"

namespace ts5 {

class FilterPanel : public QWidget {
  Q_OBJECT

 public:
  struct Tile {
    FilterId filter = FilterId::None;
    bool shown = false;
    bool enabled = false;
    bool toggleEnabled = false;
    bool expanded = true;
  };

  // looks: one per filter, in the order of FilterId.
  FilterPanel(std::span<const TileButton::Look> looks, TileStyle style, QWidget* parent = nullptr);

  void Show(std::span<const Tile> tiles, FilterId current, bool fixed);
  [[nodiscard]] TileButton* TileOf(FilterId filter) const;
  [[nodiscard]] QToolButton* ToggleOf(FilterId filter) const;
  [[nodiscard]] QToolButton* FixControl() const { return fix_; }

 signals:
  void FilterChosen(ts5::FilterId filter);
  void TileToggled(ts5::FilterId filter);
  void FixToggled(bool fixed);
  void Hint(const QString& text);  // "" when nothing is pointed at any more

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  struct Row {
    QWidget* line;
    TileButton* tile;
    QToolButton* toggle;
  };
  bool HandleKey(std::size_t row, bool onToggle, int key);
  void FocusRow(std::size_t from, int step, bool onToggle);
  void UpdateTabStop();

  std::array<Row, kFilterCount> rows_{};
  FilterId current_ = FilterId::None;
  QScrollArea* scroll_;
  QToolButton* fix_;
};

}  // namespace ts5
