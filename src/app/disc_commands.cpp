#include "app/disc_commands.h"

#include "app/main_window.h"
#include "app/source_commands.h"
#include "app/texts.h"
#include "frame/cd_tracks.h"
#include "frame/ui/file_dialogs.h"
#include "frame/ui/qt_text.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "platform/virtual_cd.h"

namespace ts5 {

DiscCommands::DiscCommands(MainWindow& window)
    : window_(window),
      insert_(new QAction(QtText(texts::DiscInsert), this)),
      eject_(new QAction(QtText(texts::DiscEject), this)) {
  connect(insert_, &QAction::triggered, this, [this] {
    if (AskDisc()) window_.Sources().Read();
  });
  connect(eject_, &QAction::triggered, this, [this] { Eject(); });
  window_.Source().Tree()->setContextMenuPolicy(Qt::ActionsContextMenu);
  window_.Source().Tree()->addActions({insert_, eject_});
  window_.Source().Files()->addActions({insert_, eject_});
}

bool DiscCommands::DriveIsSource() const {
  const Job& job = window_.ActiveJob();
  return job.Mode() == SourceMode::Directory && job.directory.path == VirtualCdDirectory();
}

void DiscCommands::Refresh() {
  const bool shown = DriveIsSource();
  for (QAction* action : {insert_, eject_}) {
    action->setVisible(shown);
    action->setEnabled(shown && window_.ActiveJob().MayChange());
  }
  window_.Source().Files()->SetEmptyText(shown ? texts::DiscMissing : texts::EmptyFileView);
}

bool DiscCommands::HasDisc() {
  return VirtualDisc() || AskDisc();
}

bool DiscCommands::AskDisc() {
  const auto path =
      AskFileToOpen({QtText(texts::DiscCaption), VirtualDisc().value_or(""), Text(texts::DiscFilter), {}},
                    window_, &window_);
  return path && Insert(*path);
}

bool DiscCommands::Insert(const std::string& cuePath) {
  const Outcome outcome = InsertVirtualDisc(cuePath);
  if (Failed(outcome)) window_.Tell(DiscFailureText(outcome, cuePath), MessageIcon::Exclamation);
  return Succeeded(outcome);
}

void DiscCommands::Eject() {
  const Outcome outcome = EjectVirtualDisc();
  if (Failed(outcome)) window_.Tell(DiscFailureText(outcome, {}), MessageIcon::Exclamation);
  window_.Sources().Read();
}

bool DiscCommands::TakeDrop(const std::vector<std::string>& paths) {
  const bool sheet = paths.size() == 1 && EqualsIgnoringCase(ExtensionOf(paths.front()), "cue");
  if (!sheet || !DriveIsSource() || !window_.ActiveJob().MayChange()) return false;
  if (Insert(paths.front())) window_.Sources().Read();
  return true;
}

}  // namespace ts5
