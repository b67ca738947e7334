#include "audio/ui/wave_convert_dialog.h"

#include <QListWidget>
#include <utility>

#include "audio/format_texts.h"
#include "audio/texts.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "ui_WAVECONVERTPARAMS.h"

namespace ts5 {

WaveConvertDialog::WaveConvertDialog(WaveConverterParameters parameters, MediaProbe source, bool single,
                                     DialogHost& host, QWidget* parent)
    : HostedDialog(host, QtText(texts::WaveConverterPrompt), parent),
      parameters_(std::move(parameters)),
      source_(std::move(source)),
      single_(single),
      formats_(OfferedFormats()),
      ui_(std::make_unique<Ui::WAVECONVERTPARAMS>()) {
  ui_->setupUi(this);
  ConnectButtons();
  ShowSource();
  FillFormats();
  connect(ui_->formatList, &QListWidget::itemActivated, this, [this] { Commit(); });
}

WaveConvertDialog::~WaveConvertDialog() = default;

QString WaveConvertDialog::HelpTopic() const {
  return QStringLiteral("parm_wave-konverter.htm");
}

void WaveConvertDialog::ShowSource() {
  if (source_.kind == MediaKind::None) {
    ui_->sourceCodingLabel->setText(QtText(texts::WaveConverterNoSource));
    ui_->sourceFormatLabel->hide();
    return;
  }
  ui_->sourceCodingLabel->setText(QtText(CodingName(source_.format)));
  ui_->sourceFormatLabel->setText(ToQt(FormatText(source_.format)));
}

void WaveConvertDialog::FillFormats() {
  const WaveFormat current = parameters_.Target();
  for (const WaveFormat& format : formats_) {
    ui_->formatList->addItem(ToQt(FullFormatText(format)));
    if (format == current) ui_->formatList->setCurrentRow(ui_->formatList->count() - 1);
  }
  ui_->formatList->setFocus();
  if (ui_->formatList->currentItem() != nullptr)
    ui_->formatList->scrollToItem(ui_->formatList->currentItem(), QAbstractItemView::PositionAtCenter);
}

void WaveConvertDialog::Commit() {
  const auto selected = ui_->formatList->selectedItems();
  if (selected.isEmpty()) {
    ShowNotice(this, texts::WaveConverterNothingChosen);
    return;
  }
  const WaveFormat& chosen = formats_.at(static_cast<std::size_t>(ui_->formatList->row(selected.front())));
  if (single_ && source_.kind == MediaKind::Wave &&
      FullFormatText(chosen) == FullFormatText(source_.format)) {
    ShowNotice(this, texts::WaveConverterSameFormat);
    return;
  }
  parameters_.sampleRate = chosen.sampleRate;
  parameters_.bits = chosen.bitsPerSample;
  parameters_.channels = chosen.channels;
  accept();
}

bool EditWaveConverter(WaveConverterParameters& parameters, const Job& job, DialogHost& host,
                       QWidget* owner) {
  const std::string first = ItemSource(job, 0);
  const MediaProbe source = first.empty() ? MediaProbe() : ProbeMedia(first);
  if (!first.empty() && !IsWaveKind(source.kind)) {
    ShowWarning(owner, texts::AudioNotInitialised);
    return false;
  }
  WaveConvertDialog dialog(parameters, source, ItemCount(job) == 1, host, owner);
  if (dialog.exec() != QDialog::Accepted) return false;
  parameters = dialog.Parameters();
  return true;
}

}  // namespace ts5
