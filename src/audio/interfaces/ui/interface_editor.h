// EDITINTERFACE: one interface, with a page for its names and one for each parameter set.
#pragma once

#include <memory>
#include <vector>

#include "audio/interfaces/encoder_interface.h"
#include "frame/ui/hosted_dialog.h"

namespace Ui {
class EDITINTERFACE;
}

namespace ts5::interfaces {

class SetPage;

class InterfaceEditor : public HostedDialog {
  Q_OBJECT

 public:
  InterfaceEditor(const EncoderInterface& interface, DialogHost& host, QWidget* parent);
  ~InterfaceEditor() override;

  // After OK.
  [[nodiscard]] const EncoderInterface& Edited() const { return interface_; }
  [[nodiscard]] QString HelpTopic() const override;

 protected:
  void Commit() override;

 private:
  [[nodiscard]] SetPage* CurrentSet() const;
  void AddSet(const ParameterSet& set);
  void DeleteSet();
  void Number();
  void ShowInfo();
  void Refresh();
  [[nodiscard]] EncoderInterface FromControls() const;
  bool Check(const EncoderInterface& edited);

  EncoderInterface interface_;
  std::unique_ptr<Ui::EDITINTERFACE> ui_;
};

}  // namespace ts5::interfaces
