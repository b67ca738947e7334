// RESULTVIEWER: the hits of the screen list or a result file as text, to be read and printed.
#pragma once

#include <memory>
#include <string>
#include <thread>

#include "frame/ui/hosted_dialog.h"
#include "search/result_lines.h"
#include "search/search_results.h"
#include "search/ui/results_printing.h"

namespace Ui {
class RESULTVIEWER;
}

namespace ts5 {

class ResultViewerDialog : public HostedDialog {
  Q_OBJECT

 public:
  // The results and the printing outlive the dialog. lastFile is the result file that was loaded last, "" for
  // none.
  ResultViewerDialog(const SearchResults& results, bool wholePaths, std::string lastFile,
                     ResultsPrinting& printing, DialogHost& host, QWidget* parent);
  ~ResultViewerDialog() override;

  // The result file that was loaded last.
  [[nodiscard]] const std::string& LastFile() const { return lastFile_; }
  [[nodiscard]] QString HelpTopic() const override;

 private:
  void ShowMedium();
  void Browse();
  // Reads the file on a thread of its own; Loaded shows what has come of it.
  void Load();
  void Loaded(const std::string& path, Result<ResultLines> lines);
  void Print();

  const SearchResults& results_;
  bool wholePaths_;
  std::string lastFile_;
  ResultsPrinting& printing_;
  ResultLines fileLines_;
  std::unique_ptr<Ui::RESULTVIEWER> ui_;
  std::jthread loading_;
};

}  // namespace ts5
