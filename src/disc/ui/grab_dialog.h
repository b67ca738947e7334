// GRABPARAMS: the parameters of the CD grabber.
#pragma once

#include <memory>

#include "audio/encode/ui/compress_dialog.h"
#include "disc/grab_parameters.h"
#include "frame/ui/hosted_dialog.h"

namespace Ui {
class GRABPARAMS;
}

namespace ts5::disc {

class GrabDialog : public HostedDialog {
  Q_OBJECT

 public:
  // tracks: how many names are offered.
  GrabDialog(GrabParameters parameters, int tracks, encode::CompressChoices choices, DialogHost& host,
             QWidget* parent);
  ~GrabDialog() override;

  [[nodiscard]] const GrabParameters& Parameters() const { return parameters_; }
  [[nodiscard]] QString HelpTopic() const override { return QStringLiteral("parm_cd-grabber.htm"); }

 protected:
  void Commit() override;

 private:
  void ShowNames(const GrabParameters& parameters);
  void ShowSpeed();

  GrabParameters parameters_;
  int tracks_;
  encode::CompressChoices choices_;
  std::unique_ptr<Ui::GRABPARAMS> ui_;
};

}  // namespace ts5::disc
