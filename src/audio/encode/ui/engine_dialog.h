// BLADEPARAMS: the configuration record of the two MP3 engines.
#pragma once

#include <memory>

#include "audio/encode/be_config.h"
#include "frame/ui/hosted_dialog.h"

namespace Ui {
class BLADEPARAMS;
}

namespace ts5::encode {

class EngineDialog : public HostedDialog {
  Q_OBJECT

 public:
  EngineDialog(const BeConfig& config, Mp3Engine engine, DialogHost& host, QWidget* parent);
  ~EngineDialog() override;

  // After OK: the record, for the engine; what the dialog does not show is as it was.
  [[nodiscard]] const BeConfig& Config() const { return config_; }
  [[nodiscard]] QString HelpTopic() const override;

 protected:
  void Commit() override;

 private:
  void FillLists();
  void ShowConfig();
  void UpdateControls();
  [[nodiscard]] std::uint32_t Value(std::string_view name) const;
  void SetValue(std::string_view name, std::uint32_t value);

  Mp3Engine engine_;
  BeConfig config_;
  std::unique_ptr<Ui::BLADEPARAMS> ui_;
};

}  // namespace ts5::encode
