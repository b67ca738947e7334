// The shared backgrounds while a layout is edited: new ones, and ones that go.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "artworker/layout.h"
#include "frame/backgrounds.h"
#include "platform/base/strings.h"

namespace ts5::artworker {

class BackgroundList {
 public:
  struct Links {
    std::function<std::vector<ArtworkBackground>()> load;
    std::function<Outcome(const std::vector<ArtworkBackground>&)> save;
  };
  explicit BackgroundList(Links links) : links_(std::move(links)) { Reload(); }

  // As another window may have changed them.
  void Reload() { backgrounds_ = links_.load(); }
  [[nodiscard]] const std::vector<ArtworkBackground>& All() const { return backgrounds_; }

  // "Neu 0001" or the next one that no background has.
  [[nodiscard]] std::string ProposedName() const;
  // Why a new background cannot have the name; nothing when it can.
  [[nodiscard]] std::optional<TextId> Refusal(const std::string& name) const;

  // Stored at once; what cannot be stored is not in the list. Nothing when it failed.
  std::optional<std::size_t> Add(ArtworkBackground background);
  // The index of a background that looks the same, added when there is none.
  std::optional<std::size_t> FindOrAdd(const ArtworkBackground& background);
  // The last one stays. Calls onRemoved, as layouts hold indices.
  bool Remove(std::size_t index);

  std::function<void(std::size_t index)> onRemoved = {};

 private:
  bool Store(std::vector<ArtworkBackground> backgrounds);

  Links links_;
  std::vector<ArtworkBackground> backgrounds_;
};

// Every background of the layout by another index. An image without one stays without one.
void MapBackgrounds(ArtworkLayout& layout, const std::function<std::int32_t(std::int32_t)>& map);
// The index that one has when another one has been removed; of the removed one: the first.
[[nodiscard]] std::int32_t IndexWithout(std::int32_t index, std::size_t removed);

}  // namespace ts5::artworker
