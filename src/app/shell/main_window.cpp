#include "app/shell/main_window.h"

#include <QApplication>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QMenuBar>
#include <QMimeData>
#include <QTimer>
#include <QVBoxLayout>
#include <array>

#include "app/look/tile_looks.h"
#include "app/shell/parameter_windows.h"
#include "app/shell/session_end.h"
#include "app/texts.h"
#include "artworker/ui/element_clipboard.h"
#include "frame/file_drop.h"
#include "frame/file_types.h"
#include "frame/filter_catalogue.h"
#include "frame/texts.h"
#include "frame/ui/qt_text.h"
#include "platform/files/directories.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"
#include "resources/icons.h"

namespace ts5 {
namespace {

constexpr QSize kSmallestWindow{800, 440};
constexpr const char* kFactsFile = "dateiangaben";  // what is remembered of files, in the program's directory
constexpr int kMessageTime = 10'000;                // milliseconds of a message in the status bar
constexpr int kRetry = 300;  // milliseconds until a window is looked at again that a dialog holds

// What can be done with the files under the mouse, in the order of the menu.
constexpr std::array kFileCommands{CommandId::ListenFile,     CommandId::Properties, CommandId::ShowNotation,
                                   CommandId::SelectAllFiles, CommandId::Rename,     CommandId::MoveUp,
                                   CommandId::MoveDown,       CommandId::Delete};

QStringList ToQtList(const std::vector<std::string>& names) {
  QStringList list;
  for (const std::string& name : names) list.append(ToQt(name));
  return list;
}

}  // namespace

MainWindow::MainWindow(Application& application)
    : application_(application),
      desk_(new Desk(*this)),
      active_(new ActiveJob(application, *desk_, this)),
      watch_(application, this) {
  setObjectName("mainWindow");
  setWindowTitle(QtText(texts::ApplicationTitle));
  setWindowIcon(Icon("stavora-ts5"));
  setAcceptDrops(true);
  setMinimumSize(kSmallestWindow);
  menuBar()->setAccessibleName(QtText(texts::MenuBarName));
  Actions().FillMenuBar(*menuBar());
  MakeAreas();
  LayAreasOut();
  FillAreas();
  MakeCommands();
  Connect();
  ConnectRuns();
  artworker::ForgetElements();  // what an earlier session left there
}

MainWindow::~MainWindow() {
  if (!ended_) runs_->Close();
  artworker::ForgetElements();
}

// --- building

void MainWindow::MakeAreas() {
  jobBar_ = new JobBar(this);
  Actions().AddTo(*jobBar_->Menu(), CommandId::DeleteJob);
  Actions().AddTo(*jobBar_->Menu(), CommandId::RestoreJob);
  Actions().AddTo(*jobBar_->Menu(), CommandId::RenameJob);
  const Settings& settings = application_.GetSettings();
  filters_ = new FilterPanel(TileLooks(), StyleOf(settings.skinLayout), this);
  filters_->setMinimumWidth(150);
  source_ = new SourceArea(this);
  source_->Files()->setContextMenuPolicy(Qt::ActionsContextMenu);
  for (const CommandId command : kFileCommands) source_->Files()->addAction(Actions().Action(command));
  target_ = new TargetArea(this);
  panels_ = new RunPanels(*active_, settings.searchWholePath, this);
  preview_ = new LayoutPreview(*active_, application_, this);
}

void MainWindow::LayAreasOut() {
  lower_ = new QWidget(this);
  auto* column = new QVBoxLayout;
  column->setSpacing(8);
  column->addWidget(target_);
  column->addWidget(panels_, 1);
  // The picture of a layout takes room only while it is there.
  auto* lower = new QHBoxLayout(lower_);
  lower->setContentsMargins(0, 0, 0, 0);
  lower->setSpacing(8);
  lower->addLayout(column, 1);
  lower->addWidget(preview_, 1);
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
}

void MainWindow::FillAreas() {
  ShowSoundDevices();
  target_->SetDevices(DeviceKind::Printer, ToQtList(application_.Devices().printers));
  ShowDrives();
}

void MainWindow::ShowSoundDevices() {
  target_->SetDevices(DeviceKind::Midi, ToQtList(application_.Devices().midiOutputs));
  target_->SetDevices(DeviceKind::Audio, ToQtList(application_.Devices().audioOutputs));
}

void MainWindow::ShowDrives() {
  target_->SetDevices(DeviceKind::Drive, ToQtList(application_.Devices().writers));
  std::vector<DriveSelector::Drive> drives;
  const auto& volumes = application_.Volumes().Volumes();
  for (int i = 0; i < static_cast<int>(volumes.size()); ++i)
    drives.push_back({i, ToQt(application_.Volumes().DisplayText(i))});
  source_->Drives()->SetDrives(drives);
  source_->Drives()->SetCurrent((*active_)->sourceDrive);
}

void MainWindow::MakeCommands() {
  Settings& settings = application_.GetSettings();
  targets_ = std::make_unique<TargetCommands>(*desk_, *active_, *target_);
  targetFolder_ = std::make_unique<TargetFolder>(*desk_, *active_, *target_, application_);
  sources_ = std::make_unique<SourceCommands>(*desk_, *active_, *source_, application_.Volumes(), settings);
  lists_ = std::make_unique<ListCommands>(*desk_, *active_, *source_, *sources_, application_);
  arrangement_ = std::make_unique<ListArrangement>(*desk_, *active_, *source_, *sources_, settings,
                                                   JoinPath(ProgramDirectory(), kFactsFile));
  discs_ = std::make_unique<DiscCommands>(*desk_, *active_, *source_, *sources_, application_);
  for (QWidget* view : std::initializer_list<QWidget*>{source_->Tree(), source_->Files()}) {
    discs_->OfferDrive(*view);
    discs_->OfferRecorder(*view);
  }
  discs_->OfferRecorder(*target_->DeviceList(DeviceKind::Drive));
  listening_ = std::make_unique<ListenCommands>(Actions(), *source_->Files(), application_, source_);
  source_->AddBelowList(listening_->Bar());
  sound_ = std::make_unique<SoundWatch>(
      application_, [this] { return application_.Runner().AnyRunning() || listening_->Sound().Busy(); });
  jobs_ = std::make_unique<JobCommands>(*desk_, *active_, application_.GetJobs(), *jobBar_, *panels_);
  filterCommands_ = std::make_unique<FilterCommands>(*active_, *filters_);
  runs_ = std::make_unique<RunCommands>(*desk_, *active_, *source_, *panels_, application_);
  interrupted_ = std::make_unique<InterruptedRuns>(*desk_);
  runDisplay_ = std::make_unique<RunDisplay>(*active_, *source_, *target_, *panels_, Actions());
  searches_ = std::make_unique<SearchCommands>(*desk_, *active_, *panels_, application_);
  windows_ = std::make_unique<JobWindows>(application_.GetJobs());
  playback_ = std::make_unique<PlaybackCommands>(*desk_, *active_, *windows_, settings);
  settings_ = std::make_unique<SettingsCommands>(*desk_, settings);
  helpCommands_ =
      std::make_unique<HelpCommands>(*desk_, std::vector<HelpCommands::Area>{{source_, "quellmedium.htm"},
                                                                             {filters_, "filtersektion.htm"},
                                                                             {target_, "zielmedium.htm"}});
  areaCommands_ = std::make_unique<AreaCommands>(
      Actions(), std::vector<QWidget*>{jobBar_, filters_, source_, target_, panels_});
  Actions().On(CommandId::MaximiseList, [this] { ToggleMaximised(); });
  Actions().On(CommandId::Quit, [this] { close(); });
}

void MainWindow::Connect() {
  connect(active_, &ActiveJob::FilterChanged, this, &MainWindow::ShowFilter);
  connect(active_, &ActiveJob::JobShown, this, [this] {
    SetMaximised((*active_)->Mode() == SourceMode::List && (*active_)->fileWindowMaximised);
  });
  connect(filterCommands_.get(), &FilterCommands::ParametersWanted, this, &MainWindow::EditParameters);
  connect(preview_, &LayoutPreview::Opened, this, &MainWindow::EditParameters);
  connect(filterCommands_.get(), &FilterCommands::AllFilesWanted, source_->Files(),
          &QAbstractItemView::selectAll);
  connect(settings_.get(), &SettingsCommands::Changed, this, [this] {
    panels_->SetWholePaths(application_.GetSettings().searchWholePath);
    active_->ChangeFiles();
  });
  const auto hint = [this](const QString& text) { desk_->ShowHint(text); };
  connect(filters_, &FilterPanel::Hint, this, hint);
  connect(jobBar_, &JobBar::Hint, this, hint);

  connect(source_->Files(), &FileView::LabelEditingChanged, this, [this](bool editing) {
    Actions().SetAccelerators(editing ? AcceleratorTable::Off : AcceleratorsOf((*active_)->filter));
  });
  connect(source_->Files(), &FileView::DragChanged, this,
          [this](bool dragging) { desk_->ShowPrompt(dragging ? QtText(texts::DragToList) : QString()); });
  connect(discs_.get(), &DiscCommands::DrivesChanged, this, [this] {
    ShowDrives();
    active_->ChangeRun();
  });
  connect(target_->DeviceList(DeviceKind::Drive), &QListWidget::currentRowChanged, discs_.get(), [this] {
    if (target_->isVisible()) discs_->Refresh();
  });
  connect(sound_.get(), &SoundWatch::DevicesCame, this, [this] {
    ShowSoundDevices();
    active_->ChangeRun();
  });
  connect(&watch_, &StoreWatch::JobsChanged, this, &MainWindow::TakeOverJobs);
  connect(&watch_, &StoreWatch::Reached, this,
          [this] { desk_->ShowHint(QtText(texts::RegistryReached), kMessageTime); });
  for (QSplitter* splitter : {across_, down_, source_->Splitter()}) {
    connect(splitter, &QSplitter::splitterMoved, this, [this] {
      if (!maximised_) (*active_)->sizing = PlacesOf(Splitters(), (*active_)->sizing);
    });
  }
}

void MainWindow::ConnectRuns() {
  RunCommands* const runs = runs_.get();
  connect(runs, &RunCommands::Progressed, jobs_.get(), &JobCommands::ShowJobs);
  connect(runs, &RunCommands::ProtocolLine, target_, &TargetArea::SetProtocolLine);
  connect(runs, &RunCommands::Refused, this, [this] {
    if (target_->Field()->isEnabled()) target_->Field()->setFocus();
  });
  connect(runs, &RunCommands::DirectoryChanged, sources_.get(), &SourceCommands::Reload);
  connect(runs, &RunCommands::FileChosen, sources_.get(), &SourceCommands::ShowFile);
  connect(runs, &RunCommands::NoticeChosen, this, &MainWindow::ComeToFront);
  connect(interrupted_.get(), &InterruptedRuns::GoOn, runs, &RunCommands::GoOn);
}

// --- start, and files from outside

void MainWindow::Begin() {
  RestoreWindowPlace(*this, application_.GetSettings());
  active_->Show();
  // The files of a directory are still to come.
  if ((*active_)->Mode() == SourceMode::List) {
    source_->Files()->setFocus();
  } else {
    source_->Tree()->setFocus();
  }
  application_.CountAsUnchanged();
}

void MainWindow::ShowNotices() {
  for (const std::string& notice : application_.Notices()) desk_->TellLater(notice, MessageIcon::Information);
  interrupted_->Offer(FindInterruptedRuns(application_.Journals(), application_.GetJobs().Modules()));
}

void MainWindow::OpenAtStart(const std::vector<std::string>& files) {
  if (files.empty()) return;
  const bool list = FileTypeOf(files.front()) == FileTypeId::Unsupported && !IsDirectory(files.front());
  if (list) {
    (*active_)->sourceDrive = kListModeDrive;
    (*active_)->directory = {};
    lists_->Load(files.front(), true);
  }
  OpenFiles({files.begin() + (list ? 1 : 0), files.end()});
}

void MainWindow::OpenFiles(const std::vector<std::string>& files) {
  if (files.empty() || ended_) return;
  if (QApplication::activeModalWidget() != nullptr) {
    QTimer::singleShot(kRetry, this, [this, files] { OpenFiles(files); });
    return;
  }
  if (!(*active_)->MayChange()) active_->Activate(0);
  if (!(*active_)->MayChange()) return desk_->Tell(Text(texts::FilesNotTaken), MessageIcon::Information);
  lists_->OpenFiles(files);
}

void MainWindow::ComeToFront() {
  setWindowState(windowState() & ~Qt::WindowMinimized);
  show();
  raise();
  activateWindow();
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
  if (event->mimeData()->hasUrls() && event->source() == nullptr) event->acceptProposedAction();
}

// Files are dropped on the file view; beside it there is nothing that takes them.
void MainWindow::dropEvent(QDropEvent* event) {
  event->acceptProposedAction();
  QMetaObject::invokeMethod(
      this, [this] { desk_->Tell(DropWithoutList().text, MessageIcon::Information); }, Qt::QueuedConnection);
}

// Other jobs than before: what belonged to those that have gone goes as well.
void MainWindow::TakeOverJobs() {
  if (ended_) return;
  panels_->DropOrphans(application_.GetJobs());
  jobs_->ShowJobs();
  active_->Refresh();
}

// --- the look

void MainWindow::ShowFilter() {
  const Job& job = **active_;
  Actions().SetAccelerators(AcceleratorsOf(job.filter));
  ShowPlaces(Splitters(), job.sizing, IsFilter(job.filter) && IsSearch(job.filter), size());
}

void MainWindow::SetMaximised(bool maximised) {
  maximised_ = maximised;
  filters_->setVisible(!maximised);
  jobBar_->setVisible(!maximised);
  lower_->setVisible(!maximised);
  source_->SetMaximised(maximised);
  Actions().SetText(CommandId::MaximiseList, maximised ? texts::MenuNormaliseList : texts::MenuMaximiseList);
  Actions().Action(CommandId::MaximiseList)->setIcon(Icon(maximised ? "normalise" : "maximise"));
}

void MainWindow::ToggleMaximised() {
  const bool maximised = !maximised_;
  if ((*active_)->Mode() == SourceMode::List) (*active_)->fileWindowMaximised = maximised;
  SetMaximised(maximised);
  source_->Files()->setFocus();
}

void MainWindow::EditParameters() {
  const Job& job = **active_;
  if (IsPlayer(job.filter) && job.parameters) return playback_->Open(job);
  if (ts5::EditParameters(*active_, application_, *windows_, *desk_)) active_->ChangeFiles();
}

// --- the end

void MainWindow::closeEvent(QCloseEvent* event) {
  if (!ended_ && panels_->Recording()) {
    // The disc would be lost.
    desk_->Tell(Text(texts::NoEndWhileRecording), MessageIcon::Exclamation);
    return event->ignore();
  }
  const Jobs& jobs = application_.GetJobs();
  const Answer preset = jobs.AnyRunning() ? Answer::No : Answer::Yes;
  const Settings& settings = application_.GetSettings();
  const bool sure = ended_ || (!jobs.AnyRunning() && !settings.askBeforeEnd) ||
                    desk_->Confirm(QuitQuestion(jobs), MessageIcon::Question, preset);
  const bool ends = ended_ || (sure && End(settings.jobSaving, true));
  event->setAccepted(ends);
}

void MainWindow::EndWithoutQuestion() {
  // Nobody may be there to answer: what was edited is kept.
  const JobSaving policy = application_.GetSettings().jobSaving;
  if (!ended_) (void)End(policy == JobSaving::Ask ? JobSaving::Automatic : policy, false);
  close();
}

bool MainWindow::End(JobSaving policy, bool attended) {
  active_->Settle();
  StoreWindowPlace(*this, application_.GetSettings());
  active_->CommitAtEnd(policy);
  if (!SaveSession(application_, *desk_, attended)) return false;
  sources_->Leave();
  ended_ = true;
  desk_->Close();
  runs_->Close();
  searches_->Close();
  listening_->Close();
  hide();
  application_.StopRuns();
  return true;
}

}  // namespace ts5
