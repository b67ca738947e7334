// ARTFIT: how far a printer misses its places, typed in or measured on the calibration page.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "artworker/printer_fit.h"
#include "frame/ui/hosted_dialog.h"

namespace Ui {
class ARTFIT;
}

namespace ts5::artworker {

// Where the fits of the printers are kept, by their names.
struct FitLinks {
  std::function<PrinterFit(const std::string& printer)> load;
  std::function<Outcome(const std::string& printer, const PrinterFit& fit)> save;
};

class FitDialog : public HostedDialog {
  Q_OBJECT

 public:
  // fit: with which the page was printed that is measured.
  FitDialog(const std::string& printer, const PrinterFit& fit, DialogHost& host, QWidget* parent);
  ~FitDialog() override;

  [[nodiscard]] PrinterFit Chosen() const;
  [[nodiscard]] QString HelpTopic() const override;

 private:
  void Show(const PrinterFit& fit);
  void Compute();

  PrinterFit printedWith_;
  std::unique_ptr<Ui::ARTFIT> ui_;
};

}  // namespace ts5::artworker
