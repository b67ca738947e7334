#include "audio/encode/ui/engine_dialog.h"

#include <algorithm>
#include <array>

#include "audio/encode/encoder.h"
#include "audio/encode/texts.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"
#include "ui_BLADEPARAMS.h"

namespace ts5::encode {
namespace {

constexpr std::int32_t kUsualRate = 128;
constexpr std::array<std::uint32_t, 3> kSampleRates = {48000, 44100, 32000};

struct ModeRow {
  TextId text;
  std::uint32_t mode;
  bool lameOnly;
};
constexpr ModeRow kModes[] = {{texts::EncodeStereo, 0, false},
                              {texts::EngineJointStereo, 1, true},
                              {texts::EngineDualChannel, 2, false},
                              {texts::EncodeMono, 3, false}};

struct PresetRow {
  TextId text;
  std::int32_t preset;
};
constexpr PresetRow kPresets[] = {
    {texts::PresetNone, -1},        {texts::PresetLow, 1},        {texts::PresetNormal, 0},
    {texts::PresetStandardFast, 7}, {texts::PresetStandard, 6},   {texts::PresetMediumFast, 14},
    {texts::PresetMedium, 13},      {texts::PresetHigh, 2},       {texts::PresetVeryHigh, 5},
    {texts::PresetExtremeFast, 9},  {texts::PresetExtreme, 8},    {texts::PresetBest, 10},
    {texts::PresetAm, 3000},        {texts::PresetAverage, 11},   {texts::PresetCd, 9000},
    {texts::PresetConstant, 12},    {texts::PresetFm, 4000},      {texts::PresetHiFi, 8000},
    {texts::PresetVoice, 5000},     {texts::PresetStudio, 10000}, {texts::PresetTelephone, 1000},
    {texts::PresetTape, 7000},
};

int EntryOf(std::uint32_t kiloBits) {
  const auto* const found = std::ranges::find(kMp3Rates, static_cast<std::int32_t>(kiloBits));
  return found == kMp3Rates.end() ? -1 : static_cast<int>(found - kMp3Rates.begin());
}

int NearestEntry(std::uint32_t kiloBits) {
  const auto wanted = static_cast<std::int32_t>(kiloBits);
  const auto* const nearest = std::ranges::min_element(
      kMp3Rates, {}, [wanted](std::int32_t rate) { return std::abs(rate - wanted); });
  return static_cast<int>(nearest - kMp3Rates.begin());
}

std::uint32_t RateOf(int entry) {
  return static_cast<std::uint32_t>(kMp3Rates.at(static_cast<std::size_t>(std::max(entry, 0))));
}

}  // namespace

EngineDialog::EngineDialog(const BeConfig& config, Mp3Engine engine, DialogHost& host, QWidget* parent)
    : HostedDialog(host, QtText(texts::EnginePrompt), parent),
      engine_(engine),
      config_(config.For(engine)),
      ui_(std::make_unique<Ui::BLADEPARAMS>()) {
  ui_->setupUi(this);
  ConnectButtons();
  FillLists();
  ShowConfig();
  UpdateControls();
  connect(ui_->vbrCheck, &QAbstractButton::toggled, this, [this] { UpdateControls(); });
  connect(ui_->bitRateBox, &QComboBox::currentIndexChanged, this, [this] { UpdateControls(); });
  // One slider takes the other along.
  connect(ui_->minSlider, &QSlider::valueChanged, this, [this](int value) {
    ui_->maxSlider->setValue(std::max(ui_->maxSlider->value(), value));
    UpdateControls();
  });
  connect(ui_->maxSlider, &QSlider::valueChanged, this, [this](int value) {
    ui_->minSlider->setValue(std::min(ui_->minSlider->value(), value));
    UpdateControls();
  });
}

EngineDialog::~EngineDialog() = default;

QString EngineDialog::HelpTopic() const {
  return QStringLiteral("parm_wave-kompressor_blade-lame.htm");
}

std::uint32_t EngineDialog::Value(std::string_view name) const {
  const auto row = std::ranges::find(BeValues(), name, &BeValue::name);
  const BeField field = row->For(engine_);
  return field.size == 0 ? 0 : config_.Get(field);
}

void EngineDialog::SetValue(std::string_view name, std::uint32_t value) {
  const auto row = std::ranges::find(BeValues(), name, &BeValue::name);
  const BeField field = row->For(engine_);
  if (field.size != 0) config_.Set(field, value);
}

void EngineDialog::FillLists() {
  for (const std::uint32_t rate : kSampleRates) ui_->rateBox->addItem(QString::number(rate), rate);
  for (const std::int32_t rate : kMp3Rates) ui_->bitRateBox->addItem(QString::number(rate), rate);
  for (const ModeRow& row : kModes) {
    if (!row.lameOnly || engine_ == Mp3Engine::Lame) ui_->modeBox->addItem(QtText(row.text), row.mode);
  }
  for (const PresetRow& row : kPresets) ui_->qualityBox->addItem(QtText(row.text), row.preset);
  ui_->emphasisGroup->setEnabled(false);
  ui_->noEmphasisRadio->setChecked(true);
}

void EngineDialog::ShowConfig() {
  ui_->rateBox->setCurrentIndex(std::max(ui_->rateBox->findData(Value("EncoderSampleRate")), 0));
  const int entry = EntryOf(Value("EncoderBitrate"));
  ui_->bitRateBox->setCurrentIndex(entry < 0 ? EntryOf(kUsualRate) : entry);
  ui_->modeBox->setCurrentIndex(std::max(ui_->modeBox->findData(Value("EncoderMode")), 0));
  ui_->privateCheck->setChecked(Value("EncoderPrivate") != 0);
  ui_->crcCheck->setChecked(Value("EncoderCrc") != 0);
  ui_->copyrightCheck->setChecked(Value("EncoderCopyright") != 0);
  ui_->originalCheck->setChecked(Value("EncoderOriginal") != 0);
  if (engine_ != Mp3Engine::Lame) return;
  const auto preset = static_cast<std::int32_t>(Value("EncoderPreset"));
  ui_->qualityBox->setCurrentIndex(std::max(ui_->qualityBox->findData(preset), 0));
  ui_->reservoirCheck->setChecked(Value("EncoderNoReservoir") != 0);
  ui_->vbrCheck->setChecked(Value("EncoderVbr") != 0);
  ui_->minSlider->setValue(NearestEntry(Value("EncoderBitrate")));
  ui_->maxSlider->setValue(std::max(NearestEntry(Value("EncoderMaxBitrate")), ui_->minSlider->value()));
}

void EngineDialog::UpdateControls() {
  const bool isLame = engine_ == Mp3Engine::Lame;
  const bool variable = isLame && ui_->vbrCheck->isChecked();
  ui_->bitRateBox->setEnabled(!variable);
  ui_->qualityBox->setEnabled(isLame);
  ui_->qualityLabel->setEnabled(isLame);
  ui_->reservoirCheck->setEnabled(isLame);
  ui_->vbrGroup->setEnabled(isLame);
  ui_->minSlider->setEnabled(variable);
  ui_->maxSlider->setEnabled(variable);
  ui_->minValueLabel->setText(ToQt(Format(Text(texts::EngineRateValue), RateOf(ui_->minSlider->value()))));
  ui_->maxValueLabel->setText(ToQt(Format(Text(texts::EngineRateValue), RateOf(ui_->maxSlider->value()))));
  const std::uint32_t rate = RateOf(variable ? ui_->minSlider->value() : ui_->bitRateBox->currentIndex());
  const int used = Mp3RateFor(rate);
  ui_->hintLabel->setText(
      std::cmp_equal(used, rate) ? QString() : ToQt(Format(Text(texts::EngineOtherRate), rate, used)));
}

void EngineDialog::Commit() {
  const auto set = [this](std::string_view name, const QAbstractButton* box) {
    SetValue(name, box->isChecked() ? 1 : 0);
  };
  SetValue("EncoderSampleRate", ui_->rateBox->currentData().toUInt());
  SetValue("EncoderMode", ui_->modeBox->currentData().toUInt());
  set("EncoderPrivate", ui_->privateCheck);
  set("EncoderCrc", ui_->crcCheck);
  set("EncoderCopyright", ui_->copyrightCheck);
  set("EncoderOriginal", ui_->originalCheck);
  const bool variable = engine_ == Mp3Engine::Lame && ui_->vbrCheck->isChecked();
  SetValue("EncoderBitrate", RateOf(variable ? ui_->minSlider->value() : ui_->bitRateBox->currentIndex()));
  SetValue("EncoderMaxBitrate", RateOf(ui_->maxSlider->value()));
  set("EncoderVbr", ui_->vbrCheck);
  set("EncoderNoReservoir", ui_->reservoirCheck);
  SetValue("EncoderPreset", static_cast<std::uint32_t>(ui_->qualityBox->currentData().toInt()));
  accept();
}

}  // namespace ts5::encode
