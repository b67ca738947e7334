#include "app/main_window.h"

#include <QApplication>
#include <QCloseEvent>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QStatusBar>
#include <QVBoxLayout>
#include <array>

#include "app/area_commands.h"
#include "app/disc_commands.h"
#include "app/filter_commands.h"
#include "app/help_commands.h"
#include "app/job_commands.h"
#include "app/list_commands.h"
#include "app/playback_commands.h"
#include "app/run_commands.h"
#include "app/search_commands.h"
#include "app/source_commands.h"
#include "app/texts.h"
#include "app/tile_looks.h"
#include "frame/destination_display.h"
#include "frame/file_drop.h"
#include "frame/texts.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "resources/icons.h"

namespace ts5 {
namespace {

constexpr QSize kSmallestWindow{900, 620};

// What can be done with the files under the mouse, in the order of the menu.
constexpr std::array kFileCommands{CommandId::Properties, CommandId::Rename, CommandId::MoveUp,
                                   CommandId::MoveDown, CommandId::Delete};

QStringList ToQtList(const std::vector<std::string>& names) {
  QStringList list;
  for (const std::string& name : names) list.append(ToQt(name));
  return list;
}

// A menu text as the text of a button: without its keys.
QString WithoutKeys(TextId text) {
  return QtText(text).section('\t', 0, 0);
}

}  // namespace

MainWindow::MainWindow(Application& application)
    : application_(application), actions_(new CommandActions(this)), dialogs_(this) {
  setObjectName("mainWindow");
  setWindowTitle(QtText(texts::ApplicationTitle));
  setWindowIcon(Icon("stavora-ts5"));
  setAcceptDrops(true);
  setMinimumSize(kSmallestWindow);
  BuildAreas();
  actions_->FillMenuBar(*menuBar());
  source_->Files()->setContextMenuPolicy(Qt::ActionsContextMenu);
  for (const CommandId command : kFileCommands) source_->Files()->addAction(actions_->Action(command));
  menuBar()->setAccessibleName(QtText(texts::MenuBarName));
  sources_ = std::make_unique<SourceCommands>(*this);
  lists_ = std::make_unique<ListCommands>(*this);
  discs_ = std::make_unique<DiscCommands>(*this);
  jobCommands_ = std::make_unique<JobCommands>(*this);
  filterCommands_ = std::make_unique<FilterCommands>(*this);
  runs_ = std::make_unique<RunCommands>(*this);
  searches_ = std::make_unique<SearchCommands>(*this);
  playback_ = std::make_unique<PlaybackCommands>(*this);
  helpCommands_ = std::make_unique<HelpCommands>(*this);
  areaCommands_ = std::make_unique<AreaCommands>(*this);
  On(CommandId::Quit, [this] { close(); });
  ConnectAreas();
}

MainWindow::~MainWindow() {
  if (!ended_) runs_->Close();
}

void MainWindow::BuildAreas() {
  jobBar_ = new JobBar(this);
  actions_->AddTo(*jobBar_->Menu(), CommandId::DeleteJob);
  actions_->AddTo(*jobBar_->Menu(), CommandId::RenameJob);
  const auto looks = TileLooks();
  filters_ = new FilterPanel(looks, StyleOf(application_.GetSettings().skinLayout), this);
  filters_->setMinimumWidth(150);
  source_ = new SourceArea(this);
  source_->setMinimumHeight(180);
  target_ = new TargetArea(this);
  panels_ = new QStackedWidget(this);
  panels_->setObjectName("runPanels");

  lower_ = new QWidget(this);
  auto* lower = new QVBoxLayout(lower_);
  lower->setContentsMargins(0, 0, 0, 0);
  lower->setSpacing(8);
  lower->addWidget(target_);
  lower->addWidget(panels_, 1);
  down_ = new QSplitter(Qt::Vertical, this);
  down_->addWidget(source_);
  down_->addWidget(lower_);
  down_->setStretchFactor(0, 1);
  down_->setStretchFactor(1, 0);
  across_ = new QSplitter(Qt::Horizontal, this);
  across_->addWidget(filters_);
  across_->addWidget(down_);
  across_->setStretchFactor(0, 0);
  across_->setStretchFactor(1, 1);
  for (QSplitter* splitter : {down_, across_}) splitter->setChildrenCollapsible(false);

  auto* centre = new QWidget(this);
  auto* layout = new QVBoxLayout(centre);
  layout->setContentsMargins(8, 6, 8, 6);
  layout->setSpacing(6);
  layout->addWidget(jobBar_);
  layout->addWidget(across_, 1);
  setCentralWidget(centre);

  status_ = new QLabel(QtText(texts::StatusReady), this);
  status_->setObjectName("status");
  status_->setTextFormat(Qt::PlainText);
  statusBar()->addWidget(status_, 1);
  statusBar()->setSizeGripEnabled(true);

  const DeviceLists& devices = application_.Devices();
  target_->SetDevices(DeviceKind::Midi, ToQtList(devices.midiOutputs));
  target_->SetDevices(DeviceKind::Audio, ToQtList(devices.audioOutputs));
  target_->SetDevices(DeviceKind::Drive, ToQtList(devices.writers));
  target_->SetDevices(DeviceKind::Printer, ToQtList(devices.printers));
  std::vector<DriveSelector::Drive> drives;
  const auto& volumes = application_.Volumes().Volumes();
  for (int i = 0; i < static_cast<int>(volumes.size()); ++i) {
    drives.push_back({i, ToQt(application_.Volumes().DisplayText(i))});
  }
  source_->Drives()->SetDrives(drives);
}

void MainWindow::ConnectAreas() {
  connect(actions_, &CommandActions::Triggered, this, &MainWindow::Trigger);
  const auto hint = [this](const QString& text) {
    text.isEmpty() ? statusBar()->clearMessage() : statusBar()->showMessage(text);
  };
  connect(filters_, &FilterPanel::Hint, this, hint);
  connect(jobBar_, &JobBar::Hint, this, hint);

  connect(source_->Files(), &FileView::LabelEditingChanged, this, [this](bool editing) {
    actions_->SetAccelerators(editing ? AcceleratorTable::Off : AcceleratorsOf(ActiveJob().filter));
  });
  connect(source_->Files(), &FileView::DragChanged, this,
          [this](bool dragging) { ShowPrompt(dragging ? QtText(texts::DragToList) : QString()); });

  connect(target_, &TargetArea::ChoiceChanged, this, [this] { RefreshRunDisplay(); });
  for (QSplitter* splitter : {across_, down_, source_->Splitter()}) {
    connect(splitter, &QSplitter::splitterMoved, this, [this] {
      if (!maximised_) ActiveJob().sizing = PlacesOf(Splitters(), ActiveJob().sizing);
    });
  }
}

void MainWindow::Begin() {
  RestoreWindowPlace(*this, application_.GetSettings());
  (void)Show(application_.GetJobs()[0]);
  // The files of a directory are still to come.
  if (ActiveJob().Mode() == SourceMode::List) {
    source_->Files()->setFocus();
  } else {
    source_->Tree()->setFocus();
  }
  for (const std::string& notice : application_.Notices()) {
    dialogs_.Add([this, text = ToQt(notice)]() -> QDialog* {
      return new QMessageBox(QMessageBox::Information, QtText(texts::ApplicationTitle), text, QMessageBox::Ok,
                             this);
    });
  }
}

void MainWindow::LoadFileList(const std::string& path) {
  Job& job = ActiveJob();
  job.sourceDrive = kListModeDrive;
  job.directory = {};
  lists_->Load(path, true);
}

void MainWindow::Trigger(CommandId command) {
  const auto handler = handlers_.find(command);
  if (ended_ || handler == handlers_.end() || !actions_->Action(command)->isEnabled()) return;
  sources_->TakeSelection();
  // A copy: what it does may register others.
  const auto action = handler->second;
  action();
}

// --- showing

bool MainWindow::Show(Job& job) {
  shown_ = &job;
  sources_->Leave();
  RunPanel& panel = PanelOf(job);
  panels_->setCurrentWidget(&panel);
  // A job that never had a filter gets its first one here.
  RefreshFilterBar();
  ShowFilterPanels(job);
  DestinationPanel destination;
  destination.name = job.destinationName;
  destination.screen = job.destinationIsScreen;
  const bool midi = job.destinationDevice >= kMidiDeviceBase;
  destination.midiDevice = midi ? job.destinationDevice - kMidiDeviceBase : -1;
  if (!midi) destination.audioDevice = destination.drive = destination.printer = job.destinationDevice;
  target_->SetPanel(destination);
  SetMaximised(job.Mode() == SourceMode::List && job.fileWindowMaximised);
  sources_->Show(job);
  if (job.destinationName.empty()) RefreshDestination();
  RefreshJobBar();
  Refresh();
  return true;
}

void MainWindow::ShowFilterPanels(const Job& job) {
  PanelOf(job).SetFilter(job.filter);
  target_->ShowPanels(Descriptor(job.filter).panels);
  actions_->SetAccelerators(AcceleratorsOf(job.filter));
  ShowPlaces(Splitters(), job.sizing, IsFilter(job.filter) && IsSearch(job.filter), size());
}

void MainWindow::ShowFilter() {
  Job& job = ActiveJob();
  ShowFilterPanels(job);
  // The switch to or from the burner has emptied the list, and the burner's list has columns of its own.
  if (job.Mode() == SourceMode::List) sources_->Show(job);
  RefreshFilterBar();
  RefreshDestination();
  Refresh();
}

RunPanel& MainWindow::PanelOf(const Job& job) {
  RunPanel*& panel = panelOf_[job.run.Shared().get()];
  if (panel == nullptr) {
    panel = new RunPanel(panels_);
    panel->Hits().SetWholePaths(application_.GetSettings().searchWholePath);
    panels_->addWidget(panel);
    searches_->Attach(*panel);
  }
  return *panel;
}

void MainWindow::DropPanel(const JobRun* run) {
  const auto found = panelOf_.find(run);
  if (found == panelOf_.end()) return;
  found->second->deleteLater();
  panels_->removeWidget(found->second);
  panelOf_.erase(found);
}

void MainWindow::ShowWholePaths(bool wholePaths) {
  for (const auto& [run, panel] : panelOf_) panel->Hits().SetWholePaths(wholePaths);
}

void MainWindow::Refresh() {
  RefreshRunDisplay();
  RefreshCommands();
}

void MainWindow::RefreshFilterBar() {
  Job& job = ActiveJob();
  const auto refreshed = [&] {
    FilterBarInput input;
    input.source = sources_->Context();
    input.devices = application_.Devices().Counts();
    input.jobIsIdle = job.MayChange();
    input.filter = job.filter;
    input.filterFixed = job.filterFixed;
    input.words = job.filterStatus;
    input.appearance = application_.GetSettings().skinLayout;
    return ts5::RefreshFilterBar(input);
  };
  FilterBar bar = refreshed();
  if (bar.filter != job.filter && application_.GetJobs().SwitchFilter(job, bar.filter, *this))
    bar = refreshed();
  job.filterStatus = bar.words;
  job.filterFixed = bar.filterFixed;
  std::vector<FilterPanel::Tile> tiles;
  for (std::size_t i = 0; i < kFilterCount; ++i) {
    const auto filter = static_cast<FilterId>(i);
    const FilterTile& tile = bar.tiles[i];
    tiles.push_back({filter, tile.shown, tile.buttonEnabled && application_.Module(filter) != nullptr,
                     tile.toggleEnabled, !IsCollapsed(bar.words[i])});
  }
  filters_->Show(tiles, job.filter, job.filterFixed);
  canRun_ = bar.CanRun() && application_.Module(job.filter) != nullptr;
}

void MainWindow::RefreshDestination() {
  const Job& job = ActiveJob();
  const DestinationDisplay display =
      DisplayedDestination(job, application_.Module(job.filter),
                           DestinationRulesOf(application_.GetSettings()), SystemDestinationFiles());
  destinationMode_ = display.mode;
  if (display.name) target_->SetName(ToQt(*display.name));
}

void MainWindow::RefreshRunDisplay() {
  Job& job = ActiveJob();
  const Settings& settings = application_.GetSettings();
  destinationMode_ = DestinationModeOf(job, settings.noTargetDefault);
  const bool idle = job.MayChange();
  const bool running = job.State() != RunState::Idle;
  const RunWording wording = RunWordingOf(job.filter, job.State());
  target_->SetRunTexts(QtText(wording.button), WithoutKeys(wording.stopMenu));
  actions_->SetText(CommandId::Run, wording.menu);
  actions_->SetText(CommandId::Stop, wording.stopMenu);

  if (!idle && focusBeforeRun_ == nullptr) focusBeforeRun_ = QApplication::focusWidget();
  const bool mayRun = canRun_ && (idle || (IsPlayer(job.filter) && job.State() != RunState::Waiting));
  target_->Enable({.field = idle && destinationMode_.editable,
                   .choice = idle,
                   .devices = idle,
                   .run = mayRun || RunButtonStops(job.filter, job.State()),
                   .stop = running});
  source_->Enable({.drives = idle,
                   .tree = idle,
                   .files = idle && (source_->Model().Size() > 0 || job.Mode() == SourceMode::List ||
                                     discs_->DriveIsSource())});
  source_->SetFreeListCount(job.files.Size());
  if (idle && focusBeforeRun_ != nullptr) {
    if (focusBeforeRun_->isEnabled() && focusBeforeRun_->isVisible()) focusBeforeRun_->setFocus();
    focusBeforeRun_ = nullptr;
  } else if (!idle && (QApplication::focusWidget() == nullptr || !QApplication::focusWidget()->isEnabled())) {
    target_->StopButton()->setFocus();
  }
  actions_->SetEnabled(CommandId::Run, mayRun);
  actions_->SetEnabled(CommandId::Stop, running);
  for (const CommandId step : {CommandId::PlayerRestart, CommandId::PlayerPrevious, CommandId::PlayerNext})
    actions_->SetEnabled(step, running && IsPlayer(job.filter));
  actions_->SetEnabled(CommandId::StopByEscape, running || searches_->PlaysHit());
}

void MainWindow::RefreshJobBar() {
  Jobs& jobs = application_.GetJobs();
  std::vector<JobBar::Button> buttons;
  int active = 0;
  for (std::size_t i = 0; i <= jobs.Count(); ++i) {
    const Job& job = jobs[i];
    buttons.push_back({ToQt(job.title), ToQt(job.description), job.State() != RunState::Idle});
    if (&job == shown_) active = static_cast<int>(i);
  }
  const Job& job = ActiveJob();
  const bool disc = job.filter == FilterId::CdBurner || job.filter == FilterId::CdCopier;
  jobBar_->Show(buttons, active, !disc || job.State() == RunState::Idle, jobs.MayCreate());
}

void MainWindow::RefreshCommands() {
  const Job& job = ActiveJob();
  const Jobs& jobs = application_.GetJobs();
  const bool idle = job.MayChange();
  const bool list = job.Mode() == SourceMode::List;
  const std::size_t rows = source_->Model().Size();
  const bool selected = source_->Files()->selectionModel()->hasSelection();
  const std::size_t focus = source_->Files()->FocusRow();
  const bool focused = focus < rows;
  actions_->SetEnabled(CommandId::OpenList, idle);
  actions_->SetEnabled(CommandId::SaveList, !job.files.Empty());
  actions_->SetEnabled(CommandId::ClearList, idle && list && !job.files.Empty());
  actions_->SetEnabled(CommandId::ClearListSilently, idle && list);
  actions_->SetEnabled(CommandId::Delete, idle && selected && !sources_->IsAudioCd());
  actions_->SetEnabled(CommandId::MoveUp, idle && list && focused && focus > 0);
  actions_->SetEnabled(CommandId::MoveDown, idle && list && focused && focus + 1 < rows);
  actions_->SetEnabled(CommandId::Rename, idle && focused && !source_->Model().At(focus).cdTrack);
  actions_->SetEnabled(CommandId::Properties, focused);
  actions_->SetEnabled(CommandId::SwitchListMode, idle && (!list || !job.directory.path.empty()));
  actions_->SetEnabled(CommandId::TakeDrive, idle);
  actions_->SetEnabled(CommandId::NewJob, jobs.MayCreate());
  actions_->SetEnabled(CommandId::DeleteJob, jobs.MayRemove(jobs.ActiveNumber()));
  searches_->Refresh();
  discs_->Refresh();
}

void MainWindow::SetMaximised(bool maximised) {
  maximised_ = maximised;
  filters_->setVisible(!maximised);
  jobBar_->setVisible(!maximised);
  lower_->setVisible(!maximised);
  source_->SetMaximised(maximised);
  actions_->SetText(CommandId::MaximiseList, maximised ? texts::MenuNormaliseList : texts::MenuMaximiseList);
  actions_->Action(CommandId::MaximiseList)->setIcon(Icon(maximised ? "normalise" : "maximise"));
}

// --- asking and telling

bool MainWindow::Confirm(std::string_view question, MessageIcon /*icon*/, Answer preset) {
  return AskYesNo(this, ToQt(question), preset == Answer::Yes ? DefaultButton::Yes : DefaultButton::No);
}

void MainWindow::Tell(std::string_view text, MessageIcon icon) {
  icon == MessageIcon::Information ? ShowNotice(this, ToQt(text)) : ShowWarning(this, ToQt(text));
}

std::optional<DestinationPanel> MainWindow::Panel() {
  return target_->Panel();
}

void MainWindow::OpenHelp(const QString& topic) {
  if (help_ == nullptr) help_ = std::make_unique<HelpWindow>();
  help_->OpenTopic(topic);
}

void MainWindow::ShowPrompt(const QString& prompt) {
  status_->setText(prompt.isEmpty() ? QtText(texts::StatusReady) : prompt);
}

// --- files dropped beside the file view

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
  if (event->mimeData()->hasUrls() && event->source() == nullptr) event->acceptProposedAction();
}
void MainWindow::dropEvent(QDropEvent* event) {
  event->acceptProposedAction();
  QMetaObject::invokeMethod(
      this, [this] { Tell(DropWithoutList().text, MessageIcon::Information); }, Qt::QueuedConnection);
}

// --- the end

void MainWindow::closeEvent(QCloseEvent* event) {
  if (!ended_ && !Confirm(Text(texts::AskQuit), MessageIcon::Question, Answer::Yes)) {
    event->ignore();
    return;
  }
  if (!ended_) End(application_.GetSettings().jobSaving);
  event->accept();
}

void MainWindow::EndWithoutQuestion() {
  // Nobody may be there to answer: what was edited is kept.
  const JobSaving policy = application_.GetSettings().jobSaving;
  if (!ended_) End(policy == JobSaving::Ask ? JobSaving::Automatic : policy);
  close();
}

void MainWindow::End(JobSaving policy) {
  sources_->TakeSelection();
  StoreWindowPlace(*this, application_.GetSettings());
  sources_->Leave();
  help_.reset();
  application_.GetJobs().CommitAtEnd(policy, *this);
  ended_ = true;
  dialogs_.Clear();
  runs_->Close();
  searches_->Close();
  if (const auto failure = application_.Save()) Tell(*failure, MessageIcon::Exclamation);
  hide();
  (void)application_.StopRuns();
}

}  // namespace ts5
