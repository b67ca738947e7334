// PRINTSETUP: printer, paper, orientation and margins of a printing, with the way to its preview.
#pragma once

#include <QStringList>
#include <memory>

#include "frame/ui/hosted_dialog.h"
#include "frame/ui/print_device.h"

namespace Ui {
class PRINTSETUP;
}

namespace ts5 {

class PrintSetupDialog : public HostedDialog {
  Q_OBJECT

 public:
  PrintSetupDialog(const QStringList& printers, const PrintSetup& setup, QString helpTopic, DialogHost& host,
                   QWidget* parent);
  ~PrintSetupDialog() override;

  // What is chosen now.
  [[nodiscard]] PrintSetup Setup() const;
  [[nodiscard]] QString HelpTopic() const override;

 signals:
  void PreviewWanted();

 protected:
  void Commit() override;

 private:
  // Whether the margins leave room for a few lines; said to the user when they do not.
  [[nodiscard]] bool MarginsFit();

  QString helpTopic_;
  std::unique_ptr<Ui::PRINTSETUP> ui_;
};

}  // namespace ts5
