#include "artworker/ui/symbol_dialog.h"

#include <QHeaderView>

#include "artworker/texts.h"
#include "artworker/ui/help_topics.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"
#include "ui_ARTSYMBOL.h"

namespace ts5::artworker {
namespace {

constexpr int kColumns = 16;
constexpr int kCell = 34;          // pixels
constexpr int kSymbolPixels = 20;  // height of the letters
constexpr int kFirst = 0x21;
constexpr int kLast = 0xFF;

// The character of that number in the code page of layouts; empty where it has none.
QString CharacterAt(int code) {
  const char byte = static_cast<char>(code);
  const QString character = ToQt(Utf8FromWindows1252({&byte, 1}));
  constexpr int kTakenForTab = 0xA1;
  constexpr int kTakenForBreak = 0xA8;
  const bool taken = code == kTakenForTab || code == kTakenForBreak;
  return !taken && character.size() == 1 && character[0].isPrint() ? character : QString();
}

}  // namespace

SymbolDialog::SymbolDialog(const QFont& font, DialogHost& host, QWidget* parent)
    : HostedDialog(host, QtText(texts::SymbolPrompt), parent), ui_(std::make_unique<Ui::ARTSYMBOL>()) {
  ui_->setupUi(this);
  ConnectButtons();
  ui_->fontBox->setCurrentFont(font);
  QTableWidget& table = *ui_->symbolTable;
  table.setColumnCount(kColumns);
  table.horizontalHeader()->hide();
  table.verticalHeader()->hide();
  table.horizontalHeader()->setDefaultSectionSize(kCell);
  table.verticalHeader()->setDefaultSectionSize(kCell);
  table.setSelectionMode(QAbstractItemView::SingleSelection);
  table.setEditTriggers(QAbstractItemView::NoEditTriggers);
  table.setMinimumSize(kColumns * kCell + kCell, 8 * kCell);
  Fill();
  connect(ui_->fontBox, &QFontComboBox::currentFontChanged, this, [this] { Fill(); });
  connect(ui_->insertButton, &QAbstractButton::clicked, this, [this] { Pick(); });
  connect(&table, &QTableWidget::cellDoubleClicked, this, [this] { Pick(); });
  connect(&table, &QTableWidget::currentCellChanged, this, [this] { ShowName(); });
  table.setCurrentCell(0, 0);
}

SymbolDialog::~SymbolDialog() = default;

QString SymbolDialog::HelpTopic() const {
  return kHelpElements;
}

void SymbolDialog::Fill() {
  QTableWidget& table = *ui_->symbolTable;
  QFont font = ui_->fontBox->currentFont();
  font.setPixelSize(kSymbolPixels);
  const int row = table.currentRow();
  const int column = table.currentColumn();
  table.clearContents();
  int at = 0;
  for (int code = kFirst; code <= kLast; ++code) {
    const QString character = CharacterAt(code);
    if (character.isEmpty()) continue;
    if (at / kColumns >= table.rowCount()) table.setRowCount(at / kColumns + 1);
    auto* const item = new QTableWidgetItem(character);
    item->setFont(font);
    item->setTextAlignment(Qt::AlignCenter);
    table.setItem(at / kColumns, at % kColumns, item);
    ++at;
  }
  table.setCurrentCell(std::max(row, 0), std::max(column, 0));
}

QString SymbolDialog::Current() const {
  const QTableWidgetItem* const item = ui_->symbolTable->currentItem();
  return item != nullptr ? item->text() : QString();
}

void SymbolDialog::Pick() {
  if (const QString symbol = Current(); !symbol.isEmpty())
    emit Picked(symbol, ui_->fontBox->currentFont().family());
}

void SymbolDialog::ShowName() {
  const QString symbol = Current();
  ui_->insertButton->setEnabled(!symbol.isEmpty());
  ui_->nameLabel->setText(
      symbol.isEmpty() ? QString()
                       : QStringLiteral("U+%1").arg(symbol[0].unicode(), 4, 16, QLatin1Char('0')).toUpper());
}

}  // namespace ts5::artworker
