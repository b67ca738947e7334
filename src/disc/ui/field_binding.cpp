#include "disc/ui/field_binding.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QRadioButton>
#include <QSpinBox>
#include <algorithm>
#include <optional>
#include <string>

#include "frame/ui/qt_text.h"
#include "platform/base/text.h"

namespace ts5::disc {
namespace {

constexpr int kMostChoices = 4;

QString ControlName(std::string name) {
  std::ranges::replace(name, '-', '_');
  return ToQt(name);
}

QRadioButton* Choice(const QWidget& dialog, const QString& name, int number) {
  return dialog.findChild<QRadioButton*>(name + QStringLiteral("_%1").arg(number));
}

void Show(QWidget& dialog, const QString& name, const std::string& value) {
  const int number = static_cast<int>(ParseInteger(value).value_or(0));
  if (auto* check = dialog.findChild<QCheckBox*>(name)) check->setChecked(number == 1);
  if (auto* box = dialog.findChild<QSpinBox*>(name)) box->setValue(number);
  if (auto* field = dialog.findChild<QLineEdit*>(name)) field->setText(ToQt(value));
  if (auto* radio = Choice(dialog, name, number)) radio->setChecked(true);
}

std::optional<std::string> Value(const QWidget& dialog, const QString& name) {
  if (const auto* check = dialog.findChild<QCheckBox*>(name)) return check->isChecked() ? "1" : "0";
  if (const auto* box = dialog.findChild<QSpinBox*>(name)) return std::to_string(box->value());
  if (const auto* field = dialog.findChild<QLineEdit*>(name)) return field->text().trimmed().toStdString();
  for (int number = 0; number < kMostChoices; ++number) {
    const auto* radio = Choice(dialog, name, number);
    if (radio != nullptr && radio->isChecked()) return std::to_string(number);
  }
  return std::nullopt;
}

}  // namespace

void ShowFields(QWidget& dialog, std::span<const ParameterField> fields, const FilterParameters& parameters) {
  RegistryValues values;
  for (const ParameterField& field : fields) {
    field.save(parameters, values);
    if (const auto value = values.Text(field.name))
      Show(dialog, ControlName(field.name), std::string(*value));
  }
}

void TakeFields(const QWidget& dialog, std::span<const ParameterField> fields, FilterParameters& parameters) {
  for (const ParameterField& field : fields)
    if (const auto value = Value(dialog, ControlName(field.name))) (void)field.set(parameters, *value);
}

}  // namespace ts5::disc
