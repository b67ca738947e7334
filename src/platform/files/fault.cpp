#include "platform/files/fault.h"

#include <utility>

namespace ts5 {
namespace {

std::optional<FileFault>& Noted() {
  thread_local std::optional<FileFault> noted;
  return noted;
}

}  // namespace

Outcome NoteReadFault(Outcome outcome, int error, const std::string& path) {
  Noted() = {error, path, false};
  return outcome;
}

Outcome NoteWriteFault(Outcome outcome, int error, const std::string& path) {
  Noted() = {error, path, true};
  return outcome;
}

void ForgetFault() {
  Noted().reset();
}

std::optional<FileFault> TakeFault() {
  return std::exchange(Noted(), std::nullopt);
}

}  // namespace ts5
