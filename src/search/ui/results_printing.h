// Printing as the user goes through it: printer and page setup, preview, progress with a way to end it. The
// built-in printer "PDF-Datei" asks for a file.
#pragma once

#include <QPageLayout>
#include <QStringList>
#include <functional>
#include <string>
#include <vector>

#include "frame/ui/dialog_host.h"
#include "search/ui/results_printer.h"

class QWidget;

namespace ts5 {

struct PrintSetup {
  QString printer;     // one of the list
  QPageLayout layout;  // margins in millimetres
};
[[nodiscard]] PrintSetup DefaultPrintSetup(const QString& printer);

// Draws what is printed.
using PrintDrawing = std::function<Printed(QPagedPaintDevice& device, const PrintJob& job)>;

class ResultsPrinting {
 public:
  // printers: by name, "PDF-Datei" among them. The host outlives the object.
  ResultsPrinting(const std::vector<std::string>& printers, DialogHost& host);

  void PrintHits(const SearchResults& results, bool wholePaths, QWidget* parent);
  void PrintFile(const std::string& path, const ResultLines& lines, QWidget* parent);

 private:
  void Print(const PrintDrawing& drawing, QWidget* parent);

  QStringList printers_;
  PrintSetup setup_;  // kept while the program runs
  std::string pdf_;   // the file that was written last
  DialogHost& host_;
};

// Onto the printer of the setup. pdf: where "PDF-Datei" writes; the file comes into being whole or not at
// all. An aborted printing is taken back.
[[nodiscard]] Printed PrintWith(const PrintSetup& setup, const std::string& pdf, const PrintDrawing& drawing,
                                const PrintJob& job);

}  // namespace ts5
