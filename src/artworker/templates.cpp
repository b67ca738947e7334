#include "artworker/templates.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <system_error>

#include "artworker/kept_pictures.h"
#include "artworker/layout_file.h"
#include "artworker/texts.h"
#include "platform/base/text.h"
#include "platform/files/directories.h"
#include "platform/files/paths.h"
#include "platform/store/profile.h"

namespace ts5::artworker {
namespace {

constexpr std::string_view kBackgroundsFile = "backgrounds.ini";
constexpr std::int64_t kMostBackgrounds = 1000;

std::vector<ArtworkBackground> ReadBackgrounds(const std::string& path) {
  std::vector<ArtworkBackground> backgrounds;
  const auto profile = Profile::Load(path);
  if (!profile) return backgrounds;
  const std::int64_t count =
      std::clamp<std::int64_t>(profile->ReadInteger("Backgrounds", "Anzahl", 0), 0, kMostBackgrounds);
  for (std::int64_t i = 1; i <= count; ++i) {
    const std::string section = Format("Background %04i", i);
    const auto number = [&](std::string_view key, std::int64_t most) {
      return static_cast<std::uint32_t>(
          std::clamp<std::int64_t>(profile->ReadInteger(section, key, 0), 0, most));
    };
    backgrounds.push_back({.colour1 = number("Farbe 1", kMaxColour),
                           .colour2 = number("Farbe 2", kMaxColour),
                           .gradient = number("Verlauf", 3),
                           .name = profile->ReadText(section, "Name")});
  }
  return backgrounds;
}

}  // namespace

std::string TemplateDirectory() {
  return JoinPath(InstalledDirectory(), "layouts");
}

std::vector<Template> LoadTemplates(const std::string& directory) {
  std::vector<Template> templates;
  const std::vector<ArtworkBackground> backgrounds = ReadBackgrounds(JoinPath(directory, kBackgroundsFile));
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(directory, error)) {
    const std::string path = entry.path().string();
    if (!EqualsIgnoringCase(ExtensionOf(path), kLayoutExtension)) continue;
    auto layout = LoadLayout(path);
    if (!layout) continue;
    FindPictures(*layout, directory);
    templates.push_back({std::string(WithoutExtension(FileNameOf(path))), *std::move(layout), backgrounds});
  }
  std::ranges::sort(templates, {}, &Template::name);
  return templates;
}

std::optional<ArtworkLayout> AdoptTemplate(const Template& chosen, BackgroundList& backgrounds) {
  ArtworkLayout layout = chosen.layout;
  std::map<std::int32_t, std::int32_t> shared;
  bool stored = true;
  MapBackgrounds(layout, [&](std::int32_t index) {
    const auto known = shared.find(index);
    if (known != shared.end()) return known->second;
    std::int32_t found = 0;
    if (std::cmp_less(index, chosen.backgrounds.size())) {
      const auto at = backgrounds.FindOrAdd(chosen.backgrounds[static_cast<std::size_t>(index)]);
      stored = stored && at.has_value();
      found = static_cast<std::int32_t>(at.value_or(0));
    }
    return shared[index] = found;
  });
  if (!stored) return std::nullopt;
  return layout;
}

DiscFacts SampleDisc() {
  DiscFacts facts{.title = std::string(Text(texts::SampleTitle)),
                  .performer = std::string(Text(texts::SamplePerformer)),
                  .tracks = {}};
  int seconds = 131;
  for (const std::string_view title : Split(Text(texts::SampleTracks), '|')) {
    facts.tracks.push_back({std::string(title), {}, std::chrono::seconds(seconds)});
    seconds = 120 + seconds * 7 % 190;
  }
  return facts;
}

}  // namespace ts5::artworker
