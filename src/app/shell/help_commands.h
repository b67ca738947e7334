// The commands of the help menu.
#pragma once

#include <QString>
#include <QWidget>
#include <vector>

#include "app/shell/desk.h"

namespace ts5 {

class HelpCommands {
 public:
  // An area of the main window that has a topic of its own.
  struct Area {
    const QWidget* widget;
    const char* topic;
  };
  HelpCommands(Desk& desk, std::vector<Area> areas);

  // The topic of the area that a widget of the main window lies in; "" elsewhere.
  [[nodiscard]] QString TopicOf(const QWidget* focused) const;

 private:
  std::vector<Area> areas_;
};

}  // namespace ts5
