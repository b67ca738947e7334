#include "artworker/ui/text_dialog.h"

#include <QButtonGroup>
#include <QKeyEvent>
#include <QMenu>
#include <algorithm>
#include <cmath>
#include <utility>

#include "artworker/filled_text.h"
#include "artworker/texts.h"
#include "artworker/ui/element_parts.h"
#include "artworker/ui/help_topics.h"
#include "artworker/ui/symbol_dialog.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"
#include "ui_ARTTEXT.h"

namespace ts5::artworker {
namespace {

constexpr double kTenths = 10;                   // in a millimetre
constexpr double kPointsPerPixel = 72.0 / 96.0;  // fonts are stored in pixels of a screen of 96 dpi
constexpr int kBold = 700;
constexpr int kNormal = 400;

// The first character that a stored layout cannot hold; empty when all can be stored.
QString Unstorable(const QString& text) {
  // These stand for a line break and a tab.
  constexpr std::array kTaken = {QChar(0xA8), QChar(0xA1)};
  for (qsizetype i = 0; i < text.size(); ++i) {
    const QString one = text.mid(i, text[i].isHighSurrogate() ? 2 : 1);
    const bool taken = std::ranges::find(kTaken, text[i]) != kTaken.end();
    if (taken || ToQt(Utf8FromWindows1252(Windows1252FromUtf8(FromQt(one)))) != one) return one;
    i += one.size() - 1;
  }
  return {};
}

}  // namespace

TextDialog::TextDialog(ArtworkElement element, BackgroundList& backgrounds, DialogHost& host, QWidget* parent)
    : HostedDialog(host, QtText(texts::TextFieldPrompt), parent),
      element_(std::move(element)),
      ui_(std::make_unique<Ui::ARTTEXT>()) {
  ui_->setupUi(this);
  ConnectButtons();
  fill_ = new FillBox(std::get<TextField>(element_.content).fill, FillBox::First::Itself, backgrounds, host,
                      this);
  border_ = new BorderBox(element_, true, this);
  ui_->fillLayout->addWidget(fill_);
  ui_->borderLayout->addWidget(border_);
  ui_->textEdit->installEventFilter(this);
  ShowField();
  OfferFields();
  connect(ui_->symbolButton, &QAbstractButton::clicked, this, [this] { PickSymbols(); });
  connect(ui_->textEdit, &QPlainTextEdit::textChanged, this, [this] { UpdateNotes(); });
  connect(ui_->fixedFontCheck, &QAbstractButton::toggled, this, [this] { UpdateNotes(); });
  UpdateNotes();
  ui_->textEdit->setFocus();
}

TextDialog::~TextDialog() = default;

QString TextDialog::HelpTopic() const {
  return kHelpElements;
}

void TextDialog::ShowField() {
  const auto& field = std::get<TextField>(element_.content);
  ui_->textEdit->setPlainText(ToQt(field.text));
  ui_->textEdit->selectAll();
  ui_->fontBox->setCurrentFont(QFont(ToQt(field.font.face)));
  ui_->fontBox->setEditText(ToQt(field.font.face));
  ui_->sizeBox->setValue(std::abs(field.font.height) * kPointsPerPixel);
  ui_->colourButton->SetColour(static_cast<std::uint32_t>(field.colour));
  ui_->spacingBox->setValue(field.lineSpacing / kTenths);
  ui_->boldCheck->setChecked(field.font.weight > (kNormal + kBold) / 2);
  ui_->italicCheck->setChecked(field.font.italic != 0);
  ui_->underlineCheck->setChecked(field.font.underline != 0);
  ui_->strikeCheck->setChecked(field.font.strikeOut != 0);
  ui_->fixedFontCheck->setChecked(field.fixedFont);
  ui_->horizontalRadio->setChecked(field.spaceMode == SpaceMode::Horizontal);
  ui_->verticalRadio->setChecked(field.spaceMode == SpaceMode::Vertical);
  ui_->wholeRadio->setChecked(field.spaceMode == SpaceMode::Whole);
  ui_->turnBox->setCurrentIndex(static_cast<int>(field.orientation));
  ui_->acrossBox->setCurrentIndex(static_cast<int>(field.horizontal));
  ui_->downBox->setCurrentIndex(static_cast<int>(field.vertical));
  ui_->fixedCheck->setChecked(element_.fixed);
}

ArtworkElement TextDialog::Element() const {
  ArtworkElement element = element_;
  auto& field = std::get<TextField>(element.content);
  SetText(field, FromQt(ui_->textEdit->toPlainText()));
  FontFields& font = field.font;
  font.face = FirstCharacters(FromQt(ui_->fontBox->currentText().trimmed()), kFaceBytes);
  // Sizes that were not touched stay as they are stored, to the pixel and with their sign.
  const int pixels = static_cast<int>(std::lround(ui_->sizeBox->value() / kPointsPerPixel));
  if (std::abs(font.height) != pixels) font.height = -pixels;
  if (ui_->boldCheck->isChecked() != (font.weight > (kNormal + kBold) / 2))
    font.weight = ui_->boldCheck->isChecked() ? kBold : kNormal;
  const auto take = [](std::uint8_t& flag, const QAbstractButton* check) {
    if (check->isChecked() != (flag != 0)) flag = check->isChecked() ? 1 : 0;
  };
  take(font.italic, ui_->italicCheck);
  take(font.underline, ui_->underlineCheck);
  take(font.strikeOut, ui_->strikeCheck);
  field.colour = static_cast<std::int32_t>(ui_->colourButton->Colour());
  field.lineSpacing = static_cast<std::int32_t>(std::lround(ui_->spacingBox->value() * kTenths));
  field.fixedFont = ui_->fixedFontCheck->isChecked();
  field.spaceMode = ui_->horizontalRadio->isChecked() ? SpaceMode::Horizontal
                    : ui_->verticalRadio->isChecked() ? SpaceMode::Vertical
                                                      : SpaceMode::Whole;
  field.orientation = static_cast<Turn>(ui_->turnBox->currentIndex());
  field.horizontal = static_cast<Across>(ui_->acrossBox->currentIndex());
  field.vertical = static_cast<Down>(ui_->downBox->currentIndex());
  field.fill = fill_->Chosen();
  border_->Take(element);
  element.fixed = ui_->fixedCheck->isChecked();
  return element;
}

void TextDialog::UpdateNotes() {
  const bool fixed = ui_->fixedFontCheck->isChecked();
  const bool several = ui_->textEdit->blockCount() > 1;
  for (QRadioButton* radio : {ui_->horizontalRadio, ui_->verticalRadio, ui_->wholeRadio})
    radio->setEnabled(!fixed);
  ui_->sizeBox->setEnabled(fixed);
  ui_->fixedNote->setVisible(fixed);
  ui_->linesNote->setVisible(several);
}

bool TextDialog::eventFilter(QObject* watched, QEvent* event) {
  // Tab goes to the next control, as in every dialog.
  if (event->type() == QEvent::KeyPress || event->type() == QEvent::ShortcutOverride) {
    const auto* const key = static_cast<QKeyEvent*>(event);
    if (key->key() == Qt::Key_Tab && (key->modifiers() & Qt::ControlModifier) != 0) {
      event->accept();
      if (event->type() == QEvent::KeyPress) ui_->textEdit->insertPlainText(QStringLiteral("\t"));
      return true;
    }
  }
  return HostedDialog::eventFilter(watched, event);
}

void TextDialog::PickSymbols() {
  auto* const symbols = new SymbolDialog(ui_->fontBox->currentFont(), Host(), this);
  symbols->setAttribute(Qt::WA_DeleteOnClose);
  connect(symbols, &SymbolDialog::Picked, this, [this](const QString& symbol, const QString& face) {
    ui_->textEdit->insertPlainText(symbol);
    ui_->fontBox->setCurrentFont(QFont(face));  // a field has one font
  });
  symbols->show();
}

void TextDialog::OfferFields() {
  auto* const menu = new QMenu(this);
  for (const DiscField& field : kDiscFields) {
    connect(menu->addAction(QtText(field.explanation)), &QAction::triggered, this,
            [this, name = ToQt(field.name)] { ui_->textEdit->insertPlainText(name); });
  }
  ui_->fieldButton->setMenu(menu);
}

void TextDialog::Commit() {
  const QString text = ui_->textEdit->toPlainText();
  const auto turn = static_cast<Turn>(ui_->turnBox->currentIndex());
  const bool upright = turn == Turn::None || turn == Turn::Half;
  if (!upright && (text.contains('\n') || text.contains('\t')))
    return ShowWarning(this, texts::TextMustBeUpright);
  if (const QString character = Unstorable(text); !character.isEmpty())
    return ShowWarning(this, ToQt(Format(Text(texts::TextNotStorable), FromQt(character))));
  TextField field;
  SetText(field, FromQt(text));
  if (field.length > kMaxFieldBytes)
    return ShowWarning(this, ToQt(Format(Text(texts::TextTooLong), kMaxFieldBytes)));
  accept();
}

}  // namespace ts5::artworker
