#include "frame/ui/print_setup_dialog.h"

#include <QPageSize>
#include <array>
#include <utility>

#include "frame/texts.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "ui_PRINTSETUP.h"

namespace ts5 {
namespace {

struct Paper {
  QPageSize::PageSizeId id;
  const char* name;
};
constexpr std::array kPapers = {
    Paper{QPageSize::A4, "A4 (210 x 297 mm)"},         Paper{QPageSize::A3, "A3 (297 x 420 mm)"},
    Paper{QPageSize::A5, "A5 (148 x 210 mm)"},         Paper{QPageSize::B5, "B5 (176 x 250 mm)"},
    Paper{QPageSize::Letter, "Letter (216 x 279 mm)"}, Paper{QPageSize::Legal, "Legal (216 x 356 mm)"},
};
constexpr double kLeastText = 60.0;  // millimetres across and down

}  // namespace

PrintSetupDialog::PrintSetupDialog(const QStringList& printers, const PrintSetup& setup, QString helpTopic,
                                   DialogHost& host, QWidget* parent)
    : HostedDialog(host, QtText(texts::PrintSetupPrompt), parent),
      helpTopic_(std::move(helpTopic)),
      ui_(std::make_unique<Ui::PRINTSETUP>()) {
  ui_->setupUi(this);
  ConnectButtons();
  ui_->printerBox->addItems(printers);
  ui_->printerBox->setCurrentText(setup.printer);
  for (const Paper& paper : kPapers) {
    ui_->paperBox->addItem(QString::fromUtf8(paper.name), static_cast<int>(paper.id));
    if (setup.layout.pageSize().id() == paper.id) ui_->paperBox->setCurrentIndex(ui_->paperBox->count() - 1);
  }
  const bool portrait = setup.layout.orientation() == QPageLayout::Portrait;
  (portrait ? ui_->portraitRadio : ui_->landscapeRadio)->setChecked(true);
  const QMarginsF margins = setup.layout.margins(QPageLayout::Millimeter);
  ui_->leftBox->setValue(qRound(margins.left()));
  ui_->topBox->setValue(qRound(margins.top()));
  ui_->rightBox->setValue(qRound(margins.right()));
  ui_->bottomBox->setValue(qRound(margins.bottom()));
  connect(ui_->previewButton, &QPushButton::clicked, this, [this] {
    if (MarginsFit()) emit PreviewWanted();
  });
}

PrintSetupDialog::~PrintSetupDialog() = default;

PrintSetup PrintSetupDialog::Setup() const {
  const auto size = static_cast<QPageSize::PageSizeId>(ui_->paperBox->currentData().toInt());
  const QMarginsF margins(ui_->leftBox->value(), ui_->topBox->value(), ui_->rightBox->value(),
                          ui_->bottomBox->value());
  return {ui_->printerBox->currentText(),
          QPageLayout(QPageSize(size),
                      ui_->portraitRadio->isChecked() ? QPageLayout::Portrait : QPageLayout::Landscape,
                      margins, QPageLayout::Millimeter)};
}

bool PrintSetupDialog::MarginsFit() {
  const QRectF text = Setup().layout.paintRect(QPageLayout::Millimeter);
  if (text.width() >= kLeastText && text.height() >= kLeastText) return true;
  ShowNotice(this, texts::MarginsTooLarge);
  ui_->leftBox->setFocus();
  return false;
}

void PrintSetupDialog::Commit() {
  if (MarginsFit()) accept();
}

QString PrintSetupDialog::HelpTopic() const {
  return helpTopic_;
}

}  // namespace ts5
