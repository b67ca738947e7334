// MODIFYMP3INTERFACES: the encoders of the command line, to edit and to delete them.
#pragma once

#include <memory>
#include <string>

#include "audio/interfaces/encoder_interface.h"
#include "frame/ui/hosted_dialog.h"

namespace Ui {
class MODIFYMP3INTERFACES;
}

namespace ts5::interfaces {

class InterfaceManager : public HostedDialog {
  Q_OBJECT

 public:
  // file: the definitions, which every change is written into at once.
  InterfaceManager(std::string file, DialogHost& host, QWidget* parent);
  ~InterfaceManager() override;

  [[nodiscard]] QString HelpTopic() const override;

 private:
  [[nodiscard]] std::size_t Current() const;  // the number of interfaces when there is none
  void Show(std::size_t current);
  void Edit();
  void Delete();
  bool Save(EncoderInterfaces changed);

  std::string file_;
  EncoderInterfaces interfaces_;
  std::unique_ptr<Ui::MODIFYMP3INTERFACES> ui_;
};

}  // namespace ts5::interfaces
