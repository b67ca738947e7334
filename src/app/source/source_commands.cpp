#include "app/source/source_commands.h"

#include <algorithm>
#include <functional>
#include <utility>
#include <vector>

#include "app/source/disc_tray.h"
#include "app/texts.h"
#include "frame/drive_directories.h"
#include "frame/examples.h"
#include "frame/file_types.h"
#include "frame/file_view.h"
#include "frame/texts.h"
#include "frame/ui/file_dialogs.h"
#include "frame/ui/qt_text.h"
#include "platform/disc/virtual_cd.h"
#include "platform/files/directories.h"
#include "platform/files/files.h"
#include "platform/files/music_directory.h"
#include "platform/files/paths.h"

namespace ts5 {

SourceCommands::SourceCommands(Desk& desk, ActiveJob& active, SourceArea& area, const VolumeTable& volumes,
                               Settings& settings)
    : desk_(desk), active_(active), area_(area), volumes_(volumes), settings_(settings), reader_(this) {
  CommandActions& actions = desk_.Actions();
  actions.On(CommandId::SwitchListMode, [this] { SwitchMode(); });
  actions.On(CommandId::SelectAllFiles, [this] {
    area_.Files()->setFocus();
    area_.Files()->selectAll();
  });
  actions.On(CommandId::TakeDrive, [this] { area_.Drives()->Take(); });
  connect(&actions, &CommandActions::Triggering, this, &SourceCommands::TakeSelection);

  connect(&active_, &ActiveJob::SourceReplaced, this, &SourceCommands::Show);
  connect(&active_, &ActiveJob::Changed, this, &SourceCommands::Refresh);
  connect(&active_, &ActiveJob::Settling, this, &SourceCommands::TakeSelection);

  connect(area_.Drives(), &DriveSelector::DriveTaken, this,
          [this](std::int32_t drive) { this->TakeDrive(drive); });
  connect(&area_, &SourceArea::DirectoryChosen, this,
          [this](const std::string& path) { TakeDirectory(path); });
  connect(&area_, &SourceArea::SubdirectoriesChosen, this, [this](bool subdirectories) {
    if (!active_->MayChange()) return;
    active_->subdirectories = subdirectories;
    Read();
  });
  connect(area_.Strip(), &FreeListStrip::Clicked, this,
          [&actions] { actions.Trigger(CommandId::SwitchListMode); });
  connect(area_.Note(), &EmptyNote::MusicWanted, this, &SourceCommands::ChooseMusic);
  connect(area_.Note(), &EmptyNote::ExamplesWanted, this, &SourceCommands::ShowExamples);
  selectionTimer_.setSingleShot(true);
  selectionTimer_.setInterval(0);
  connect(&selectionTimer_, &QTimer::timeout, this, &SourceCommands::TakeSelection);
  connect(area_.Files(), &FileView::SelectedByUser, &selectionTimer_, qOverload<>(&QTimer::start));

  connect(&reader_, &SourceReader::Begun, this, [this] {
    area_.ClearFiles(active_->directory.path, active_->subdirectories);
    active_.SetAudioCd(false);
    area_.Note()->ShowFor(EmptyNote::Place::None);
    desk_.ShowPrompt(QtText(texts::ReadingDirectory));
  });
  connect(&reader_, &SourceReader::Found, &area_, &SourceArea::AddFiles);
  connect(&reader_, &SourceReader::Done, this, &SourceCommands::TakeDone);
  connect(&reader_, &SourceReader::Changed, this, [this] {
    if (active_->MayChange() && !area_.Files()->IsEditing()) Reload();
  });
}

// --- showing

void SourceCommands::Leave() {
  selectionTimer_.stop();
  reader_.Stop();
  beforeDisc_.reset();
  if (desk_.Prompt() == QtText(texts::ReadingDirectory)) desk_.ShowPrompt({});
}

void SourceCommands::Show() {
  Leave();
  shown_ = true;
  const Job& job = *active_;
  if (job.Mode() == SourceMode::List) {
    area_.ShowList(job.files, job.filter);
    SelectStored();
    return;
  }
  const Volume* volume = volumes_.Find(job.sourceDrive);
  const std::string root = volume != nullptr && !volume->path.empty() ? volume->path : job.directory.path;
  area_.ShowDirectory(job.sourceDrive, root, job.directory.path, job.subdirectories);
  Read();
}

void SourceCommands::Refresh() {
  const Job& job = *active_;
  const bool idle = job.MayChange();
  CommandActions& actions = desk_.Actions();
  actions.SetEnabled(CommandId::SwitchListMode,
                     idle && (job.Mode() == SourceMode::Directory || !job.directory.path.empty()));
  actions.SetEnabled(CommandId::TakeDrive, idle);
  actions.SetEnabled(CommandId::SelectAllFiles, idle && area_.Model().Size() > 0);
  area_.ShowCount();
  area_.SetFreeListCount(job.files.Size());
  area_.Files()->SetEmptyText(SourceIsVirtualDrive(job) ? texts::DiscMissing : texts::EmptyFileView);
  ShowNote();
}

void SourceCommands::ShowNote() {
  const Job& job = *active_;
  const Volume* const volume = volumes_.Find(job.sourceDrive);
  const bool disc = volume != nullptr && volume->kind == Volume::Kind::Optical;
  EmptyNote::Place place = EmptyNote::Place::None;
  if (job.Mode() == SourceMode::List) {
    if (job.files.Empty()) place = EmptyNote::Place::List;
  } else if (!disc && !reader_.Reading() && area_.Model().Total() == 0) {
    place = EmptyNote::Place::Directory;
  }
  area_.Note()->ShowFor(job.MayChange() ? place : EmptyNote::Place::None);
}

void SourceCommands::ChooseMusic() {
  std::string folder = MusicDirectory();
  if (folder.empty()) folder = HomeDirectory();
  if (AskDirectory(QtText(texts::ChooseMusicCaption), folder, desk_.Window())) ShowFolder(folder);
}

void SourceCommands::ShowExamples() {
  const std::string music = MusicDirectory();
  const auto folder = PutExamples(DemoDirectory(), music.empty() ? HomeDirectory() : music);
  if (!folder) return desk_.Tell(Text(texts::ExamplesNotPut), MessageIcon::Exclamation);
  ShowFolder(*folder);
}

void SourceCommands::ShowFolder(const std::string& path) {
  Job& job = *active_;
  if (!job.MayChange()) return;
  job.sourceDrive = volumes_.DriveOfPath(path);
  job.directory = {path, {}, {}};
  active_.ShowSource();
}

void SourceCommands::Read() {
  settings_.driveDirectories = WithDirectory(settings_.driveDirectories, active_->directory.path, volumes_);
  reader_.Read(active_->directory.path, active_->subdirectories);
}

void SourceCommands::Reload() {
  if (active_->Mode() == SourceMode::List) {
    area_.ListChanged();
    SelectStored();
    active_.Refresh();
  } else {
    area_.TreeModel().Refresh(area_.Tree()->currentIndex());
    Read();
  }
}

void SourceCommands::TakeDone(Outcome outcome) {
  desk_.ShowPrompt({});
  if (GoesBack(outcome)) return;
  FileViewModel& model = area_.Model();
  if (!model.Order().IsOwn()) model.Arrange(model.Order());
  const std::string& directory = active_->directory.path;
  if (Failed(outcome)) desk_.ShowHint(ToQt(Format(Text(texts::DirectoryNotRead), directory)));
  active_.SetAudioCd(area_.ShowsAudioCd(directory));
  SelectStored();
  // Which filters fit depends on the disc, too.
  active_->MayChange() && StoreSelection() ? active_.ChangeFiles() : active_.ChangeRun();
}

// The view selects what the job says; files that are gone are no longer part of its selection.
void SourceCommands::SelectStored() {
  const Job& job = *active_;
  FileView& view = *area_.Files();
  const FileViewModel& model = area_.Model();
  if (job.Mode() == SourceMode::List) {
    const std::vector<std::size_t> focus = model.RowsOf({job.files.Focus()});
    view.SelectRows(model.RowsOf(job.files.Selection()), focus.empty() ? model.Size() : focus.front());
    return;
  }
  std::vector<std::string> names = job.directory.names;
  std::ranges::sort(names);
  std::vector<std::size_t> rows;
  for (std::size_t row = 0; row < model.Size() && !names.empty(); ++row) {
    if (std::ranges::binary_search(names, job.directory.NameOf(model.At(row).path))) rows.push_back(row);
  }
  view.SelectRows(rows, rows.empty() ? 0 : rows.front());
}

void SourceCommands::ShowFile(const std::string& path) {
  Job& job = *active_;
  if (!job.MayChange()) return;
  area_.ClearFilter();
  if (job.Mode() == SourceMode::List) {
    for (std::size_t i = 0; i < job.files.Size(); ++i) {
      if (job.files[i].path != path) continue;
      job.files.Select({i});
      job.files.SetFocus(i);
      SelectStored();
      active_.ChangeFiles();
      return;
    }
  }
  const std::string directory(DirectoryOf(path));
  const bool below = job.subdirectories && PathBelow(job.directory.path, path);
  const bool sameDirectory =
      job.Mode() == SourceMode::Directory && (below || directory == job.directory.path);
  if (!sameDirectory) {
    job.sourceDrive = volumes_.DriveOfPath(path);
    job.directory.path = directory;
  }
  job.directory.Deselect();
  job.directory.names.push_back(job.directory.NameOf(path));
  sameDirectory ? Read() : Show();
}

// --- the selection

void SourceCommands::TakeSelection() {
  selectionTimer_.stop();
  if (!shown_ || reader_.Reading() || !active_->MayChange()) return;
  StoreSelection() ? active_.ChangeFiles() : active_.Refresh();
}

// False when the job has that selection already.
bool SourceCommands::StoreSelection() {
  Job& job = *active_;
  const FileView& view = *area_.Files();
  const FileViewModel& model = area_.Model();
  const std::vector<std::size_t> rows = view.SelectedRows();
  if (job.Mode() == SourceMode::List) {
    std::vector<std::size_t> entries = model.EntriesOf(rows);
    if (!std::ranges::is_sorted(entries)) std::ranges::sort(entries);
    const bool changed = entries != job.files.Selection();
    job.files.Select(std::move(entries));
    job.files.SetFocus(model.EntryOf(view.FocusRow()));
    return changed;
  }
  // In the order that is seen, as the run takes them.
  DirectorySelection selection{job.directory.path, {}, {}};
  for (const std::size_t row : rows) {
    selection.names.push_back(job.directory.NameOf(model.At(row).path));
    selection.indices.push_back(static_cast<std::uint32_t>(row));
  }
  if (selection == job.directory) return false;
  job.directory = std::move(selection);
  return true;
}

// --- drive and directory

void SourceCommands::SwitchMode() {
  Job& job = *active_;
  const auto drive =
      SwitchedSourceDrive(job.sourceDrive, job.directory.path, volumes_.DriveOfPath(job.directory.path),
                          job.State() == RunState::Preparing);
  if (!drive) return;
  job.sourceDrive = *drive;
  active_.ShowSource();
}

void SourceCommands::TakeDrive(std::int32_t drive) {
  Job& job = *active_;
  if (drive == job.sourceDrive || !job.MayChange()) return;
  const Volume* const volume = volumes_.Find(drive);
  const bool disc = volume != nullptr && volume->kind == Volume::Kind::Optical;
  const BeforeDisc before{job.sourceDrive, job.directory};
  if (drive != kListModeDrive) {
    if (volume == nullptr || !(disc || IsDirectory(volume->path))) {
      area_.Drives()->SetCurrent(job.sourceDrive);
      desk_.Tell(DriveFailedText(drive), MessageIcon::Exclamation);
      return;
    }
    if (volume->path == VirtualCdDirectory() && !HasVirtualDisc(desk_)) {
      area_.Drives()->SetCurrent(job.sourceDrive);
      return;
    }
    const auto last = disc ? std::nullopt : DirectoryOn(settings_.driveDirectories, drive, volumes_);
    job.directory = {last.value_or(volume->path), {}, {}};
  }
  job.sourceDrive = drive;
  active_.ShowSource();
  // A drive shows only when it is read whether there is a disc in it.
  if (disc) beforeDisc_ = before;
}

// When the disc of a drive that the user has just taken cannot be read, says so and shows the source before
// it.
bool SourceCommands::GoesBack(Outcome read) {
  auto before = std::exchange(beforeDisc_, std::nullopt);
  if (Succeeded(read) || !before) return false;
  Job& job = *active_;
  desk_.Tell(DriveFailedText(job.sourceDrive), MessageIcon::Exclamation);
  job.sourceDrive = before->drive;
  job.directory = std::move(before->directory);
  active_.Show();
  return true;
}

void SourceCommands::TakeDirectory(const std::string& path) {
  Job& job = *active_;
  if (job.Mode() == SourceMode::List || !job.MayChange()) return;
  area_.ClearFilter();
  job.directory = {path, {}, {}};
  // The name in the field belongs to a file of the old directory.
  active_.ChangeFiles();
  Read();
}

}  // namespace ts5
