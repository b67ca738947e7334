#include "converters/ui/xml_converter_dialog.h"

#include <utility>

#include "converters/texts.h"
#include "frame/ui/qt_text.h"
#include "ui_XMLCONVPARAMS.h"

namespace ts5::converters {

XmlConverterDialog::XmlConverterDialog(XmlConverterParameters parameters, DialogHost& host, QWidget* parent)
    : HostedDialog(host, QtText(texts::XmlConverterPrompt), parent),
      parameters_(std::move(parameters)),
      ui_(std::make_unique<Ui::XMLCONVPARAMS>()) {
  ui_->setupUi(this);
  ConnectButtons();
  unsigned bit = 0;
  for (QCheckBox* box : Boxes()) box->setChecked((parameters_.objects >> bit++ & 1) != 0);
}

XmlConverterDialog::~XmlConverterDialog() = default;

QString XmlConverterDialog::HelpTopic() const {
  return QStringLiteral("parm_xml-konverter.htm");
}

std::array<QCheckBox*, 7> XmlConverterDialog::Boxes() const {
  return {ui_->articulationBox, ui_->dynamicBox, ui_->hairpinBox, ui_->slurBox,
          ui_->ornamentBox,     ui_->lyricsBox,  ui_->textBox};
}

void XmlConverterDialog::Commit() {
  std::int32_t objects = 0;
  unsigned bit = 0;
  for (const QCheckBox* box : Boxes()) objects |= (box->isChecked() ? 1 : 0) << bit++;
  parameters_.objects = objects;
  accept();
}

}  // namespace ts5::converters
