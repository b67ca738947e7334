#include "app/source_commands.h"

#include <QStatusBar>
#include <algorithm>
#include <functional>
#include <utility>
#include <vector>

#include "app/disc_commands.h"
#include "app/main_window.h"
#include "frame/file_view.h"
#include "frame/texts.h"
#include "frame/ui/qt_text.h"
#include "platform/files.h"
#include "platform/paths.h"
#include "platform/virtual_cd.h"

namespace ts5 {

SourceCommands::SourceCommands(MainWindow& window) : window_(window), reader_(this) {
  window_.On(CommandId::SwitchListMode, [this] { SwitchMode(); });
  window_.On(CommandId::TakeDrive, [this] { window_.Source().Drives()->Take(); });

  SourceArea& source = window_.Source();
  connect(source.Drives(), &DriveSelector::DriveTaken, this,
          [this](std::int32_t drive) { this->TakeDrive(drive); });
  connect(&source, &SourceArea::DirectoryChosen, this,
          [this](const std::string& path) { TakeDirectory(path); });
  selectionTimer_.setSingleShot(true);
  selectionTimer_.setInterval(0);
  connect(&selectionTimer_, &QTimer::timeout, this, &SourceCommands::TakeSelection);
  connect(source.Files(), &FileView::SelectedByUser, &selectionTimer_, qOverload<>(&QTimer::start));

  connect(&reader_, &SourceReader::Begun, this, [this] {
    window_.Source().ClearFiles();
    window_.ShowPrompt(QtText(texts::ReadingDirectory));
  });
  connect(&reader_, &SourceReader::Found, &source, &SourceArea::AddFiles);
  connect(&reader_, &SourceReader::Done, this, &SourceCommands::TakeDone);
  connect(&reader_, &SourceReader::Changed, this, [this] {
    if (window_.ActiveJob().MayChange() && !window_.Source().Files()->IsEditing()) Reload();
  });
}

// --- showing

void SourceCommands::Leave() {
  selectionTimer_.stop();
  reader_.Stop();
  beforeDisc_.reset();
  if (window_.StatusText() == QtText(texts::ReadingDirectory)) window_.ShowPrompt({});
}

void SourceCommands::Show(Job& job) {
  Leave();
  shown_ = true;
  SourceArea& source = window_.Source();
  if (job.Mode() == SourceMode::List) {
    source.ShowList(job.files, job.filter);
    SelectStored();
    return;
  }
  const Volume* volume = window_.App().Volumes().Find(job.sourceDrive);
  const std::string root = volume != nullptr && !volume->path.empty() ? volume->path : job.directory.path;
  source.ShowDirectory(job.sourceDrive, root, job.directory.path);
  source.SetFreeListCount(job.files.Size());
  Read();
}

void SourceCommands::Read() {
  reader_.Read(window_.ActiveJob().directory.path);
}

void SourceCommands::Reload() {
  SourceArea& source = window_.Source();
  if (window_.ActiveJob().Mode() == SourceMode::List) {
    source.ListChanged();
    SelectStored();
    window_.Refresh();
  } else {
    source.TreeModel().Refresh(source.Tree()->currentIndex());
    Read();
  }
}

void SourceCommands::TakeDone(Outcome outcome) {
  window_.ShowPrompt({});
  if (GoesBack(outcome)) return;
  if (Failed(outcome)) {
    window_.statusBar()->showMessage(
        ToQt(Format(Text(texts::DirectoryNotRead), window_.ActiveJob().directory.path)));
  }
  SelectStored();
  const bool changed = window_.ActiveJob().MayChange() && StoreSelection();
  // Which filters fit depends on the disc, too.
  window_.RefreshFilterBar();
  if (changed) window_.RefreshDestination();
  window_.Refresh();
}

// The view selects what the job says; files that are gone are no longer part of its selection.
void SourceCommands::SelectStored() {
  const Job& job = window_.ActiveJob();
  FileView& view = *window_.Source().Files();
  if (job.Mode() == SourceMode::List) {
    view.SelectRows(job.files.Selection(), job.files.Focus());
    return;
  }
  std::vector<std::string> names = job.directory.names;
  std::ranges::sort(names);
  std::vector<std::size_t> rows;
  const FileViewModel& model = window_.Source().Model();
  for (std::size_t row = 0; row < model.Size() && !names.empty(); ++row) {
    if (std::ranges::binary_search(names, FileNameOf(model.At(row).path), std::less<>())) rows.push_back(row);
  }
  view.SelectRows(rows, rows.empty() ? 0 : rows.front());
}

// --- the selection

void SourceCommands::TakeSelection() {
  selectionTimer_.stop();
  if (!shown_ || reader_.Reading() || !window_.ActiveJob().MayChange()) return;
  if (!StoreSelection()) {
    window_.RefreshCommands();
    return;
  }
  window_.RefreshFilterBar();
  window_.RefreshDestination();
  window_.Refresh();
}

// False when the job has that selection already.
bool SourceCommands::StoreSelection() {
  Job& job = window_.ActiveJob();
  const FileView& view = *window_.Source().Files();
  const std::vector<std::size_t> rows = view.SelectedRows();
  if (job.Mode() == SourceMode::List) {
    const bool changed = rows != job.files.Selection();
    job.files.Select(rows);
    job.files.SetFocus(view.FocusRow());
    return changed;
  }
  DirectorySelection selection{job.directory.path, {}, {}};
  const FileViewModel& model = window_.Source().Model();
  for (const std::size_t row : rows) {
    selection.names.emplace_back(FileNameOf(model.At(row).path));
    selection.indices.push_back(static_cast<std::uint32_t>(row));
  }
  if (selection == job.directory) return false;
  job.directory = std::move(selection);
  return true;
}

bool SourceCommands::IsAudioCd() const {
  const Job& job = window_.ActiveJob();
  if (job.Mode() == SourceMode::List) return false;
  // Tracks that are selected tell it before their disc has been read.
  const DirectorySelection& directory = job.directory;
  return directory.names.empty() ? window_.Source().ShowsAudioCd(directory.path)
                                 : IsCdTrackText(directory.names.front());
}

SourceContext SourceCommands::Context() const {
  const Job& job = window_.ActiveJob();
  return job.Mode() == SourceMode::List ? ListContext(job.files)
                                        : DirectoryContext(job.directory, IsAudioCd());
}

// --- drive and directory

void SourceCommands::SwitchMode() {
  Job& job = window_.ActiveJob();
  const auto drive = SwitchedSourceDrive(job.sourceDrive, job.directory.path,
                                         window_.App().Volumes().DriveOfPath(job.directory.path),
                                         job.State() == RunState::Preparing);
  if (!drive) return;
  job.sourceDrive = *drive;
  (void)window_.Show(job);
  window_.RefreshDestination();
}

void SourceCommands::TakeDrive(std::int32_t drive) {
  Job& job = window_.ActiveJob();
  if (drive == job.sourceDrive || !job.MayChange()) return;
  const Volume* const volume = window_.App().Volumes().Find(drive);
  const bool disc = volume != nullptr && volume->kind == Volume::Kind::Optical;
  const BeforeDisc before{job.sourceDrive, job.directory};
  if (drive != kListModeDrive) {
    if (volume == nullptr || !(disc || IsDirectory(volume->path))) {
      window_.Source().Drives()->SetCurrent(job.sourceDrive);
      window_.Tell(DriveFailedText(drive), MessageIcon::Exclamation);
      return;
    }
    if (volume->path == VirtualCdDirectory() && !window_.Discs().HasDisc()) {
      window_.Source().Drives()->SetCurrent(job.sourceDrive);
      return;
    }
    job.directory = {volume->path, {}, {}};
  }
  job.sourceDrive = drive;
  (void)window_.Show(job);
  window_.RefreshDestination();
  // A drive shows only when it is read whether there is a disc in it.
  if (disc) beforeDisc_ = before;
}

// When the disc of a drive that the user has just taken cannot be read, says so and shows the source before
// it.
bool SourceCommands::GoesBack(Outcome read) {
  auto before = std::exchange(beforeDisc_, std::nullopt);
  if (Succeeded(read) || !before) return false;
  Job& job = window_.ActiveJob();
  window_.Tell(DriveFailedText(job.sourceDrive), MessageIcon::Exclamation);
  job.sourceDrive = before->drive;
  job.directory = std::move(before->directory);
  (void)window_.Show(job);
  return true;
}

void SourceCommands::TakeDirectory(const std::string& path) {
  Job& job = window_.ActiveJob();
  if (job.Mode() == SourceMode::List || !job.MayChange()) return;
  job.directory = {path, {}, {}};
  Read();
}

}  // namespace ts5
