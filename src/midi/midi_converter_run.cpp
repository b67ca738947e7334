// The MIDI converter as a filter of the frame.
#include <memory>

#include "frame/item_run.h"
#include "frame/run.h"
#include "frame/texts.h"
#include "midi/midi_converter.h"

namespace ts5 {

namespace {

Outcome ConvertItem(ItemWork& work) {
  const WorkWatch watch{[&work] { return work.Cancelled(); }, work.progress};
  const auto& parameters = static_cast<const ConverterParameters&>(work.parameters);
  const auto converted = ConvertMidiSource(parameters, work.source, watch);
  if (!converted) return converted.error();
  if (const Outcome written = work.target.Write(converted->bytes); Failed(written)) return written;
  work.extended = converted->fromSequencer && (converted->flags & kTimeBaseChanged) != 0;
  return static_cast<Outcome>(converted->flags);
}

}  // namespace

void RunMidiConverter(Run& run) {
  ItemFilter filter;
  filter.independent = true;
  filter.check = [](const FilterParameters&, const std::string& source) {
    const auto info = ReadMidiFileHeader(source);
    return info ? Outcome::Success : info.error();
  };
  filter.convert = ConvertItem;
  RunItems(run, filter);
}

FilterModule MidiConverterModule() {
  FilterModule module;
  module.id = FilterId::MidiConverter;
  module.create = [] { return std::make_unique<ConverterParameters>(); };
  module.fields = ConverterFields();
  module.run = RunMidiConverter;
  module.target = [](const FilterParameters& parameters, const std::string& source) {
    return ConverterTarget(static_cast<const ConverterParameters&>(parameters), source);
  };
  module.stop.status = texts::Stopping;
  return module;
}

}  // namespace ts5
