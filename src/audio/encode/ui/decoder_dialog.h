// MPDECODER: how the decoder of one file decodes it.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "audio/encode/decompressor.h"
#include "frame/ui/hosted_dialog.h"

namespace Ui {
class MPDECODER;
}

namespace ts5::encode {

class DecoderDialog : public HostedDialog {
  Q_OBJECT

 public:
  // editNames: opens the window of the targets' names.
  DecoderDialog(const DecodeOptions& options, const std::string& name, const CompressedFile& file,
                std::function<void(QWidget*)> editNames, DialogHost& host, QWidget* parent);
  ~DecoderDialog() override;

  [[nodiscard]] DecodeOptions Options() const;
  [[nodiscard]] QString HelpTopic() const override;

 private:
  std::unique_ptr<Ui::MPDECODER> ui_;
};

}  // namespace ts5::encode
