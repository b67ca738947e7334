#include "artworker/ui/editor_actions.h"

#include <QActionGroup>
#include <QMenu>
#include <QToolBar>
#include <QToolButton>

#include "artworker/texts.h"
#include "frame/ui/qt_text.h"
#include "resources/icons.h"

namespace ts5::artworker {

std::span<const CommandRow> CommandRows() {
  using C = EditorCommand;
  using P = CommandPlace;
  using K = QKeySequence;
  static const std::vector<CommandRow> rows{
      {C::Template, P::Layout, texts::CommandTemplate, "art_template", false, {K(Qt::CTRL | Qt::Key_N)}},
      {C::Load, P::Layout, texts::CommandLoad, "open", false, {K(Qt::CTRL | Qt::Key_O)}},
      {C::Save, P::Layout, texts::CommandSave, "save", false, {K(Qt::CTRL | Qt::Key_S)}},
      {C::LayoutPage, P::Layout, texts::CommandLayoutPage, "art_layout", false, {K(Qt::Key_F10)}},
      {C::Undo, P::Layout, texts::CommandUndo, "art_undo", true, {K(Qt::CTRL | Qt::Key_Z)}},
      {C::Redo, P::Layout, texts::CommandRedo, "art_redo", true, {K(Qt::CTRL | Qt::Key_Y)}},
      {C::Move, P::Tool, texts::ToolMove, "art_move", false, {K(Qt::Key_F2)}},
      {C::Design, P::Tool, texts::ToolDesign, "art_design", false, {K(Qt::Key_F3)}},
      {C::ZoomIn, P::Tool, texts::ToolZoomIn, "art_zoomin", false, {K(Qt::Key_F4)}},
      {C::ZoomOut, P::Tool, texts::ToolZoomOut, "art_zoomout", false, {K(Qt::Key_F6)}},
      {C::OriginalZoom, P::Layout, texts::CommandOriginalZoom, "art_zoomone", false, {K(Qt::Key_F5)}},
      {C::NewText, P::Tool, texts::ToolText, "art_text", false, {K(Qt::SHIFT | Qt::Key_F2)}},
      {C::NewEllipse, P::Tool, texts::ToolEllipse, "art_ellipse", false, {K(Qt::SHIFT | Qt::Key_F3)}},
      {C::NewImage, P::Tool, texts::ToolImage, "pictureicon", false, {K(Qt::SHIFT | Qt::Key_F4)}},
      {C::Edit, P::Element, texts::CommandEdit, "art_edit", true, {K(Qt::Key_Return), K(Qt::Key_Enter)}},
      {C::Cut,
       P::Element,
       texts::CommandCut,
       "art_cut",
       true,
       {K(Qt::CTRL | Qt::Key_X), K(Qt::SHIFT | Qt::Key_Delete)}},
      {C::Copy,
       P::Element,
       texts::CommandCopy,
       "art_copy",
       true,
       {K(Qt::CTRL | Qt::Key_C), K(Qt::CTRL | Qt::Key_Insert)}},
      {C::Paste,
       P::Element,
       texts::CommandPaste,
       "art_paste",
       true,
       {K(Qt::CTRL | Qt::Key_V), K(Qt::SHIFT | Qt::Key_Insert)}},
      {C::Delete, P::Element, texts::CommandDelete, "delete", true, {K(Qt::Key_Delete)}},
      {C::DeleteAll, P::Element, texts::CommandDeleteAll, "clearlist", true, {K(Qt::CTRL | Qt::Key_Delete)}},
      {C::SelectAll, P::Arrange, texts::CommandSelectAll, "", true, {K(Qt::CTRL | Qt::Key_A)}},
      {C::CentreAcross, P::Element, texts::CommandCentreAcross, "art_centrex", false, {K(Qt::Key_F7)}},
      {C::CentreDown, P::Element, texts::CommandCentreDown, "art_centrey", false, {K(Qt::Key_F8)}},
      {C::ToBack, P::Element, texts::CommandToBack, "art_back", true, {K(Qt::Key_Backspace)}},
      {C::ToFront, P::Element, texts::CommandToFront, "art_front", true, {K(Qt::SHIFT | Qt::Key_Backspace)}},
      {C::OriginalSize, P::Element, texts::CommandOriginalSize, "art_originalsize", false, {K(Qt::Key_F9)}},
      {C::AlignLeft, P::Arrange, texts::CommandAlignLeft, "", true, {}},
      {C::AlignCentre, P::Arrange, texts::CommandAlignCentre, "", true, {}},
      {C::AlignRight, P::Arrange, texts::CommandAlignRight, "", true, {}},
      {C::AlignTop, P::Arrange, texts::CommandAlignTop, "", true, {}},
      {C::AlignMiddle, P::Arrange, texts::CommandAlignMiddle, "", true, {}},
      {C::AlignBottom, P::Arrange, texts::CommandAlignBottom, "", true, {}},
      {C::DistributeAcross, P::Arrange, texts::CommandDistributeAcross, "", true, {}},
      {C::DistributeDown, P::Arrange, texts::CommandDistributeDown, "", true, {}},
  };
  return rows;
}

EditorActions::EditorActions(QWidget& window, std::span<QWidget* const> canvases,
                             const std::function<void(EditorCommand)>& act) {
  auto* const tools = new QActionGroup(&window);
  for (const CommandRow& row : CommandRows()) {
    const QString text = QtText(row.text);
    auto* const action = new QAction(text.section(QStringLiteral(" ("), 0, 0), &window);
    if (!row.icon.empty()) action->setIcon(Icon(row.icon));
    action->setToolTip(text);
    action->setShortcuts(QList<QKeySequence>(row.keys.begin(), row.keys.end()));
    action->setShortcutContext(row.canvasOnly ? Qt::WidgetShortcut : Qt::WindowShortcut);
    if (row.place == CommandPlace::Tool) {
      action->setCheckable(true);
      tools->addAction(action);
    }
    QObject::connect(action, &QAction::triggered, &window, [act, command = row.command] { act(command); });
    if (row.canvasOnly) {
      for (QWidget* canvas : canvases) canvas->addAction(action);
    } else {
      window.addAction(action);
    }
    actions_[row.command] = action;
  }
}

void EditorActions::AddToBar(QToolBar& bar) {
  CommandPlace last = CommandPlace::Layout;
  for (const CommandRow& row : CommandRows()) {
    if (row.icon.empty()) continue;
    if (row.place != last) bar.addSeparator();
    last = row.place;
    bar.addAction(actions_.at(row.command));
    bar.widgetForAction(actions_.at(row.command))->setFocusPolicy(Qt::TabFocus);
  }
  // What has no place in a narrow window.
  if (auto* const more = bar.findChild<QToolButton*>(QStringLiteral("qt_toolbar_ext_button"))) {
    more->setAccessibleName(QtText(texts::MoreTools));
    more->setToolTip(QtText(texts::MoreTools));
    more->setFocusPolicy(Qt::TabFocus);
  }
}

void EditorActions::AddToMenu(QMenu& menu) {
  for (const CommandRow& row : CommandRows()) {
    if (row.place == CommandPlace::Element) menu.addAction(actions_.at(row.command));
  }
  menu.addSeparator();
  QMenu* const arrange = menu.addMenu(QtText(texts::MenuArrange));
  for (const CommandRow& row : CommandRows()) {
    if (row.place == CommandPlace::Arrange) arrange->addAction(actions_.at(row.command));
  }
  menu.addSeparator();
  for (const EditorCommand command : {EditorCommand::Undo, EditorCommand::Redo})
    menu.addAction(actions_.at(command));
}

}  // namespace ts5::artworker
