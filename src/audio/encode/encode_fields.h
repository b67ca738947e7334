// The settings of encoding as fields of a filter's parameters: how they are stored and set by name.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "audio/encode/encode_settings.h"
#include "frame/parameters.h"

namespace ts5::encode {

// Where the settings of a filter's parameters are.
struct SettingsAccess {
  std::function<EncodeSettings&(FilterParameters&)> toChange;
  std::function<const EncodeSettings&(const FilterParameters&)> toRead;
};
template <typename P>
[[nodiscard]] SettingsAccess AccessTo(EncodeSettings P::*member) {
  return {[member](FilterParameters& p) -> EncodeSettings& { return As<P>(p).*member; },
          [member](const FilterParameters& p) -> const EncodeSettings& { return As<P>(p).*member; }};
}

// The rows of a field table for these settings. prefix: "" or "Grab", before every name.
[[nodiscard]] std::vector<ParameterField> EncodeFields(const std::string& prefix,
                                                       const SettingsAccess& access);

}  // namespace ts5::encode
