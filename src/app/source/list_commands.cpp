#include "app/source/list_commands.h"

#include <QApplication>
#include <QDesktopServices>
#include <QProcess>
#include <QStandardPaths>
#include <QUrl>
#include <algorithm>
#include <array>

#include "app/shell/application.h"
#include "app/source/disc_tray.h"
#include "app/source/file_properties_dialog.h"
#include "app/texts.h"
#include "audio/playing_time.h"
#include "frame/cd_tracks.h"
#include "frame/file_drop.h"
#include "frame/file_list_file.h"
#include "frame/file_rename.h"
#include "frame/file_types.h"
#include "frame/file_view.h"
#include "frame/filter_catalogue.h"
#include "frame/texts.h"
#include "frame/ui/file_dialogs.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"
#include "platform/files/directories.h"
#include "platform/files/files.h"
#include "platform/files/music_directory.h"
#include "platform/files/paths.h"
#include "platform/files/wastebasket.h"
#include "preview/ui/preview_window.h"

namespace ts5 {
namespace {

// Boxes about single files that could not be deleted; a whole directory that is locked would bring hundreds.
constexpr std::size_t kMostFailuresTold = 3;

// Programs of the desktops that search for files, the directory to search in last.
struct SearchProgram {
  const char* name;
  const char* option;
};
constexpr std::array kSearchPrograms{SearchProgram{"kfind", ""}, SearchProgram{"catfish", "--path"},
                                     SearchProgram{"mate-search-tool", "--path"},
                                     SearchProgram{"xfce4-find", "--path"}};

bool OpenInFileManager(const std::string& directory) {
  return QDesktopServices::openUrl(QUrl::fromLocalFile(ToQt(directory)));
}

}  // namespace

ListCommands::ListCommands(Desk& desk, ActiveJob& active, SourceArea& area, SourceCommands& source,
                           Application& application)
    : desk_(desk), active_(active), area_(area), source_(source), application_(application) {
  CommandActions& actions = desk_.Actions();
  actions.On(CommandId::OpenList, [this] { Open(); });
  actions.On(CommandId::SaveList, [this] { SaveAs(); });
  actions.On(CommandId::PickFiles, [this] { this->PickFiles(); });
  actions.On(CommandId::FindFiles, [this] { this->FindFiles(); });
  actions.On(CommandId::ClearList, [this] { Clear(true); });
  actions.On(CommandId::ClearListSilently, [this] { Clear(false); });
  actions.On(CommandId::Delete, [this] { this->Delete(); });
  actions.On(CommandId::MoveUp, [this] { Move(true); });
  actions.On(CommandId::MoveDown, [this] { Move(false); });
  actions.On(CommandId::Rename, [this] { this->Rename(); });
  actions.On(CommandId::Properties, [this] { ShowProperties(); });
  actions.On(CommandId::ShowNotation, [this] { this->ShowNotation(); });
  connect(&active_, &ActiveJob::Changed, this, &ListCommands::Refresh);

  connect(area_.Strip(), &FreeListStrip::FilesDropped, this, [this](const auto& paths) { Drop(paths); });
  connect(area_.Note(), &EmptyNote::FilesWanted, this, [this] {
    const std::string music = MusicDirectory();
    const std::vector<std::string> chosen =
        AskFilesToOpen({.title = QtText(texts::ChooseFilesCaption),
                        .start = music.empty() ? HomeDirectory() : music,
                        .filter = Text(texts::MusicFileFilter),
                        .helpTopic = QStringLiteral("freiedateiliste.htm")},
                       desk_, desk_.Window());
    if (!chosen.empty()) Drop(chosen);
  });
  connect(area_.Files(), &FileView::FilesDropped, this, [this](const auto& paths) {
    if (active_->Mode() == SourceMode::List) {
      Drop(paths);
    } else if (SourceIsVirtualDrive(*active_) && active_->MayChange() && IsDiscSheet(paths)) {
      if (PutVirtualDisc(paths.front(), desk_)) source_.Read();
    } else {
      desk_.Tell(DropWithoutList().text, MessageIcon::Information);
    }
  });
  connect(&area_.Model(), &FileViewModel::LabelEdited, this, [this](std::size_t row, const QString& label) {
    // After the editor is gone: what follows asks questions and reads the directory again.
    QMetaObject::invokeMethod(
        this, [this, row, label] { TakeLabel(row, label); }, Qt::QueuedConnection);
  });
}

void ListCommands::Refresh() {
  const Job& job = *active_;
  const bool idle = job.MayChange();
  const bool list = job.Mode() == SourceMode::List;
  const std::size_t rows = area_.Model().Size();
  const std::size_t focus = area_.Files()->FocusRow();
  const bool focused = focus < rows;
  const bool selected = area_.Files()->selectionModel()->hasSelection();
  CommandActions& actions = desk_.Actions();
  actions.SetEnabled(CommandId::OpenList, idle);
  actions.SetEnabled(CommandId::SaveList, !job.files.Empty());
  actions.SetEnabled(CommandId::ClearList, idle && list && !job.files.Empty());
  actions.SetEnabled(CommandId::ClearListSilently, idle && list);
  actions.SetEnabled(CommandId::Delete, idle && selected && !active_.IsAudioCd());
  // Where the list is seen in another order, there is no place beside.
  const bool moves = idle && list && focused && area_.Model().ShowsOwnOrder();
  actions.SetEnabled(CommandId::MoveUp, moves && focus > 0);
  actions.SetEnabled(CommandId::MoveDown, moves && focus + 1 < rows);
  actions.SetEnabled(CommandId::Rename, idle && focused && !area_.Model().At(focus).cdTrack);
  actions.SetEnabled(CommandId::Properties, focused);
  actions.SetEnabled(CommandId::ShowNotation, focused && preview::IsScoreName(area_.Model().At(focus).path));
}

// --- adding, loading, saving

void ListCommands::Drop(const std::vector<std::string>& paths) {
  Job& job = *active_;
  if (!job.MayChange()) {
    QApplication::beep();
    return;
  }
  active_.Settle();
  const DropResult result = DropFiles(
      job.files, job.filter, paths,
      {.driveOf = [this](const std::string& path) { return DriveOfFile(application_.Volumes(), path); },
       .durationOf = PlayingTimeOf});
  if (result.rejected > 0) QApplication::beep();
  area_.SetFreeListCount(job.files.Size());
  if (job.Mode() == SourceMode::List) {
    if (result.added > 0) {
      area_.ClearFilter();
      source_.Reload();
      area_.Files()->scrollToBottom();
    }
    active_.ChangeFiles();
  }
  for (const UserMessage& message : result.messages) desk_.Tell(message.text, MessageIcon::Information);
}

void ListCommands::Open() {
  const auto path = AskFileToOpen({QtText(texts::LoadListCaption), application_.lastFileList,
                                   Text(texts::FileListFilter), QtText(texts::LoadListHelp)},
                                  desk_, desk_.Window());
  if (path) OpenList(*path);
}

void ListCommands::OpenList(const std::string& path) {
  Job& job = *active_;
  bool replace = true;
  if (job.Mode() == SourceMode::List && !job.files.Empty()) {
    replace = AskYesNo(desk_.Window(), texts::AskClearBeforeLoad);
  }
  if (job.Mode() == SourceMode::Directory) {
    job.sourceDrive = kListModeDrive;
    replace = true;
  }
  Load(path, replace);
}

void ListCommands::OpenFiles(const std::vector<std::string>& files) {
  std::vector<std::string> others;
  int missing = 0;
  for (const std::string& file : files) {
    if (IsDirectory(file)) {
      source_.ShowFolder(file);
    } else if (FileTypeOf(file) == FileTypeId::Unsupported) {
      OpenList(file);
    } else if (FileExists(file)) {
      others.push_back(file);
    } else {
      ++missing;
    }
  }
  if (!others.empty()) {
    if (active_->Mode() == SourceMode::Directory) desk_.Actions().Trigger(CommandId::SwitchListMode);
    Drop(others);
  }
  if (missing > 0) desk_.Tell(Format(Text(texts::FilesNotLoaded), missing), MessageIcon::Exclamation);
}

void ListCommands::Load(const std::string& path, bool replace) {
  Job& job = *active_;
  const bool burner = Has(job.filter, kTimedList);
  application_.lastFileList = path;
  auto loaded = LoadFileList(path, burner, application_.Volumes(), CdTrackExists);
  const auto message = LoadMessage(loaded, path);
  bool tooMany = false;
  if (loaded) tooMany = TakeLoadedList(job.files, std::move(*loaded), replace, burner);
  active_.Show();
  active_.ChangeFiles();
  if (message) desk_.Tell(message->text, MessageIcon::Exclamation);
  if (tooMany) ShowNotice(desk_.Window(), texts::TooManyTracks);
}

void ListCommands::SaveAs() {
  const Job& job = *active_;
  const auto chosen = AskFileToSave({QtText(texts::SaveListCaption), application_.lastFileList,
                                     Text(texts::FileListFilter), QtText(texts::SaveListHelp)},
                                    desk_, desk_.Window());
  if (!chosen) return;
  const std::string path = FileListName(*chosen);
  application_.lastFileList = path;
  if (Failed(SaveFileList(path, job.files, Has(job.filter, kTimedList)))) {
    desk_.Tell(SaveFailedMessage(path).text, MessageIcon::Exclamation);
  }
}

// --- removing, moving

void ListCommands::Clear(bool ask) {
  Job& job = *active_;
  if (ask && !AskYesNo(desk_.Window(), texts::AskClearList)) return;
  job.files.Clear();
  source_.Reload();
  active_.ChangeFiles();
}

void ListCommands::Delete() {
  const Job& job = *active_;
  const FileView& view = *area_.Files();
  const std::vector<std::size_t> rows = view.SelectedRows();
  if (rows.empty()) return;
  const FileListEntry& first = area_.Model().At(rows.front());
  // What is asked about is what goes: while the question stands, the list may be arranged anew.
  const std::vector<std::size_t> entries = job.files.Selection();
  std::vector<std::string> paths;
  for (const std::size_t row : rows) {
    const FileListEntry& entry = area_.Model().At(row);
    if (!entry.cdTrack) paths.push_back(entry.path);
  }
  const std::string name(first.cdTrack ? std::string_view(first.path) : FileNameOf(first.path));
  if (!AskYesNo(desk_.Window(), ToQt(DeleteQuestion(job.Mode() == SourceMode::List, rows.size(), name))))
    return;
  job.Mode() == SourceMode::List ? RemoveEntries(entries) : DeleteFiles(std::move(paths));
}

void ListCommands::RemoveEntries(const std::vector<std::size_t>& entries) {
  active_->files.Remove(entries);
  source_.Reload();
  active_.ChangeFiles();
}

void ListCommands::DeleteFiles(std::vector<std::string> paths) {
  worker_.Start([this, paths = std::move(paths)]() -> BackgroundWorker::Done {
    std::vector<std::string> failed;
    for (const std::string& path : paths) {
      if (Failed(MoveToTrash(path))) failed.push_back(path);
    }
    return [this, failed = std::move(failed)] {
      if (active_->Mode() == SourceMode::Directory) source_.Reload();
      const std::size_t told = std::min(failed.size(), kMostFailuresTold);
      for (std::size_t i = 0; i < told; ++i) {
        std::string text = FileNotDeletedText(failed[i]);
        if (i + 1 == told && told < failed.size())
          text += "\n\n" + Format(Text(texts::MoreNotDeleted), failed.size() - told);
        desk_.Tell(text, MessageIcon::Exclamation);
      }
    };
  });
}

void ListCommands::Move(bool up) {
  Job& job = *active_;
  if (!(up ? job.files.MoveUp() : job.files.MoveDown())) return;
  source_.Reload();
  active_.ChangeFiles();
}

// --- renaming

void ListCommands::Rename() {
  FileView& view = *area_.Files();
  view.EditLabel(view.FocusRow());
}

void ListCommands::TakeLabel(std::size_t row, const QString& label) {
  Job& job = *active_;
  const FileViewModel& model = area_.Model();
  if (row >= model.Size() || !job.MayChange()) return;
  const std::string path = model.At(row).path;
  const RenamePlan plan = PlanRename(path, FromQt(label));
  if (plan.kind == RenamePlan::Kind::Nothing) return;
  if (plan.kind == RenamePlan::Kind::Refused) {
    ShowWarning(desk_.Window(), texts::RenameFailed);
    return;
  }
  if (plan.kind == RenamePlan::Kind::Ask &&
      !AskYesNo(desk_.Window(), texts::AskRenameUnsupported, DefaultButton::No)) {
    return;
  }
  const Outcome outcome = job.Mode() == SourceMode::List
                              ? RenameEntry(job.files, model.EntryOf(row), plan.newPath)
                              : RenameFile(path, plan.newPath);
  if (Failed(outcome)) {
    ShowWarning(desk_.Window(), texts::RenameFailed);
    return;
  }
  if (job.Mode() == SourceMode::Directory) job.directory.names.assign(1, job.directory.NameOf(plan.newPath));
  source_.Reload();
  active_.ChangeFiles();
}

// --- other programs

void ListCommands::PickFiles() {
  // The directory that the job works on is nearest at hand; a job without one starts where the program keeps
  // its own.
  const std::string& source = active_->directory.path;
  const std::string directory = source.empty() || !IsDirectory(source) ? ProgramDirectory() : source;
  if (!OpenInFileManager(directory)) ShowWarning(desk_.Window(), texts::DialogFailed);
}

void ListCommands::FindFiles() {
  const QString home = ToQt(HomeDirectory());
  for (const SearchProgram& program : kSearchPrograms) {
    const QString path = QStandardPaths::findExecutable(program.name);
    if (path.isEmpty()) continue;
    QStringList arguments;
    if (*program.option != '\0') arguments.append(program.option);
    arguments.append(home);
    if (QProcess::startDetached(path, arguments)) return;
  }
  if (!OpenInFileManager(HomeDirectory())) ShowWarning(desk_.Window(), texts::DialogFailed);
}

void ListCommands::ShowProperties() {
  const FileViewModel& model = area_.Model();
  const std::size_t row = area_.Files()->FocusRow();
  if (row >= model.Size()) return;
  std::vector<FileListEntry> selected;
  for (const std::size_t one : area_.Files()->SelectedRows()) selected.push_back(model.At(one));
  ShowFileProperties(model.At(row), selected, desk_, desk_.Window(),
                     static_cast<unsigned>(application_.GetSettings().id3Version));
}

void ListCommands::ShowNotation() {
  const FileViewModel& model = area_.Model();
  const std::size_t row = area_.Files()->FocusRow();
  if (row < model.Size()) preview::ShowNotation(model.At(row).path, desk_, desk_.Window());
}

}  // namespace ts5
