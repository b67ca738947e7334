// The list of a properties window: its rows by their labels, the value of the current one beside it.
#pragma once

#include <QListWidget>
#include <QPlainTextEdit>
#include <vector>

#include "frame/property_row.h"
#include "frame/ui/qt_text.h"

namespace ts5 {

inline void ShowProperties(const std::vector<PropertyRow>& rows, QListWidget* list, QPlainTextEdit* value) {
  QObject::connect(list, &QListWidget::currentItemChanged, value, [value](const QListWidgetItem* item) {
    value->setPlainText(item == nullptr ? QString() : item->data(Qt::UserRole).toString());
  });
  for (const PropertyRow& row : rows) {
    auto* const item = new QListWidgetItem(ToQt(row.label), list);
    item->setData(Qt::UserRole, ToQt(row.value));
  }
  list->setCurrentRow(0);
  list->setFocus();
}

}  // namespace ts5
