// The filter bar at the left: one tile per offered filter, each with a small button that collapses or expands
// it, the control that fixes the current filter, and the switch that shows all filters, in groups. It shows
// what it is given and reports what the user wants. While the current filter has no tile, as it does not fit
// the sources, a note on top names it and says what it needs.
//
// Keys: Up and Down move between the tiles, Right and Left between a tile and its small button, Enter and the
// space bar press, '+' and '-' expand and collapse.
#pragma once

#include <QLabel>
#include <QScrollArea>
#include <QToolButton>
#include <QVBoxLayout>
#include <QWidget>
#include <array>
#include <span>
#include <vector>

#include "app/look/tile_button.h"
#include "frame/filter_id.h"
#include "platform/base/strings.h"

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
    QString reason = {};  // why it does not fit
    QString help = {};    // what to do about that, or what else there is to say
    bool compact = false;
  };

  // looks: one per filter, in the order of FilterId.
  FilterPanel(std::span<const TileButton::Look> looks, TileStyle style, QWidget* parent = nullptr);

  // all: the switch is on.
  void Show(std::span<const Tile> tiles, FilterId current, bool fixed, bool all);
  [[nodiscard]] TileButton* TileOf(FilterId filter) const;
  [[nodiscard]] QToolButton* ToggleOf(FilterId filter) const;
  [[nodiscard]] QToolButton* FixControl() const { return fix_; }
  [[nodiscard]] QToolButton* AllControl() const { return all_; }

 signals:
  void FilterChosen(ts5::FilterId filter);
  void TileToggled(ts5::FilterId filter);
  void FixToggled(bool fixed);
  void AllToggled(bool all);
  void Hint(const QString& text);  // "" when nothing is pointed at any more

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  struct Row {
    QWidget* line;
    TileButton* tile;
    QToolButton* toggle;
  };
  [[nodiscard]] QToolButton* MakeSwitch(const char* name, TextId text, TextId toolTip);
  void Arrange(bool inGroups);
  bool HandleKey(std::size_t row, bool onToggle, int key);
  void FocusRow(std::size_t from, int step, bool onToggle);
  void UpdateTabStop();

  std::array<Row, kFilterCount> rows_{};
  std::array<std::size_t, kFilterCount> order_{};  // of the rows, from the top
  std::vector<QLabel*> headings_;                  // of the groups
  QVBoxLayout* lines_;
  bool inGroups_ = false;
  FilterId current_ = FilterId::None;
  QLabel* note_;
  QScrollArea* scroll_;
  QToolButton* all_;
  QToolButton* fix_;
};

}  // namespace ts5
