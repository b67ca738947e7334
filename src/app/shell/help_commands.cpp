#include "app/shell/help_commands.h"

#include <QApplication>
#include <utility>

#include "app/shell/about_dialog.h"
#include "frame/ui/qt_text.h"

namespace ts5 {

HelpCommands::HelpCommands(Desk& desk, std::vector<Area> areas) : areas_(std::move(areas)) {
  for (const CommandId command : {CommandId::HelpContents, CommandId::HelpUse, CommandId::HelpKeys}) {
    desk.Actions().On(command, [&desk, command] { desk.OpenHelp(ToQt(CommandOf(command).helpTopic)); });
  }
  desk.Actions().On(CommandId::ContextHelp,
                    [this, &desk] { desk.OpenHelp(TopicOf(QApplication::focusWidget())); });
  desk.Actions().On(CommandId::About, [&desk] { AboutDialog(desk.Window()).exec(); });
}

QString HelpCommands::TopicOf(const QWidget* focused) const {
  for (const Area& area : areas_) {
    if (focused == area.widget || (focused != nullptr && area.widget->isAncestorOf(focused)))
      return area.topic;
  }
  return {};
}

}  // namespace ts5
