// JSON as this program prints it.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace ts5::batch {

// Keys stay in the order in which they are set.
using Json = nlohmann::ordered_json;

// Two blanks of indentation, a line end behind; what is not UTF-8 becomes U+FFFD.
[[nodiscard]] inline std::string JsonText(const Json& json) {
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace ts5::batch
