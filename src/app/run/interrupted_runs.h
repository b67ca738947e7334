// The runs that a crash or a power cut ended: after the start the user is asked of each whether it is to go
// on with the files that were not done.
#pragma once

#include <QObject>
#include <memory>
#include <vector>

#include "app/shell/desk.h"
#include "frame/run_journal.h"

namespace ts5 {

class InterruptedRuns : public QObject {
  Q_OBJECT

 public:
  explicit InterruptedRuns(Desk& desk) : desk_(desk) {}

  // Asks in turn; what is put off stays for the next start.
  void Offer(const std::vector<std::shared_ptr<RunJournal>>& runs);

 signals:
  void GoOn(const std::shared_ptr<ts5::RunJournal>& run);

 private:
  [[nodiscard]] QDialog* MakeQuestion(const std::shared_ptr<RunJournal>& run);

  Desk& desk_;
};

}  // namespace ts5
