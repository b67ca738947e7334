#include "frame/backgrounds.h"

#include <algorithm>

#include "frame/settings.h"
#include "frame/texts.h"
#include "platform/base/strings.h"
#include "platform/base/text.h"

namespace ts5 {
namespace {

constexpr std::uint32_t kWhite = 0xFFFFFF;

std::string ListKey() {
  return Format("%s\\%s\\Backgrounds", kLocalMachine, kSettingsKey);
}
std::string EntryKey(std::size_t number) {
  return Format("%s\\Background %04i", ListKey(), number);
}

std::uint32_t NumberOf(const RegistryValues& values, std::string_view name, std::int64_t most) {
  const auto value = values.Integer(name);
  return value && *value >= 0 && *value <= most ? static_cast<std::uint32_t>(*value) : 0;
}

}  // namespace

std::vector<ArtworkBackground> LoadBackgrounds(const Registry& registry) {
  std::vector<ArtworkBackground> backgrounds;
  const auto list = registry.Read(ListKey());
  // The count is believed only as far as there are keys.
  const auto keys = registry.Subkeys(ListKey());
  const std::int64_t count = list ? list->Integer("Anzahl").value_or(0) : 0;
  for (const std::string& key : keys.value_or(std::vector<std::string>{})) {
    constexpr std::string_view kPrefix = "Background ";
    if (!EqualsIgnoringCase(std::string_view(key).substr(0, kPrefix.size()), kPrefix)) continue;
    const auto number = ParseInteger(std::string_view(key).substr(kPrefix.size()));
    if (!number || *number < 1 || *number > count) continue;
    const auto values = registry.Read(EntryKey(static_cast<std::size_t>(*number)));
    if (!values) continue;
    backgrounds.push_back(
        {NumberOf(*values, "Farbe 1", kWhite), NumberOf(*values, "Farbe 2", kWhite),
         NumberOf(*values, "Verlauf", UINT32_MAX),
         std::string(FirstCharacters(values->Text("Name").value_or(""), kMaxBackgroundName))});
  }
  if (backgrounds.empty())
    backgrounds.push_back({kWhite, kWhite, 0, std::string(Text(texts::DefaultBackground))});
  return backgrounds;
}

Outcome SaveBackgrounds(Registry& registry, const std::vector<ArtworkBackground>& backgrounds) {
  return registry.Transaction([&] {
    auto list = registry.Read(ListKey());
    if (!list) return list.error();
    list->SetInteger("Anzahl", static_cast<std::int64_t>(backgrounds.size()));
    Outcome outcome = registry.Write(ListKey(), *list);
    for (std::size_t i = 0; i < backgrounds.size() && Succeeded(outcome); ++i) {
      const ArtworkBackground& background = backgrounds[i];
      RegistryValues values;
      values.SetInteger("Farbe 1", background.colour1);
      values.SetInteger("Farbe 2", background.colour2);
      values.SetInteger("Verlauf", background.gradient);
      values.SetText("Name", FirstCharacters(background.name, kMaxBackgroundName));
      outcome = registry.DeleteKey(EntryKey(i + 1));
      if (Succeeded(outcome)) outcome = registry.Write(EntryKey(i + 1), values);
    }
    return outcome;
  });
}

}  // namespace ts5
