#include "converters/ui/xml_properties_dialog.h"

#include "converters/texts.h"
#include "frame/ui/qt_text.h"
#include "ui_XMLPROPS.h"

namespace ts5 {

XmlPropertiesDialog::XmlPropertiesDialog(const ScoreProperties& properties, DialogHost& host, QWidget* parent)
    : HostedDialog(host, QtText(texts::XmlPropertiesPrompt), parent), ui_(std::make_unique<Ui::XMLPROPS>()) {
  ui_->setupUi(this);
  ConnectButtons();
  setWindowTitle(ToQt(properties.title));
  connect(ui_->propertyList, &QListWidget::currentItemChanged, this, [this](const QListWidgetItem* item) {
    ui_->valueEdit->setPlainText(item == nullptr ? QString() : item->data(Qt::UserRole).toString());
  });
  for (const PropertyRow& row : properties.rows) {
    auto* const item = new QListWidgetItem(ToQt(row.label), ui_->propertyList);
    item->setData(Qt::UserRole, ToQt(row.value));
  }
  ui_->propertyList->setCurrentRow(0);
  ui_->propertyList->setFocus();
}

XmlPropertiesDialog::~XmlPropertiesDialog() = default;

QString XmlPropertiesDialog::HelpTopic() const {
  return QStringLiteral("Befehle-Datei-Eigenschaften.htm");
}

}  // namespace ts5
