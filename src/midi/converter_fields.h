// The parameters of the MIDI converter and their field table.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "frame/parameters.h"
#include "midi/riff_info.h"

namespace ts5 {

// Ticks per quarter note that can be chosen; the parameters hold the index.
inline constexpr std::array<std::uint16_t, 15> kTimeBases = {48,  72,  96,  120, 144, 168, 192, 240,
                                                             288, 336, 384, 480, 576, 672, 768};

struct ConverterParameters : ClonableParameters<ConverterParameters> {
  bool changeContainer = false;
  bool toRiff =
      true;  // else to the sequencer's format; a file that is of the chosen one becomes a plain file
  bool changeFormat = true;
  bool changeTimeBase = false;
  // 480: what the sequencer and the score engine count, and a multiple of most of the others, so that events
  // of a file that is brought to it keep their places exactly.
  std::int32_t timeBaseIndex = 11;
  std::string copyright;  // texts of a RIFF file; at most kMaxAttribute characters but the description
  std::string artist;
  std::string title;
  std::string description;

  static constexpr std::size_t kMaxAttribute = 255;

  [[nodiscard]] RiffAttributes Attributes() const { return {title, artist, copyright, description}; }
  [[nodiscard]] std::uint16_t TimeBase() const {
    return kTimeBases.at(static_cast<std::size_t>(timeBaseIndex));
  }
};

[[nodiscard]] std::vector<ParameterField> ConverterFields();

}  // namespace ts5
