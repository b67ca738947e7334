// What the system said when a call that touches files failed. An Outcome says what that means for the work at
// hand; the fault says it for people, see frame/failure_reason. Calls note it beside their outcome, each
// thread for itself; what a thread is about to do begins with ForgetFault.
#pragma once

#include <optional>
#include <string>

#include "platform/base/outcome.h"

namespace ts5 {

struct FileFault {
  int error = 0;          // errno; 0: it is no file of the usual kind (a pipe, a device)
  std::string path = {};  // the file or directory that it is about
  bool written = false;   // in an attempt to write
};

// Notes the fault and gives the outcome back, to be returned.
Outcome NoteReadFault(Outcome outcome, int error, const std::string& path);
Outcome NoteWriteFault(Outcome outcome, int error, const std::string& path);
void ForgetFault();
// The last one that was noted on this thread, if any; it is forgotten then.
[[nodiscard]] std::optional<FileFault> TakeFault();

}  // namespace ts5
