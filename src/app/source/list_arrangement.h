// How the user looks at the list: which columns it has, by what it is sorted, what it is narrowed down to.
// The list itself keeps its order until the user says that it is to become the one that is seen.
#pragma once

#include <QMenu>
#include <QObject>
#include <QTimer>

#include "app/shell/active_job.h"
#include "app/shell/desk.h"
#include "app/source/facts_reading.h"
#include "app/source/source_area.h"
#include "app/source/source_commands.h"
#include "frame/settings.h"

namespace ts5 {

class ListArrangement : public QObject {
 public:
  // memoryFile: see FactsReading.
  ListArrangement(Desk& desk, ActiveJob& active, SourceArea& area, SourceCommands& source, Settings& settings,
                  std::string memoryFile);

  [[nodiscard]] const FactsReading& Reading() const { return reading_; }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void Refresh();  // the commands
  void Show(const ListOrder& order);
  void SortBy(FileColumn column);
  void Sort(const ListOrder& order);
  void TakeFilter();
  void SortAgain();
  void ShowColumn(FileColumn column, bool shown);
  void LayColumns();  // as the settings say
  void TakeColumns(std::string stored);
  void ShowMenu(const QPoint& place);
  void TakeOrder();

  Desk& desk_;
  ActiveJob& active_;
  SourceArea& area_;
  FileView& view_;
  FileViewModel& model_;
  SourceCommands& source_;
  Settings& settings_;
  FactsReading reading_;
  QTimer filterTimer_;
  QTimer countTimer_;
  QTimer sortTimer_;
};

}  // namespace ts5
