#include "app/shell/filter_panel.h"

#include <QApplication>
#include <QKeyEvent>
#include <algorithm>
#include <memory>

#include "app/texts.h"
#include "frame/filter_catalogue.h"
#include "frame/texts.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"
#include "resources/icons.h"

namespace ts5 {
namespace {

constexpr int kToggleWidth = 19;

std::size_t Index(FilterId filter) {
  return static_cast<std::size_t>(filter);
}

}  // namespace

FilterPanel::FilterPanel(std::span<const TileButton::Look> looks, TileStyle style, QWidget* parent)
    : QWidget(parent),
      lines_(new QVBoxLayout),
      note_(new QLabel(this)),
      scroll_(new QScrollArea(this)),
      all_(MakeSwitch("showAllFilters", texts::ShowAllFilters, texts::ShowAllFiltersToolTip)),
      fix_(MakeSwitch("fixFilter", texts::FixFilter, texts::FixFilterToolTip)) {
  setObjectName("filterBar");
  setAccessibleName(QtText(texts::FilterBarName));
  auto* list = new QWidget(scroll_);
  list->setObjectName("filterTiles");
  list->setAccessibleName(QtText(texts::FilterBarName));
  list->setLayout(lines_);
  lines_->setContentsMargins(2, 2, 2, 2);
  lines_->setSpacing(3);
  for (const FilterGroup group : kFilterGroups) {
    auto* const heading = new QLabel(ToQt(GroupName(group)), list);
    heading->setProperty("role", "heading");
    QFont bold = heading->font();
    bold.setBold(true);
    heading->setFont(bold);
    heading->setContentsMargins(4, 6, 0, 0);
    headings_.push_back(heading);
  }
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
    rows_[i] = {line, tile, toggle};
  }
  Arrange(false);
  scroll_->setWidget(list);
  scroll_->setWidgetResizable(true);
  scroll_->setFrameShape(QFrame::NoFrame);
  scroll_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  scroll_->setFocusPolicy(Qt::NoFocus);

  all_->setIcon(Icon("expand"));
  connect(all_, &QToolButton::clicked, this, &FilterPanel::AllToggled);
  connect(fix_, &QToolButton::clicked, this, &FilterPanel::FixToggled);

  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(4);
  note_->setObjectName("currentFilterNote");
  note_->setProperty("role", "note");
  note_->setTextFormat(Qt::PlainText);
  note_->setWordWrap(true);
  note_->setMargin(4);
  note_->hide();
  layout->addWidget(note_);
  layout->addWidget(scroll_, 1);
  layout->addWidget(all_);
  layout->addWidget(fix_);
}

QToolButton* FilterPanel::MakeSwitch(const char* name, TextId text, TextId toolTip) {
  auto* const button = new QToolButton(this);
  button->setObjectName(name);
  button->setText(QtText(text));
  button->setToolTip(QtText(toolTip));
  button->setAccessibleName(QtText(text));
  button->setAccessibleDescription(QtText(toolTip));
  button->setCheckable(true);
  button->setFocusPolicy(Qt::StrongFocus);
  button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
  button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  return button;
}

// In the order of the catalogue, or in groups with their headings.
void FilterPanel::Arrange(bool inGroups) {
  inGroups_ = inGroups;
  while (lines_->count() > 0) std::unique_ptr<QLayoutItem>(lines_->takeAt(0)).reset();
  std::size_t next = 0;
  const auto add = [&](std::size_t row) {
    lines_->addWidget(rows_[row].line);
    order_.at(next++) = row;
  };
  for (std::size_t group = 0; group < headings_.size(); ++group) {
    headings_[group]->setVisible(inGroups);
    if (!inGroups) continue;
    lines_->addWidget(headings_[group]);
    for (std::size_t i = 0; i < kFilterCount; ++i) {
      if (FilterCatalogue()[i].group == kFilterGroups.at(group)) add(i);
    }
  }
  if (!inGroups) {
    for (std::size_t i = 0; i < kFilterCount; ++i) add(i);
  }
  lines_->addStretch(1);
}

TileButton* FilterPanel::TileOf(FilterId filter) const {
  return rows_.at(Index(filter)).tile;
}
QToolButton* FilterPanel::ToggleOf(FilterId filter) const {
  return rows_.at(Index(filter)).toggle;
}

void FilterPanel::Show(std::span<const Tile> tiles, FilterId current, bool fixed, bool all) {
  if (const bool inGroups = all && !fixed; inGroups != inGroups_) Arrange(inGroups);
  bool missing = false;
  for (const Tile& shown : tiles) {
    Row& row = rows_.at(Index(shown.filter));
    const bool hadFocus = row.tile->hasFocus() || row.toggle->hasFocus();
    row.tile->SetExpanded(shown.expanded);
    row.tile->SetState(shown.reason, shown.help, shown.compact);
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
    if (shown.filter != current || shown.shown) continue;
    missing = true;
    note_->setText(ToQt(Format(Text(texts::CurrentFilterNote), FromQt(row.tile->text()), FromQt(shown.reason),
                               FromQt(shown.help))));
  }
  note_->setVisible(missing);
  current_ = current;
  all_->setChecked(all);
  fix_->setChecked(fixed);
  fix_->setIcon(Icon(fixed ? "fixed" : "fix"));
  UpdateTabStop();
}

// The bar is one stop of the Tab key: the current tile, or the first one that can be pressed.
void FilterPanel::UpdateTabStop() {
  const auto usable = [](const Row& row) { return !row.line->isHidden() && row.tile->isEnabled(); };
  std::size_t stop = kFilterCount;
  if (IsFilter(current_) && usable(rows_[Index(current_)])) stop = Index(current_);
  for (const std::size_t i : order_) {
    if (stop == kFilterCount && usable(rows_[i])) stop = i;
  }
  for (std::size_t i = 0; i < kFilterCount; ++i) {
    rows_[i].tile->setFocusPolicy(i == stop ? Qt::StrongFocus : Qt::ClickFocus);
  }
  setFocusProxy(stop < kFilterCount ? rows_[stop].tile : nullptr);
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
      // As much as the line has room for: what to do is in the tooltip.
      QString hint =
          onToggle ? rows_[i].toggle->toolTip() : rows_[i].tile->accessibleDescription().section('\n', 0, 1);
      emit Hint(hint.replace('\n', QStringLiteral(" – ")));
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
  const auto place = static_cast<std::size_t>(std::ranges::find(order_, from) - order_.begin());
  for (std::size_t i = place + static_cast<std::size_t>(step); i < kFilterCount;
       i += static_cast<std::size_t>(step)) {
    const Row& row = rows_[order_[i]];
    if (row.line->isHidden()) continue;
    QWidget* target = onToggle ? static_cast<QWidget*>(row.toggle) : row.tile;
    if (!target->isEnabled()) continue;
    target->setFocus(Qt::OtherFocusReason);
    return;
  }
}

}  // namespace ts5
