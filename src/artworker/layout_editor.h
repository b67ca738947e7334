// A layout that is being edited: the layout, what is selected in it, and the way back.
#pragma once

#include <cstddef>
#include <functional>

#include "artworker/history.h"
#include "artworker/layout_edit.h"

namespace ts5::artworker {

class LayoutEditor {
 public:
  LayoutEditor(ArtworkLayout layout, std::size_t undoSteps);

  [[nodiscard]] const ArtworkLayout& Layout() const { return layout_; }
  [[nodiscard]] const Selection& Selected() const { return selection_; }
  [[nodiscard]] bool IsSelected(std::size_t index) const;

  void Select(Selection selection) { selection_ = std::move(selection); }
  // As a click does it: alone, or with Shift or Ctrl (extend) in and out; one element always stays.
  void Click(std::size_t index, bool extend);

  // One step that can be taken back; nothing is recorded when nothing has changed. The change may set what is
  // selected afterwards. More than a layout may hold is no change.
  using Change = std::function<void(ArtworkLayout&, Selection&)>;
  bool Apply(const Change& change);
  // The layout and all states that it can go back to, alike: no step of its own.
  void Rewrite(const std::function<void(ArtworkLayout&)>& rewrite);
  bool Undo();
  bool Redo();
  [[nodiscard]] bool CanUndo() const { return history_.CanUndo(); }
  [[nodiscard]] bool CanRedo() const { return history_.CanRedo(); }
  void SetUndoSteps(std::size_t steps) { history_.SetMost(steps); }

 private:
  bool Show(std::optional<ArtworkLayout> layout);

  ArtworkLayout layout_;
  Selection selection_;
  History<ArtworkLayout> history_;
};

}  // namespace ts5::artworker
