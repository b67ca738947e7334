#include "artworker/ui/options_page.h"

#include <QHeaderView>
#include <QSignalBlocker>
#include <algorithm>

#include "artworker/texts.h"
#include "artworker/ui/editor_actions.h"
#include "frame/ui/qt_text.h"
#include "ui_ARTOPTIONS.h"

namespace ts5::artworker {
namespace {

using ObjectChecks = std::array<QCheckBox*, kObjectCount>;

void ShowObjects(const ObjectChecks& checks, std::int32_t objects) {
  for (std::size_t i = 0; i < kObjectCount; ++i) checks[i]->setChecked((objects >> i & 1) != 0);
}

std::int32_t ObjectsOf(const ObjectChecks& checks) {
  std::int32_t objects = 0;
  for (std::size_t i = 0; i < kObjectCount; ++i) objects |= checks[i]->isChecked() ? 1 << i : 0;
  return objects;
}

}  // namespace

OptionsPage::OptionsPage(const std::vector<std::string>& printers, QWidget* parent)
    : QWidget(parent), ui_(std::make_unique<Ui::ARTOPTIONS>()) {
  ui_->setupUi(this);
  print_ = {ui_->printLabel, ui_->printInlay, ui_->printBooklet};
  border_ = {ui_->borderLabel, ui_->borderInlay, ui_->borderBooklet};
  for (const std::string& printer : printers) ui_->printerBox->addItem(ToQt(printer));
  FillKeys();
  connect(ui_->printerBox, &QComboBox::activated, this, &OptionsPage::Changed);
  connect(ui_->sheetsButton, &QAbstractButton::clicked, this, &OptionsPage::SheetsWanted);
  connect(ui_->fitButton, &QAbstractButton::clicked, this, &OptionsPage::FitWanted);
  for (QAbstractButton* button : findChildren<QAbstractButton*>()) {
    if (button->isCheckable()) connect(button, &QAbstractButton::clicked, this, &OptionsPage::Changed);
  }
  ui_->undoBox->setKeyboardTracking(false);
  connect(ui_->undoBox, &QSpinBox::valueChanged, this, &OptionsPage::UndoStepsChosen);
}

OptionsPage::~OptionsPage() = default;

void OptionsPage::FillKeys() {
  QTreeWidget& view = *ui_->keysView;
  view.setHeaderLabels({QtText(texts::KeyColumnCommand), QtText(texts::KeyColumnKey)});
  const auto add = [&view](const QString& command, const QString& key) {
    view.addTopLevelItem(new QTreeWidgetItem({command, key}));
  };
  for (const CommandRow& row : CommandRows()) {
    const QString text = QtText(row.text);
    if (text.endsWith(')')) add(text.section(QStringLiteral(" ("), 0, 0), text.section('(', 1).chopped(1));
  }
  add(QtText(texts::KeyMove), QtText(texts::KeyMoveNames));
  add(QtText(texts::KeySize), QtText(texts::KeySizeNames));
  add(QtText(texts::KeyNext), QtText(texts::KeyNextName));
  add(QtText(texts::KeyPrevious), QtText(texts::KeyPreviousName));
  add(QtText(texts::KeyAdd), QtText(texts::KeyAddNames));
  add(QtText(texts::KeyTool), QtText(texts::KeyToolName));
  view.header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
}

void OptionsPage::Show(const ArtworkerParameters& parameters, bool guides) {
  const int printer = ui_->printerBox->findText(ToQt(parameters.printer));
  ui_->printerBox->setCurrentIndex(std::max(0, printer));
  ShowObjects(print_, parameters.printWhat);
  ShowObjects(border_, parameters.printBorder);
  const QSignalBlocker quiet(ui_->undoBox);
  ui_->undoBox->setValue(parameters.undoSteps);
  ui_->rulersCheck->setChecked(parameters.rulers);
  ui_->middleRadio->setChecked(parameters.originInMiddle);
  ui_->leftRadio->setChecked(!parameters.originInMiddle);
  ui_->divideCheck->setChecked(parameters.divideCentimetres);
  ui_->guidesCheck->setChecked(guides);
}

void OptionsPage::Take(ArtworkerParameters& parameters) const {
  parameters.printer = FromQt(ui_->printerBox->currentText());
  parameters.printWhat = ObjectsOf(print_);
  parameters.printBorder = ObjectsOf(border_);
  parameters.rulers = ui_->rulersCheck->isChecked();
  parameters.originInMiddle = ui_->middleRadio->isChecked();
  parameters.divideCentimetres = ui_->divideCheck->isChecked();
}

bool OptionsPage::Guides() const {
  return ui_->guidesCheck->isChecked();
}

}  // namespace ts5::artworker
