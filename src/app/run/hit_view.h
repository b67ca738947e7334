// The list of hits. It tells what the user wants of it; the tooltip of a hit in a MIDI file gives its time by
// all tempo changes of the file, which is looked up while the tooltip already shows.
#pragma once

#include <QTreeView>
#include <optional>
#include <vector>

#include "app/shell/background_worker.h"

namespace ts5 {

class HitModel;

class HitView : public QTreeView {
  Q_OBJECT

 public:
  explicit HitView(HitModel& model, QWidget* parent = nullptr);

  // The selected results in their order; the one with the focus; nothing when there is none.
  [[nodiscard]] std::vector<std::size_t> SelectedHits() const;
  [[nodiscard]] std::optional<std::size_t> CurrentHit() const;

 signals:
  void SelectionChanged();
  void CopyWanted();
  void PlayWanted();  // Enter or a double click
  void Browsed();     // an arrow key went on to another hit
  void MenuWanted(const QPoint& globalPosition);

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  bool viewportEvent(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;

 private:
  void ShowTip(const QPoint& position, const QPoint& globalPosition);

  HitModel& model_;
  BackgroundWorker worker_;
};

}  // namespace ts5
