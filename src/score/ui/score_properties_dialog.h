// STVPROPS: the properties of a score file.
#pragma once

#include <memory>

#include "frame/ui/hosted_dialog.h"
#include "score/score_properties.h"

namespace Ui {
class STVPROPS;
}

namespace ts5 {

class ScorePropertiesDialog : public HostedDialog {
  Q_OBJECT

 public:
  ScorePropertiesDialog(const ScoreProperties& properties, DialogHost& host, QWidget* parent);
  ~ScorePropertiesDialog() override;

  [[nodiscard]] QString HelpTopic() const override;

 private:
  std::unique_ptr<Ui::STVPROPS> ui_;
};

}  // namespace ts5
