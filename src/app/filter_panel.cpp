#include "app/filter_panel.h"

#include <QApplication>
#include <QKeyEvent>
#include <QVBoxLayout>

#include "app/texts.h"
#include "frame/texts.h"
#include "frame/ui/qt_text.h"
#include "platform/text.h"
#include "resources/icons.h"

namespace ts5 {
namespace {

constexpr int kToggleWidth = 19;

std::size_t Index(FilterId filter) {
  return static_cast<std::size_t>(filter);
}

}  // namespace

FilterPanel::FilterPanel(std::span<const TileButton::Look> looks, TileStyle style, QWidget* parent)
    : QWidget(parent), scroll_(new QScrollArea(this)), fix_(new QToolButton(this)) {
  setObjectName("filterBar");
  setAccessibleName(QtText(texts::FilterBarName));
  auto* list = new QWidget(scroll_);
  list->setObjectName("filterTiles");
  list->setAccessibleName(QtText(texts::FilterBarName));
  auto* lines = new QVBoxLayout(list);
  lines->setContentsMargins(2, 2, 2, 2);
  lines->setSpacing(3);
  for (std::size_t i = 0; i < kFilterCount; ++i) {
    const auto filter = static_cast<FilterId>(i);
    auto* line = new QWidget(list);
    auto* columns = new QHBoxLayout(line);
    columns->setContentsMargins(0, 0, 0, 0);
    columns->setSpacing(1);
    auto* tile = new TileButton(looks[i], style, line);
    auto* toggle = new QToolButton(line);
    toggle->setAutoRaise(true);
    toggle->setIconSize({12, 12});
    toggle->setStyleSheet("padding: 0");
    toggle->setFixedSize(kToggleWidth, kCollapsedTileHeight);
    columns->addWidget(tile, 1);
    columns->addWidget(toggle, 0, Qt::AlignTop);
    tile->setFocusPolicy(Qt::ClickFocus);
    toggle->setFocusPolicy(Qt::ClickFocus);
    tile->installEventFilter(this);
    toggle->installEventFilter(this);
    connect(tile, &QAbstractButton::clicked, this, [this, filter] { emit FilterChosen(filter); });
    connect(toggle, &QAbstractButton::clicked, this, [this, filter] { emit TileToggled(filter); });
    lines->addWidget(line);
    rows_[i] = {line, tile, toggle};
  }
  lines->addStretch(1);
  scroll_->setWidget(list);
  scroll_->setWidgetResizable(true);
  scroll_->setFrameShape(QFrame::NoFrame);
  scroll_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  scroll_->setFocusPolicy(Qt::NoFocus);

  fix_->setObjectName("fixFilter");
  fix_->setText(QtText(texts::FixFilter));
  fix_->setToolTip(QtText(texts::FixFilterToolTip));
  fix_->setAccessibleName(QtText(texts::FixFilter));
  fix_->setAccessibleDescription(QtText(texts::FixFilterToolTip));
  fix_->setCheckable(true);
  fix_->setFocusPolicy(Qt::StrongFocus);
  fix_->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
  fix_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  connect(fix_, &QToolButton::clicked, this, &FilterPanel::FixToggled);

  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(4);
  layout->addWidget(scroll_, 1);
  layout->addWidget(fix_);
}

TileButton* FilterPanel::TileOf(FilterId filter) const {
  return rows_.at(Index(filter)).tile;
}
QToolButton* FilterPanel::ToggleOf(FilterId filter) const {
  return rows_.at(Index(filter)).toggle;
}

void FilterPanel::Show(std::span<const Tile> tiles, FilterId current, bool fixed) {
  for (const Tile& shown : tiles) {
    Row& row = rows_.at(Index(shown.filter));
    const bool hadFocus = row.tile->hasFocus() || row.toggle->hasFocus();
    row.tile->SetExpanded(shown.expanded);
    row.tile->SetCurrent(shown.filter == current);
    row.tile->setEnabled(shown.enabled);
    row.toggle->setEnabled(shown.toggleEnabled);
    row.toggle->setIcon(Icon(shown.expanded ? "collapse" : "expand"));
    const QString label = ToQt(
        Format(Text(shown.expanded ? texts::CollapseTile : texts::ExpandTile), FromQt(row.tile->text())));
    row.toggle->setToolTip(label);
    row.toggle->setAccessibleName(label);
    if (!shown.shown && hadFocus) fix_->setFocus();
    row.line->setVisible(shown.shown);
  }
  current_ = current;
  fix_->setChecked(fixed);
  fix_->setIcon(Icon(fixed ? "fixed" : "fix"));
  UpdateTabStop();
}

// The bar is one stop of the Tab key: the current tile, or the first one that can be pressed.
void FilterPanel::UpdateTabStop() {
  const auto usable = [](const Row& row) { return !row.line->isHidden() && row.tile->isEnabled(); };
  std::size_t stop = kFilterCount;
  if (IsFilter(current_) && usable(rows_[Index(current_)])) stop = Index(current_);
  for (std::size_t i = 0; i < kFilterCount && stop == kFilterCount; ++i) {
    if (usable(rows_[i])) stop = i;
  }
  for (std::size_t i = 0; i < kFilterCount; ++i) {
    rows_[i].tile->setFocusPolicy(i == stop ? Qt::StrongFocus : Qt::ClickFocus);
  }
}

bool FilterPanel::eventFilter(QObject* watched, QEvent* event) {
  const auto kind = event->type();
  const bool leaves = kind == QEvent::FocusOut || kind == QEvent::Leave;
  if (kind != QEvent::KeyPress && kind != QEvent::FocusIn && kind != QEvent::Enter && !leaves) {
    return QWidget::eventFilter(watched, event);
  }
  for (std::size_t i = 0; i < kFilterCount; ++i) {
    const bool onToggle = watched == rows_[i].toggle;
    if (watched != rows_[i].tile && !onToggle) continue;
    if (kind == QEvent::KeyPress && HandleKey(i, onToggle, static_cast<QKeyEvent*>(event)->key()))
      return true;
    if (kind == QEvent::FocusIn) scroll_->ensureWidgetVisible(rows_[i].line, 0, 4);
    if (kind == QEvent::Enter || kind == QEvent::FocusIn) {
      emit Hint(onToggle ? rows_[i].toggle->toolTip() : rows_[i].tile->accessibleDescription());
    }
    if (leaves) emit Hint({});
    break;
  }
  return QWidget::eventFilter(watched, event);
}

bool FilterPanel::HandleKey(std::size_t row, bool onToggle, int key) {
  switch (key) {
    case Qt::Key_Up:
      FocusRow(row, -1, onToggle);
      return true;
    case Qt::Key_Down:
      FocusRow(row, 1, onToggle);
      return true;
    case Qt::Key_Right:
      if (rows_[row].toggle->isEnabled()) rows_[row].toggle->setFocus(Qt::OtherFocusReason);
      return true;
    case Qt::Key_Left:
      rows_[row].tile->setFocus(Qt::OtherFocusReason);
      return true;
    case Qt::Key_Plus:
    case Qt::Key_Minus:
      if (rows_[row].tile->IsExpanded() == (key == Qt::Key_Minus)) rows_[row].toggle->click();
      return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
      (onToggle ? static_cast<QAbstractButton*>(rows_[row].toggle) : rows_[row].tile)->click();
      return true;
    default:
      return false;
  }
}

void FilterPanel::FocusRow(std::size_t from, int step, bool onToggle) {
  for (std::size_t i = from + static_cast<std::size_t>(step); i < kFilterCount;
       i += static_cast<std::size_t>(step)) {
    if (rows_[i].line->isHidden()) continue;
    QWidget* target = onToggle ? static_cast<QWidget*>(rows_[i].toggle) : rows_[i].tile;
    if (!target->isEnabled()) continue;
    target->setFocus(Qt::OtherFocusReason);
    return;
  }
}

}  // namespace ts5
