// The XML converter as a filter: StvXML to MusicXML and back, and both to and from score files where the
// target's name says so. Each conversion tells what it could not carry over.
#pragma once

#include <cstdint>

#include "converters/xml_signs.h"
#include "frame/filter_module.h"

namespace ts5::converters {

struct XmlConverterParameters : ClonableParameters<XmlConverterParameters> {
  std::int32_t objects = static_cast<std::int32_t>(kMaskAll);  // kMask...; other bits mean nothing
};

[[nodiscard]] FilterModule XmlConverterModule();

}  // namespace ts5::converters
