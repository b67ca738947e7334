// AUDIOPROPS2: the list of attributes with their marks and values, edited in place.
#pragma once

#include <QWidget>
#include <memory>

#include "audio/tags/attribute_form.h"

namespace Ui {
class AUDIOPROPS2;
}
class QTreeWidgetItem;

namespace ts5 {

class AttributePage : public QWidget {
  Q_OBJECT

 public:
  explicit AttributePage(tags::AttributeForm form, QWidget* parent = nullptr);
  ~AttributePage() override;

  [[nodiscard]] const tags::AttributeForm& Form() const { return form_; }
  // Ends an edit that is still open.
  void CommitEditor();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void Show();
  void ShowRow(QTreeWidgetItem& item);
  void TakeChange(QTreeWidgetItem* item, int column);
  void Edit(QTreeWidgetItem* item);

  tags::AttributeForm form_;
  std::unique_ptr<Ui::AUDIOPROPS2> ui_;
  bool showing_ = false;
};

}  // namespace ts5
