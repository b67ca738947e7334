// CREATEJOB: title and description of a job, for a new one and for one that is renamed.
#pragma once

#include <memory>
#include <string>

#include "frame/ui/hosted_dialog.h"

namespace Ui {
class CREATEJOB;
}

namespace ts5 {

// At most 12 and 79 characters; the fields of the dialog take no more.
struct JobNames {
  std::string title;
  std::string description;

  bool operator==(const JobNames&) const = default;
};

class JobDialog : public HostedDialog {
  Q_OBJECT

 public:
  enum class Purpose { Create, Rename };

  // The fields begin with the preset names.
  JobDialog(Purpose purpose, JobNames preset, DialogHost& host, QWidget* parent);
  ~JobDialog() override;

  // After OK: what was typed in; a field left empty keeps its preset.
  [[nodiscard]] JobNames Names() const;
  [[nodiscard]] QString HelpTopic() const override;

 private:
  Purpose purpose_;
  JobNames preset_;
  std::unique_ptr<Ui::CREATEJOB> ui_;
};

}  // namespace ts5
