#include "audio/interfaces/ui/set_controls.h"

#include <QLineEdit>
#include <array>

#include "audio/texts.h"
#include "frame/ui/file_dialogs.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"
#include "ui_CREATEMP3INTERFACE_5.h"

namespace ts5::interfaces {
namespace {

struct FlagControl {
  QCheckBox* Ui::CREATEMP3INTERFACE_5::*box;
  bool ParameterSet::*member;
};
constexpr std::array kFlags{
    FlagControl{&Ui::CREATEMP3INTERFACE_5::vbrCheck, &ParameterSet::vbr},
    FlagControl{&Ui::CREATEMP3INTERFACE_5::monoCheck, &ParameterSet::mono},
    FlagControl{&Ui::CREATEMP3INTERFACE_5::crcCheck, &ParameterSet::crc},
    FlagControl{&Ui::CREATEMP3INTERFACE_5::copyrightCheck, &ParameterSet::copyright},
    FlagControl{&Ui::CREATEMP3INTERFACE_5::originalCheck, &ParameterSet::original},
};

struct DeemphasisControl {
  QRadioButton* Ui::CREATEMP3INTERFACE_5::*button;
  Deemphasis value;
};
constexpr std::array kDeemphasis{
    DeemphasisControl{&Ui::CREATEMP3INTERFACE_5::noneRadio, Deemphasis::None},
    DeemphasisControl{&Ui::CREATEMP3INTERFACE_5::microsecondsRadio, Deemphasis::Microseconds50And15},
    DeemphasisControl{&Ui::CREATEMP3INTERFACE_5::ccittRadio, Deemphasis::Ccitt},
};

}  // namespace

ParameterSet NewSet() {
  constexpr std::uint32_t kUsualBitRate = 128;
  return {.parameters = {}, .bitRate = kUsualBitRate};
}

void ShowSet(Ui::CREATEMP3INTERFACE_5& controls, const ParameterSet& set) {
  if (controls.bitRateCombo->count() == 0) {
    for (const std::uint32_t rate : kInterfaceBitRates) controls.bitRateCombo->addItem(QString::number(rate));
  }
  controls.bitRateCombo->setCurrentIndex(static_cast<int>(BitRateIndex(set.bitRate)));
  for (const FlagControl& flag : kFlags) (controls.*flag.box)->setChecked(set.*flag.member);
  for (const DeemphasisControl& row : kDeemphasis)
    (controls.*row.button)->setChecked(set.deemphasis == row.value);
}

void TakeSet(const Ui::CREATEMP3INTERFACE_5& controls, ParameterSet& set) {
  set.bitRate = kInterfaceBitRates.at(static_cast<std::size_t>(controls.bitRateCombo->currentIndex()));
  for (const FlagControl& flag : kFlags) set.*flag.member = (controls.*flag.box)->isChecked();
  for (const DeemphasisControl& row : kDeemphasis) {
    if ((controls.*row.button)->isChecked()) set.deemphasis = row.value;
  }
}

std::string Trimmed(const QLineEdit& field) {
  const std::string text = FromQt(field.text());
  return std::string(Trim(text));
}

void AskEncoder(QLineEdit& field, const QString& helpTopic, DialogHost& host, QWidget* parent) {
  const auto path = AskFileToOpen({.title = QtText(texts::EncoderFileTitle),
                                   .start = FromQt(field.text()),
                                   .filter = {},
                                   .helpTopic = helpTopic},
                                  host, parent);
  if (path) field.setText(ToQt(*path));
}

}  // namespace ts5::interfaces
