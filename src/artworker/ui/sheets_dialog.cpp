#include "artworker/ui/sheets_dialog.h"

#include <cmath>

#include "artworker/texts.h"
#include "artworker/ui/help_topics.h"
#include "frame/ui/qt_text.h"
#include "ui_ARTSHEETS.h"

namespace ts5::artworker {
namespace {

constexpr double kTenths = 10;

}  // namespace

SheetsDialog::SheetsDialog(const ArtworkerParameters& parameters, DialogHost& host, QWidget* parent)
    : HostedDialog(host, QtText(texts::SheetsPrompt), parent),
      parameters_(parameters),
      ui_(std::make_unique<Ui::ARTSHEETS>()) {
  ui_->setupUi(this);
  ConnectButtons();
  marks_ = {ui_->marksLabel, ui_->marksInlay, ui_->marksBooklet};
  ui_->columnsBox->setValue(parameters.labelGrid[0]);
  ui_->rowsBox->setValue(parameters.labelGrid[1]);
  ui_->stepAcrossBox->setValue(parameters.labelStep[0] / kTenths);
  ui_->stepDownBox->setValue(parameters.labelStep[1] / kTenths);
  ui_->firstBox->setValue(parameters.labelFirst);
  ui_->countBox->setValue(parameters.labelCount);
  ui_->shareCheck->setChecked(parameters.shareSheet);
  ui_->calibrationCheck->setChecked(parameters.calibration);
  for (const ArtworkObjectId id : kObjectIds)
    marks_[IndexOf(id)]->setChecked(Holds(parameters.printMarks, id));
  for (QSpinBox* box : {ui_->columnsBox, ui_->rowsBox, ui_->firstBox, ui_->countBox})
    connect(box, &QSpinBox::valueChanged, this, [this] { ShowChoice(); });
  for (QDoubleSpinBox* box : {ui_->stepAcrossBox, ui_->stepDownBox})
    connect(box, &QDoubleSpinBox::valueChanged, this, [this] { ShowChoice(); });
  for (QCheckBox* box : findChildren<QCheckBox*>())
    connect(box, &QCheckBox::toggled, this, [this] { ShowChoice(); });
  ShowChoice();
}

SheetsDialog::~SheetsDialog() = default;

QString SheetsDialog::HelpTopic() const {
  return kHelpPrinting;
}

void SheetsDialog::Take(ArtworkerParameters& parameters) const {
  const auto tenths = [](const QDoubleSpinBox& box) {
    return static_cast<std::int32_t>(std::lround(box.value() * kTenths));
  };
  parameters.labelGrid = {ui_->columnsBox->value(), ui_->rowsBox->value()};
  parameters.labelStep = {tenths(*ui_->stepAcrossBox), tenths(*ui_->stepDownBox)};
  parameters.labelFirst = ui_->firstBox->value();
  parameters.labelCount = ui_->countBox->value();
  parameters.shareSheet = ui_->shareCheck->isChecked();
  parameters.calibration = ui_->calibrationCheck->isChecked();
  parameters.printMarks = 0;
  for (std::size_t i = 0; i < kObjectCount; ++i) parameters.printMarks |= marks_[i]->isChecked() ? 1 << i : 0;
}

void SheetsDialog::ShowChoice() {
  Take(parameters_);
  const int places = parameters_.labelGrid[0] * parameters_.labelGrid[1];
  ui_->firstBox->setMaximum(places);
  ui_->countBox->setMaximum(places);
  for (QWidget* box :
       std::initializer_list<QWidget*>{ui_->stepAcrossBox, ui_->stepDownBox, ui_->firstBox, ui_->countBox})
    box->setEnabled(places > 1);
  ui_->sheetView->Show(parameters_);
}

}  // namespace ts5::artworker
