// APEPARAMS: the compression level of Monkey's Audio.
#pragma once

#include <cstdint>
#include <memory>

#include "frame/ui/hosted_dialog.h"

namespace Ui {
class APEPARAMS;
}

namespace ts5::encode {

class ApeDialog : public HostedDialog {
  Q_OBJECT

 public:
  ApeDialog(std::int32_t level, DialogHost& host, QWidget* parent);
  ~ApeDialog() override;

  [[nodiscard]] std::int32_t Level() const;
  [[nodiscard]] QString HelpTopic() const override;

 private:
  std::unique_ptr<Ui::APEPARAMS> ui_;
};

}  // namespace ts5::encode
