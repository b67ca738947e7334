// XMLPROPS: the properties of a score in one of the XML formats.
#pragma once

#include <memory>

#include "frame/ui/hosted_dialog.h"
#include "score/score_properties.h"

namespace Ui {
class XMLPROPS;
}

namespace ts5::converters {

class XmlPropertiesDialog : public HostedDialog {
  Q_OBJECT

 public:
  XmlPropertiesDialog(const ScoreProperties& properties, DialogHost& host, QWidget* parent);
  ~XmlPropertiesDialog() override;

  [[nodiscard]] QString HelpTopic() const override;

 private:
  std::unique_ptr<Ui::XMLPROPS> ui_;
};

}  // namespace ts5::converters
