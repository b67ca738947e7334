// ABOUT: name, version and what the program stands on.
#pragma once

#include <QDialog>
#include <memory>

namespace Ui {
class ABOUT;
}

namespace ts5 {

class AboutDialog : public QDialog {
  Q_OBJECT

 public:
  explicit AboutDialog(QWidget* parent);
  ~AboutDialog() override;

 private:
  std::unique_ptr<Ui::ABOUT> ui_;
};

// "Version 5.0.0", as the build says.
[[nodiscard]] QString VersionText();

}  // namespace ts5
