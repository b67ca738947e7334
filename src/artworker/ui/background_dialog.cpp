#include "artworker/ui/background_dialog.h"

#include <QPainter>
#include <QPixmap>
#include <span>

#include "artworker/ink.h"
#include "artworker/texts.h"
#include "artworker/ui/help_topics.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "ui_ARTBACKGROUND.h"

namespace ts5::artworker {
namespace {

constexpr QSize kPreview{280, 90};

QPixmap Painted(const ArtworkBackground& background, QSize size) {
  QPixmap pixmap(size);
  const QRectF rect({0, 0}, QSizeF(size));
  pixmap.fill(Qt::white);
  QPainter painter(&pixmap);
  painter.fillRect(rect, BrushOf(std::span(&background, 1), 0, rect));
  painter.setPen(Qt::gray);
  painter.drawRect(rect.adjusted(0, 0, -1, -1));
  return pixmap;
}

}  // namespace

QIcon BackgroundIcon(const ArtworkBackground& background) {
  return Painted(background, kBackgroundSwatch);
}

BackgroundDialog::BackgroundDialog(const BackgroundList& backgrounds, DialogHost& host, QWidget* parent)
    : HostedDialog(host, QtText(texts::BackgroundPrompt), parent),
      backgrounds_(backgrounds),
      ui_(std::make_unique<Ui::ARTBACKGROUND>()) {
  ui_->setupUi(this);
  ConnectButtons();
  ui_->nameEdit->setText(ToQt(backgrounds_.ProposedName()));
  ui_->nameEdit->selectAll();
  for (ColourButton* button : {ui_->firstButton, ui_->secondButton}) {
    button->SetColour(std::uint32_t{kMaxColour});
    connect(button, &ColourButton::ColourChosen, this, [this] { ShowPreview(); });
  }
  connect(ui_->gradientBox, &QComboBox::currentIndexChanged, this, [this] { ShowPreview(); });
  ShowPreview();
}

BackgroundDialog::~BackgroundDialog() = default;

QString BackgroundDialog::HelpTopic() const {
  return kHelpElements;
}

ArtworkBackground BackgroundDialog::Chosen() const {
  return {.colour1 = ui_->firstButton->Colour(),
          .colour2 = ui_->secondButton->Colour(),
          .gradient = static_cast<std::uint32_t>(ui_->gradientBox->currentIndex()),
          .name = FromQt(ui_->nameEdit->text().trimmed())};
}

void BackgroundDialog::ShowPreview() {
  ui_->secondButton->setEnabled(ui_->gradientBox->currentIndex() > 0);
  ui_->previewLabel->setPixmap(Painted(Chosen(), kPreview));
}

void BackgroundDialog::Commit() {
  if (const auto refusal = backgrounds_.Refusal(Chosen().name)) {
    ShowWarning(this, *refusal);
    return FocusText(ui_->nameEdit);
  }
  accept();
}

}  // namespace ts5::artworker
