#include "audio/encode/ui/decoder_dialog.h"

#include <algorithm>
#include <utility>

#include "audio/encode/texts.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"
#include "ui_MPDECODER.h"

namespace ts5::encode {

DecoderDialog::DecoderDialog(const DecodeOptions& options, const std::string& name,
                             const CompressedFile& file, std::function<void(QWidget*)> editNames,
                             DialogHost& host, QWidget* parent)
    : HostedDialog(host, QtText(texts::DecoderPrompt), parent), ui_(std::make_unique<Ui::MPDECODER>()) {
  ui_->setupUi(this);
  ConnectButtons();
  ui_->fileLabel->setText(ToQt(name + "\n" + file.description));
  for (const std::int32_t divisor : kDecodeDivisors) {
    const std::uint32_t rate = file.sampleRate / static_cast<std::uint32_t>(divisor);
    ui_->rateBox->addItem(ToQt(Format(Text(texts::DecoderRate), rate)), divisor);
  }
  for (std::size_t i = 0; i < kDecodeBits.size(); ++i)
    ui_->bitsBox->setItemData(static_cast<int>(i), kDecodeBits[i]);
  ui_->rateBox->setCurrentIndex(std::max(ui_->rateBox->findData(options.rateDivisor), 0));
  ui_->channelBox->setCurrentIndex(options.mono ? 1 : 0);
  ui_->bitsBox->setCurrentIndex(std::max(ui_->bitsBox->findData(options.bits), 0));
  connect(ui_->namesButton, &QAbstractButton::clicked, this,
          [this, edit = std::move(editNames)] { edit(this); });
}

DecoderDialog::~DecoderDialog() = default;

QString DecoderDialog::HelpTopic() const {
  return QStringLiteral("parm_audio-dekompressor.htm");
}

DecodeOptions DecoderDialog::Options() const {
  return {.rateDivisor = ui_->rateBox->currentData().toInt(),
          .mono = ui_->channelBox->currentIndex() == 1,
          .bits = ui_->bitsBox->currentData().toInt()};
}

}  // namespace ts5::encode
