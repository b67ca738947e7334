// What assistive technology sees of a window: a walk over its accessible tree that finds controls which a
// screen reader could not name, and one over its widgets that finds texts which do not fit.
#pragma once

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QGroupBox>
#include <QLabel>
#include <QMetaEnum>
#include <QStringList>
#include <QWidget>
#include <algorithm>

namespace ts5 {

inline bool IsInteractive(QAccessible::Role role) {
  using enum QAccessible::Role;
  constexpr QAccessible::Role kInteractive[] = {
      Button,  ButtonDropDown, ButtonMenu, CheckBox, RadioButton, ComboBox, EditableText, Dial, Slider,
      SpinBox, List,           Tree,       Table,    MenuItem,    PageTab,  HotkeyField,  Link};
  return std::ranges::find(kInteractive, role) != std::end(kInteractive);
}

// Lists hold data, and the parts of a combo or number field bear the name of the whole.
inline bool IsLeaf(QAccessible::Role role) {
  return role == QAccessible::List || role == QAccessible::Tree || role == QAccessible::Table ||
         role == QAccessible::ComboBox || role == QAccessible::SpinBox;
}

inline void WalkAccessible(QAccessibleInterface* node, const QString& path, QStringList& nameless) {
  if (node == nullptr || !node->isValid() || node->state().invisible) return;
  const QString name = node->text(QAccessible::Name);
  const QString type =
      node->object() != nullptr
          ? QStringLiteral("%1 %2").arg(QLatin1String(node->object()->metaObject()->className()),
                                        node->object()->objectName())
          : QStringLiteral("role %1").arg(int(node->role()));
  const QString here = path + QLatin1Char('/') + (name.isEmpty() ? type : name);
  if (IsInteractive(node->role()) && name.trimmed().isEmpty()) nameless << here;
  if (IsLeaf(node->role())) return;
  for (int i = 0; i < node->childCount(); ++i) WalkAccessible(node->child(i), here, nameless);
}

// The paths of the visible controls of a shown window that have no accessible name.
inline QStringList NamelessControls(QWidget& window) {
  QStringList nameless;
  WalkAccessible(QAccessible::queryAccessibleInterface(&window), {}, nameless);
  return nameless;
}

// The tree as a screen reader walks it: a line each, with role, name and state.
inline QString AccessibleTree(QAccessibleInterface* node, int depth = 0) {
  if (node == nullptr || !node->isValid() || node->state().invisible) return {};
  const QAccessible::State state = node->state();
  QString line = QString(2 * depth, QLatin1Char(' ')) +
                 QLatin1String(QMetaEnum::fromType<QAccessible::Role>().valueToKey(node->role())) +
                 QStringLiteral(" \"") + node->text(QAccessible::Name) + QLatin1Char('"');
  if (state.disabled) line += QStringLiteral(" gesperrt");
  if (state.checked || state.selected) line += QStringLiteral(" gewählt");
  if (state.focusable) line += QStringLiteral(" erreichbar");
  line += QLatin1Char('\n');
  for (int i = 0; i < node->childCount(); ++i) line += AccessibleTree(node->child(i), depth + 1);
  return line;
}

// The controls of a shown window in the order in which the tab key goes through them.
inline QList<QWidget*> TabStops(const QWidget& window) {
  QList<QWidget*> stops;
  for (QWidget* at = window.nextInFocusChain(); at != nullptr && at != &window; at = at->nextInFocusChain()) {
    if (at->window() == &window && at->isVisible() && at->isEnabled() && at->focusProxy() == nullptr &&
        (at->focusPolicy() & Qt::TabFocus) != 0)
      stops << at;
  }
  return stops;
}

// The visible controls of a shown window that the keyboard cannot reach although they can be operated.
inline QStringList UnreachableControls(QWidget& window) {
  QStringList unreachable;
  for (QAbstractButton* button : window.findChildren<QAbstractButton*>()) {
    if (!button->isVisible() || !button->isEnabled() || button->focusPolicy() != Qt::NoFocus) continue;
    if (qobject_cast<QGroupBox*>(button->parentWidget()) != nullptr) continue;
    if (button->inherits("QTabBar") || button->inherits("QLineEditIconButton")) continue;
    unreachable << button->objectName() + QLatin1Char(' ') + button->text();
  }
  return unreachable;
}

// The width of a line with the letter of a key: it is drawn in three parts, without the kerning between them.
// What is blank behind the last letter may be cut.
inline int DrawnWidth(const QString& text, const QFontMetrics& metrics) {
  const auto key = text.indexOf(QLatin1Char('&'));
  if (key < 0 || key + 1 >= text.size()) return metrics.horizontalAdvance(text);
  return metrics.horizontalAdvance(text.left(key)) + metrics.horizontalAdvance(text.mid(key + 1, 1)) +
         metrics.horizontalAdvance(text.mid(key + 2)) - std::max(0, metrics.rightBearing(text.back()));
}

// The visible labels, buttons and group titles of a shown window whose text does not fit.
inline QStringList ClippedTexts(QWidget& window) {
  QStringList clipped;
  for (QWidget* widget : window.findChildren<QWidget*>()) {
    if (!widget->isVisible()) continue;
    QString text;
    bool fits = true;
    if (const auto* label = qobject_cast<QLabel*>(widget)) {
      text = label->text();
      const QSize need = label->sizeHint();
      fits = label->wordWrap() ? label->heightForWidth(label->width()) <= label->height()
                               : need.width() <= label->width() && need.height() <= label->height();
      if (label->buddy() != nullptr && !label->wordWrap())
        fits = fits && DrawnWidth(text, label->fontMetrics()) <= label->contentsRect().width();
    } else if (const auto* button = qobject_cast<QAbstractButton*>(widget)) {
      text = button->text();
      const QSize need = button->minimumSizeHint();
      fits = need.width() <= button->width() && need.height() <= button->height();
    } else if (const auto* group = qobject_cast<QGroupBox*>(widget)) {
      text = group->title();
      fits = group->minimumSizeHint().width() <= group->width();
    }
    if (!text.isEmpty() && !fits) {
      clipped << QStringLiteral("%1 (%2x%3)").arg(text).arg(widget->width()).arg(widget->height());
    }
  }
  return clipped;
}

}  // namespace ts5
