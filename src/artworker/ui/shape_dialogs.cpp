#include "artworker/ui/shape_dialogs.h"

#include <QApplication>
#include <QClipboard>
#include <QPixmap>
#include <utility>

#include "artworker/kept_pictures.h"
#include "artworker/pictures.h"
#include "artworker/texts.h"
#include "artworker/ui/element_parts.h"
#include "artworker/ui/help_topics.h"
#include "frame/ui/file_dialogs.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"
#include "platform/files/paths.h"
#include "ui_ARTELLIPSE.h"
#include "ui_ARTIMAGE.h"

namespace ts5::artworker {
namespace {

constexpr QSize kPreview{160, 120};

}  // namespace

EllipseDialog::EllipseDialog(ArtworkElement element, BackgroundList& backgrounds, DialogHost& host,
                             QWidget* parent)
    : HostedDialog(host, QtText(texts::EllipsePrompt), parent),
      element_(std::move(element)),
      ui_(std::make_unique<Ui::ARTELLIPSE>()) {
  ui_->setupUi(this);
  ConnectButtons();
  fill_ =
      new FillBox(std::get<Ellipse>(element_.content).fill, FillBox::First::Itself, backgrounds, host, this);
  border_ = new BorderBox(element_, false, this);
  ui_->fillLayout->addWidget(fill_);
  ui_->borderLayout->addWidget(border_);
  ui_->fixedCheck->setChecked(element_.fixed);
  fill_->setFocus();
}

EllipseDialog::~EllipseDialog() = default;

QString EllipseDialog::HelpTopic() const {
  return kHelpElements;
}

ArtworkElement EllipseDialog::Element() const {
  ArtworkElement element = element_;
  element.content = Ellipse{fill_->Chosen()};
  border_->Take(element);
  element.fixed = ui_->fixedCheck->isChecked();
  return element;
}

ImageDialog::ImageDialog(ArtworkElement element, BackgroundList& backgrounds, std::string folder, Keeper keep,
                         DialogHost& host, QWidget* parent)
    : HostedDialog(host, QtText(texts::ImagePrompt), parent),
      element_(std::move(element)),
      folder_(std::move(folder)),
      keep_(std::move(keep)),
      ui_(std::make_unique<Ui::ARTIMAGE>()) {
  ui_->setupUi(this);
  ConnectButtons();
  const auto& image = std::get<Image>(element_.content);
  fill_ = new FillBox(image.fill, FillBox::First::None, backgrounds, host, this);
  border_ = new BorderBox(element_, true, this);
  ui_->fillLayout->addWidget(fill_);
  ui_->borderLayout->addWidget(border_);
  ui_->fileEdit->setText(ToQt(image.file));
  ui_->fileRadio->setChecked(true);
  ui_->clipboardRadio->setEnabled(!QApplication::clipboard()->image().isNull());
  ui_->mirrorXCheck->setChecked((image.mirror & kMirrorHorizontal) != 0);
  ui_->mirrorYCheck->setChecked((image.mirror & kMirrorVertical) != 0);
  ui_->fixedCheck->setChecked(element_.fixed);
  ui_->previewLabel->setFixedSize(kPreview);
  ui_->previewLabel->setAlignment(Qt::AlignCenter);
  connect(ui_->browseButton, &QAbstractButton::clicked, this, [this] { Browse(); });
  connect(ui_->fileEdit, &QLineEdit::editingFinished, this, [this] { ShowPreview(); });
  connect(ui_->clipboardRadio, &QAbstractButton::toggled, this, [this] { ShowPreview(); });
  ShowPreview();
}

ImageDialog::~ImageDialog() = default;

QString ImageDialog::HelpTopic() const {
  return kHelpElements;
}

ArtworkElement ImageDialog::Element() const {
  ArtworkElement element = element_;
  auto& image = std::get<Image>(element.content);
  image.file = File();
  image.fill = fill_->Chosen();
  image.mirror = (ui_->mirrorXCheck->isChecked() ? kMirrorHorizontal : 0) |
                 (ui_->mirrorYCheck->isChecked() ? kMirrorVertical : 0);
  border_->Take(element);
  element.fixed = ui_->fixedCheck->isChecked();
  return element;
}

std::string ImageDialog::File() const {
  const std::string typed = FromQt(ui_->fileEdit->text().trimmed());
  return typed.empty() ? typed : FindPicture(typed, folder_);
}

void ImageDialog::Browse() {
  const std::string now = FromQt(ui_->fileEdit->text());
  const auto chosen = AskFileToOpen({.title = QtText(texts::ImagePrompt),
                                     .start = now.empty() ? folder_ : now,
                                     .filter = Text(texts::PictureFilter),
                                     .helpTopic = kHelpElements},
                                    Host(), this);
  if (!chosen) return;
  ui_->fileRadio->setChecked(true);
  ui_->fileEdit->setText(ToQt(*chosen));
  ShowPreview();
}

void ImageDialog::ShowPreview() {
  const bool clipboard = ui_->clipboardRadio->isChecked();
  ui_->fileEdit->setEnabled(!clipboard);
  QImage picture;
  QSize size;
  if (clipboard) {
    picture = QApplication::clipboard()->image();
    size = picture.size();
  } else {
    const std::string file = File();
    size = Pictures::SizeOf(file);
    Pictures pictures;
    if (!size.isEmpty())
      picture = pictures.Scaled(file, size.scaled(kPreview * devicePixelRatioF(), Qt::KeepAspectRatio));
  }
  if (picture.isNull()) {
    ui_->previewLabel->clear();
    ui_->factsLabel->setText(ui_->fileEdit->text().isEmpty() ? QString() : QtText(texts::PictureMissing));
    return;
  }
  ui_->previewLabel->setPixmap(
      QPixmap::fromImage(picture.scaled(kPreview, Qt::KeepAspectRatio, Qt::SmoothTransformation)));
  ui_->factsLabel->setText(ToQt(Format(Text(texts::PictureFacts), size.width(), size.height())));
}

void ImageDialog::Commit() {
  if (ui_->clipboardRadio->isChecked()) {
    const QImage picture = QApplication::clipboard()->image();
    if (picture.isNull()) return ShowWarning(this, texts::ClipboardWithoutPicture);
    const auto kept = keep_(picture);
    if (!kept) return ShowWarning(this, texts::PictureNotKept);
    ui_->fileRadio->setChecked(true);
    ui_->fileEdit->setText(ToQt(*kept));
  }
  const std::string file = File();
  if (file.empty() || !IsUsablePath(file)) {
    ShowWarning(this, texts::ImageNameMissing);
    return FocusText(ui_->fileEdit);
  }
  if (!CanBeNamed(file)) {
    ShowWarning(this, ToQt(Format(Text(texts::PictureNameNotStorable), file)));
    return FocusText(ui_->fileEdit);
  }
  accept();
}

}  // namespace ts5::artworker
