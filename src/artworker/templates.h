// The layouts that the program ships, to begin from: layout files in one directory, with their pictures and a
// profile file of their backgrounds beside them.
#pragma once

#include <string>
#include <vector>

#include "artworker/background_list.h"
#include "artworker/filled_text.h"
#include "artworker/layout.h"

namespace ts5::artworker {

struct Template {
  std::string name;  // as the user sees it
  ArtworkLayout layout;
  std::vector<ArtworkBackground> backgrounds;  // of the layout's indices
};

// Where they were installed.
[[nodiscard]] std::string TemplateDirectory();
// Sorted by name; files that are no layouts are left out. Pictures are named by their full paths.
[[nodiscard]] std::vector<Template> LoadTemplates(const std::string& directory);

// The layout with its backgrounds in the shared list. Nothing when they cannot be stored there.
[[nodiscard]] std::optional<ArtworkLayout> AdoptTemplate(const Template& chosen, BackgroundList& backgrounds);

// A disc to show templates with.
[[nodiscard]] DiscFacts SampleDisc();

}  // namespace ts5::artworker
