#include "platform/base/outcome.h"

#include <ostream>

namespace ts5 {

std::string ToString(Outcome outcome) {
  return "Outcome(" + std::to_string(Code(outcome)) + ")";
}

void PrintTo(Outcome outcome, std::ostream* out) {
  *out << ToString(outcome);
}

}  // namespace ts5
