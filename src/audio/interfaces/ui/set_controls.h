// The controls of a parameter set, for the assistant and the editor.
#pragma once

#include "audio/interfaces/encoder_interface.h"

namespace Ui {
class CREATEMP3INTERFACE_5;
}

namespace ts5 {

// Fills the list of bit rates and shows the set.
void ShowSet(Ui::CREATEMP3INTERFACE_5& controls, const ParameterSet& set);
// Takes all but the parameters from the controls.
void TakeSet(const Ui::CREATEMP3INTERFACE_5& controls, ParameterSet& set);

}  // namespace ts5
