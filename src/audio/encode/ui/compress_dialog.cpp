#include "audio/encode/ui/compress_dialog.h"

#include <algorithm>
#include <utility>

#include "audio/encode/encode.h"
#include "audio/encode/encoder.h"
#include "audio/encode/texts.h"
#include "audio/encode/ui/ape_dialog.h"
#include "audio/encode/ui/encoder_info_dialog.h"
#include "audio/encode/ui/engine_dialog.h"
#include "audio/encode/ui/ogg_dialog.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "ui_WAVMP3PARAMS.h"

namespace ts5::encode {

CompressDialog::CompressDialog(EncodeSettings settings, CompressChoices choices, DialogHost& host,
                               QWidget* parent)
    : HostedDialog(host, QtText(texts::CompressPrompt), parent),
      settings_(std::move(settings)),
      choices_(std::move(choices)),
      ui_(std::make_unique<Ui::WAVMP3PARAMS>()) {
  ui_->setupUi(this);
  ConnectButtons();
  FillCodecs();
  FillInterfaces();
  const std::array<QRadioButton*, 4> radios{ui_->codecRadio, ui_->apeRadio, ui_->oggRadio, ui_->lineRadio};
  radios.at(static_cast<std::size_t>(std::clamp(settings_.method, 1, 4) - 1))->setChecked(true);
  ui_->attributesButton->setVisible(static_cast<bool>(choices_.editAttributes));
  ui_->namesButton->setVisible(static_cast<bool>(choices_.editNames));
  ui_->gainCheck->setVisible(choices_.replayGain.has_value());
  ui_->gainCheck->setChecked(choices_.replayGain.value_or(false));
  ui_->verifyCheck->setChecked(WantsProof(settings_));
  ShowFormats();
  UpdateControls();
  for (QRadioButton* const radio : radios) {
    connect(radio, &QAbstractButton::toggled, this, [this] {
      if (!settings_.verify) ui_->verifyCheck->setChecked(WantsProof(Chosen()));
      UpdateControls();
    });
  }
  connect(ui_->codecBox, &QComboBox::currentIndexChanged, this, [this] {
    ShowFormats();
    UpdateControls();
  });
  connect(ui_->formatList, &QListWidget::currentRowChanged, this, [this] { UpdateControls(); });
  connect(ui_->formatList, &QListWidget::itemDoubleClicked, this, [this] { Commit(); });
  connect(ui_->interfaceTree, &QTreeWidget::currentItemChanged, this, [this] { UpdateControls(); });
  connect(ui_->verifyCheck, &QAbstractButton::clicked, this,
          [this](bool checked) { settings_.verify = checked; });
  connect(ui_->configureButton, &QAbstractButton::clicked, this, [this] { ConfigureEngine(); });
  connect(ui_->infoButton, &QAbstractButton::clicked, this, [this] {
    if (const auto engine = EngineOf(Chosen())) EncoderInfoDialog(*engine, this).exec();
  });
  connect(ui_->oggButton, &QAbstractButton::clicked, this, [this] { ConfigureOgg(); });
  connect(ui_->apeButton, &QAbstractButton::clicked, this, [this] { ConfigureApe(); });
  connect(ui_->attributesButton, &QAbstractButton::clicked, this, [this] { choices_.editAttributes(this); });
  connect(ui_->namesButton, &QAbstractButton::clicked, this,
          [this] { choices_.editNames(this, Selected()); });
}

CompressDialog::~CompressDialog() = default;

QString CompressDialog::HelpTopic() const {
  return QStringLiteral("parm_wave-kompressor.htm");
}

void CompressDialog::FillCodecs() {
  for (const CodecEntry& codec : Codecs()) {
    const std::string_view name = EncoderById(codec.encoder).name;
    ui_->codecBox->addItem(ToQt(name));
  }
  const bool chosen = settings_.Method() == EncodeMethod::Codec && CodecOf(settings_) != nullptr;
  ui_->codecBox->setCurrentIndex(chosen ? settings_.object : CodecIndexOf(EncoderId::Lame));
  if (!Codecs().empty()) return;
  ui_->codecBox->addItem(QtText(texts::CompressNoCodec));
  ui_->codecBox->setEnabled(false);
}

void CompressDialog::FillInterfaces() {
  for (std::size_t i = 0; i < choices_.interfaces.size(); ++i) {
    const CompressChoices::Interface& row = choices_.interfaces[i];
    auto* const item = new QTreeWidgetItem(ui_->interfaceTree, {ToQt(row.name)});
    for (const std::string& set : row.sets) new QTreeWidgetItem(item, {ToQt(set)});
    item->setExpanded(true);
    const bool chosen =
        settings_.Method() == EncodeMethod::CommandLine && std::cmp_equal(settings_.object, i);
    if (chosen && settings_.format < item->childCount())
      ui_->interfaceTree->setCurrentItem(item->child(settings_.format));
  }
  if (!choices_.interfaces.empty()) return;
  auto* const none = new QTreeWidgetItem(ui_->interfaceTree, {QtText(texts::CompressNoInterfaces)});
  none->setFlags(Qt::NoItemFlags);
}

void CompressDialog::ShowFormats() {
  EncodeSettings chosen = Chosen();
  chosen.method = static_cast<std::int32_t>(EncodeMethod::Codec);
  chosen.object = ui_->codecBox->currentIndex();
  const CodecEntry* const codec = CodecOf(chosen);
  const bool engine = EngineOf(chosen).has_value();
  ui_->formatList->clear();
  const auto hint = [this](TextId text) {
    auto* const item = new QListWidgetItem(QtText(text), ui_->formatList);
    item->setFlags(Qt::NoItemFlags);
  };
  if (engine) {
    hint(texts::CompressEngineHint1);
    hint(texts::CompressEngineHint2);
    return;
  }
  if (codec == nullptr || codec->formats.empty()) return hint(texts::CompressNoFormats);
  for (const CodecFormat& format : codec->formats) ui_->formatList->addItem(ToQt(CodecFormatText(format)));
  const bool same = settings_.Method() == EncodeMethod::Codec && settings_.object == chosen.object;
  if (same && settings_.format < ui_->formatList->count()) ui_->formatList->setCurrentRow(settings_.format);
}

void CompressDialog::UpdateControls() {
  const EncodeMethod method = Method();
  const bool codec = method == EncodeMethod::Codec;
  EncodeSettings chosen = Chosen();
  const bool engine = EngineOf(chosen).has_value();
  ui_->codecBox->setEnabled(codec && !Codecs().empty());
  ui_->formatList->setEnabled(codec);
  ui_->formatLabel->setEnabled(codec);
  ui_->configureButton->setEnabled(codec && engine);
  ui_->infoButton->setEnabled(codec && engine);
  ui_->apeButton->setEnabled(method == EncodeMethod::MonkeysAudio);
  ui_->oggButton->setEnabled(method == EncodeMethod::OggVorbis);
  ui_->interfaceTree->setEnabled(method == EncodeMethod::CommandLine);
  ui_->interfaceLabel->setEnabled(method == EncodeMethod::CommandLine);
  const QTreeWidgetItem* const item = ui_->interfaceTree->currentItem();
  const bool set = item != nullptr && item->parent() != nullptr;
  const bool format = engine || ui_->formatList->currentRow() >= 0;
  ui_->okButton->setEnabled(codec ? format : method != EncodeMethod::CommandLine || set);
}

EncodeMethod CompressDialog::Method() const {
  if (ui_->codecRadio->isChecked()) return EncodeMethod::Codec;
  if (ui_->apeRadio->isChecked()) return EncodeMethod::MonkeysAudio;
  return ui_->oggRadio->isChecked() ? EncodeMethod::OggVorbis : EncodeMethod::CommandLine;
}

EncodeSettings CompressDialog::Chosen() const {
  EncodeSettings chosen = settings_;
  chosen.method = static_cast<std::int32_t>(Method());
  if (Method() != EncodeMethod::Codec) return chosen;
  chosen.object = ui_->codecBox->currentIndex();
  chosen.format = EngineOf(chosen) ? 0 : std::max(ui_->formatList->currentRow(), 0);
  return chosen;
}

void CompressDialog::ConfigureEngine() {
  const auto engine = EngineOf(Chosen());
  if (!engine) return;
  EngineDialog dialog(settings_.engine, *engine, Host(), this);
  if (dialog.exec() == QDialog::Accepted) settings_.engine = dialog.Config();
}

void CompressDialog::ConfigureOgg() {
  OggDialog dialog(settings_.ogg.value_or(OggSettings{}), Host(), this);
  if (dialog.exec() == QDialog::Accepted) settings_.ogg = dialog.Settings();
}

void CompressDialog::ConfigureApe() {
  ApeDialog dialog(settings_.ApeLevel(), Host(), this);
  if (dialog.exec() == QDialog::Accepted) settings_.apeLevel = dialog.Level();
}

bool CompressDialog::ReplayGain() const {
  return ui_->gainCheck->isChecked();
}

// With the interface and its set, whether it is there or not.
EncodeSettings CompressDialog::Selected() const {
  EncodeSettings selected = Chosen();
  const QTreeWidgetItem* const item = ui_->interfaceTree->currentItem();
  if (Method() != EncodeMethod::CommandLine || item == nullptr || item->parent() == nullptr) return selected;
  selected.object = ui_->interfaceTree->indexOfTopLevelItem(item->parent());
  selected.format = item->parent()->indexOfChild(const_cast<QTreeWidgetItem*>(item));
  return selected;
}

bool CompressDialog::TakeInterface() {
  const QTreeWidgetItem* const item = ui_->interfaceTree->currentItem();
  if (item == nullptr || item->parent() == nullptr) return false;
  const EncodeSettings selected = Selected();
  if (!choices_.interfaces.at(static_cast<std::size_t>(selected.object)).available) {
    ShowNotice(this, texts::CompressInterfaceGone);
    return false;
  }
  settings_ = selected;
  return true;
}

bool CompressDialog::TakeOgg() {
  if (settings_.ogg) return true;
  if (!AskYesNo(this, texts::CompressOggNotConfigured)) return false;
  settings_.ogg.emplace();
  return true;
}

void CompressDialog::Commit() {
  const EncodeMethod method = Method();
  if (!ui_->okButton->isEnabled()) return;
  if (method == EncodeMethod::CommandLine && !TakeInterface()) return;
  if (method == EncodeMethod::OggVorbis && !TakeOgg()) return;
  if (method == EncodeMethod::MonkeysAudio) settings_.apeLevel = settings_.ApeLevel();
  if (method == EncodeMethod::Codec) settings_ = Chosen();
  settings_.method = static_cast<std::int32_t>(method);
  if (const auto engine = EngineOf(settings_)) settings_.engine = settings_.engine.For(*engine);
  accept();
}

}  // namespace ts5::encode
