// A filter as the frame knows it. Each room fills in one FilterModule per filter of its own; the table of all
// of them is in app/filter_modules.cpp.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "frame/destination.h"
#include "frame/filter_id.h"
#include "frame/job.h"
#include "frame/parameters.h"
#include "frame/remarks.h"
#include "platform/strings.h"

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
  // What the job's parameters lack to be run at all: the user is told instead of a start. Empty or nothing:
  // it can run.
  std::function<std::optional<TextId>(const Job&)> missing = {};
};

// How the frame finds the module of a filter; nullptr when this build has none.
using ModuleFinder = std::function<const FilterModule*(FilterId)>;

// The module's parameters with what fits of the values of a job's key; nothing for a filter without a module.
[[nodiscard]] ParametersValue LoadParameters(const FilterModule* module, const RegistryValues& values);
void SaveParameters(const FilterModule& module, const FilterParameters& parameters, RegistryValues& values);

}  // namespace ts5
