// EINSTELLUNGEN: the settings on two pages.
#pragma once

#include <array>
#include <memory>

#include "frame/settings.h"
#include "frame/settings_form.h"
#include "frame/ui/hosted_dialog.h"

class QAbstractButton;
class QLineEdit;

namespace Ui {
class EINSTELLUNGEN;
class EIN_ALLGEMEIN;
class EIN_CONVERT;
}  // namespace Ui

namespace ts5 {

class SettingsDialog : public HostedDialog {
  Q_OBJECT

 public:
  SettingsDialog(const Settings& settings, DialogHost& host, QWidget* parent);
  ~SettingsDialog() override;

  // After OK: the new settings. The last selected folder is the one of the folder dialogs, whatever was
  // pressed.
  [[nodiscard]] const Settings& Accepted() const { return settings_; }
  // The one of the visible page.
  [[nodiscard]] QString HelpTopic() const override;

 protected:
  void Commit() override;

 private:
  [[nodiscard]] SettingsForm Form() const;
  void Show(const SettingsForm& form);
  void UpdateEnabling();
  void Browse(QLineEdit* field, const QString& title);
  [[nodiscard]] QLineEdit* FieldOf(SettingsField field) const;

  Settings settings_;
  std::unique_ptr<Ui::EINSTELLUNGEN> ui_;
  std::unique_ptr<Ui::EIN_ALLGEMEIN> general_;
  std::unique_ptr<Ui::EIN_CONVERT> conversion_;
  QWidget* generalPage_;
  QWidget* conversionPage_;
};

}  // namespace ts5
