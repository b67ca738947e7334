// RESULTS: what a run did. Up to four counts and the remarks, each kind of failure once; under "Einzelheiten"
// what became of every item, to be copied, saved, looked at in the list of files, or done again.
#pragma once

#include <QSortFilterProxyModel>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "frame/run_result.h"
#include "frame/ui/hosted_dialog.h"
#include "frame/ui/result_items_model.h"

namespace Ui {
class RESULTS;
}

namespace ts5 {

class ResultsDialog : public HostedDialog {
  Q_OBJECT

 public:
  // Closed with "Abbrechen", which is shown only when the result asks for it, exec() returns Rejected.
  // mayRepeat: the failed items can be done once more.
  ResultsDialog(RunResult result, bool mayRepeat, DialogHost& host, QWidget* parent);
  ~ResultsDialog() override;

  // What OK and Abbrechen answer, above the results.
  void ShowQuestion(const QString& question);
  // Offers a look at the notes of files that fit, beside the other details.
  void OfferNotation(std::function<bool(const std::string&)> fits);

  // The run can be undone, but for so many files that it has replaced.
  void OfferUndo(std::size_t notKept);

  [[nodiscard]] QString HelpTopic() const override;

 signals:
  // The user wants to see this file in the list.
  void FileChosen(const std::string& path);
  // The user wants to see the notes of this file.
  void NotationWanted(const std::string& path);
  // The user wants the run undone; the dialog has closed.
  void UndoWanted();
  // The user wants these done again; the dialog has closed.
  void Repeat(const std::vector<std::string>& sources);

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void ShowDetails(bool shown);
  void Copy();
  void Save();
  // What the current row has made, or was made of, if its notes can be looked at; "" none.
  [[nodiscard]] std::string NotationFile() const;
  // Indices of items, the selected ones or all, in the order in which they are seen.
  [[nodiscard]] std::vector<std::size_t> ChosenItems() const;

  RunResult result_;
  ResultItemsModel items_;
  QSortFilterProxyModel sorted_;
  std::function<bool(const std::string&)> hasNotation_;
  std::unique_ptr<Ui::RESULTS> ui_;
};

}  // namespace ts5
