// ARTOPTIONS: what is printed where, the rulers, the steps of undo, and the keys of the editor.
#pragma once

#include <QWidget>
#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "artworker/artworker_parameters.h"

class QCheckBox;

namespace Ui {
class ARTOPTIONS;
}

namespace ts5::artworker {

class OptionsPage : public QWidget {
  Q_OBJECT

 public:
  explicit OptionsPage(const std::vector<std::string>& printers, QWidget* parent = nullptr);
  ~OptionsPage() override;

  void Show(const ArtworkerParameters& parameters, bool guides);
  // Puts what is chosen into the parameters; their layout and steps of undo stay.
  void Take(ArtworkerParameters& parameters) const;
  [[nodiscard]] bool Guides() const;

 signals:
  void Changed();
  void UndoStepsChosen(int steps);
  void SheetsWanted();
  void FitWanted();

 private:
  void FillKeys();

  std::unique_ptr<Ui::ARTOPTIONS> ui_;
  std::array<QCheckBox*, kObjectCount> print_;
  std::array<QCheckBox*, kObjectCount> border_;
};

}  // namespace ts5::artworker
