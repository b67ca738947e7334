// One line of a properties page.
#pragma once

#include <string>

namespace ts5 {

struct PropertyRow {
  std::string label;
  std::string value;

  friend bool operator==(const PropertyRow&, const PropertyRow&) = default;
};

}  // namespace ts5
