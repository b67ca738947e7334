// The rules of the converter's dialog: which of its controls are live, and what they are called.
#pragma once

#include <optional>

#include "midi/converter_fields.h"
#include "midi/midi_file.h"
#include "midi/texts.h"
#include "platform/base/strings.h"

namespace ts5 {

struct ConverterForm {
  bool containerEnabled = false;   // the two choices of container
  bool attributesEnabled = false;  // "Attribute..."
  bool attributesShown = true;
  bool timeBaseEnabled = false;
  TextId riffLabel = texts::ConverterRiff;
  TextId sequencerLabel = texts::ConverterSequencer;
};

// source: the container of the file that the dialog looks at, nothing when there is none. Its own container's
// choice leads back to a plain file and is called so.
[[nodiscard]] ConverterForm ConverterFormOf(const ConverterParameters& parameters,
                                            std::optional<MidiContainer> source);

// Whether there is anything to do; OK is refused without.
[[nodiscard]] constexpr bool HasStep(const ConverterParameters& parameters) {
  return parameters.changeContainer || parameters.changeFormat || parameters.changeTimeBase;
}

}  // namespace ts5
