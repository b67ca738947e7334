#include "app/shell/area_commands.h"

#include <QApplication>
#include <QRadioButton>
#include <algorithm>
#include <utility>

namespace ts5 {
namespace {

// The control that an area is entered at: the one it names, else the first one that Tab would stop at;
// nullptr when there is none.
QWidget* FirstControl(QWidget& area) {
  // Of radio buttons the chosen one.
  const auto chosenBeside = [](const QWidget& widget) {
    const auto* const radio = qobject_cast<const QRadioButton*>(&widget);
    return radio != nullptr && !radio->isChecked() &&
           std::ranges::any_of(
               radio->parentWidget()->findChildren<QRadioButton*>(),
               [](const QRadioButton* other) { return other->isChecked() && other->isVisible(); });
  };
  const auto stops = [&chosenBeside](const QWidget& widget) {
    return widget.isVisible() && widget.isEnabled() && (widget.focusPolicy() & Qt::TabFocus) != 0 &&
           !chosenBeside(widget);
  };
  if (QWidget* const named = area.focusProxy(); named != nullptr && stops(*named)) return named;
  if (stops(area)) return &area;
  for (QWidget* widget = area.nextInFocusChain(); widget != &area; widget = widget->nextInFocusChain()) {
    if (area.isAncestorOf(widget) && stops(*widget)) return widget;
  }
  return nullptr;
}

}  // namespace

AreaCommands::AreaCommands(CommandActions& actions, std::vector<QWidget*> areas) : areas_(std::move(areas)) {
  actions.On(CommandId::NextArea, [this] { Move(Direction::Forward); });
  actions.On(CommandId::PreviousArea, [this] { Move(Direction::Backward); });
}

void AreaCommands::Move(Direction direction) {
  const QWidget* focused = QApplication::focusWidget();
  std::size_t here = areas_.size() - 1;
  for (std::size_t i = 0; i < areas_.size(); ++i) {
    if (focused != nullptr && (areas_[i] == focused || areas_[i]->isAncestorOf(focused))) here = i;
  }
  const std::size_t step = direction == Direction::Forward ? 1 : areas_.size() - 1;
  for (std::size_t i = 1; i < areas_.size(); ++i) {
    if (QWidget* control = FirstControl(*areas_[(here + i * step) % areas_.size()])) {
      control->setFocus(Qt::TabFocusReason);
      return;
    }
  }
}

}  // namespace ts5
