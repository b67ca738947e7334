#include "artworker/background_list.h"

#include <algorithm>
#include <type_traits>
#include <utility>

#include "artworker/texts.h"
#include "platform/base/text.h"

namespace ts5::artworker {

std::string BackgroundList::ProposedName() const {
  for (std::size_t number = backgrounds_.size();; ++number) {
    std::string name = Format(Text(texts::BackgroundProposal), number);
    if (std::ranges::find(backgrounds_, name, &ArtworkBackground::name) == backgrounds_.end()) return name;
  }
}

std::optional<TextId> BackgroundList::Refusal(const std::string& name) const {
  if (Trim(name).empty()) return texts::BackgroundNameMissing;
  const bool taken = std::ranges::any_of(
      backgrounds_, [&](const ArtworkBackground& other) { return EqualsIgnoringCase(other.name, name); });
  if (taken) return texts::BackgroundNameTaken;
  return std::nullopt;
}

bool BackgroundList::Store(std::vector<ArtworkBackground> backgrounds) {
  if (Failed(links_.save(backgrounds))) return false;
  backgrounds_ = std::move(backgrounds);
  return true;
}

std::optional<std::size_t> BackgroundList::Add(ArtworkBackground background) {
  std::vector<ArtworkBackground> more = backgrounds_;
  more.push_back(std::move(background));
  if (!Store(std::move(more))) return std::nullopt;
  return backgrounds_.size() - 1;
}

std::optional<std::size_t> BackgroundList::FindOrAdd(const ArtworkBackground& background) {
  const auto same = std::ranges::find_if(backgrounds_, [&](const ArtworkBackground& other) {
    return other.gradient == background.gradient && other.colour1 == background.colour1 &&
           (other.gradient == 0 || other.colour2 == background.colour2);
  });
  if (same != backgrounds_.end()) return static_cast<std::size_t>(same - backgrounds_.begin());
  ArtworkBackground added = background;
  if (Refusal(added.name)) added.name = ProposedName();
  return Add(std::move(added));
}

bool BackgroundList::Remove(std::size_t index) {
  if (backgrounds_.size() < 2 || index >= backgrounds_.size()) return false;
  std::vector<ArtworkBackground> fewer = backgrounds_;
  fewer.erase(fewer.begin() + static_cast<std::ptrdiff_t>(index));
  if (!Store(std::move(fewer))) return false;
  if (onRemoved) onRemoved(index);
  return true;
}

void MapBackgrounds(ArtworkLayout& layout, const std::function<std::int32_t(std::int32_t)>& map) {
  for (ArtworkElement& element : layout.elements) {
    std::visit(
        [&map]<typename Content>(Content& content) {
          if constexpr (!std::is_same_v<Content, UnknownContent>) {
            const bool none = std::is_same_v<Content, Image> && content.fill.background == kNoGround;
            if (!none) content.fill.background = map(content.fill.background);
          }
        },
        element.content);
  }
}

std::int32_t IndexWithout(std::int32_t index, std::size_t removed) {
  if (std::cmp_equal(index, removed)) return 0;
  return std::cmp_greater(index, removed) ? index - 1 : index;
}

}  // namespace ts5::artworker
