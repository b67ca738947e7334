// ENCODERINFO: version and licence of the library behind an MP3 engine.
#pragma once

#include <QDialog>
#include <memory>

#include "audio/encode/be_config.h"

namespace Ui {
class ENCODERINFO;
}

namespace ts5::encode {

class EncoderInfoDialog : public QDialog {
  Q_OBJECT

 public:
  EncoderInfoDialog(Mp3Engine engine, QWidget* parent);
  ~EncoderInfoDialog() override;

 private:
  std::unique_ptr<Ui::ENCODERINFO> ui_;
};

}  // namespace ts5::encode
