// What a job shows of its run: two progress bars with a status line, or the list of hits of a search; and
// below it the protocol, once there is some. One panel per job, so that every job keeps what its run has
// brought.
#pragma once

#include <QElapsedTimer>
#include <QLabel>
#include <QListView>
#include <QProgressBar>
#include <QStringListModel>
#include <QTimer>
#include <QWidget>
#include <chrono>
#include <functional>
#include <optional>

#include "app/run/desktop_run_host.h"
#include "app/run/hit_model.h"
#include "app/run/hit_music.h"
#include "app/run/hit_view.h"
#include "frame/ui/elided_label.h"
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
  // The record of the search is the result's payload.
  void EndSearch(const RunResult& result);
  [[nodiscard]] bool Searching() const { return searching_; }
  // The time that has gone by since, while the run goes on.
  void ShowTime();
  // "45 %, noch etwa 1:20" for the job's button; "" while there is nothing to tell.
  [[nodiscard]] QString BriefProgress() const;
  // A disc or a track is being written, which cannot be stopped.
  [[nodiscard]] bool Recording() const { return progress_ && progress_->buffer.has_value(); }
  void SetTask(const QString& text);
  void SetStatus(const QString& text);
  [[nodiscard]] HitModel& Hits() { return hits_; }
  [[nodiscard]] const SearchResults& Results() const { return results_; }

  [[nodiscard]] QProgressBar* FilesBar() const { return files_; }
  [[nodiscard]] QProgressBar* ItemBar() const { return item_; }
  [[nodiscard]] QLabel* TaskLabel() const { return task_; }
  [[nodiscard]] QLabel* StatusLabel() const { return status_; }
  [[nodiscard]] QLabel* TimeLabel() const { return time_; }
  [[nodiscard]] HitView* Hitlist() const { return hitView_; }
  [[nodiscard]] HitMusic* Music() const { return hitMusic_; }
  [[nodiscard]] QListView* ProtocolView() const { return protocolView_; }

 private:
  void SetProgress(const RunProgress& progress);
  [[nodiscard]] std::optional<std::chrono::milliseconds> RemainingNow() const;
  void ShowHits();
  void ShowMusic();  // of the hit with the focus

  FilterId filter_ = FilterId::None;
  std::optional<RunProgress> progress_;
  QElapsedTimer sinceProgress_;
  ElidedLabel* task_;  // hidden while there is nothing to say
  ElidedLabel* status_;
  ElidedLabel* time_;
  QProgressBar* files_;
  QProgressBar* item_;
  QProgressBar* buffer_;  // of a recording; hidden otherwise
  SearchResults results_;
  HitModel hits_{results_};
  HitView* hitView_;
  HitMusic* hitMusic_;
  QTimer hitTimer_;  // while it runs, new hits wait
  bool searching_ = false;
  QListView* protocolView_;
  QStringListModel protocol_;
};

}  // namespace ts5
