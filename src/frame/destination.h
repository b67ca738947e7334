// Where a run writes: automatic names, numbering, and the check of the destination before a run starts. Names
// are native paths. Nothing here writes; the file system is looked at through DestinationFiles, so that it
// can be given by hand.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "frame/job.h"
#include "platform/outcome.h"
#include "platform/strings.h"

namespace ts5 {

struct Settings;

enum class OverwritePolicy : std::uint8_t {
  Replace,  // an existing target is replaced
  Number,   // automatic names are numbered, a chosen name is asked about
  Ask,      // every existing target is asked about
};

// The destination settings of a run.
struct DestinationRules {
  bool sourceDirectory = true;  // write beside the source
  std::string directory = {};   // where to write otherwise; "" writes beside the source as well
  bool useSuffix = true;        // rename targets of the same format
  std::string suffix = "cnv";
  bool noPreset = false;  // single items get no automatic name
  OverwritePolicy overwrite = OverwritePolicy::Replace;
  bool chosenName = false;  // the destination's name was chosen by the user, however many items there are
};
[[nodiscard]] DestinationRules DestinationRulesOf(const Settings& settings);

struct DestinationFiles {
  std::function<bool(const std::string&)> exists;
  std::function<bool(const std::string&)> isDirectory;
  std::function<bool(const std::string&)> onCdRom;  // the path lies on a disc that cannot be written
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
  std::string extension;    // of the target's format, without dot
  bool formatKept = false;  // the target has the format of the source: the suffix rule applies
};

// An automatic name before its number is settled.
struct TargetName {
  std::string head = {};  // directory, base name
  std::string tail = {};  // ".mid"; "" when the name cannot be numbered
  bool numbered = false;  // has a number in any case

  [[nodiscard]] std::string Plain() const { return head + tail; }
  [[nodiscard]] std::string Numbered(std::uint32_t number) const;  // song + 2 -> song002.mid
};

// The directory of an automatic name; "" on a CD-ROM.
[[nodiscard]] std::string TargetDirectory(const DestinationRules& rules, const std::string& source,
                                          const DestinationFiles& files);
// A conversion's name.
[[nodiscard]] TargetName TargetNameFor(const TargetRule& rule, const DestinationRules& rules,
                                       const std::string& source, const DestinationFiles& files);
// A search's name: the source's own with "txt" for one selected file, "Suchergebnisse..." otherwise. source:
// the first file to be searched; wholeList: nothing is selected.
[[nodiscard]] TargetName ResultFileNameFor(const DestinationRules& rules, const std::string& source,
                                           std::size_t items, bool wholeList, const DestinationFiles& files);
// The name with its number. Names are numbered when replacing is not allowed and the plain one exists, or in
// any case when the name says so. Nothing when no number is free.
[[nodiscard]] std::optional<std::string> SettledName(const TargetName& name, bool number,
                                                     const DestinationFiles& files);

// The destination field before a run: the name to use (a bare one completed with its directory), or the
// message that keeps the run from starting. source: the first item.
struct DestinationCheck {
  std::string name;
  std::optional<TextId> message = {};
};
[[nodiscard]] DestinationCheck CheckDestination(const std::string& field, const DestinationRules& rules,
                                                const std::string& source, const DestinationFiles& files);

}  // namespace ts5
