#include "search/ui/note_editor_panel.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>
#include <QVBoxLayout>
#include <utility>

#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "search/texts.h"
#include "search/ui/note_icons.h"
#include "search/ui/staff_view.h"

namespace ts5 {
namespace {

constexpr int kIconSize = 24;
constexpr int kGroupGap = 4;

// Commands that begin a new group of buttons.
bool StartsGroup(NoteCommand command) {
  switch (command) {
    case NoteCommand::Flat:
    case NoteCommand::TrebleClef:
    case NoteCommand::ToggleDot:
    case NoteCommand::Play:
    case NoteCommand::Undo:
    case NoteCommand::Save:
      return true;
    default:
      return false;
  }
}

// Buttons that show a state; the others only act.
bool ShowsState(NoteCommand command) {
  return command <= NoteCommand::ThirtySecond;
}

}  // namespace

NoteEditorPanel::NoteEditorPanel(QWidget* parent)
    : QWidget(parent), staff_(new StaffView(melody_, this)), toolbar_(new QWidget(this)) {
  auto* const layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(toolbar_);
  layout->addWidget(staff_, 1);
  auto* const keys = new QLabel(QtText(texts::NoteKeys), this);
  keys->setObjectName(QStringLiteral("noteKeysLabel"));
  keys->setWordWrap(true);
  keys->setForegroundRole(QPalette::PlaceholderText);
  layout->addWidget(keys);
  MakeToolbar();
  setFocusProxy(staff_);
  connect(staff_, &StaffView::CommandGiven, this, &NoteEditorPanel::Execute);
  connect(staff_, &StaffView::PositionPicked, this, [this](std::size_t position) {
    if (editor_->Playing()) return;
    melody_.cursor = position;
    ShowState();
  });
  connect(staff_, &StaffView::NotePicked, this, [this](int place, std::size_t position) {
    editor_->SetWidth(staff_->width());
    Take(editor_->EnterAt(place, position));
  });
  SetMelody({});
}

NoteEditorPanel::~NoteEditorPanel() = default;

void NoteEditorPanel::MakeToolbar() {
  auto* const row = new QHBoxLayout(toolbar_);
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(1);
  for (const NoteCommandRow& command : NoteCommands()) {
    if (!command.tip) continue;
    if (StartsGroup(command.command)) row->addSpacing(kGroupGap);
    auto* const button = new QToolButton(toolbar_);
    button->setAutoRaise(true);
    button->setIconSize({kIconSize, kIconSize});
    button->setCheckable(ShowsState(command.command));
    button->setToolTip(QtText(*command.tip));
    button->setAccessibleName(QtText(*command.tip));
    button->setFocusPolicy(Qt::TabFocus);
    connect(button, &QToolButton::clicked, this, [this, id = command.command] {
      Execute(id);
      staff_->setFocus();
    });
    row->addWidget(button);
    buttons_.push_back({command.command, button});
  }
  row->addStretch(1);
  PaintIcons();
}

void NoteEditorPanel::PutTabStopsBehind(QWidget* widget) {
  for (const Button& row : buttons_) {
    setTabOrder(widget, row.button);
    widget = row.button;
  }
  setTabOrder(widget, staff_);
}

void NoteEditorPanel::PaintIcons() {
  for (const Button& row : buttons_) row.button->setIcon(NoteIcon(row.command, palette()));
}

void NoteEditorPanel::SetMelody(SearchMelody melody) {
  const bool playing = editor_ && editor_->Playing();
  melody_ = std::move(melody);
  editor_ = std::make_unique<NoteEditor>(melody_);
  editor_->SetPlaying(playing);
  ShowState();
}

void NoteEditorPanel::ReplaceMelody(SearchMelody melody) {
  editor_->Replace(std::move(melody));
  ShowState();
}

void NoteEditorPanel::EnterKey(int key) {
  if (!isVisible()) return;
  editor_->SetWidth(staff_->width());
  Take(editor_->EnterKey(key));
}

void NoteEditorPanel::Take(const EditResult& result) {
  if (result.message) ShowWarning(this, *result.message);
  if (result.sounds) emit NoteEntered(*result.sounds);
  ShowState();
}

void NoteEditorPanel::SetPlaying(bool playing) {
  editor_->SetPlaying(playing);
  ShowState();
}

void NoteEditorPanel::SetCanPlay(bool can) {
  canPlay_ = can;
  ShowState();
}

void NoteEditorPanel::Execute(NoteCommand command) {
  if (!isVisible() || !editor_->IsEnabled(command)) {
    ShowState();  // a checkable button has changed by itself
    return;
  }
  editor_->SetWidth(staff_->width());
  switch (command) {
    case NoteCommand::Play:
      if (canPlay_) emit PlayRequested();
      break;
    case NoteCommand::Save:
      emit SaveRequested();
      break;
    case NoteCommand::Manage:
      emit ManageRequested();
      break;
    default:
      Take(editor_->Execute(command));
      return;
  }
  ShowState();
}

void NoteEditorPanel::ShowState() {
  for (const Button& row : buttons_) {
    const bool playable = row.command != NoteCommand::Play || canPlay_;
    row.button->setEnabled(playable && editor_->IsEnabled(row.command));
    if (row.button->isCheckable()) row.button->setChecked(editor_->IsChosen(row.command));
  }
  staff_->SetEditable(!editor_->Playing());
  staff_->MelodyChanged();
}

void NoteEditorPanel::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  if (event->type() == QEvent::PaletteChange || event->type() == QEvent::StyleChange) PaintIcons();
}

}  // namespace ts5
