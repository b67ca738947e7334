#include "app/list_commands.h"

#include <QApplication>
#include <QDesktopServices>
#include <QProcess>
#include <QStandardPaths>
#include <QUrl>
#include <array>

#include "app/disc_commands.h"
#include "app/file_properties_dialog.h"
#include "app/main_window.h"
#include "app/source_commands.h"
#include "frame/cd_tracks.h"
#include "frame/file_drop.h"
#include "frame/file_list_file.h"
#include "frame/file_rename.h"
#include "frame/file_view.h"
#include "frame/texts.h"
#include "frame/ui/file_dialogs.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "platform/directories.h"
#include "platform/files.h"
#include "platform/paths.h"
#include "platform/wastebasket.h"

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

ListCommands::ListCommands(MainWindow& window) : window_(window) {
  window_.On(CommandId::OpenList, [this] { Open(); });
  window_.On(CommandId::SaveList, [this] { SaveAs(); });
  window_.On(CommandId::PickFiles, [this] { this->PickFiles(); });
  window_.On(CommandId::FindFiles, [this] { this->FindFiles(); });
  window_.On(CommandId::ClearList, [this] { Clear(true); });
  window_.On(CommandId::ClearListSilently, [this] { Clear(false); });
  window_.On(CommandId::Delete, [this] { this->Delete(); });
  window_.On(CommandId::MoveUp, [this] { Move(true); });
  window_.On(CommandId::MoveDown, [this] { Move(false); });
  window_.On(CommandId::Rename, [this] { this->Rename(); });
  window_.On(CommandId::Properties, [this] { ShowProperties(); });
  window_.On(CommandId::MaximiseList, [this] { ToggleMaximised(); });

  SourceArea& source = window_.Source();
  connect(source.Strip(), &FreeListStrip::FilesDropped, this, [this](const auto& paths) { Drop(paths); });
  connect(source.Files(), &FileView::FilesDropped, this, [this](const auto& paths) {
    if (window_.ActiveJob().Mode() == SourceMode::List) {
      Drop(paths);
    } else if (!window_.Discs().TakeDrop(paths)) {
      window_.Tell(DropWithoutList().text, MessageIcon::Information);
    }
  });
  connect(&source.Model(), &FileViewModel::LabelEdited, this, [this](std::size_t row, const QString& label) {
    // After the editor is gone: what follows asks questions and reads the directory again.
    QMetaObject::invokeMethod(
        this, [this, row, label] { TakeLabel(row, label); }, Qt::QueuedConnection);
  });
}

void ListCommands::ListChanged() {
  window_.RefreshFilterBar();
  window_.RefreshDestination();
  window_.Refresh();
}

// --- adding, loading, saving

void ListCommands::Drop(const std::vector<std::string>& paths) {
  Job& job = window_.ActiveJob();
  if (!job.MayChange()) {
    QApplication::beep();
    return;
  }
  window_.Sources().TakeSelection();
  const DropResult result = DropFiles(
      job.files, job.filter, paths,
      {.driveOf = [this](const std::string& path) { return DriveOfFile(window_.App().Volumes(), path); },
       .durationOf = {}});
  if (result.rejected > 0) QApplication::beep();
  window_.Source().SetFreeListCount(job.files.Size());
  if (job.Mode() == SourceMode::List) {
    if (result.added > 0) {
      window_.Sources().Reload();
      window_.Source().Files()->scrollToBottom();
    }
    ListChanged();
  }
  for (const UserMessage& message : result.messages) window_.Tell(message.text, MessageIcon::Information);
}

void ListCommands::Open() {
  Job& job = window_.ActiveJob();
  const auto path = AskFileToOpen({QtText(texts::LoadListCaption), window_.App().lastFileList,
                                   Text(texts::FileListFilter), QtText(texts::LoadListHelp)},
                                  window_, &window_);
  if (!path) return;
  bool replace = true;
  if (job.Mode() == SourceMode::List && !job.files.Empty()) {
    replace = AskYesNo(&window_, texts::AskClearBeforeLoad);
  }
  if (job.Mode() == SourceMode::Directory) {
    job.sourceDrive = kListModeDrive;
    replace = true;
  }
  Load(*path, replace);
}

void ListCommands::Load(const std::string& path, bool replace) {
  Job& job = window_.ActiveJob();
  const bool burner = job.filter == FilterId::CdBurner;
  window_.App().lastFileList = path;
  auto loaded = LoadFileList(path, burner, window_.App().Volumes(), CdTrackExists);
  const auto message = LoadMessage(loaded, path);
  bool tooMany = false;
  if (loaded) tooMany = TakeLoadedList(job.files, std::move(*loaded), replace, burner);
  (void)window_.Show(job);
  ListChanged();
  if (message) window_.Tell(message->text, MessageIcon::Exclamation);
  if (tooMany) ShowNotice(&window_, texts::TooManyTracks);
}

void ListCommands::SaveAs() {
  const Job& job = window_.ActiveJob();
  const auto chosen = AskFileToSave({QtText(texts::SaveListCaption), window_.App().lastFileList,
                                     Text(texts::FileListFilter), QtText(texts::SaveListHelp)},
                                    window_, &window_);
  if (!chosen) return;
  const std::string path = FileListName(*chosen);
  window_.App().lastFileList = path;
  if (Failed(SaveFileList(path, job.files, job.filter == FilterId::CdBurner))) {
    window_.Tell(SaveFailedMessage(path).text, MessageIcon::Exclamation);
  }
}

// --- removing, moving

void ListCommands::Clear(bool ask) {
  Job& job = window_.ActiveJob();
  if (ask && !AskYesNo(&window_, texts::AskClearList)) return;
  job.files.Clear();
  window_.Sources().Reload();
  ListChanged();
}

void ListCommands::Delete() {
  const Job& job = window_.ActiveJob();
  const FileView& view = *window_.Source().Files();
  const std::vector<std::size_t> rows = view.SelectedRows();
  if (rows.empty()) return;
  const FileListEntry& first = window_.Source().Model().At(rows.front());
  const std::string name(first.cdTrack ? std::string_view(first.path) : FileNameOf(first.path));
  if (!AskYesNo(&window_, ToQt(DeleteQuestion(job.Mode() == SourceMode::List, rows.size(), name)))) return;
  job.Mode() == SourceMode::List ? RemoveEntries() : DeleteFiles();
}

void ListCommands::RemoveEntries() {
  Job& job = window_.ActiveJob();
  job.files.Remove(job.files.Selection());
  window_.Sources().Reload();
  ListChanged();
}

void ListCommands::DeleteFiles() {
  std::vector<std::string> paths;
  for (const std::size_t row : window_.Source().Files()->SelectedRows()) {
    const FileListEntry& entry = window_.Source().Model().At(row);
    if (!entry.cdTrack) paths.push_back(entry.path);
  }
  worker_.Start([this, paths = std::move(paths)]() -> BackgroundWorker::Done {
    std::vector<std::string> failed;
    for (const std::string& path : paths) {
      if (Failed(MoveToTrash(path))) failed.push_back(path);
    }
    return [this, failed = std::move(failed)] {
      if (window_.ActiveJob().Mode() == SourceMode::Directory) window_.Sources().Reload();
      for (std::size_t i = 0; i < failed.size() && i < kMostFailuresTold; ++i) {
        window_.Tell(FileNotDeletedText(failed[i]), MessageIcon::Exclamation);
      }
    };
  });
}

void ListCommands::Move(bool up) {
  Job& job = window_.ActiveJob();
  if (!(up ? job.files.MoveUp() : job.files.MoveDown())) return;
  window_.Sources().Reload();
  ListChanged();
}

// --- renaming

void ListCommands::Rename() {
  FileView& view = *window_.Source().Files();
  view.EditLabel(view.FocusRow());
}

void ListCommands::TakeLabel(std::size_t row, const QString& label) {
  Job& job = window_.ActiveJob();
  const FileViewModel& model = window_.Source().Model();
  if (row >= model.Size() || !job.MayChange()) return;
  const std::string path = model.At(row).path;
  const RenamePlan plan = PlanRename(path, FromQt(label));
  if (plan.kind == RenamePlan::Kind::Nothing) return;
  if (plan.kind == RenamePlan::Kind::Refused) {
    ShowWarning(&window_, texts::RenameFailed);
    return;
  }
  if (plan.kind == RenamePlan::Kind::Ask &&
      !AskYesNo(&window_, texts::AskRenameUnsupported, DefaultButton::No)) {
    return;
  }
  const Outcome outcome = job.Mode() == SourceMode::List ? RenameEntry(job.files, row, plan.newPath)
                                                         : RenameFile(path, plan.newPath);
  if (Failed(outcome)) {
    ShowWarning(&window_, texts::RenameFailed);
    return;
  }
  if (job.Mode() == SourceMode::Directory)
    job.directory.names.assign(1, std::string(FileNameOf(plan.newPath)));
  window_.Sources().Reload();
  ListChanged();
}

void ListCommands::ToggleMaximised() {
  Job& job = window_.ActiveJob();
  const bool maximised = !window_.IsListMaximised();
  if (job.Mode() == SourceMode::List) job.fileWindowMaximised = maximised;
  window_.SetMaximised(maximised);
  window_.Source().Files()->setFocus();
}

// --- other programs

void ListCommands::PickFiles() {
  // The directory that the job works on is nearest at hand; a job without one starts where the program keeps
  // its own.
  const std::string& source = window_.ActiveJob().directory.path;
  const std::string directory = source.empty() || !IsDirectory(source) ? ProgramDirectory() : source;
  if (!OpenInFileManager(directory)) ShowWarning(&window_, texts::DialogFailed);
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
  if (!OpenInFileManager(HomeDirectory())) ShowWarning(&window_, texts::DialogFailed);
}

void ListCommands::ShowProperties() {
  const std::size_t row = window_.Source().Files()->FocusRow();
  if (row < window_.Source().Model().Size())
    ShowFileProperties(window_.Source().Model().At(row), window_, &window_);
}

}  // namespace ts5
