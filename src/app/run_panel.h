// What a job shows of its run: two progress bars with a status line, or the list of hits of a search; and
// below it the protocol, once there is some. One panel per job, so that every job keeps what its run has
// brought.
#pragma once

#include <QLabel>
#include <QListView>
#include <QProgressBar>
#include <QStringListModel>
#include <QTimer>
#include <QWidget>
#include <functional>

#include "app/desktop_run_host.h"
#include "app/hit_model.h"
#include "app/hit_view.h"
#include "search/search_results.h"

namespace ts5 {

class RunPanel : public QWidget {
  Q_OBJECT

 public:
  explicit RunPanel(QWidget* parent = nullptr);

  // Lays the panel out for a filter. Hits stay until a search begins anew.
  void SetFilter(FilterId filter);
  // Bars at zero, status and protocol empty; hits stay.
  void Reset();
  // False when the memory for the hits is exhausted.
  [[nodiscard]] bool Take(const RunNews& news);
  // A search begins: the old hits are cleared after the setting; ask is called when the user decides.
  void BeginSearch(SearchRecord record, OldSearchResults policy, const std::function<bool()>& ask);
  void EndSearch(const SearchRecord& record);
  [[nodiscard]] bool Searching() const { return searching_; }
  void SetStatus(const QString& text);
  [[nodiscard]] HitModel& Hits() { return hits_; }
  [[nodiscard]] const SearchResults& Results() const { return results_; }

  [[nodiscard]] QProgressBar* FilesBar() const { return files_; }
  [[nodiscard]] QProgressBar* ItemBar() const { return item_; }
  [[nodiscard]] QLabel* StatusLabel() const { return status_; }
  [[nodiscard]] HitView* Hitlist() const { return hitView_; }
  [[nodiscard]] QListView* ProtocolView() const { return protocolView_; }

 private:
  void SetProgress(const RunProgress& progress);
  void ShowHits();

  FilterId filter_ = FilterId::None;
  QLabel* status_;
  QProgressBar* files_;
  QProgressBar* item_;
  SearchResults results_;
  HitModel hits_{results_};
  HitView* hitView_;
  QTimer hitTimer_;  // while it runs, new hits wait
  bool searching_ = false;
  QListView* protocolView_;
  QStringListModel protocol_;
};

}  // namespace ts5
