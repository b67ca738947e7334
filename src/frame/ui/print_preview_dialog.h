// PRINTPREVIEW: the first pages of a printing as they will look. "Drucken" accepts.
#pragma once

#include <memory>

#include "frame/ui/hosted_dialog.h"
#include "frame/ui/print_device.h"

class QPrinter;

namespace Ui {
class PRINTPREVIEW;
}

namespace ts5 {

class PrintPreviewDialog : public HostedDialog {
  Q_OBJECT

 public:
  // Pages behind these are not shown: a preview keeps all of its pages in memory.
  static constexpr int kMostPages = 200;

  PrintPreviewDialog(const QPageLayout& layout, PrintDrawing drawing, QString helpTopic, DialogHost& host,
                     QWidget* parent);
  ~PrintPreviewDialog() override;

  [[nodiscard]] QString HelpTopic() const override;

 private:
  void ShowPage();

  PrintDrawing drawing_;
  int pages_ = 0;  // of the whole printing
  QString helpTopic_;
  std::unique_ptr<QPrinter> printer_;
  std::unique_ptr<Ui::PRINTPREVIEW> ui_;
};

}  // namespace ts5
