// Names the targets of a run. The destination field, the start of a run, its items and the result file of a
// search all ask here: what is shown is what is written, unless another program is quicker.
//
// An automatic name is made of the source's name. It gets a number ("song001.mid")
//   - when the settings number and there is something of that name,
//   - when it reaches a source of the run, whether done or still to come. Only the settings' own case
//   replaces
//     a source: the format is kept, the suffix is off, replacing is allowed, and no other item has that
//     source;
//   - when it reaches what an earlier item of the run makes.
// Numbers are free when they are named; they are taken by creating the file (TakeTarget), so that two runs
// never write to one name.
//
// Names are native paths, and whole ones: they mean the same in every directory. All but TakeTarget only
// looks, through DestinationFiles, so that the file system can be given by hand; where links lead that have
// no end yet the disk itself says.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "frame/destination.h"
#include "frame/job.h"
#include "frame/source_set.h"
#include "platform/base/outcome.h"

namespace ts5 {

struct FilterModule;

// A name that can be numbered: song + 2 -> song002.mid.
struct TargetName {
  std::string head = {};  // directory, base name
  std::string tail = {};  // ".mid"; "" without an extension

  [[nodiscard]] static TargetName Of(const std::string& path);
  [[nodiscard]] std::string Plain() const { return head + tail; }
  [[nodiscard]] std::string Numbered(std::uint32_t number) const;
};

// The directory of an automatic name; "" on a CD-ROM.
[[nodiscard]] std::string TargetDirectory(const DestinationRules& rules, const std::string& source,
                                          const DestinationFiles& files);
// A conversion's name.
[[nodiscard]] TargetName TargetNameFor(const TargetRule& rule, const DestinationRules& rules,
                                       const std::string& source, const DestinationFiles& files);

// How a target takes its name.
enum class Taking : std::uint8_t {
  Replace,  // what is there is replaced
  Number,   // a name that turns out to be taken is passed over for the next number
  Ask,      // the user decides about what is there
};

struct PlannedTarget {
  std::string name = {};
  TargetName family = {};  // where numbers come from
  Taking taking = Taking::Replace;
  bool evades = false;              // numbered because a source or an earlier target has the plain name
  Outcome code = Outcome::Success;  // TargetFailed: there is no such name
  std::size_t newDirectories = 0;   // above it, which came into being for it
};

// The targets of one run, named in the order of its items. job and files are to outlive it.
class TargetNaming {
 public:
  TargetNaming(const Job& job, DestinationRules rules, const DestinationFiles& files);

  [[nodiscard]] PlannedTarget Automatic(const TargetRule& rule, const std::string& source);
  // A name that the user chose. TargetFailed: it is a source.
  [[nodiscard]] PlannedTarget Chosen(const std::string& name);
  // The result file of a search: the source's name with "txt" for one file, "Suchergebnisse" for a whole
  // list, numbered in any case for several files; a directory tree counts as several.
  [[nodiscard]] PlannedTarget ResultFile();
  // A target that was named before, as by a run that this one goes on with.
  void Reserve(const PlannedTarget& target);
  // The next number for a target whose name turned out to be taken; false when there is none.
  [[nodiscard]] bool Renumber(PlannedTarget& target);

 private:
  enum class Numbering : std::uint8_t { Never, WhenThere, Always };
  PlannedTarget Plan(TargetName family, Numbering numbering, Taking taking, bool evades);
  [[nodiscard]] std::optional<std::string> NextNumber(const TargetName& family);
  [[nodiscard]] bool IsTaken(const std::string& path);
  [[nodiscard]] bool IsMade(const std::string& path);
  void Take(const std::string& path);

  const Job* job_;
  DestinationRules rules_;
  const DestinationFiles* files_;
  SourceSet sources_;
  PathKeys keys_;
  std::unordered_set<std::string> taken_;                       // by earlier items, behind all links
  std::unordered_map<std::string, std::uint32_t> lastNumbers_;  // of each family
};

// Whether a conversion writes to the job's own destination name.
[[nodiscard]] bool IsChosen(const Job& job, const DestinationRules& rules);
// The target of a search whose destination is settled: the chosen name or an automatic one.
[[nodiscard]] PlannedTarget ResultTarget(TargetNaming& naming, const Job& job, const DestinationRules& rules);

// The target of one item, as a run names it when it begins. module: one that makes a file for each source.
[[nodiscard]] PlannedTarget NameItem(TargetNaming& naming, const Job& job, const FilterModule& module,
                                     const DestinationRules& rules, const std::string& source);

// What the targets of a job would be called if it ran now.
struct NamedItem {
  std::string source = {};
  PlannedTarget target = {};
  bool replaces = false;  // there is a file of that name, which would go
};
[[nodiscard]] std::vector<NamedItem> PreviewTargets(const Job& job, const FilterModule& module,
                                                    const DestinationRules& rules,
                                                    const DestinationFiles& files);

// What would happen then.
struct TargetForecast {
  std::size_t made = 0;  // files that are not there yet
  std::size_t replaced = 0;
  std::size_t impossible = 0;  // sources without a target
  bool operator==(const TargetForecast&) const = default;
};
[[nodiscard]] TargetForecast ForecastOf(const std::vector<NamedItem>& items);

// What the destination field shows before a run.
struct TargetOffer {
  DestinationMode mode;
  // The automatic name of the first item, or of the result file; "" when there is nothing to name. Nothing:
  // the user's own text stays.
  std::optional<std::string> name;
};
// module: that of the job's filter, nullptr when this build has none.
[[nodiscard]] TargetOffer OfferTarget(const Job& job, const FilterModule* module,
                                      const DestinationRules& rules, const DestinationFiles& files);

// The destination as a run begins: completes a bare name in the job and settles where its name comes from.
// The message that keeps the run from starting, if any.
[[nodiscard]] std::optional<TextId> SettleDestination(Job& job, const FilterModule& module,
                                                      DestinationRules& rules, const DestinationFiles& files);

// Puts a staged file in its place and gives the name that it got. mayReplace is asked about what stands
// there, if the target says so; replacing is told before it is replaced, and its failure ends all.
// TargetFailed, WriteFailed; Cancelled: it may not.
[[nodiscard]] Result<std::string> TakeTarget(
    StagedFile& file, PlannedTarget target, TargetNaming& naming,
    const std::function<bool(const std::string& name)>& mayReplace,
    const std::function<Outcome(const std::string& name)>& replacing = {});

}  // namespace ts5
