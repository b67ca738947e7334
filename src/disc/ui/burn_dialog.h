// BURNPARAMS and COPYPARAMS: the parameters of the burner and of the copier.
#pragma once

#include <memory>

#include "audio/ui/midi_to_wave_dialog.h"
#include "disc/burn_parameters.h"
#include "disc/grab_parameters.h"
#include "frame/ui/hosted_dialog.h"

class QLineEdit;

namespace Ui {
class BURNPARAMS;
class COPYPARAMS;
}  // namespace Ui

namespace ts5 {
class NormaliseBox;
}

namespace ts5::disc {

// What the chosen recorder can do.
struct RecorderFacts {
  std::uint32_t mostSpeed = 4;  // when it does not say
  bool protectsFromUnderruns = true;
};
// Of the drive with that name.
[[nodiscard]] RecorderFacts FactsOfRecorder(const std::string& drive);

// Asks for a directory and puts it into the field.
void ChooseFolder(QWidget* parent, QLineEdit* field);

class BurnDialog : public HostedDialog {
  Q_OBJECT

 public:
  // jobNumber: of the job among all, for the names of intermediate files.
  BurnDialog(BurnParameters parameters, std::size_t jobNumber, RecorderFacts facts, MidiToWaveDevices devices,
             DialogHost& host, QWidget* parent);
  ~BurnDialog() override;

  [[nodiscard]] const BurnParameters& Parameters() const { return parameters_; }
  [[nodiscard]] QString HelpTopic() const override;

 protected:
  void Commit() override;

 private:
  void UpdateControls();
  void EditMidi();

  BurnParameters parameters_;
  RecorderFacts facts_;
  MidiToWaveDevices devices_;
  NormaliseBox* normalise_;
  std::unique_ptr<Ui::BURNPARAMS> ui_;
};

class CopyDialog : public HostedDialog {
  Q_OBJECT

 public:
  CopyDialog(CopyParameters parameters, RecorderFacts facts, DialogHost& host, QWidget* parent);
  ~CopyDialog() override;

  [[nodiscard]] const CopyParameters& Parameters() const { return parameters_; }
  [[nodiscard]] QString HelpTopic() const override { return QStringLiteral("parm_cd-kopierer.htm"); }

 protected:
  void Commit() override;

 private:
  void UpdateControls();

  CopyParameters parameters_;
  RecorderFacts facts_;
  std::unique_ptr<Ui::COPYPARAMS> ui_;
};

}  // namespace ts5::disc
