#include "app/shell/settings_commands.h"

#include "audio/interfaces/known_encoders.h"
#include "audio/interfaces/ui/interface_assistant.h"
#include "audio/interfaces/ui/interface_manager.h"
#include "frame/ui/settings_dialog.h"

namespace ts5 {

SettingsCommands::SettingsCommands(Desk& desk, Settings& settings) : desk_(desk), settings_(settings) {
  CommandActions& actions = desk_.Actions();
  actions.On(CommandId::Settings, [this] { EditSettings(); });
  actions.On(CommandId::CreateMp3Interface, [this] {
    interfaces::InterfaceAssistant(interfaces::FindEncoders(), interfaces::InterfacesPath(), desk_,
                                   desk_.Window())
        .exec();
  });
  actions.On(CommandId::ManageMp3Interfaces, [this] {
    interfaces::InterfaceManager(interfaces::InterfacesPath(), desk_, desk_.Window()).exec();
  });
}

void SettingsCommands::EditSettings() {
  SettingsDialog dialog(settings_, desk_, desk_.Window());
  const bool accepted = dialog.exec() == QDialog::Accepted;
  settings_.lastSelectedFolder = dialog.Accepted().lastSelectedFolder;
  if (!accepted) return;
  settings_ = dialog.Accepted();
  emit Changed();
}

}  // namespace ts5
