// Printing as the user goes through it: printer and page setup, preview, progress with a way to end it. The
// built-in printer "PDF-Datei" asks for a file.
#pragma once

#include <QString>
#include <QStringList>
#include <string>
#include <vector>

#include "frame/ui/dialog_host.h"
#include "frame/ui/print_device.h"
#include "platform/base/strings.h"

class QWidget;

namespace ts5 {

// What the printings of one kind are called.
struct PrintNames {
  TextId job;  // the document, for the printer's queue and the PDF file
  TextId progressTitle;
  TextId progressText;
  TextId pdfProposal;  // the file name that is offered first
  TextId failed;       // said when the printing failed
  QString helpTopic;
};

class Printing {
 public:
  // printers: by name; "PDF-Datei" is added where it lacks. The host outlives the object.
  Printing(const std::vector<std::string>& printers, PrintNames names, DialogHost& host);

  void Print(const PrintDrawing& drawing, QWidget* parent);

 private:
  QStringList printers_;
  PrintNames names_;
  PrintSetup setup_;  // kept while the program runs
  std::string pdf_;   // the file that was written last
  DialogHost& host_;
};

}  // namespace ts5
