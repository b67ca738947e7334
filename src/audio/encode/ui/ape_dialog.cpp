#include "audio/encode/ui/ape_dialog.h"

#include <QButtonGroup>

#include "audio/encode/encode_settings.h"
#include "audio/encode/texts.h"
#include "frame/ui/qt_text.h"
#include "ui_APEPARAMS.h"

namespace ts5::encode {
namespace {
constexpr int kStep = 1000;
}  // namespace

ApeDialog::ApeDialog(std::int32_t level, DialogHost& host, QWidget* parent)
    : HostedDialog(host, QtText(texts::ApePrompt), parent), ui_(std::make_unique<Ui::APEPARAMS>()) {
  ui_->setupUi(this);
  ConnectButtons();
  int id = 0;
  for (QRadioButton* const radio :
       {ui_->fastRadio, ui_->normalRadio, ui_->highRadio, ui_->extraRadio, ui_->insaneRadio})
    ui_->levelButtons->setId(radio, id += kStep);
  QAbstractButton* const chosen = ui_->levelButtons->button(level / kStep * kStep);
  (chosen == nullptr ? ui_->highRadio : chosen)->setChecked(true);
}

ApeDialog::~ApeDialog() = default;

QString ApeDialog::HelpTopic() const {
  return QStringLiteral("parm_wave-kompressor_ape.htm");
}

std::int32_t ApeDialog::Level() const {
  return ui_->levelButtons->checkedId();
}

}  // namespace ts5::encode
