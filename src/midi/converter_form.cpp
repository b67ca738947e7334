#include "midi/converter_form.h"

#include "midi/texts.h"

namespace ts5 {

ConverterForm ConverterFormOf(const ConverterParameters& parameters, std::optional<MidiContainer> source) {
  ConverterForm form;
  const bool sourceIsRiff = source == MidiContainer::Riff;
  form.containerEnabled = parameters.changeContainer;
  form.attributesShown = !sourceIsRiff;
  form.attributesEnabled = parameters.changeContainer && parameters.toRiff && !sourceIsRiff;
  form.timeBaseEnabled = parameters.changeTimeBase;
  if (sourceIsRiff) form.riffLabel = texts::ConverterPlain;
  if (source == MidiContainer::Sequencer) form.sequencerLabel = texts::ConverterPlain;
  return form;
}

}  // namespace ts5
