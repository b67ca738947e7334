#include "app/help_commands.h"

#include <QApplication>

#include "app/about_dialog.h"
#include "app/main_window.h"
#include "frame/ui/qt_text.h"
#include "frame/ui/settings_dialog.h"

namespace ts5 {

HelpCommands::HelpCommands(MainWindow& window) : window_(window) {
  const auto topic = [this](CommandId command) {
    window_.On(command, [this, command] { window_.OpenHelp(ToQt(CommandOf(command).helpTopic)); });
  };
  topic(CommandId::HelpContents);
  topic(CommandId::HelpUse);
  topic(CommandId::HelpKeys);
  window_.On(CommandId::ContextHelp, [this] { window_.OpenHelp(TopicOf(QApplication::focusWidget())); });
  window_.On(CommandId::About, [this] { AboutDialog(&window_).exec(); });
  window_.On(CommandId::Settings, [this] { ShowSettings(); });
}

QString HelpCommands::TopicOf(const QWidget* focused) const {
  struct Area {
    const QWidget* area;
    const char* topic;
  };
  const Area areas[] = {{&window_.Source(), "quellmedium.htm"},
                        {&window_.Filters(), "filtersektion.htm"},
                        {&window_.Target(), "zielmedium.htm"}};
  for (const Area& row : areas) {
    if (focused == row.area || (focused != nullptr && row.area->isAncestorOf(focused))) return row.topic;
  }
  return {};
}

void HelpCommands::ShowSettings() {
  Settings& settings = window_.App().GetSettings();
  SettingsDialog dialog(settings, window_, &window_);
  const bool accepted = dialog.exec() == QDialog::Accepted;
  settings.lastSelectedFolder = dialog.Accepted().lastSelectedFolder;
  if (!accepted) return;
  settings = dialog.Accepted();
  if (dialog.WholePathChanged()) window_.ShowWholePaths(settings.searchWholePath);
  window_.RefreshDestination();
  window_.Refresh();
}

}  // namespace ts5
