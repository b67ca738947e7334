#include "app/area_commands.h"

#include <QApplication>
#include <array>

#include "app/main_window.h"
#include "app/source_commands.h"
#include "app/texts.h"
#include "frame/filter_catalogue.h"
#include "frame/ui/file_dialogs.h"
#include "frame/ui/qt_text.h"
#include "platform/paths.h"
#include "platform/text.h"

namespace ts5 {
namespace {

// The first control of an area that Tab would stop at; nullptr when there is none.
QWidget* FirstControl(QWidget& area) {
  const auto stops = [](const QWidget& widget) {
    return widget.isVisible() && widget.isEnabled() && (widget.focusPolicy() & Qt::TabFocus) != 0;
  };
  if (stops(area)) return &area;
  for (QWidget* widget = area.nextInFocusChain(); widget != &area; widget = widget->nextInFocusChain()) {
    if (area.isAncestorOf(widget) && stops(*widget)) return widget;
  }
  return nullptr;
}

}  // namespace

AreaCommands::AreaCommands(MainWindow& window) : window_(window) {
  window_.On(CommandId::NextArea, [this] { Move(Direction::Forward); });
  window_.On(CommandId::PreviousArea, [this] { Move(Direction::Backward); });
  connect(&window_.Target(), &TargetArea::BrowseClicked, this, [this] { BrowseDestination(); });
}

void AreaCommands::Move(Direction direction) {
  // In reading order.
  const std::array<QWidget*, 5> areas{&window_.JobButtons(), &window_.Filters(), &window_.Source(),
                                      &window_.Target(), &window_.PanelOf(window_.ActiveJob())};
  const QWidget* focused = QApplication::focusWidget();
  std::size_t here = areas.size() - 1;
  for (std::size_t i = 0; i < areas.size(); ++i) {
    if (focused != nullptr && (areas[i] == focused || areas[i]->isAncestorOf(focused))) here = i;
  }
  const std::size_t step = direction == Direction::Forward ? 1 : areas.size() - 1;
  for (std::size_t i = 1; i < areas.size(); ++i) {
    if (QWidget* control = FirstControl(*areas[(here + i * step) % areas.size()])) {
      control->setFocus(Qt::TabFocusReason);
      return;
    }
  }
}

void AreaCommands::BrowseDestination() {
  window_.Sources().TakeSelection();
  const Job& job = window_.ActiveJob();
  const std::string source = ItemSource(job, 0);
  std::string start = FromQt(window_.Target().Field()->text());
  if (!IsAbsolutePath(start)) start = JoinPath(DirectoryOf(source), start);
  const bool xml = EqualsIgnoringCase(ExtensionOf(source), "xml");
  window_.ShowPrompt(QtText(texts::BrowseTargetPrompt));
  const auto path = AskDestination({.title = QtText(texts::BrowseTargetTitle),
                                    .start = start,
                                    .filter = TargetFileFilter(job.filter, {.sourceIsXml = xml}),
                                    .helpTopic = QStringLiteral("zielmedium.htm")},
                                   window_, &window_);
  window_.ShowPrompt({});
  if (path) window_.Target().SetName(ToQt(*path));
}

}  // namespace ts5
