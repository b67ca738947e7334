// What the assistant and the editor have in common: the controls of a parameter set, the file of an encoder.
#pragma once

#include <QString>
#include <string>

#include "audio/interfaces/encoder_interface.h"
#include "frame/ui/dialog_host.h"

class QLineEdit;
class QWidget;

namespace Ui {
class CREATEMP3INTERFACE_5;
}

namespace ts5::interfaces {

// What a set is before anybody has entered anything.
[[nodiscard]] ParameterSet NewSet();
// Fills the list of bit rates and shows the set.
void ShowSet(Ui::CREATEMP3INTERFACE_5& controls, const ParameterSet& set);
// Takes all but the parameters from the controls.
void TakeSet(const Ui::CREATEMP3INTERFACE_5& controls, ParameterSet& set);

// The text of a field without blanks at its ends.
[[nodiscard]] std::string Trimmed(const QLineEdit& field);
// Asks for the program of an encoder; what is chosen goes into the field.
void AskEncoder(QLineEdit& field, const QString& helpTopic, DialogHost& host, QWidget* parent);

}  // namespace ts5::interfaces
