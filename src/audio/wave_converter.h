// The wave converter: changes sample rate, depth and number of channels of wave and AIFF files, and makes PCM
// of compressed ones.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "audio/format_texts.h"
#include "frame/filter_module.h"
#include "frame/parameters.h"
#include "platform/base/outcome.h"
#include "platform/base/work_watch.h"
#include "platform/files/files.h"
#include "platform/media/wave_format.h"

namespace ts5 {

struct WaveConverterParameters : ClonableParameters<WaveConverterParameters> {
  // The audio-CD format, which most users convert to.
  std::uint32_t sampleRate = 44100;  // 8000..192000
  std::uint16_t bits = 16;           // one of kOfferedBits
  std::uint16_t channels = 2;        // 1 or 2

  [[nodiscard]] WaveFormat Target() const { return TargetFormat(sampleRate, bits, channels); }
};
[[nodiscard]] std::vector<ParameterField> WaveConverterFields();

// The source in the target format, as a wave file, into a staged file of the caller's. SourceFailed: no audio
// that can be decoded; FormatRefused, ReadFailed, WriteFailed, OutOfMemory, Cancelled.
[[nodiscard]] Outcome ConvertWave(const std::string& source, StagedFile& target, const WaveFormat& format,
                                  const WorkWatch& watch = {});
// The same with the target put in place when all went well. Also TargetFailed.
[[nodiscard]] Outcome ConvertWaveFile(const std::string& source, const std::string& target,
                                      const WaveFormat& format, const WorkWatch& watch = {});

[[nodiscard]] FilterModule WaveConverterModule();

}  // namespace ts5
