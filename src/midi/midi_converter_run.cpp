// The MIDI converter as a filter of the frame.
#include <optional>
#include <utility>

#include "frame/item_run.h"
#include "frame/run.h"
#include "frame/texts.h"
#include "midi/midi_converter.h"
#include "midi/midi_item.h"
#include "midi/texts.h"

namespace ts5 {

namespace {

Outcome ConvertItem(const ConverterParameters& parameters, ItemWork& work) {
  const WorkWatch watch{[&work] { return work.Cancelled(); }, work.progress};
  const auto& item = work.Prepared<MidiItem>();
  const auto converted = ConvertMidi(item.file, item.kind, parameters, TodayUtc(), watch);
  if (!converted) return converted.error();
  if (const Outcome written = work.target.Write(converted->bytes); Failed(written)) return written;
  work.unchanged = converted->bytes.empty();
  work.extended = converted->fromSequencer && (converted->flags & kTimeBaseChanged) != 0;
  return static_cast<Outcome>(converted->flags);
}

// All items, on all cores.
void RunMidiConverter(Run& run, const ConverterParameters& parameters) {
  ItemFilter filter;
  filter.independent = true;
  filter.prepare = [](const std::string& source) { return OpenMidiItem(source); };
  filter.convert = [&parameters](ItemWork& work) { return ConvertItem(parameters, work); };
  RunItems(run, filter);
}

}  // namespace

FilterModule MidiConverterModule() {
  using P = ConverterParameters;
  ModuleOf<P> module;
  module.id = FilterId::MidiConverter;
  module.fields = ConverterFields();
  module.run = RunMidiConverter;
  module.target = ConverterTarget;
  module.stop.status = texts::Stopping;
  module.missing = [](const P& parameters) -> std::optional<TextId> {
    if (parameters.changeContainer || parameters.changeFormat || parameters.changeTimeBase)
      return std::nullopt;
    return texts::ConverterNothingChosen;
  };
  return MakeModule(std::move(module));
}

}  // namespace ts5
