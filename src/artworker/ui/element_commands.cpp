#include "artworker/ui/element_commands.h"

#include <QApplication>
#include <algorithm>
#include <map>

#include "artworker/kept_pictures.h"
#include "artworker/texts.h"
#include "artworker/ui/canvas_page.h"
#include "artworker/ui/element_clipboard.h"
#include "artworker/ui/layout_canvas.h"
#include "artworker/ui/shape_dialogs.h"
#include "artworker/ui/text_dialog.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"

namespace ts5::artworker {
namespace {

using C = EditorCommand;

// Commands that are a change of the layout and nothing else.
const std::map<EditorCommand, LayoutEditor::Change>& PlainChanges() {
  using A = Alignment;
  const auto align = [](A alignment) {
    return [alignment](ArtworkLayout& layout, Selection& selection) { Align(layout, selection, alignment); };
  };
  static const std::map<EditorCommand, LayoutEditor::Change> changes{
      {C::CentreAcross, [](auto& l, auto& s) { CentreOnObject(l, s, Qt::Horizontal); }},
      {C::CentreDown, [](auto& l, auto& s) { CentreOnObject(l, s, Qt::Vertical); }},
      {C::ToBack, SendToBack},
      {C::ToFront, BringToFront},
      {C::AlignLeft, align(A::Left)},
      {C::AlignCentre, align(A::Centre)},
      {C::AlignRight, align(A::Right)},
      {C::AlignTop, align(A::Top)},
      {C::AlignMiddle, align(A::Middle)},
      {C::AlignBottom, align(A::Bottom)},
      {C::DistributeAcross, [](auto& l, auto& s) { Distribute(l, s, Qt::Horizontal); }},
      {C::DistributeDown, [](auto& l, auto& s) { Distribute(l, s, Qt::Vertical); }},
  };
  return changes;
}

}  // namespace

bool ElementCommands::Act(EditorCommand command) {
  if (const auto change = PlainChanges().find(command); change != PlainChanges().end()) {
    Change(change->second);
    return true;
  }
  static const std::map<EditorCommand, void (*)(ElementCommands&)> others{
      {C::Edit, [](ElementCommands& c) { c.EditSelected(); }},
      {C::Delete, [](ElementCommands& c) { c.AskDelete(false); }},
      {C::DeleteAll, [](ElementCommands& c) { c.AskDelete(true); }},
      {C::OriginalSize, [](ElementCommands& c) { c.ResizeToPicture(); }},
      {C::SelectAll, [](ElementCommands& c) { c.SelectAll(); }},
      {C::Copy, [](ElementCommands& c) { c.Copy(); }},
      {C::Paste, [](ElementCommands& c) { c.Paste(); }},
      {C::Cut,
       [](ElementCommands& c) {
         c.Copy();
         c.AskDelete(false);
       }},
  };
  const auto found = others.find(command);
  if (found == others.end()) return false;
  found->second(*this);
  return true;
}

void ElementCommands::Change(const LayoutEditor::Change& change) {
  if (ground_.scene.editor.Apply(change)) emit Edited();
}

void ElementCommands::EditSelected() {
  if (ground_.scene.editor.Selected().size() == 1) Edit(ground_.scene.editor.Selected().front());
}

void ElementCommands::SelectAll() {
  CanvasPage* const page = ground_.page();
  if (page == nullptr) return;
  ground_.scene.editor.Select(ElementsOf(ground_.scene.editor.Layout(), page->Canvas().Id()));
  emit page->Canvas().SelectionChanged();
}

void ElementCommands::AskDelete(bool all) {
  CanvasPage* const page = ground_.page();
  if (page == nullptr) return;
  Selection gone =
      all ? ElementsOf(ground_.scene.editor.Layout(), page->Canvas().Id()) : ground_.scene.editor.Selected();
  if (gone.empty()) return;
  const TextId question = all               ? texts::AskDeleteElements
                          : gone.size() > 1 ? texts::AskDeleteSelected
                                            : texts::AskDeleteElement;
  if (!AskYesNo(ground_.window, question)) return;
  Change([&gone](ArtworkLayout& layout, Selection& selection) {
    Delete(layout, gone);
    selection.clear();
  });
}

void ElementCommands::Draw(const QRectF& place) {
  CanvasPage* const page = ground_.page();
  if (page == nullptr) return;
  LayoutCanvas& canvas = page->Canvas();
  ArtworkElement element;
  element.object = canvas.Id();
  if (ground_.scene.tool == Tool::Ellipse) element.content = Ellipse{};
  if (ground_.scene.tool == Tool::Image) element.content = Image{};
  element.box = BoxOf(place, ground_.scene.editor.Layout().Object(element.object), element.object);
  const auto made = EditedElement(element);
  emit canvas.ToolWanted(Tool::Design);
  if (!made) return;
  Change([&made](ArtworkLayout& layout, Selection& selection) { Append(layout, selection, *made); });
}

void ElementCommands::Edit(std::size_t index) {
  const auto edited = EditedElement(ground_.scene.editor.Layout().elements[index]);
  if (!edited) return;
  Change([&](ArtworkLayout& layout, Selection&) {
    // The window stays open beside the dialog: the element may have gone.
    if (index < layout.elements.size()) layout.elements[index] = *edited;
  });
}

std::optional<ArtworkElement> ElementCommands::EditedElement(const ArtworkElement& element) {
  const auto run = [](auto&& dialog) -> std::optional<ArtworkElement> {
    if (dialog.exec() != QDialog::Accepted) return std::nullopt;
    return dialog.Element();
  };
  if (std::holds_alternative<TextField>(element.content))
    return run(TextDialog(element, ground_.scene.backgrounds, ground_.host, ground_.window));
  if (std::holds_alternative<Ellipse>(element.content))
    return run(EllipseDialog(element, ground_.scene.backgrounds, ground_.host, ground_.window));
  if (!std::holds_alternative<Image>(element.content)) return std::nullopt;
  const auto keep = [this](const QImage& picture) { return Keep(picture); };
  return run(
      ImageDialog(element, ground_.scene.backgrounds, ground_.folder, keep, ground_.host, ground_.window));
}

void ElementCommands::ResizeToPicture() {
  const Selection& selection = ground_.scene.editor.Selected();
  CanvasPage* const page = ground_.page();
  if (page == nullptr || selection.size() != 1) return;
  const ArtworkElement& element = ground_.scene.editor.Layout().elements[selection.front()];
  const auto* const image = std::get_if<Image>(&element.content);
  const QSize size = image != nullptr ? Pictures::SizeOf(image->file) : QSize();
  if (size.isEmpty()) return QApplication::beep();
  const double inset = 2 * 0.1 * (element.borderWidth + element.borderGap);
  const QSizeF extent = QSizeF(size) / page->Canvas().Scale() + QSizeF(inset, inset);
  Change([&](ArtworkLayout& layout, Selection& selected) {
    const QRectF place = PlaceOf(layout.elements[selected.front()], layout.Object(page->Canvas().Id()));
    SetPlace(layout, selected.front(), QRectF(place.topLeft(), extent));
  });
}

void ElementCommands::Copy() {
  std::vector<ArtworkElement> elements;
  // In the order in which they lie above each other.
  Selection selection = ground_.scene.editor.Selected();
  std::ranges::sort(selection);
  for (const std::size_t index : selection) elements.push_back(ground_.scene.editor.Layout().elements[index]);
  if (elements.empty()) return;
  if (!CopyElements(elements)) ShowWarning(ground_.window, texts::ElementNotCopied);
}

void ElementCommands::Paste() {
  CanvasPage* const page = ground_.page();
  if (page == nullptr) return;
  if (!ClipboardOpens()) return ShowWarning(ground_.window, texts::ClipboardNotOpened);
  const auto elements = PasteElements([this](const QImage& picture) { return Keep(picture); });
  if (!elements) return ShowWarning(ground_.window, texts::ElementNotPasted);
  for (const ArtworkElement& element : *elements) {
    const auto* const image = std::get_if<Image>(&element.content);
    if (image != nullptr && !CanBeNamed(image->file))
      return ShowWarning(ground_.window, ToQt(Format(Text(texts::PictureNameNotStorable), image->file)));
  }
  const QPointF corner = page->VisibleCorner();
  const ArtworkObjectId id = page->Canvas().Id();
  Change([&](ArtworkLayout& layout, Selection& selection) {
    artworker::Paste(layout, selection, *elements, id, corner);
  });
}

Result<std::string> ElementCommands::Keep(const QImage& picture) const {
  return KeepPicture(picture, ground_.pictureFolder());
}

}  // namespace ts5::artworker
