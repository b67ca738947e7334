// What values of a command line mean: pure functions over texts.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "frame/destination.h"
#include "frame/filter_module.h"
#include "frame/run.h"

namespace ts5::batch {

// "NAME=VALUE" at the first '='; nothing without one or without a name.
struct Setting {
  std::string_view name;
  std::string_view value;
};
[[nodiscard]] std::optional<Setting> ParseSetting(std::string_view text);

// "3/8": the third of eight, each 1..1000000.
[[nodiscard]] std::optional<RunShare> ParseShare(std::string_view text);

// "yes", "number", "ask".
[[nodiscard]] std::optional<OverwritePolicy> ParseOverwrite(std::string_view text);

// Sets every "NAME=VALUE" in turn. What is wrong with the first one that cannot be set, in German, with what
// is possible instead; nothing when all could.
[[nodiscard]] std::optional<std::string> ApplySettings(std::span<const ParameterField> fields,
                                                       FilterParameters& parameters,
                                                       std::span<const std::string> settings);

// "0a ff" or "0aff" as bytes; nothing when it is anything else.
[[nodiscard]] std::optional<std::string> ParseHexBytes(std::string_view text);

// Whether the terminal's user said Yes ("j", "ja", "y", "yes", without regard to case).
[[nodiscard]] bool MeansYes(std::string_view reply);

}  // namespace ts5::batch
