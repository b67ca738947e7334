// What a job shows of its run: two progress bars with a status line, or the list of hits of a search; and
// below it the protocol, once there is some. One panel per job, so that every job keeps what its run has
// brought.
#pragma once

#include <QLabel>
#include <QListView>
#include <QProgressBar>
#include <QStringListModel>
#include <QTreeView>
#include <QWidget>

#include "app/desktop_run_host.h"
#include "app/hit_model.h"

namespace ts5 {

class RunPanel : public QWidget {
  Q_OBJECT

 public:
  explicit RunPanel(QWidget* parent = nullptr);

  // Lays the panel out for a filter; what an earlier run left is cleared when the filter is another one.
  void SetFilter(FilterId filter);
  // Bars at zero, status and protocol empty; hits stay.
  void Reset();
  void Take(const RunNews& news);
  void SetStatus(const QString& text);
  [[nodiscard]] HitModel& Hits() { return hits_; }

  [[nodiscard]] QProgressBar* FilesBar() const { return files_; }
  [[nodiscard]] QProgressBar* ItemBar() const { return item_; }
  [[nodiscard]] QLabel* StatusLabel() const { return status_; }
  [[nodiscard]] QTreeView* HitView() const { return hitView_; }
  [[nodiscard]] QListView* ProtocolView() const { return protocolView_; }

 private:
  void SetProgress(const RunProgress& progress);

  FilterId filter_ = FilterId::None;
  QLabel* status_;
  QProgressBar* files_;
  QProgressBar* item_;
  QTreeView* hitView_;
  HitModel hits_;
  QListView* protocolView_;
  QStringListModel protocol_;
};

}  // namespace ts5
