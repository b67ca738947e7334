// The audio compressor: wave and AIFF files become compressed ones by a codec, an MP3 engine, Ogg Vorbis or
// Monkey's Audio.
#pragma once

#include <string>
#include <vector>

#include "audio/encode/encode_settings.h"
#include "audio/tags/attribute.h"
#include "frame/filter_module.h"
#include "frame/parameters.h"

namespace ts5::encode {

struct AudioCompressorParameters : ClonableParameters<AudioCompressorParameters> {
  EncodeSettings encode;
  tags::Attributes attributes;
  bool replayGain = false;  // measured before the run and written into every target
  std::string namePattern;  // "": targets are named after their sources
};
[[nodiscard]] std::vector<ParameterField> AudioCompressorFields();

// Of the files that these settings make, without the dot.
[[nodiscard]] std::string ExtensionFor(const EncodeSettings& settings);

[[nodiscard]] FilterModule AudioCompressorModule();

}  // namespace ts5::encode
