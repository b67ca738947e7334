// Where a run writes: the rules that the settings, a command or the user give, and what is looked at on the
// disk for them. How a target is named: frame/target_naming.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "frame/job.h"
#include "platform/base/strings.h"
#include "platform/files/files.h"

namespace ts5 {

struct Settings;

enum class OverwritePolicy : std::uint8_t {
  Replace,  // an existing target is replaced
  Number,   // automatic names, and those of a command, are numbered; a typed name is asked about
  Ask,      // every existing target is asked about
};

// Where the destination's name of a job comes from.
enum class NameOrigin : std::uint8_t {
  Field,      // the destination field: the name that it offered is automatic, every other one is the user's
  Command,    // the user's choice, however many items there are
  Automatic,  // names are made by rule, whatever the job says
};

// The destination settings of a run.
struct DestinationRules {
  bool sourceDirectory = true;  // write beside the source
  std::string directory = {};   // where to write otherwise; "" writes beside the source as well
  // The directory whose subdirectories are found again in `directory`; "" for none.
  std::string structure = {};
  bool useSuffix = true;  // rename targets of the same format
  std::string suffix = "cnv";
  bool noPreset = false;  // single items get no automatic name
  OverwritePolicy overwrite = OverwritePolicy::Replace;
  NameOrigin origin = NameOrigin::Field;
  std::string offered = {};  // what the field offered when it was last filled in
};
[[nodiscard]] DestinationRules DestinationRulesOf(const Settings& settings);
// The same for a job, which may have a directory of its own.
[[nodiscard]] DestinationRules DestinationRulesOf(const Settings& settings, const Job& job);

struct DestinationFiles {
  std::function<bool(const std::string&)> exists;
  std::function<bool(const std::string&)> isDirectory;
  std::function<bool(const std::string&)> onCdRom;  // the path lies on a disc that cannot be written
  std::function<std::optional<FileIdentity>(const std::string&)> identity;  // behind links
};
// The real ones, with the volumes as they are mounted now.
[[nodiscard]] DestinationFiles SystemDestinationFiles();

// Neither flag: the filter makes no file whose name the run settles.
struct DestinationMode {
  bool automatic = false;  // names are made by rule
  bool editable = false;   // the user may edit the destination field
  bool operator==(const DestinationMode&) const = default;
};
// Several items allow automatic names only; one item allows an edited one as well.
[[nodiscard]] DestinationMode DestinationModeOf(const Job& job, bool noPreset);

// What a filter says about the target of one source.
struct TargetRule {
  std::string extension;                 // of the target's format, without dot
  bool formatKept = false;               // the target has the format of the source: the suffix rule applies
  std::optional<TextId> fileTypes = {};  // of the save dialog, when they are not those of the catalogue
  std::string name = {};                 // file name to start from; "": that of the source
};

}  // namespace ts5
