#include "batch/store.h"

#include <memory>

#include "app/filter_modules.h"
#include "frame/settings.h"
#include "platform/volumes.h"

namespace ts5::batch {

std::optional<Registry> OpenRegistry(Console& console) {
  const std::string path = DefaultRegistryPath();
  auto registry = Registry::Open(path);
  if (!registry) {
    PrintError(console, RegistryFailureText(registry.error(), path));
    return std::nullopt;
  }
  if (!registry->Notice().empty()) PrintError(console, registry->Notice());
  return std::move(*registry);
}

std::optional<std::string> KeyOf(std::string_view text) {
  const std::string settings = std::string(kLocalMachine) + "\\" + std::string(kSettingsKey);
  if (text.empty() || text == ".") return settings;
  if (NormalisedKey(text.substr(0, text.find('\\')))) return NormalisedKey(text);
  return NormalisedKey(settings + "\\" + std::string(text));
}

JobSurroundings SystemJobSurroundings() {
  return JobSurroundingsOf(VolumeTable::OfThisMachine(), FindModule);
}

}  // namespace ts5::batch
