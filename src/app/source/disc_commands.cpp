#include "app/source/disc_commands.h"

#include <QDesktopServices>
#include <QUrl>
#include <algorithm>
#include <array>
#include <functional>
#include <utility>

#include "app/shell/application.h"
#include "app/source/disc_tray.h"
#include "app/source/drive_watch.h"
#include "app/texts.h"
#include "disc/burn_parameters.h"
#include "disc/ui/disc_dialogs.h"
#include "frame/cd_tracks.h"
#include "frame/filter_catalogue.h"
#include "frame/ui/file_dialogs.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"
#include "platform/disc/cd_drive.h"
#include "platform/disc/virtual_cd.h"
#include "platform/disc/virtual_recorder.h"
#include "platform/files/directories.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"

namespace ts5 {

DiscCommands::DiscCommands(Desk& desk, ActiveJob& active, SourceArea& area, SourceCommands& source,
                           Application& application)
    : desk_(desk),
      active_(active),
      area_(area),
      source_(source),
      application_(application),
      project_(active, area, source, application.GetJobs()) {
  const auto add = [this](std::vector<QAction*>& actions, TextId text, std::function<void()> action) {
    actions.push_back(new QAction(QtText(text), this));
    connect(actions.back(), &QAction::triggered, this, std::move(action));
  };
  add(drive_, texts::DiscInsert, [this] {
    if (AskVirtualDisc(desk_)) source_.Read();
  });
  add(drive_, texts::DiscEject, [this] { Eject(); });
  struct Blank {
    TextId text;
    int minutes;
    bool rewritable;
  };
  static constexpr std::array kBlanks{
      Blank{texts::BlankCdR80, 80, false}, Blank{texts::BlankCdR74, 74, false},
      Blank{texts::BlankCdRw80, 80, true}, Blank{texts::BlankCdRw74, 74, true}};
  for (const Blank& blank : kBlanks)
    add(recorder_, blank.text, [this, blank] { InsertBlank(blank.minutes, blank.rewritable); });
  add(recorder_, texts::RecorderLoad, [this] { LoadRecorder(); });
  add(recorder_, texts::RecorderEject, [this] { EjectRecorder(); });
  add(recorder_, texts::RecorderFolder, [this] { ShowRecorderFolder(); });

  area_.RecorderButton()->addActions({recorder_.begin(), recorder_.end()});
  area_.RecorderButton()->setDefaultAction(recorder_.front());
  CommandActions& actions = desk_.Actions();
  actions.On(CommandId::DiscInformation, [this] { ShowInformation(); });
  actions.On(CommandId::EraseDisc, [this] { Erase(); });
  actions.On(CommandId::TrackPause, [this] { ChoosePause(); });
  connect(&active_, &ActiveJob::Changed, this, &DiscCommands::Refresh);
  WatchDrives();
}

void DiscCommands::OfferDrive(QWidget& view) {
  view.setContextMenuPolicy(Qt::ActionsContextMenu);
  view.addActions({drive_.begin(), drive_.end()});
}

void DiscCommands::OfferRecorder(QWidget& view) {
  view.setContextMenuPolicy(Qt::ActionsContextMenu);
  view.addActions({recorder_.begin(), recorder_.end()});
}

void DiscCommands::Refresh() {
  const auto show = [](const std::vector<QAction*>& actions, bool shown, bool enabled) {
    for (QAction* action : actions) {
      action->setVisible(shown);
      action->setEnabled(shown && enabled);
    }
  };
  show(drive_, SourceIsVirtualDrive(*active_), active_->MayChange());
  const std::string drive = CurrentDrive();
  // A run may be waiting for the disc that is put in.
  const bool recorder = drive == VirtualRecorderDirectory();
  show(recorder_, recorder, true);
  area_.RecorderButton()->setVisible(recorder);
  const Job& job = *active_;
  desk_.Actions().SetEnabled(CommandId::TrackPause, Has(job.filter, kTimedList) && job.MayChange() &&
                                                        job.Mode() == SourceMode::List && !job.files.Empty());
  project_.Refresh(drive);
}

// --- drives and discs that change by themselves

void DiscCommands::WatchDrives() {
  if (!application_.OwnDrives()) return;
  auto* const watch = new DriveWatch(this);
  connect(watch, &DriveWatch::DrivesChanged, this, &DiscCommands::TakeDrives);
  connect(watch, &DriveWatch::DiscChanged, this, &DiscCommands::TakeDisc);
}

void DiscCommands::TakeDrives() {
  paths_.clear();
  application_.LookForDrives();
  emit DrivesChanged();
}

void DiscCommands::TakeDisc(const std::string& drive) {
  project_.ForgetDisc();
  const Job& job = *active_;
  // The directory of a virtual drive is watched as the source, too.
  if (job.Mode() == SourceMode::Directory && job.directory.path == drive && job.MayChange() &&
      !IsVirtualDrive(drive))
    source_.Read();
  Refresh();
}

void DiscCommands::Eject() {
  const Outcome outcome = EjectVirtualDisc();
  if (Failed(outcome)) desk_.Tell(DiscFailureText(outcome, {}), MessageIcon::Exclamation);
  source_.Read();
}

const std::string& DiscCommands::PathOf(const std::string& recorder) {
  const auto known = paths_.find(recorder);
  if (known != paths_.end()) return known->second;
  return paths_[recorder] = CdDirectoryOf(recorder).value_or("");
}

std::string DiscCommands::CurrentDrive() {
  const Job& job = *active_;
  const bool writes = IsFilter(job.filter) && Descriptor(job.filter).Shows(kPanelDiscDrives);
  const std::vector<std::string>& writers = application_.Devices().writers;
  if (writes && !writers.empty()) {
    const auto chosen = static_cast<std::size_t>(std::max(active_.Destination().drive, 0));
    return PathOf(writers[std::min(chosen, writers.size() - 1)]);
  }
  const bool source = job.Mode() == SourceMode::Directory && IsCdDrive(job.directory.path);
  return source ? job.directory.path : std::string();
}

void DiscCommands::ShowInformation() {
  const std::string drive = CurrentDrive();
  if (drive.empty()) return desk_.Tell(Text(texts::NoDrives), MessageIcon::Exclamation);
  disc::ShowDiscInformation(drive, desk_, desk_.Window());
}

void DiscCommands::Erase() {
  const std::string drive = CurrentDrive();
  if (drive.empty()) return desk_.Tell(Text(texts::NoDrives), MessageIcon::Exclamation);
  disc::EraseDialog(drive, desk_, desk_.Window()).exec();
  DiscsChanged();
}

void DiscCommands::ChoosePause() {
  active_.Settle();
  Job& job = *active_;
  auto* const parameters = job.parameters.If<disc::BurnParameters>();
  if (parameters == nullptr || !job.MayChange() || job.files.Empty()) return;
  const std::size_t focus = std::min(job.files.Focus(), job.files.Size() - 1);
  disc::TrackPauseDialog dialog(job.files[focus].pause, static_cast<disc::PauseScope>(parameters->pauseScope),
                                desk_, desk_.Window());
  if (dialog.exec() != QDialog::Accepted) return;
  parameters->pauseScope = static_cast<std::int32_t>(dialog.Scope());
  const auto& selected = job.files.Selection();
  const auto concerned = [&](std::size_t index) {
    switch (dialog.Scope()) {
      case disc::PauseScope::One:
        return index == focus;
      case disc::PauseScope::Selected:
        return std::ranges::find(selected, index) != selected.end();
      case disc::PauseScope::All:
        return true;
    }
    return false;
  };
  // Before the first track are always two seconds.
  for (std::size_t i = 1; i < job.files.Size(); ++i)
    if (concerned(i)) job.files.SetTimes(i, job.files[i].duration, dialog.Pause());
  source_.Reload();
  active_.Refresh();
}

void DiscCommands::InsertBlank(int minutes, bool rewritable) {
  std::string parent = HomeDirectory();
  if (!AskDirectory(QtText(texts::BlankCaption), parent, desk_.Window())) return;
  // Each disc has a directory of its own.
  std::string directory;
  for (int number = 1; directory.empty() || FileExists(directory); ++number)
    directory = JoinPath(parent, Format(Text(texts::BlankFolderName), number));
  const Outcome outcome = InsertBlankDisc(directory, minutes, rewritable);
  TellOutcome(outcome, directory);
  if (Succeeded(outcome)) desk_.Tell(Format(Text(texts::BlankInserted), directory), MessageIcon::Information);
}

void DiscCommands::LoadRecorder() {
  std::string path(DirectoryOf(ReadRecorderTray().disc));
  if (!AskDirectory(QtText(texts::LoadCaption), path, desk_.Window())) return;
  TellOutcome(InsertRecordedDisc(path), path);
}

void DiscCommands::EjectRecorder() {
  auto drive = CdDrive::Open(VirtualRecorderDirectory());
  TellOutcome(drive ? drive->Eject() : drive.error(), ReadRecorderTray().disc);
}

// After the disc of a virtual drive was to be changed: why it was not, and what follows.
void DiscCommands::TellOutcome(Outcome outcome, const std::string& path) {
  if (Failed(outcome)) desk_.Tell(DiscFailureText(outcome, path), MessageIcon::Exclamation);
  DiscsChanged();
}

void DiscCommands::DiscsChanged() {
  project_.ForgetDisc();
  if (active_->Mode() == SourceMode::Directory) source_.Read();
  Refresh();
}

void DiscCommands::ShowRecorderFolder() {
  const RecorderTray tray = ReadRecorderTray();
  if (tray.disc.empty()) return desk_.Tell(Text(texts::RecorderEmpty), MessageIcon::Information);
  QDesktopServices::openUrl(QUrl::fromLocalFile(ToQt(tray.disc)));
}

}  // namespace ts5
