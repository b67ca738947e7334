#include "batch/store.h"

#include <memory>

#include "frame/settings.h"

namespace ts5::batch {

std::optional<Registry> OpenRegistry(Console& console, RegistryAccess access) {
  const std::string path = DefaultRegistryPath();
  auto registry = Registry::Open(path, access);
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

}  // namespace ts5::batch
