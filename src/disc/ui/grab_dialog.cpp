#include "disc/ui/grab_dialog.h"

#include <utility>

#include "disc/texts.h"
#include "disc/ui/burn_dialog.h"
#include "disc/ui/field_binding.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "ui_GRABPARAMS.h"

namespace ts5::disc {
GrabDialog::GrabDialog(GrabParameters parameters, int tracks, encode::CompressChoices choices,
                       DialogHost& host, QWidget* parent)
    : HostedDialog(host, QtText(texts::GrabPrompt), parent),
      parameters_(std::move(parameters)),
      tracks_(tracks),
      choices_(std::move(choices)),
      ui_(std::make_unique<Ui::GRABPARAMS>()) {
  ui_->setupUi(this);
  ConnectButtons();
  ShowFields(*this, GrabFields(), parameters_);
  ShowNames(parameters_);
  ShowSpeed();
  ui_->nameList->setEnabled(parameters_.useNames);
  connect(ui_->UseFilenamePreset, &QAbstractButton::toggled, ui_->nameList, &QWidget::setEnabled);
  connect(ui_->GrabSpeed, &QSpinBox::valueChanged, this, [this] { ShowSpeed(); });
  ui_->encodeButton->setEnabled(parameters_.encode);
  connect(ui_->GrabEncode, &QAbstractButton::toggled, ui_->encodeButton, &QWidget::setEnabled);
  connect(ui_->encodeButton, &QAbstractButton::clicked, this, [this] {
    encode::CompressDialog dialog(parameters_.encodeSettings, choices_, Host(), this);
    if (dialog.exec() == QDialog::Accepted) parameters_.encodeSettings = dialog.Settings();
  });
  connect(ui_->folderButton, &QAbstractButton::clicked, this,
          [this] { ChooseFolder(this, ui_->GrabTempDir); });
  connect(ui_->resetButton, &QAbstractButton::clicked, this, [this] { ShowNames({}); });
}

GrabDialog::~GrabDialog() = default;

void GrabDialog::ShowSpeed() {
  const auto position = static_cast<std::size_t>(ui_->GrabSpeed->value());
  const std::uint32_t speed = kGrabSpeeds.at(position);
  ui_->speedLabel->setText(QtText(speed == 0 ? texts::SpeedLabelMax : texts::SpeedLabel));
}

void GrabDialog::ShowNames(const GrabParameters& parameters) {
  GrabParameters shown = parameters;
  shown.useNames = true;
  ui_->nameList->clear();
  for (int track = 1; track <= tracks_; ++track) {
    auto* const item = new QListWidgetItem(ToQt(shown.NameOf(track)), ui_->nameList);
    item->setFlags(item->flags() | Qt::ItemIsEditable);
  }
}

void GrabDialog::Commit() {
  const encode::EncodeSettings encode = parameters_.encodeSettings;
  const tags::Attributes attributes = parameters_.attributes;
  TakeFields(*this, GrabFields(), parameters_);
  parameters_.encodeSettings = encode;
  parameters_.attributes = attributes;
  parameters_.names.clear();
  for (int row = 0; row < ui_->nameList->count(); ++row) {
    std::string name = ui_->nameList->item(row)->text().trimmed().toStdString();
    if (name.find('/') != std::string::npos) {
      ShowNotice(this, texts::NameHasDirectory);
      ui_->nameList->setCurrentRow(row);
      return;
    }
    parameters_.names.push_back(std::move(name));
  }
  accept();
}

}  // namespace ts5::disc
