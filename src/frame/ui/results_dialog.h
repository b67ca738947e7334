// RESULTS: what a run did. Up to four counts and the remarks, each kind of failure once.
#pragma once

#include <memory>

#include "frame/run_result.h"
#include "frame/ui/hosted_dialog.h"

namespace Ui {
class RESULTS;
}

namespace ts5 {

class ResultsDialog : public HostedDialog {
  Q_OBJECT

 public:
  // Closed with "Abbrechen", which is shown only when the result asks for it, exec() returns Rejected.
  ResultsDialog(const RunResult& result, DialogHost& host, QWidget* parent);
  ~ResultsDialog() override;

  [[nodiscard]] QString HelpTopic() const override;

 private:
  std::unique_ptr<Ui::RESULTS> ui_;
};

}  // namespace ts5
