#include "artworker/ui/canvas_accessible.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <map>
#include <memory>

#include "artworker/element_notes.h"
#include "artworker/texts.h"
#include "artworker/ui/layout_canvas.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"

namespace ts5::artworker {
namespace {

constexpr std::array kObjectNames = {texts::ArtworkLabel, texts::ArtworkInlay, texts::ArtworkBooklet};

// The element at a row of the canvas. The text of a text field can be read through; it is edited in its
// dialog.
class AccessibleElement : public QAccessibleInterface,
                          public QAccessibleActionInterface,
                          public QAccessibleTextInterface {
 public:
  AccessibleElement(LayoutCanvas* canvas, int row) : canvas_(canvas), row_(row) {}

  [[nodiscard]] int Row() const { return row_; }
  [[nodiscard]] bool isValid() const override { return canvas_ != nullptr && Index().has_value(); }
  [[nodiscard]] QObject* object() const override { return nullptr; }
  [[nodiscard]] QAccessibleInterface* parent() const override {
    return QAccessible::queryAccessibleInterface(canvas_);
  }
  [[nodiscard]] QAccessibleInterface* child(int) const override { return nullptr; }
  [[nodiscard]] QAccessibleInterface* childAt(int, int) const override { return nullptr; }
  [[nodiscard]] int childCount() const override { return 0; }
  [[nodiscard]] int indexOfChild(const QAccessibleInterface*) const override { return -1; }
  [[nodiscard]] QAccessible::Role role() const override { return QAccessible::ListItem; }
  void setText(QAccessible::Text, const QString&) override {}
  void* interface_cast(QAccessible::InterfaceType type) override {
    if (type == QAccessible::ActionInterface) return static_cast<QAccessibleActionInterface*>(this);
    if (type == QAccessible::TextInterface && Field() != nullptr)
      return static_cast<QAccessibleTextInterface*>(this);
    return nullptr;
  }
  [[nodiscard]] QStringList actionNames() const override { return {pressAction()}; }
  [[nodiscard]] QStringList keyBindingsForAction(const QString&) const override { return {}; }
  void doAction(const QString& action) override {
    if (const auto index = Index(); index && action == pressAction()) canvas_->Choose(*index, false);
  }

  [[nodiscard]] QString text(QAccessible::Text what) const override {
    const auto index = Index();
    if (!index) return {};
    const ArtworkLayout& layout = canvas_->GetScene().editor.Layout();
    const ArtworkElement& element = layout.elements[*index];
    switch (what) {
      case QAccessible::Name:
        return ToQt(NameOf(element));
      case QAccessible::Description:
        return ToQt(PlaceText(element, layout.Object(element.object)));
      case QAccessible::Value:
        return Whole();
      default:
        return {};
    }
  }
  [[nodiscard]] QString text(int start, int end) const override { return Whole().mid(start, end - start); }
  [[nodiscard]] int characterCount() const override { return static_cast<int>(Whole().size()); }
  [[nodiscard]] QRect characterRect(int) const override { return rect(); }
  [[nodiscard]] int offsetAtPoint(const QPoint& point) const override {
    return rect().contains(point) ? 0 : -1;
  }
  [[nodiscard]] int cursorPosition() const override { return 0; }
  void setCursorPosition(int) override {}
  [[nodiscard]] int selectionCount() const override { return 0; }
  void selection(int, int* start, int* end) const override { *start = *end = 0; }
  void addSelection(int, int) override {}
  void removeSelection(int) override {}
  void setSelection(int, int, int) override {}
  void scrollToSubstring(int, int) override {}
  [[nodiscard]] QString attributes(int, int* start, int* end) const override {
    *start = 0;
    *end = characterCount();
    return {};
  }

  [[nodiscard]] QRect rect() const override {
    const auto index = Index();
    if (!index) return {};
    const QRect rect = canvas_->RectOf(*index).toAlignedRect();
    return {canvas_->mapToGlobal(rect.topLeft()), rect.size()};
  }
  [[nodiscard]] QAccessible::State state() const override {
    QAccessible::State state;
    state.selectable = true;
    const auto index = Index();
    if (!index) {
      state.invalid = true;
      return state;
    }
    const LayoutEditor& editor = canvas_->GetScene().editor;
    state.selected = editor.IsSelected(*index);
    state.focusable = true;
    state.focused = state.selected && editor.Selected().back() == *index && canvas_->hasFocus();
    return state;
  }

 private:
  [[nodiscard]] std::optional<std::size_t> Index() const {
    const Selection all = ElementsOf(canvas_->GetScene().editor.Layout(), canvas_->Id());
    return std::cmp_less(row_, all.size()) ? std::optional(all[static_cast<std::size_t>(row_)])
                                           : std::nullopt;
  }
  // nullptr: the element has no text.
  [[nodiscard]] const TextField* Field() const {
    const auto index = Index();
    if (!index) return nullptr;
    return std::get_if<TextField>(&canvas_->GetScene().editor.Layout().elements[*index].content);
  }
  [[nodiscard]] QString Whole() const { return Field() != nullptr ? ToQt(Field()->text) : QString(); }

  LayoutCanvas* canvas_;
  int row_;
};

class AccessibleCanvas : public QAccessibleWidget {
 public:
  explicit AccessibleCanvas(LayoutCanvas* canvas)
      : QAccessibleWidget(canvas, QAccessible::List), canvas_(canvas) {}
  ~AccessibleCanvas() override {
    for (const auto& [row, id] : rows_) QAccessible::deleteAccessibleInterface(id);
  }
  AccessibleCanvas(const AccessibleCanvas&) = delete;
  AccessibleCanvas& operator=(const AccessibleCanvas&) = delete;

  [[nodiscard]] int childCount() const override {
    return static_cast<int>(ElementsOf(canvas_->GetScene().editor.Layout(), canvas_->Id()).size());
  }
  [[nodiscard]] QAccessibleInterface* child(int row) const override {
    if (row < 0 || row >= childCount()) return nullptr;
    const auto known = rows_.find(row);
    if (known != rows_.end()) return QAccessible::accessibleInterface(known->second);
    auto* const made = new AccessibleElement(canvas_, row);  // the toolkit's register owns it
    rows_[row] = QAccessible::registerAccessibleInterface(made);
    return made;
  }
  // The uppermost at a place of the screen, and the one that the keys work on.
  [[nodiscard]] QAccessibleInterface* childAt(int x, int y) const override {
    return Find([x, y](const QAccessibleInterface& element) { return element.rect().contains(x, y); });
  }
  [[nodiscard]] QAccessibleInterface* focusChild() const override {
    return Find([](const QAccessibleInterface& element) { return element.state().focused; });
  }
  [[nodiscard]] int indexOfChild(const QAccessibleInterface* child) const override {
    const auto* const element = dynamic_cast<const AccessibleElement*>(child);
    return element != nullptr ? element->Row() : -1;
  }
  [[nodiscard]] QString text(QAccessible::Text what) const override {
    if (what != QAccessible::Name) return QAccessibleWidget::text(what);
    return ToQt(Format(Text(texts::CanvasName), Text(kObjectNames[IndexOf(canvas_->Id())]),
                       static_cast<int>(canvas_->Zoom() * 100 + 0.5)));
  }

 private:
  template <typename Predicate>
  QAccessibleInterface* Find(Predicate is) const {
    for (int row = childCount(); row-- > 0;) {
      if (QAccessibleInterface* const element = child(row); is(*element)) return element;
    }
    return nullptr;
  }

  LayoutCanvas* canvas_;
  mutable std::map<int, QAccessible::Id> rows_;
};

QAccessibleInterface* MakeCanvas(const QString& /*key*/, QObject* object) {
  auto* const canvas = qobject_cast<LayoutCanvas*>(object);
  return canvas != nullptr ? new AccessibleCanvas(canvas) : nullptr;
}

}  // namespace

void InstallCanvasAccessibility() {
  [[maybe_unused]] static const bool once = (QAccessible::installFactory(MakeCanvas), true);
}

}  // namespace ts5::artworker
