#include "app/listen/listen_commands.h"

#include <QKeyEvent>

#include "app/shell/application.h"
#include "app/shell/command_actions.h"
#include "app/source/file_view.h"

namespace ts5 {

ListenCommands::ListenCommands(CommandActions& actions, FileView& files, Application& application,
                               QWidget* barParent)
    : files_(files),
      application_(application),
      listener_([&application](FilterId filter) { return application.Module(filter); },
                application.SoundFinder(), application.Practices()),
      bar_(new ListenBar(listener_, application.GetSettings().listeningVolume, barParent)) {
  listener_.SetVolume(application_.GetSettings().listeningVolume);
  actions.On(CommandId::ListenFile, [this] { PlayRow(files_.FocusRow()); });
  files_.installEventFilter(this);
  for (QWidget* const control : bar_->findChildren<QWidget*>()) {
    // A menu has an Esc of its own.
    if (!control->isWindow()) control->installEventFilter(this);
  }
  connect(&files_, &QAbstractItemView::doubleClicked, this, [this](const QModelIndex& index) {
    // There the texts of a disc's tracks are edited.
    if (!files_.FileModel()->TextColumn(index.column())) PlayRow(static_cast<std::size_t>(index.row()));
  });
  connect(bar_, &ListenBar::AgainWanted, this, [this] {
    if (listener_.Title()) listener_.Play(FileListEntry(*listener_.Title()), application_.GetSettings());
  });
  connect(bar_, &ListenBar::VolumeChanged, this, [this](std::int32_t volume) {
    application_.GetSettings().listeningVolume = volume;
    listener_.SetVolume(volume);
  });
}

bool ListenCommands::eventFilter(QObject* watched, QEvent* event) {
  const bool shortcut = event->type() == QEvent::ShortcutOverride;
  if ((event->type() != QEvent::KeyPress && !shortcut) || files_.IsEditing())
    return QObject::eventFilter(watched, event);
  const auto* const key = static_cast<QKeyEvent*>(event);
  if (shortcut) {
    // Esc ends what sounds, and not the run of a job beside it.
    if (key->key() != Qt::Key_Escape || !listener_.Busy()) return QObject::eventFilter(watched, event);
    event->accept();
    return true;
  }
  const bool plain = (key->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
  const bool enter = key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter;
  if (plain && enter && watched == &files_) {
    if (!key->isAutoRepeat()) PlayRow(files_.FocusRow());
    return true;
  }
  if (plain && key->key() == Qt::Key_Escape && listener_.Busy()) {
    listener_.Stop();
    return true;
  }
  return QObject::eventFilter(watched, event);
}

void ListenCommands::PlayRow(std::size_t row) {
  if (row < files_.FileModel()->Size())
    listener_.Play(FileListEntry(files_.FileModel()->At(row)), application_.GetSettings());
}

}  // namespace ts5
