// RESULTVIEWER: the hits of the screen list or a result file as text, to be read and printed.
#pragma once

#include <memory>
#include <string>

#include "frame/ui/hosted_dialog.h"
#include "search/search_results.h"

namespace Ui {
class RESULTVIEWER;
}

namespace ts5 {

class ResultViewerDialog : public HostedDialog {
  Q_OBJECT

 public:
  // results may be null when the job has none; they outlive the dialog. lastFile is the result file that was
  // loaded last, "" for none.
  ResultViewerDialog(const SearchResults* results, bool wholePaths, std::string lastFile, DialogHost& host,
                     QWidget* parent);
  ~ResultViewerDialog() override;

  // The result file that was loaded last.
  [[nodiscard]] const std::string& LastFile() const { return lastFile_; }
  [[nodiscard]] QString HelpTopic() const override;

 private:
  void ShowMedium();
  void Browse();
  void Load();
  void Print();

  const SearchResults* results_;
  bool wholePaths_;
  std::string lastFile_;
  QString fileText_;
  std::unique_ptr<Ui::RESULTVIEWER> ui_;
};

// Page setup, preview and printing with the abort dialog, for the command and the viewer.
void PrintResultsWithDialogs(const SearchResults& results, bool wholePaths, QWidget* parent);

}  // namespace ts5
