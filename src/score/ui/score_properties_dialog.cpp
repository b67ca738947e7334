#include "score/ui/score_properties_dialog.h"

#include <algorithm>

#include "frame/ui/property_list.h"
#include "frame/ui/qt_text.h"
#include "score/texts.h"
#include "ui_STVPROPS.h"

namespace ts5 {

ScorePropertiesDialog::ScorePropertiesDialog(const ScoreProperties& properties, DialogHost& host,
                                             QWidget* parent)
    : HostedDialog(host, QtText(texts::ScorePropertiesPrompt), parent),
      ui_(std::make_unique<Ui::STVPROPS>()) {
  ui_->setupUi(this);
  ConnectButtons();
  setWindowTitle(ToQt(properties.title));
  // So wide that the title shows the file's name.
  constexpr int kTitleButtons = 200;
  constexpr int kWidest = 900;
  setMinimumWidth(std::min(fontMetrics().horizontalAdvance(windowTitle()) + kTitleButtons, kWidest));
  ShowProperties(properties.rows, ui_->propertyList, ui_->valueEdit);
}

ScorePropertiesDialog::~ScorePropertiesDialog() = default;

QString ScorePropertiesDialog::HelpTopic() const {
  return QStringLiteral("Befehle-Datei-Eigenschaften.htm");
}

}  // namespace ts5
