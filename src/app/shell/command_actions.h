// The commands of the table as actions: menus, accelerators and status hints made from it, and the one way in
// which a command is carried out. What it does is for others to say.
#pragma once

#include <QAction>
#include <QObject>
#include <functional>
#include <map>

#include "app/shell/command_table.h"

class QMenu;
class QMenuBar;
class QWidget;

namespace ts5 {

class CommandActions : public QObject {
  Q_OBJECT

 public:
  // Actions live in the window and work while it is the active one.
  explicit CommandActions(QWidget* window);

  void FillMenuBar(QMenuBar& bar);
  void AddTo(QMenu& menu, CommandId id) const;
  [[nodiscard]] QAction* Action(CommandId id) const { return actions_.at(id); }
  void SetEnabled(CommandId id, bool enabled) { Action(id)->setEnabled(enabled && built_.at(id)); }
  void SetText(CommandId id, TextId text);
  // The keys that are live.
  void SetAccelerators(AcceleratorTable table);
  [[nodiscard]] AcceleratorTable Accelerators() const { return table_; }

  // What a command does; each group of commands says it for its own.
  void On(CommandId id, std::function<void()> action) { handlers_[id] = std::move(action); }
  // Carries a command out as if it came from its menu, unless it is disabled.
  void Trigger(CommandId id);
  // Nothing is carried out any more.
  void Close() { handlers_.clear(); }

 signals:
  // A command is carried out after this.
  void Triggering();

 private:
  std::map<CommandId, QAction*> actions_;
  std::map<CommandId, bool> built_;  // the command's room is part of this program
  std::map<CommandId, std::function<void()>> handlers_;
  AcceleratorTable table_ = AcceleratorTable::Off;
};

}  // namespace ts5
