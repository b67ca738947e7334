// Where a shown window has its texts: those that lie over each other, outside of what holds them, or do not
// fit the places that item views, tabs and fields give them. ClippedTexts (accessible.h) has labels and
// buttons.
#pragma once

#include <QAbstractButton>
#include <QAbstractScrollArea>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QProgressBar>
#include <QStringList>
#include <QStyleOptionComboBox>
#include <QTabBar>
#include <vector>

namespace ts5 {

struct PlacedText {
  const QWidget* widget;
  QString text;
  QRect place;  // in the window, as much of it as is not scrolled away
};

inline QString TextShownBy(const QWidget& widget) {
  if (const auto* label = qobject_cast<const QLabel*>(&widget)) return label->text();
  if (const auto* button = qobject_cast<const QAbstractButton*>(&widget)) return button->text();
  if (const auto* box = qobject_cast<const QComboBox*>(&widget)) return box->currentText();
  if (const auto* field = qobject_cast<const QLineEdit*>(&widget)) return field->text();
  if (const auto* bar = qobject_cast<const QProgressBar*>(&widget))
    return bar->isTextVisible() ? bar->text() : QString();
  return {};
}

// Where a text is drawn in its label, which may be wider; the whole of everything else.
inline QRect RoomOf(const QWidget& widget) {
  const auto* const label = qobject_cast<const QLabel*>(&widget);
  if (label == nullptr || label->wordWrap() || label->textFormat() == Qt::RichText) return widget.rect();
  const QSize text = label->fontMetrics().size(Qt::TextShowMnemonic, label->text());
  return QStyle::alignedRect(label->layoutDirection(), label->alignment(), text, label->contentsRect()) &
         label->rect();
}

// With what is to be complained of along the way: texts that lie partly outside of what holds them, where
// nothing scrolls.
inline std::vector<PlacedText> PlacedTexts(const QWidget& window, QStringList& outside) {
  std::vector<PlacedText> texts;
  for (const QWidget* widget : window.findChildren<QWidget*>()) {
    if (!widget->isVisibleTo(&window) || widget->window() != &window) continue;
    QString text = TextShownBy(*widget);
    const auto* const parent = widget->parentWidget();
    if (text.trimmed().isEmpty() || qobject_cast<const QComboBox*>(parent) != nullptr) continue;
    QRect place = RoomOf(*widget);
    bool scrolls = false;
    bool cut = false;
    for (const QWidget* at = widget; at != &window; at = at->parentWidget()) {
      place.translate(at->pos());
      const QWidget* const holder = at->parentWidget();
      scrolls = scrolls || qobject_cast<const QAbstractScrollArea*>(holder->parentWidget()) != nullptr;
      const QRect shown = place & holder->rect();
      cut = cut || (shown != place && !scrolls);
      place = shown;
    }
    if (cut) outside << QStringLiteral("%1 (%2)").arg(text, QLatin1String(widget->metaObject()->className()));
    if (!place.isEmpty()) texts.push_back({widget, std::move(text), place});
  }
  return texts;
}

inline QString Described(const PlacedText& text) {
  return QStringLiteral("\"%1\" %2 at %3,%4 %5x%6")
      .arg(text.text.left(40), text.widget->objectName())
      .arg(text.place.x())
      .arg(text.place.y())
      .arg(text.place.width())
      .arg(text.place.height());
}

inline QStringList MisplacedTexts(const QWidget& window) {
  QStringList faults;
  const std::vector<PlacedText> texts = PlacedTexts(window, faults);
  for (std::size_t i = 0; i < texts.size(); ++i) {
    for (std::size_t j = i + 1; j < texts.size(); ++j) {
      const PlacedText& a = texts[i];
      const PlacedText& b = texts[j];
      const QRect both = a.place & b.place;
      if (both.width() < 2 || both.height() < 2) continue;
      if (a.widget->isAncestorOf(b.widget) || b.widget->isAncestorOf(a.widget)) continue;
      faults << Described(a) + QStringLiteral(" over ") + Described(b);
    }
  }
  return faults;
}

// Titles of columns, tabs, menus and what a combo box shows.
inline QStringList CutTitles(const QWidget& window) {
  QStringList cut;
  const auto check = [&cut](const QString& text, int needed, int room) {
    if (!text.isEmpty() && needed > room)
      cut << QStringLiteral("%1 (%2 of %3)").arg(text).arg(room).arg(needed);
  };
  for (const QHeaderView* header : window.findChildren<QHeaderView*>()) {
    if (!header->isVisible() || header->orientation() != Qt::Horizontal) continue;
    for (int i = 0; i < header->count(); ++i) {
      const QString title = header->model()->headerData(i, Qt::Horizontal).toString();
      if (!header->isSectionHidden(i))
        check(title, header->fontMetrics().horizontalAdvance(title), header->sectionSize(i));
    }
  }
  for (const QTabBar* bar : window.findChildren<QTabBar*>()) {
    for (int i = 0; bar->isVisible() && i < bar->count(); ++i) {
      const QString title = QString(bar->tabText(i)).remove('&');
      check(title, bar->fontMetrics().horizontalAdvance(title), bar->tabRect(i).width());
      if (i + 1 == bar->count()) check(title, bar->tabRect(i).right(), bar->width());
    }
  }
  for (const QMenuBar* bar : window.findChildren<QMenuBar*>()) {
    for (QAction* action : bar->actions()) {
      const QRect place = bar->actionGeometry(action);
      if (bar->isVisible()) check(action->text(), place.right(), bar->width());
    }
  }
  for (const QComboBox* box : window.findChildren<QComboBox*>()) {
    if (!box->isVisible()) continue;
    QStyleOptionComboBox option;
    option.initFrom(box);
    option.editable = box->isEditable();
    const QRect field =
        box->style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, box);
    const int icon = box->itemIcon(box->currentIndex()).isNull() ? 0 : box->iconSize().width() + 4;
    check(box->currentText(), box->fontMetrics().horizontalAdvance(box->currentText()) + icon, field.width());
  }
  return cut;
}

}  // namespace ts5
