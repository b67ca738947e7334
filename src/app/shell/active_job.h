// The job that the window works on, and what follows from it: which filters fit its files, whether it can
// run, and where it would write. Who changes something of the job says so here; who shows something of it
// hears of it from here.
#pragma once

#include <QObject>
#include <string>

#include "frame/filter_bar.h"
#include "frame/job.h"
#include "frame/jobs.h"

namespace ts5 {

class Application;

class ActiveJob : public QObject, private JobWindow {
  Q_OBJECT

 public:
  // dialogs: how the changes of jobs and filters ask.
  ActiveJob(Application& application, JobDialogs& dialogs, QObject* parent);

  [[nodiscard]] Job& operator*() const;
  [[nodiscard]] Job* operator->() const { return &**this; }

  // --- other jobs

  // Shows the job from the ground up.
  void Show();
  // Makes another job the active one (0: the default job), after the settings' policy for the one that is
  // left.
  void Activate(std::size_t number);
  // False when the job has gone or could not be shown.
  [[nodiscard]] bool Activate(JobId job);
  // Asks. True when the job has gone; if it was the active one, the default job is so now.
  [[nodiscard]] bool Remove(std::size_t number);
  // Brings the job back that was removed last, as the active one.
  void RestoreRemoved();
  // The destination panel goes into the job.
  void CommitDestination() { ts5::CommitDestination(**this, panel_); }
  // The same at the end of the program, after the policy.
  void CommitAtEnd(JobSaving policy);

  // --- changes of the job

  // What is selected and not in the job yet comes into it.
  void Settle() { emit Settling(); }
  // The destination goes with the filter, and comes back with it. Asks where something would be lost; false
  // when the filter stays.
  bool SwitchFilter(FilterId filter);
  void ToggleTile(FilterId filter);
  void FixFilter(bool fixed);
  // A setting, for all jobs.
  void ShowAllFilters(bool all);
  [[nodiscard]] bool ShowsAllFilters() const;
  // It has another source than before: the list, a drive, a directory.
  void ShowSource();
  // Its files are others, or others of them are selected.
  void ChangeFiles();
  // Its run began or ended: all but the destination, which is the user's meanwhile.
  void ChangeRun();
  // What can be done with it has changed.
  void Refresh() { emit Changed(); }
  // Its source directory is an audio CD: is known when it has been read.
  void SetAudioCd(bool audioCd);
  // Its destination is another one now.
  void ShowDestination();
  // What the destination panel holds.
  void SetPanel(const DestinationPanel& panel) { panel_ = panel; }
  void SetDestinationName(const std::string& name);
  // For automatic names; "" as the settings say.
  void SetTargetDirectory(const std::string& directory);

  // --- what follows

  [[nodiscard]] const FilterBar& Bar() const { return bar_; }
  // This build has the filter.
  [[nodiscard]] bool Offers(FilterId filter) const;
  // The filter takes the files, and has the devices that it needs.
  [[nodiscard]] bool CanRun() const;
  // The source is a directory, and that an audio CD.
  [[nodiscard]] bool IsAudioCd() const;
  // What the destination panel holds.
  [[nodiscard]] const DestinationPanel& Destination() const { return panel_; }
  // The automatic name that the destination field was filled in with.
  [[nodiscard]] const std::string& OfferedDestination() const { return offered_; }

 signals:
  void Settling();
  // What is to be shown anew. Of a job that becomes the active one all of it, in this order.
  void FilterChanged();
  void JobShown();
  void DestinationReplaced();
  void SourceReplaced();
  void BarChanged();
  void DestinationNamed(const std::string& name);
  // What can be done is something else now: files, selection, run.
  void Changed();

 private:
  // JobWindow
  [[nodiscard]] bool Confirm(std::string_view question, MessageIcon icon, Answer preset) override;
  void Tell(std::string_view text, MessageIcon icon) override;
  [[nodiscard]] std::optional<DestinationPanel> Panel() override { return panel_; }
  [[nodiscard]] bool Show(Job& job) override;

  void UpdateBar();
  void OfferDestination();

  Application& application_;
  JobDialogs& dialogs_;
  FilterBar bar_;
  DestinationPanel panel_;
  std::string offered_;
  FilterId offeredFor_ = FilterId::None;  // the filter that the field's name is for
  std::string audioCd_;                   // the directory that is known to be one
};

}  // namespace ts5
