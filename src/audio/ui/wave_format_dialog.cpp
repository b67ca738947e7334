#include "audio/ui/wave_format_dialog.h"

#include <utility>

#include "audio/format_texts.h"
#include "audio/texts.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "ui_WAVEFORMAT.h"

namespace ts5 {

WaveFormatDialog::WaveFormatDialog(std::vector<WaveNumbers> formats, std::optional<WaveNumbers> current,
                                   DialogHost& host, QWidget* parent)
    : HostedDialog(host, QtText(texts::MidiWaveFormatPrompt), parent),
      formats_(std::move(formats)),
      ui_(std::make_unique<Ui::WAVEFORMAT>()) {
  ui_->setupUi(this);
  ConnectButtons();
  for (const WaveNumbers& format : formats_) {
    ui_->formatList->addItem(ToQt(FormatText(FormatOf(format))));
    if (format == current) ui_->formatList->setCurrentRow(ui_->formatList->count() - 1);
  }
  ui_->formatList->setFocus();
  connect(ui_->formatList, &QListWidget::itemActivated, this, [this] { Commit(); });
}

WaveFormatDialog::~WaveFormatDialog() = default;

QString WaveFormatDialog::HelpTopic() const {
  return QStringLiteral("parm_midi-wave-konverter.htm");
}

void WaveFormatDialog::Commit() {
  const auto selected = ui_->formatList->selectedItems();
  if (selected.isEmpty()) {
    ShowNotice(this, texts::WaveConverterNothingChosen);
    return;
  }
  chosen_ = formats_.at(static_cast<std::size_t>(ui_->formatList->row(selected.front())));
  accept();
}

}  // namespace ts5
