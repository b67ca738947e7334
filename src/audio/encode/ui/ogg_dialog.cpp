#include "audio/encode/ui/ogg_dialog.h"

#include <algorithm>

#include "audio/encode/texts.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"
#include "ui_OGGPARAMS.h"

namespace ts5::encode {
namespace {

constexpr std::int32_t kKibi = 1024;

// The entry of the table that the bit rate is nearest to.
int EntryOf(std::int32_t bitRate) {
  const auto* const nearest = std::ranges::min_element(
      kOggRates, {}, [bitRate](std::int32_t rate) { return std::abs(rate * kKibi - bitRate); });
  return static_cast<int>(nearest - kOggRates.begin());
}

std::int32_t RateOf(const QSlider& slider) {
  return kOggRates.at(static_cast<std::size_t>(slider.value()));
}

}  // namespace

OggDialog::OggDialog(const OggSettings& settings, DialogHost& host, QWidget* parent)
    : HostedDialog(host, QtText(texts::OggPrompt), parent), ui_(std::make_unique<Ui::OGGPARAMS>()) {
  ui_->setupUi(this);
  ConnectButtons();
  (settings.mode == OggSettings::Quality ? ui_->qualityRadio : ui_->averageRadio)->setChecked(true);
  ui_->maxSlider->setValue(EntryOf(settings.maxBitRate));
  ui_->nominalSlider->setValue(EntryOf(settings.nominalBitRate));
  ui_->minSlider->setValue(EntryOf(settings.minBitRate));
  ui_->qualityBox->setValue(settings.quality);
  KeepOrder(ui_->nominalSlider);
  ShowValues();
  for (QSlider* const slider : {ui_->minSlider, ui_->nominalSlider, ui_->maxSlider}) {
    connect(slider, &QSlider::valueChanged, this, [this, slider] {
      KeepOrder(slider);
      ShowValues();
    });
  }
  connect(ui_->averageRadio, &QAbstractButton::toggled, this, [this] { ShowValues(); });
}

OggDialog::~OggDialog() = default;

QString OggDialog::HelpTopic() const {
  return QStringLiteral("parm_wave-kompressor_ogg.htm");
}

void OggDialog::KeepOrder(const QSlider* moved) {
  const int value = moved->value();
  if (moved == ui_->minSlider) {
    ui_->nominalSlider->setValue(std::max(ui_->nominalSlider->value(), value));
  } else if (moved == ui_->maxSlider) {
    ui_->nominalSlider->setValue(std::min(ui_->nominalSlider->value(), value));
  } else {
    ui_->minSlider->setValue(std::min(ui_->minSlider->value(), value));
    ui_->maxSlider->setValue(std::max(ui_->maxSlider->value(), value));
  }
}

void OggDialog::ShowValues() {
  const bool average = ui_->averageRadio->isChecked();
  ui_->rateGroup->setEnabled(average);
  ui_->qualityBox->setEnabled(!average);
  ui_->qualityLabel->setEnabled(!average);
  for (const auto& [slider, label] : {std::pair{ui_->minSlider, ui_->minValueLabel},
                                      {ui_->nominalSlider, ui_->nominalValueLabel},
                                      {ui_->maxSlider, ui_->maxValueLabel}})
    label->setText(ToQt(Format(Text(texts::OggRateValue), RateOf(*slider))));
}

OggSettings OggDialog::Settings() const {
  return {.mode = ui_->qualityRadio->isChecked() ? OggSettings::Quality : OggSettings::AverageRate,
          .maxBitRate = RateOf(*ui_->maxSlider) * kKibi,
          .nominalBitRate = RateOf(*ui_->nominalSlider) * kKibi,
          .minBitRate = RateOf(*ui_->minSlider) * kKibi,
          .quality = ui_->qualityBox->value()};
}

}  // namespace ts5::encode
