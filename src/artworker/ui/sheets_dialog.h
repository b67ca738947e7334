// ARTSHEETS: what comes on which sheet, with a picture of it.
#pragma once

#include <array>
#include <memory>

#include "artworker/artworker_parameters.h"
#include "frame/ui/hosted_dialog.h"

class QCheckBox;

namespace Ui {
class ARTSHEETS;
}

namespace ts5::artworker {

class SheetsDialog : public HostedDialog {
  Q_OBJECT

 public:
  // With the disc and the backgrounds that the sheets are drawn with.
  SheetsDialog(const ArtworkerParameters& parameters, DialogHost& host, QWidget* parent);
  ~SheetsDialog() override;

  // Puts what was chosen into the parameters; all else of them stays.
  void Take(ArtworkerParameters& parameters) const;
  [[nodiscard]] QString HelpTopic() const override;

 private:
  void ShowChoice();

  ArtworkerParameters parameters_;
  std::unique_ptr<Ui::ARTSHEETS> ui_;
  std::array<QCheckBox*, kObjectCount> marks_;
};

}  // namespace ts5::artworker
