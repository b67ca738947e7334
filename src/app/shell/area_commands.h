// The keyboard's way from area to area of the main window.
#pragma once

#include <QWidget>
#include <vector>

#include "app/shell/command_actions.h"

namespace ts5 {

class AreaCommands {
 public:
  // areas: in reading order; they outlive the actions.
  AreaCommands(CommandActions& actions, std::vector<QWidget*> areas);

 private:
  enum class Direction { Forward, Backward };
  // Puts the focus on the first control of the next area that has one.
  void Move(Direction direction);

  std::vector<QWidget*> areas_;
};

}  // namespace ts5
