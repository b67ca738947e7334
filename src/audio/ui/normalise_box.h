// The choice of a normalisation mode, as the dialogs that offer it show it: three buttons, and below them
// what the chosen one does.
#pragma once

#include <QGroupBox>
#include <array>

#include "audio/normalise.h"

class QLabel;
class QRadioButton;

namespace ts5 {

class NormaliseBox : public QGroupBox {
  Q_OBJECT

 public:
  enum class Wording { Burner, MidiToWave };

  explicit NormaliseBox(Wording wording, QWidget* parent = nullptr);

  [[nodiscard]] NormaliseMode Mode() const;
  void SetMode(NormaliseMode mode);
  // A project needs all files together before the first is used; where that is not so, the choice falls back
  // to one file after the other.
  void SetProjectAllowed(bool allowed);

 signals:
  void ModeChanged();

 private:
  void ShowHint();

  std::array<QRadioButton*, 3> buttons_{};  // by mode
  QLabel* hint_;
};

}  // namespace ts5
