// A filter as the frame knows it. Each room fills in one FilterModule per filter of its own; the table of all
// of them is in modules/filter_modules.cpp.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "frame/destination.h"
#include "frame/filter_id.h"
#include "frame/job.h"
#include "frame/parameters.h"
#include "frame/remarks.h"
#include "platform/base/strings.h"

namespace ts5 {

class Run;

// What Stop does, beside setting the cancel request that the worker polls.
struct StopRule {
  std::optional<TextId> status;  // shown until the run has ended, e.g. "Breche ab, bitte warten..."
  // The request to set; kUserStop when empty.
  std::function<std::int32_t(RunState)> request = {};
};

struct FilterModule {
  FilterId id = FilterId::None;
  std::function<std::unique_ptr<FilterParameters>()> create;
  std::vector<ParameterField> fields;
  // The work, on a thread of its own. It fills run.Result(), throws nothing, polls run.Cancelled() and talks
  // to the outside only through the run.
  std::function<void(Run&)> run;
  // What is said of each outcome: in the results, and of single items.
  std::span<const Remark> remarks = ConversionRemarks();
  // Extension rule of a filter that makes one file per source; empty for the others.
  std::function<TargetRule(const FilterParameters&, const std::string& source)> target = {};
  StopRule stop = {};
  // The MIDI output device (index, -1 the mapper) that a run of the job would hold; empty or nothing: none.
  std::function<std::optional<std::int32_t>(const Job&)> midiDevice = {};
  // False: its run must not begin while another one holds that device.
  bool sharesMidiDevice = true;
  // What the job's parameters lack to be run at all: the user is told instead of a start. Empty or nothing:
  // it can run.
  std::function<std::optional<TextId>(const Job&)> missing = {};
};

// What a room says of a filter whose parameters are of the type P. The functions get them as what they are.
template <typename P>
struct ModuleOf {
  FilterId id = FilterId::None;
  P defaults = {};
  std::vector<ParameterField> fields = {};
  std::function<void(Run&, const P&)> run = {};
  std::span<const Remark> remarks = ConversionRemarks();
  std::function<TargetRule(const P&, const std::string& source)> target = {};
  StopRule stop = {};
  std::function<std::optional<std::int32_t>(const P&, const Job&)> midiDevice = {};
  bool sharesMidiDevice = true;
  std::function<std::optional<TextId>(const P&)> missing = {};
};

// The parameters of the run's job.
[[nodiscard]] const FilterParameters& ParametersOf(const Run& run);

// The module of it:
//
//   FilterModule MidiConverterModule() {
//     return MakeModule<ConverterParameters>({.id = FilterId::MidiConverter,
//                                             .fields = ConverterFields(),
//                                             .run = RunMidiConverter,
//                                             .target = ConverterTarget,
//                                             .stop = {.status = texts::Stopping}});
//   }
template <typename P>
[[nodiscard]] FilterModule MakeModule(ModuleOf<P> of) {
  FilterModule module;
  module.id = of.id;
  module.create = [defaults = std::move(of.defaults)] { return std::make_unique<P>(defaults); };
  module.fields = std::move(of.fields);
  module.remarks = of.remarks;
  module.stop = std::move(of.stop);
  module.sharesMidiDevice = of.sharesMidiDevice;
  if (of.run) module.run = [run = std::move(of.run)](Run& r) { run(r, As<P>(ParametersOf(r))); };
  if (of.target) {
    module.target = [target = std::move(of.target)](const FilterParameters& p, const std::string& source) {
      return target(As<P>(p), source);
    };
  }
  if (of.midiDevice) {
    module.midiDevice = [device = std::move(of.midiDevice)](const Job& job) {
      return device(As<P>(*job.parameters), job);
    };
  }
  if (of.missing) {
    module.missing = [missing = std::move(of.missing)](const Job& job) {
      return missing(As<P>(*job.parameters));
    };
  }
  return module;
}

// The file types of the save dialog for the job's destination, as "label|patterns|".
[[nodiscard]] std::string_view SaveTypesOf(const Job& job, const FilterModule* module);

// How the frame finds the module of a filter; nullptr when this build has none.
using ModuleFinder = std::function<const FilterModule*(FilterId)>;

// The module's parameters with what fits of the values of a job's key; nothing for a filter without a module.
[[nodiscard]] ParametersValue LoadParameters(const FilterModule* module, const RegistryValues& values);
void SaveParameters(const FilterModule& module, const FilterParameters& parameters, RegistryValues& values);

}  // namespace ts5
