// The main window: it lays out its areas, makes the groups of commands that work on them, and tells each what
// it needs of the others.
#pragma once

#include <QMainWindow>
#include <memory>
#include <string>
#include <vector>

#include "app/listen/listen_commands.h"
#include "app/run/interrupted_runs.h"
#include "app/run/job_windows.h"
#include "app/run/layout_preview.h"
#include "app/run/playback_commands.h"
#include "app/run/run_commands.h"
#include "app/run/run_display.h"
#include "app/run/run_panels.h"
#include "app/run/search_commands.h"
#include "app/shell/active_job.h"
#include "app/shell/application.h"
#include "app/shell/area_commands.h"
#include "app/shell/desk.h"
#include "app/shell/filter_commands.h"
#include "app/shell/filter_panel.h"
#include "app/shell/help_commands.h"
#include "app/shell/job_bar.h"
#include "app/shell/job_commands.h"
#include "app/shell/settings_commands.h"
#include "app/shell/store_watch.h"
#include "app/shell/window_places.h"
#include "app/source/disc_commands.h"
#include "app/source/list_arrangement.h"
#include "app/source/list_commands.h"
#include "app/source/source_area.h"
#include "app/source/source_commands.h"
#include "app/target/sound_watch.h"
#include "app/target/target_area.h"
#include "app/target/target_commands.h"
#include "app/target/target_folder.h"

namespace ts5 {

class MainWindow : public QMainWindow {
  Q_OBJECT

 public:
  explicit MainWindow(Application& application);
  ~MainWindow() override;

  // Shows the default job; called once, before the window is shown.
  void Begin();
  // What is to be told and asked after the start; called once the window is on the screen, lest it lie over
  // its own boxes.
  void ShowNotices();
  // Files from outside: a file list is loaded, music comes into the free file list of the active job, or of
  // the default job while that one runs. At the start a list makes the default job a list job.
  void OpenAtStart(const std::vector<std::string>& files);
  void OpenFiles(const std::vector<std::string>& files);
  // Before all other windows, where the desktop lets it.
  void ComeToFront();
  // Ends the program without the question whether to end it.
  void EndWithoutQuestion();

  [[nodiscard]] Desk& GetDesk() { return *desk_; }
  [[nodiscard]] CommandActions& Actions() { return desk_->Actions(); }
  [[nodiscard]] ActiveJob& Active() { return *active_; }
  [[nodiscard]] FilterPanel& Filters() { return *filters_; }
  [[nodiscard]] JobBar& JobButtons() { return *jobBar_; }
  [[nodiscard]] SourceArea& Source() { return *source_; }
  [[nodiscard]] TargetArea& Target() { return *target_; }
  [[nodiscard]] RunPanels& Panels() { return *panels_; }
  [[nodiscard]] JobWindows& Windows() { return *windows_; }
  [[nodiscard]] ListenCommands& Listening() { return *listening_; }
  [[nodiscard]] const HelpCommands& Help() const { return *helpCommands_; }

 protected:
  void closeEvent(QCloseEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  void MakeAreas();
  void LayAreasOut();
  void FillAreas();
  // The drives of the machine in the selector and in the list of recorders.
  void ShowDrives();
  void ShowSoundDevices();
  void MakeCommands();
  void Connect();
  void ConnectRuns();
  [[nodiscard]] AreaSplitters Splitters() const { return {across_, source_->Splitter(), down_}; }
  void ShowFilter();
  void SetMaximised(bool maximised);
  void ToggleMaximised();
  void EditParameters();
  void TakeOverJobs();
  // False when the session could not be saved and the user wants to stay. attended: somebody can answer.
  [[nodiscard]] bool End(JobSaving policy, bool attended);

  Application& application_;
  Desk* desk_;
  ActiveJob* active_;
  StoreWatch watch_;

  FilterPanel* filters_ = nullptr;
  JobBar* jobBar_ = nullptr;
  SourceArea* source_ = nullptr;
  TargetArea* target_ = nullptr;
  RunPanels* panels_ = nullptr;
  LayoutPreview* preview_ = nullptr;
  QSplitter* across_ = nullptr;  // filter bar | the rest
  QSplitter* down_ = nullptr;    // source | destination and run panel
  QWidget* lower_ = nullptr;

  std::unique_ptr<TargetCommands> targets_;
  std::unique_ptr<TargetFolder> targetFolder_;
  std::unique_ptr<SourceCommands> sources_;
  std::unique_ptr<ListCommands> lists_;
  std::unique_ptr<ListArrangement> arrangement_;
  std::unique_ptr<DiscCommands> discs_;
  std::unique_ptr<ListenCommands> listening_;
  std::unique_ptr<SoundWatch> sound_;
  std::unique_ptr<JobCommands> jobs_;
  std::unique_ptr<FilterCommands> filterCommands_;
  std::unique_ptr<RunCommands> runs_;
  std::unique_ptr<InterruptedRuns> interrupted_;
  std::unique_ptr<RunDisplay> runDisplay_;
  std::unique_ptr<SearchCommands> searches_;
  std::unique_ptr<JobWindows> windows_;
  std::unique_ptr<PlaybackCommands> playback_;
  std::unique_ptr<SettingsCommands> settings_;
  std::unique_ptr<HelpCommands> helpCommands_;
  std::unique_ptr<AreaCommands> areaCommands_;

  bool maximised_ = false;
  bool ended_ = false;
};

}  // namespace ts5
