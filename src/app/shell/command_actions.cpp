#include "app/shell/command_actions.h"

#include <QMenu>
#include <QMenuBar>
#include <array>
#include <string_view>

#include "frame/ui/qt_text.h"
#include "modules/filter_modules.h"
#include "platform/base/text.h"
#include "resources/icons.h"

namespace ts5 {
namespace {

struct CommandIcon {
  CommandId id;
  std::string_view icon;
};
constexpr std::array kIcons{
    CommandIcon{CommandId::OpenList, "open"},
    CommandIcon{CommandId::SaveList, "save"},
    CommandIcon{CommandId::FindFiles, "find"},
    CommandIcon{CommandId::ClearList, "clearlist"},
    CommandIcon{CommandId::Delete, "delete"},
    CommandIcon{CommandId::MoveUp, "up"},
    CommandIcon{CommandId::MoveDown, "down"},
    CommandIcon{CommandId::Rename, "rename"},
    CommandIcon{CommandId::Properties, "properties"},
    CommandIcon{CommandId::Quit, "quit"},
    CommandIcon{CommandId::MaximiseList, "maximise"},
    CommandIcon{CommandId::Run, "run"},
    CommandIcon{CommandId::Stop, "stop"},
    CommandIcon{CommandId::PlayerRestart, "restart"},
    CommandIcon{CommandId::PlayerPrevious, "previous"},
    CommandIcon{CommandId::PlayerNext, "next"},
    CommandIcon{CommandId::Settings, "settings"},
    CommandIcon{CommandId::NewJob, "newjob"},
    CommandIcon{CommandId::HelpContents, "help"},
    CommandIcon{CommandId::About, "about"},
    CommandIcon{CommandId::PrintSearchResults, "print"},
    CommandIcon{CommandId::PlayHit, "play"},
    CommandIcon{CommandId::ListenFile, "play"},
};

void AddKeys(QList<QKeySequence>& keys, std::string_view names) {
  for (const std::string_view name : Split(names, ' ')) {
    if (!name.empty()) keys.append(QKeySequence(ToQt(name), QKeySequence::PortableText));
  }
}

}  // namespace

CommandActions::CommandActions(QWidget* window) : QObject(window) {
  for (const Command& command : Commands()) {
    const bool built = command.needs == FilterId::None || FindModule(command.needs) != nullptr;
    auto* action = new QAction(QtText(command.text), this);
    action->setObjectName(QString::number(static_cast<int>(command.id)));
    if (const auto hint = TextByNumber(static_cast<int>(command.id))) action->setStatusTip(ToQt(*hint));
    action->setShortcutContext(Qt::WindowShortcut);
    action->setEnabled(built);
    connect(action, &QAction::triggered, this, [this, id = command.id] { Trigger(id); });
    window->addAction(action);
    actions_[command.id] = action;
    built_[command.id] = built;
  }
  for (const CommandIcon& row : kIcons) Action(row.id)->setIcon(Icon(row.icon));
  SetAccelerators(AcceleratorTable::Standard);
}

void CommandActions::FillMenuBar(QMenuBar& bar) {
  std::map<MenuId, QMenu*> menus;
  for (const Command& command : Commands()) {
    if (command.menu == MenuId::None) continue;
    QMenu*& menu = menus[command.menu];
    if (menu == nullptr) menu = bar.addMenu(QtText(MenuTitle(command.menu)));
    if (command.startsGroup) menu->addSeparator();
    menu->addAction(Action(command.id));
  }
}

void CommandActions::AddTo(QMenu& menu, CommandId id) const {
  menu.addAction(Action(id));
}

void CommandActions::Trigger(CommandId id) {
  const auto handler = handlers_.find(id);
  if (handler == handlers_.end() || !Action(id)->isEnabled()) return;
  // A copy: what it does may end the program, and with it all handlers.
  const auto action = handler->second;
  emit Triggering();
  action();
}

void CommandActions::SetText(CommandId id, TextId text) {
  Action(id)->setText(QtText(text));
}

void CommandActions::SetAccelerators(AcceleratorTable table) {
  if (table_ == table) return;
  table_ = table;
  for (const Command& command : Commands()) {
    QList<QKeySequence> keys;
    if (table != AcceleratorTable::Off) AddKeys(keys, command.keys);
    if (table == AcceleratorTable::Player) AddKeys(keys, command.playerKeys);
    Action(command.id)->setShortcuts(keys);
  }
}

}  // namespace ts5
