// XMLCONVPARAMS: which objects of a score the XML converter takes along.
#pragma once

#include <array>
#include <memory>

#include "converters/xml_converter.h"
#include "frame/ui/hosted_dialog.h"

class QCheckBox;
namespace Ui {
class XMLCONVPARAMS;
}

namespace ts5::converters {

class XmlConverterDialog : public HostedDialog {
  Q_OBJECT

 public:
  XmlConverterDialog(XmlConverterParameters parameters, DialogHost& host, QWidget* parent);
  ~XmlConverterDialog() override;

  // After OK: what was chosen.
  [[nodiscard]] const XmlConverterParameters& Parameters() const { return parameters_; }
  [[nodiscard]] QString HelpTopic() const override;

 protected:
  void Commit() override;

 private:
  [[nodiscard]] std::array<QCheckBox*, 7> Boxes() const;  // in the order of the mask's bits

  XmlConverterParameters parameters_;
  std::unique_ptr<Ui::XMLCONVPARAMS> ui_;
};

}  // namespace ts5::converters
