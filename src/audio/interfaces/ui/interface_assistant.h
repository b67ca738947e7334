// CREATEMP3INTERFACE: the assistant that leads to a new encoder of the command line.
#pragma once

#include <memory>
#include <string>

#include "audio/interfaces/encoder_interface.h"
#include "frame/ui/hosted_dialog.h"

class QCheckBox;
class QListWidget;

namespace Ui {
class CREATEMP3INTERFACE;
class CREATEMP3INTERFACE_1;
class CREATEMP3INTERFACE_2;
class CREATEMP3INTERFACE_3;
class CREATEMP3INTERFACE_4;
class CREATEMP3INTERFACE_5;
}  // namespace Ui

namespace ts5::interfaces {

class InterfaceAssistant : public HostedDialog {
  Q_OBJECT

 public:
  // found: what the first page offers. file: the definitions, to which the new interface is added.
  InterfaceAssistant(EncoderInterfaces found, std::string file, DialogHost& host, QWidget* parent);
  ~InterfaceAssistant() override;

  [[nodiscard]] QString HelpTopic() const override;

 protected:
  void Commit() override;

 private:
  enum Page : int { Welcome, Encoder, Names, Sets, Parameters, Properties, Done };

  void BuildPages();
  void TakeFound();
  // Checks what a page holds; says what is wrong and stays there.
  bool TakePage(Page page);
  [[nodiscard]] Page PageAfter(Page page) const;
  void GoBack();
  void ShowPage(Page page);
  bool Save();

  EncoderInterfaces found_;
  std::string file_;
  EncoderInterface interface_;
  int taken_ = 0;     // row of the encoders that were found; the first one is none of them
  ParameterSet set_;  // the one that is being entered
  std::unique_ptr<Ui::CREATEMP3INTERFACE> ui_;
  std::unique_ptr<Ui::CREATEMP3INTERFACE_1> welcome_;
  std::unique_ptr<Ui::CREATEMP3INTERFACE_2> encoder_;
  std::unique_ptr<Ui::CREATEMP3INTERFACE_3> names_;
  std::unique_ptr<Ui::CREATEMP3INTERFACE_4> parameters_;
  std::unique_ptr<Ui::CREATEMP3INTERFACE_5> properties_;
  QListWidget* setList_ = nullptr;
  QCheckBox* another_ = nullptr;
};

}  // namespace ts5::interfaces
