// RIFFATTRIBUTES: the texts that the MIDI converter writes into RIFF files.
#pragma once

#include <memory>

#include "frame/ui/hosted_dialog.h"
#include "midi/riff_info.h"

namespace Ui {
class RIFFATTRIBUTES;
}

namespace ts5 {

class RiffAttributesDialog : public HostedDialog {
  Q_OBJECT

 public:
  RiffAttributesDialog(const RiffAttributes& attributes, DialogHost& host, QWidget* parent);
  ~RiffAttributesDialog() override;

  [[nodiscard]] RiffAttributes Attributes() const;
  [[nodiscard]] QString HelpTopic() const override;

 private:
  std::unique_ptr<Ui::RIFFATTRIBUTES> ui_;
};

}  // namespace ts5
