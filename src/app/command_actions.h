// The commands of the table as actions: menus, accelerators and status hints made from it. What a command
// does is for others to say; this reports that it was triggered.
#pragma once

#include <QAction>
#include <QObject>
#include <map>

#include "app/command_table.h"

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

 signals:
  void Triggered(ts5::CommandId id);

 private:
  std::map<CommandId, QAction*> actions_;
  std::map<CommandId, bool> built_;  // the command's room is part of this program
  AcceleratorTable table_ = AcceleratorTable::Off;
};

}  // namespace ts5
