// How the jobs ask and tell on the thread that owns them: message boxes on the desktop, answers from a script
// in tests.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "frame/run_host.h"

namespace ts5 {

class JobDialogs {
 public:
  virtual ~JobDialogs() = default;
  // A Yes/No question; true for Yes.
  [[nodiscard]] virtual bool Confirm(std::string_view question, MessageIcon icon, Answer preset) = 0;
  virtual void Tell(std::string_view text, MessageIcon icon) = 0;
};

}  // namespace ts5
