// The main window: it shows the active job in its areas and carries out the commands of the table, each group
// of them in a class of its own.
#pragma once

#include <QLabel>
#include <QMainWindow>
#include <QPointer>
#include <QSplitter>
#include <QStackedWidget>
#include <map>
#include <memory>
#include <optional>

#include "app/application.h"
#include "app/command_actions.h"
#include "app/dialog_queue.h"
#include "app/filter_panel.h"
#include "app/help_window.h"
#include "app/job_bar.h"
#include "app/run_panel.h"
#include "app/source_area.h"
#include "app/target_area.h"
#include "app/window_places.h"
#include "frame/ui/dialog_host.h"

namespace ts5 {

class AreaCommands;
class DiscCommands;
class FilterCommands;
class HelpCommands;
class JobCommands;
class ListCommands;
class PlaybackCommands;
class RunCommands;
class SearchCommands;
class SourceCommands;

class MainWindow : public QMainWindow, public JobWindow, public DialogHost {
  Q_OBJECT

 public:
  explicit MainWindow(Application& application);
  ~MainWindow() override;

  // Shows the default job; called once, before the window is shown.
  void Begin();
  // Makes the default job a list job and loads a file-list file into it.
  void LoadFileList(const std::string& path);
  // Carries a command out as if it came from its menu, unless it is disabled.
  void Trigger(CommandId command);
  // Ends the program without the question whether to end it.
  void EndWithoutQuestion();

  [[nodiscard]] Application& App() { return application_; }
  // The job that the window shows.
  [[nodiscard]] Job& ActiveJob() { return *shown_; }
  [[nodiscard]] CommandActions& Actions() { return *actions_; }
  [[nodiscard]] FilterPanel& Filters() { return *filters_; }
  [[nodiscard]] JobBar& JobButtons() { return *jobBar_; }
  [[nodiscard]] SourceArea& Source() { return *source_; }
  [[nodiscard]] TargetArea& Target() { return *target_; }
  [[nodiscard]] RunPanel& PanelOf(const Job& job);
  [[nodiscard]] DialogQueue& Dialogs() { return dialogs_; }
  [[nodiscard]] PlaybackCommands& Playback() { return *playback_; }
  [[nodiscard]] JobCommands& JobActions() { return *jobCommands_; }
  [[nodiscard]] SourceCommands& Sources() { return *sources_; }
  [[nodiscard]] DiscCommands& Discs() { return *discs_; }
  // What a command does; each group of commands registers its own.
  void On(CommandId command, std::function<void()> action) { handlers_[command] = std::move(action); }
  [[nodiscard]] QString StatusText() const { return status_->text(); }

  // Shows what follows from the job: its filter bar, destination, run display, commands.
  void Refresh();
  void RefreshFilterBar();
  // Lays the window out for the job's filter after it was switched.
  void ShowFilter();
  void RefreshDestination();
  void RefreshRunDisplay();
  void RefreshJobBar();
  void RefreshCommands();
  // In the lists of hits of all jobs.
  void ShowWholePaths(bool wholePaths);
  // Forgets the panel of a job that goes.
  void DropPanel(const JobRun* run);
  void SetMaximised(bool maximised);
  [[nodiscard]] bool IsListMaximised() const { return maximised_; }

  // JobWindow
  [[nodiscard]] bool Confirm(std::string_view question, MessageIcon icon, Answer preset) override;
  void Tell(std::string_view text, MessageIcon icon) override;
  [[nodiscard]] std::optional<DestinationPanel> Panel() override;
  [[nodiscard]] bool Show(Job& job) override;

  // DialogHost
  void OpenHelp(const QString& topic) override;
  void ShowPrompt(const QString& prompt) override;

 protected:
  void closeEvent(QCloseEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  void BuildAreas();
  void ConnectAreas();
  void ShowFilterPanels(const Job& job);
  [[nodiscard]] AreaSplitters Splitters() const { return {across_, source_->Splitter(), down_}; }
  void End(JobSaving policy);

  Application& application_;
  Job* shown_ = nullptr;
  CommandActions* actions_;
  std::map<CommandId, std::function<void()>> handlers_;
  FilterPanel* filters_ = nullptr;
  JobBar* jobBar_ = nullptr;
  SourceArea* source_ = nullptr;
  TargetArea* target_ = nullptr;
  QStackedWidget* panels_ = nullptr;
  std::map<const JobRun*, RunPanel*> panelOf_;
  QSplitter* across_ = nullptr;  // filter bar | the rest
  QSplitter* down_ = nullptr;    // source | destination and run panel
  QWidget* lower_ = nullptr;
  QLabel* status_ = nullptr;
  DialogQueue dialogs_;
  std::unique_ptr<HelpWindow> help_;

  std::unique_ptr<SourceCommands> sources_;
  std::unique_ptr<ListCommands> lists_;
  std::unique_ptr<DiscCommands> discs_;
  std::unique_ptr<JobCommands> jobCommands_;
  std::unique_ptr<FilterCommands> filterCommands_;
  std::unique_ptr<RunCommands> runs_;
  std::unique_ptr<SearchCommands> searches_;
  std::unique_ptr<PlaybackCommands> playback_;
  std::unique_ptr<HelpCommands> helpCommands_;
  std::unique_ptr<AreaCommands> areaCommands_;

  DestinationMode destinationMode_;
  QPointer<QWidget> focusBeforeRun_;
  bool canRun_ = false;  // as far as filter and selection are concerned
  bool maximised_ = false;
  bool ended_ = false;
};

}  // namespace ts5
