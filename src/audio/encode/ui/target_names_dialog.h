// TARGETNAMES: the pattern by which targets are named, and what all of them would be called.
#pragma once

#include <QTimer>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "frame/target_naming.h"
#include "frame/ui/hosted_dialog.h"

namespace Ui {
class TARGETNAMES;
}

namespace ts5::encode {

// The items of the job as they would be called with this pattern.
using NamePreview = std::function<std::vector<NamedItem>(const std::string& pattern)>;

class TargetNamesDialog : public HostedDialog {
  Q_OBJECT

 public:
  TargetNamesDialog(const std::string& pattern, NamePreview preview, DialogHost& host, QWidget* parent);
  ~TargetNamesDialog() override;

  // After OK; "": targets are named after their sources.
  [[nodiscard]] std::string Pattern() const;
  [[nodiscard]] QString HelpTopic() const override;

 protected:
  void Commit() override;

 private:
  void ShowNames();

  NamePreview preview_;
  QTimer pause_;  // of typing
  std::unique_ptr<Ui::TARGETNAMES> ui_;
};

}  // namespace ts5::encode
