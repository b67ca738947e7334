// OGGPARAMS: bit rates or quality of Ogg Vorbis.
#pragma once

#include <memory>

#include "audio/encode/encode_settings.h"
#include "frame/ui/hosted_dialog.h"

class QSlider;

namespace Ui {
class OGGPARAMS;
}

namespace ts5::encode {

class OggDialog : public HostedDialog {
  Q_OBJECT

 public:
  OggDialog(const OggSettings& settings, DialogHost& host, QWidget* parent);
  ~OggDialog() override;

  [[nodiscard]] OggSettings Settings() const;
  [[nodiscard]] QString HelpTopic() const override;

 private:
  // A slider that moves takes its neighbours along, so that the order stays.
  void KeepOrder(const QSlider* moved);
  void ShowValues();

  std::unique_ptr<Ui::OGGPARAMS> ui_;
};

}  // namespace ts5::encode
