// Binds the controls of a template to the stored values of a filter by their names: a check box or a field
// "BurnSpeed" holds that value, and of radio buttons "BurnMode_0", "BurnMode_1"... the number of the one that
// is chosen. Characters that no name of a control may have are "_".
#pragma once

#include <span>

#include "frame/parameters.h"

class QWidget;

namespace ts5::disc {

void ShowFields(QWidget& dialog, std::span<const ParameterField> fields, const FilterParameters& parameters);
// Values that do not fit stay as they are.
void TakeFields(const QWidget& dialog, std::span<const ParameterField> fields, FilterParameters& parameters);

}  // namespace ts5::disc
