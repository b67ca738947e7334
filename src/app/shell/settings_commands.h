// What is set up for the program as a whole: its settings, and the encoders of the command line.
#pragma once

#include <QObject>

#include "app/shell/desk.h"
#include "frame/settings.h"

namespace ts5 {

class SettingsCommands : public QObject {
  Q_OBJECT

 public:
  SettingsCommands(Desk& desk, Settings& settings);

 signals:
  void Changed();

 private:
  void EditSettings();

  Desk& desk_;
  Settings& settings_;
};

}  // namespace ts5
