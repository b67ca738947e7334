// WAVMP3PARAMS: how the audio compressor encodes. The grabber uses it, too.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "audio/encode/encode_settings.h"
#include "frame/ui/hosted_dialog.h"

namespace Ui {
class WAVMP3PARAMS;
}

namespace ts5::encode {

// What the window offers beside the encoders that are built in.
struct CompressChoices {
  struct Interface {
    std::string name;
    bool available = true;
    std::vector<std::string> sets;  // of parameters
  };
  std::vector<Interface> interfaces;
  // Opens the window of the job's attributes; empty: there is none.
  std::function<void(QWidget*)> editAttributes = {};
  // Opens the window of the targets' names, as they would be with these settings; empty: there is none.
  std::function<void(QWidget*, const EncodeSettings&)> editNames = {};
  std::optional<bool> replayGain = {};  // nothing: it is not offered
};

class CompressDialog : public HostedDialog {
  Q_OBJECT

 public:
  CompressDialog(EncodeSettings settings, CompressChoices choices, DialogHost& host, QWidget* parent);
  ~CompressDialog() override;

  // After OK: what was chosen.
  [[nodiscard]] const EncodeSettings& Settings() const { return settings_; }
  [[nodiscard]] bool ReplayGain() const;
  [[nodiscard]] QString HelpTopic() const override;

 protected:
  void Commit() override;

 private:
  void FillCodecs();
  void FillInterfaces();
  void ShowFormats();
  void UpdateControls();
  void ConfigureEngine();
  void ConfigureOgg();
  void ConfigureApe();
  [[nodiscard]] EncodeMethod Method() const;
  // What is chosen now, for lists that ask about it.
  [[nodiscard]] EncodeSettings Chosen() const;
  [[nodiscard]] EncodeSettings Selected() const;
  [[nodiscard]] bool TakeInterface();
  [[nodiscard]] bool TakeOgg();

  EncodeSettings settings_;
  CompressChoices choices_;
  std::unique_ptr<Ui::WAVMP3PARAMS> ui_;
};

}  // namespace ts5::encode
