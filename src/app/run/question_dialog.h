// The question of a run as a dialog. It goes when the question is withdrawn.
#pragma once

#include <memory>

#include "app/shell/desk.h"
#include "frame/question.h"

class QDialog;

namespace ts5 {

// Not shown yet. nullptr when the question has been withdrawn.
[[nodiscard]] QDialog* MakeQuestionDialog(const std::shared_ptr<Question>& question, Desk& desk);

}  // namespace ts5
