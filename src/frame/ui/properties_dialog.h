// FILEPROPS: the dialog around the properties page of a file, whatever the page is.
#pragma once

#include <memory>

#include "frame/ui/hosted_dialog.h"

namespace Ui {
class FILEPROPS;
}

namespace ts5 {

class PropertiesDialog : public HostedDialog {
  Q_OBJECT

 public:
  // The dialog takes the page over.
  PropertiesDialog(const QString& title, const QString& prompt, std::unique_ptr<QWidget> page,
                   DialogHost& host, QWidget* parent);
  ~PropertiesDialog() override;

  [[nodiscard]] QString HelpTopic() const override;

 private:
  std::unique_ptr<Ui::FILEPROPS> ui_;
};

}  // namespace ts5
