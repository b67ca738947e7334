#include "audio/ui/attribute_page.h"

#include <QComboBox>
#include <QDateTimeEdit>
#include <QKeyEvent>
#include <QLineEdit>
#include <QStyledItemDelegate>
#include <QTreeWidget>
#include <utility>

#include "audio/texts.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"
#include "ui_AUDIOPROPS2.h"

namespace ts5 {
namespace {

constexpr int kNameColumn = 0;
constexpr int kValueColumn = 1;
constexpr int kRowRole = Qt::UserRole;
constexpr int kValueRole = Qt::UserRole + 1;  // as it is kept, in the value's column

// The editor that fits an attribute: a field, a list of yes and no, or date and time.
class ValueDelegate : public QStyledItemDelegate {
 public:
  ValueDelegate(const tags::AttributeForm& form, QObject* parent)
      : QStyledItemDelegate(parent), form_(form) {}

  QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& /*option*/,
                        const QModelIndex& index) const override {
    if (index.column() != kValueColumn) return nullptr;
    const tags::Attribute& attribute = AttributeAt(index);
    QWidget* editor = nullptr;
    if (attribute.type == tags::AttributeType::Bool) {
      auto* const list = new QComboBox(parent);
      list->addItems({QtText(texts::AttributeYes), QtText(texts::AttributeNo)});
      editor = list;
    } else if (attribute.name == "WM/EncodingTime") {
      auto* const time = new QDateTimeEdit(parent);
      time->setDisplayFormat(QStringLiteral("d.M.yyyy HH:mm:ss"));
      time->setCalendarPopup(true);
      editor = time;
    } else {
      auto* const field = new QLineEdit(parent);
      field->setFrame(false);
      editor = field;
    }
    editor->setAccessibleName(ToQt(attribute.name));
    return editor;
  }

  void setEditorData(QWidget* editor, const QModelIndex& index) const override {
    const tags::Attribute& attribute = AttributeAt(index);
    if (auto* list = qobject_cast<QComboBox*>(editor)) {
      list->setCurrentIndex(attribute.value == "0" ? 1 : 0);
    } else if (auto* time = qobject_cast<QDateTimeEdit*>(editor)) {
      const QDateTime now = QDateTime::currentDateTime();
      bool number = false;
      const quint64 stored = ToQt(attribute.value).toULongLong(&number);
      time->setDateTime(number ? QDateTime::fromSecsSinceEpoch(tags::UnixSecondsOf(stored)) : now);
    } else if (auto* field = qobject_cast<QLineEdit*>(editor)) {
      field->setText(ToQt(attribute.value));
    }
  }

  void setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override {
    QString value;
    if (const auto* list = qobject_cast<QComboBox*>(editor)) {
      value = list->currentIndex() == 0 ? QStringLiteral("1") : QStringLiteral("0");
    } else if (const auto* time = qobject_cast<QDateTimeEdit*>(editor)) {
      value = QString::number(tags::FileTimeOf(time->dateTime().toSecsSinceEpoch()));
    } else if (const auto* field = qobject_cast<QLineEdit*>(editor)) {
      value = field->text();
    }
    model->setData(index, value, kValueRole);
  }

 private:
  [[nodiscard]] const tags::Attribute& AttributeAt(const QModelIndex& index) const {
    const QVariant row = index.siblingAtColumn(kNameColumn).data(kRowRole);
    return form_.Rows().at(row.toULongLong()).attribute;
  }

  const tags::AttributeForm& form_;
};

std::size_t RowOf(const QTreeWidgetItem& item) {
  return item.data(kNameColumn, kRowRole).toULongLong();
}

}  // namespace

AttributePage::AttributePage(tags::AttributeForm form, QWidget* parent)
    : QWidget(parent), form_(std::move(form)), ui_(std::make_unique<Ui::AUDIOPROPS2>()) {
  ui_->setupUi(this);
  QTreeWidget& list = *ui_->attributeList;
  list.setItemDelegate(new ValueDelegate(form_, this));
  list.installEventFilter(this);
  setFocusProxy(&list);
  connect(&list, &QTreeWidget::itemClicked, this, [this](QTreeWidgetItem* item, int column) {
    if (column == kValueColumn) Edit(item);
  });
  connect(ui_->onlySelectedCheck, &QCheckBox::toggled, this, &AttributePage::Show);
  const auto onClick = [this](QPushButton* button, auto change) {
    connect(button, &QPushButton::clicked, this, [this, change] {
      CommitEditor();
      change();
      Show();
    });
  };
  onClick(ui_->selectAllButton, [this] { form_.SelectAll(true); });
  onClick(ui_->releaseAllButton, [this] { form_.SelectAll(false); });
  onClick(ui_->undoButton, [this] { form_.Undo(); });
  for (std::size_t row = 0; row < form_.Rows().size(); ++row) {
    auto* const item = new QTreeWidgetItem(&list);
    item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsEditable | Qt::ItemIsUserCheckable);
    item->setData(kNameColumn, kRowRole, static_cast<qulonglong>(row));
    item->setText(kNameColumn, ToQt(form_.Rows()[row].attribute.name));
  }
  Show();
  connect(&list, &QTreeWidget::itemChanged, this, &AttributePage::TakeChange);
  list.resizeColumnToContents(kNameColumn);
  list.setCurrentItem(list.topLevelItem(0));
}

AttributePage::~AttributePage() = default;

void AttributePage::CommitEditor() {
  // The editor gives its value when it loses the focus.
  ui_->attributeList->setFocus();
}

void AttributePage::Show() {
  QTreeWidget& list = *ui_->attributeList;
  for (int i = 0; i < list.topLevelItemCount(); ++i) ShowRow(*list.topLevelItem(i));
  ui_->undoButton->setEnabled(form_.CanUndo());
}

void AttributePage::ShowRow(QTreeWidgetItem& item) {
  const auto& [attribute, mixed] = form_.Rows()[RowOf(item)];
  showing_ = true;
  item.setCheckState(kNameColumn, attribute.selected ? Qt::Checked : Qt::Unchecked);
  item.setData(kValueColumn, kValueRole, ToQt(attribute.value));
  const QString shown = mixed ? QtText(texts::AttributesMixed) : ToQt(tags::DisplayValue(attribute));
  item.setText(kValueColumn, QString(shown).replace('\n', ' '));
  item.setToolTip(kValueColumn, shown.toHtmlEscaped());
  QFont font = ui_->attributeList->font();
  font.setItalic(mixed);
  item.setFont(kValueColumn, font);
  item.setHidden(ui_->onlySelectedCheck->isChecked() && !attribute.selected);
  showing_ = false;
}

// A mark that was set or cleared, or a value that an editor gave.
void AttributePage::TakeChange(QTreeWidgetItem* item, int column) {
  if (showing_) return;
  const std::size_t row = RowOf(*item);
  if (column == kNameColumn) {
    form_.Select(row, item->checkState(kNameColumn) == Qt::Checked);
  } else {
    const std::string text = FromQt(item->data(kValueColumn, kValueRole).toString());
    const bool untouched = form_.Rows()[row].mixed && text.empty();
    if (!untouched && !form_.SetValue(row, text)) {
      const std::string name = form_.Rows()[row].attribute.name;
      ShowWarning(this, ToQt(Format(Text(texts::AttributesWrongValue), text, name)));
    }
  }
  ShowRow(*item);
  ui_->undoButton->setEnabled(form_.CanUndo());
}

void AttributePage::Edit(QTreeWidgetItem* item) {
  QTreeWidget& list = *ui_->attributeList;
  if (item != nullptr && !list.isPersistentEditorOpen(item, kValueColumn)) list.editItem(item, kValueColumn);
}

// Return and F2 open the value for editing; the Return that ends it comes here as well.
bool AttributePage::eventFilter(QObject* watched, QEvent* event) {
  if (watched == ui_->attributeList && event->type() == QEvent::KeyPress) {
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (key == Qt::Key_F2 || key == Qt::Key_Return || key == Qt::Key_Enter) {
      Edit(ui_->attributeList->currentItem());
      return true;
    }
  }
  return QWidget::eventFilter(watched, event);
}

}  // namespace ts5
