#include "artworker/layout_editor.h"

#include <algorithm>
#include <utility>

namespace ts5::artworker {

LayoutEditor::LayoutEditor(ArtworkLayout layout, std::size_t undoSteps)
    : layout_(std::move(layout)), history_(undoSteps) {}

bool LayoutEditor::IsSelected(std::size_t index) const {
  return std::ranges::find(selection_, index) != selection_.end();
}

void LayoutEditor::Click(std::size_t index, bool extend) {
  if (!extend) {
    selection_ = {index};
  } else if (!IsSelected(index)) {
    selection_.push_back(index);
  } else if (selection_.size() > 1) {
    std::erase(selection_, index);
  }
}

bool LayoutEditor::Apply(const Change& change) {
  ArtworkLayout changed = layout_;
  Selection selection = selection_;
  change(changed, selection);
  if (!CanBeKept(changed)) return false;
  selection_ = std::move(selection);
  if (changed == layout_) return false;
  history_.Record(std::exchange(layout_, std::move(changed)));
  return true;
}

void LayoutEditor::Rewrite(const std::function<void(ArtworkLayout&)>& rewrite) {
  rewrite(layout_);
  history_.ForEach(rewrite);
}

bool LayoutEditor::Show(std::optional<ArtworkLayout> layout) {
  if (!layout) return false;
  layout_ = *std::move(layout);
  std::erase_if(selection_, [this](std::size_t index) { return index >= layout_.elements.size(); });
  return true;
}

bool LayoutEditor::Undo() {
  return Show(history_.Undo(layout_));
}

bool LayoutEditor::Redo() {
  return Show(history_.Redo());
}

}  // namespace ts5::artworker
