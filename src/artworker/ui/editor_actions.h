// The commands of the editor: one table of their texts, icons and keys, and the actions made of it.
#pragma once

#include <QAction>
#include <QKeySequence>
#include <cstdint>
#include <functional>
#include <map>
#include <span>
#include <string_view>
#include <vector>

#include "platform/base/strings.h"

class QMenu;
class QToolBar;
class QWidget;

namespace ts5::artworker {

enum class EditorCommand : std::uint8_t {
  Move,
  Design,
  ZoomIn,
  ZoomOut,
  OriginalZoom,
  NewText,
  NewEllipse,
  NewImage,
  Edit,
  Delete,
  DeleteAll,
  CentreAcross,
  CentreDown,
  ToBack,
  ToFront,
  OriginalSize,
  Cut,
  Copy,
  Paste,
  SelectAll,
  Undo,
  Redo,
  Template,
  LayoutPage,
  Load,
  Save,
  AlignLeft,
  AlignCentre,
  AlignRight,
  AlignTop,
  AlignMiddle,
  AlignBottom,
  DistributeAcross,
  DistributeDown,
};

enum class CommandPlace : std::uint8_t {
  Tool,     // one of the tools, of which one is on
  Element,  // on the bar and in the menu of elements
  Arrange,  // in the menu of elements, below "Anordnen"
  Layout,   // on the bar, of the whole layout
};

struct CommandRow {
  EditorCommand command;
  CommandPlace place;
  TextId text;            // "name (key)"
  std::string_view icon;  // "" for none
  bool canvasOnly;        // its keys mean something else in fields of text
  std::vector<QKeySequence> keys;
};
[[nodiscard]] std::span<const CommandRow> CommandRows();

class EditorActions {
 public:
  // canvases: where keys that are for canvases only are heard.
  EditorActions(QWidget& window, std::span<QWidget* const> canvases,
                const std::function<void(EditorCommand)>& act);

  [[nodiscard]] QAction& operator[](EditorCommand command) { return *actions_.at(command); }
  void AddToBar(QToolBar& bar);
  void AddToMenu(QMenu& menu);

 private:
  std::map<EditorCommand, QAction*> actions_;
};

}  // namespace ts5::artworker
