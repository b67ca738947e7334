#include "converters/ui/xml_properties_dialog.h"

#include "converters/texts.h"
#include "frame/ui/property_list.h"
#include "frame/ui/qt_text.h"
#include "ui_XMLPROPS.h"

namespace ts5::converters {

XmlPropertiesDialog::XmlPropertiesDialog(const ScoreProperties& properties, DialogHost& host, QWidget* parent)
    : HostedDialog(host, QtText(texts::XmlPropertiesPrompt), parent), ui_(std::make_unique<Ui::XMLPROPS>()) {
  ui_->setupUi(this);
  ConnectButtons();
  setWindowTitle(ToQt(properties.title));
  ShowProperties(properties.rows, ui_->propertyList, ui_->valueEdit);
}

XmlPropertiesDialog::~XmlPropertiesDialog() = default;

QString XmlPropertiesDialog::HelpTopic() const {
  return QStringLiteral("Befehle-Datei-Eigenschaften.htm");
}

}  // namespace ts5::converters
