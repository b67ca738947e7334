// The catalogue of the filters: what each is called, what it does and takes, which panels the main
// window shows for it, how its results are called, and how its tile looks. All that differs from filter to
// filter is a column here or a field of its FilterModule; nothing below modules/ asks for a single filter.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "frame/filter_id.h"
#include "frame/run_result.h"
#include "platform/base/strings.h"

namespace ts5 {

enum class DestinationKinds : std::uint32_t {
  File = 1,          // a file or directory only
  FileOrScreen = 2,  // the screen as well: the searches
};

// Panels of the main window while the filter is the current one; a descriptor holds a set of them.
enum PanelFlags : std::uint32_t {
  kPanelFile = 0x01,    // destination file or directory
  kPanelScreen = 0x04,  // destination screen with the protocol line
  kPanelMidiDevices = 0x08,
  kPanelAudioDevices = 0x10,
  kPanelDiscDrives = 0x20,  // writers
  kPanelPrinters = 0x40,
};

// What a filter does, as far as the frame has to know it; a descriptor holds a set of them.
enum FilterTraits : std::uint32_t {
  kSearches = 0x001,        // brings hits, to the screen or into a result file
  kPlays = 0x002,           // sounds; Run pauses it then
  kPlaysSamples = 0x004,    // what sounds are samples: there is a level, but there are no bars
  kMakesFiles = 0x008,      // settles the names of files
  kTakesTracks = 0x010,     // CD tracks are sources
  kTracksOnly = 0x020,      // nothing else is; the whole disc when none is selected
  kTakesDisc = 0x040,       // an audio CD as a whole is the source
  kWritesDisc = 0x080,      // nothing else may come between while it runs
  kTimedList = 0x100,       // the free list holds the titles of a disc, with times and pauses
  kNeedsNoSources = 0x200,  // can always run
  kSearchesScores = 0x400,  // what it looks into has staves and note values instead of tracks and ticks
};

// What Run and Stop are called.
enum class RunWords : std::uint8_t { Run, Play, Burn, Copy };

// Where the filter stands when the bar shows all of them.
enum class FilterGroup : std::uint8_t { Listen, Search, Convert, Disc, Print };
inline constexpr std::array kFilterGroups = {FilterGroup::Listen, FilterGroup::Search, FilterGroup::Convert,
                                             FilterGroup::Disc, FilterGroup::Print};
[[nodiscard]] std::string_view GroupName(FilterGroup group);

// What opens when the filter is chosen.
enum class ParameterWindow : std::uint8_t {
  Dialog,       // a modal dialog
  Playback,     // the job's playback window
  Modeless,     // a window that stays beside the main window
  DecoderPage,  // the settings page of the decoder of the selected file
};

struct FilterDescriptor {
  FilterId id;
  std::string_view identifier;  // "MidiConverter"
  TextId name;
  TextId description;
  ParameterWindow window;
  std::string_view dialogTemplate;  // "" for the players

  // Extensions without dot, lower case. An empty extension is matched only by an entry without one.
  std::span<const std::string_view> single;
  std::span<const std::string_view> several;
  std::span<const std::string_view>
      wholeList;  // not empty: runs over the whole list when nothing is selected

  DestinationKinds destinations;
  std::uint32_t panels;   // PanelFlags
  std::uint32_t colour1;  // 0x00BBGGRR, bottom of the tile
  std::uint32_t colour2;  // top of the tile

  std::uint32_t traits;  // FilterTraits
  RunWords words;
  TextId saveTypes;  // file types of the save dialog, as "label|patterns|"; a TargetRule may have others
  RunTitles titles;  // of its results; a run whose results vary has others
  TextId examples;   // of the console
  FilterGroup group;
  TextId needs;  // what has to be there or marked, after the filter's name: "braucht eine Partitur"

  [[nodiscard]] std::string_view Name() const { return Text(name); }
  [[nodiscard]] std::string_view Description() const { return Text(description); }
  [[nodiscard]] bool Shows(PanelFlags panel) const { return (panels & panel) != 0; }
  [[nodiscard]] bool Has(FilterTraits trait) const { return (traits & trait) != 0; }
};

// In FilterId order.
[[nodiscard]] std::span<const FilterDescriptor, kFilterCount> FilterCatalogue();
// id must be a filter.
[[nodiscard]] const FilterDescriptor& Descriptor(FilterId id);
// By identifier without regard to case, by display name, or by number; None when nothing fits.
[[nodiscard]] FilterId FindFilter(std::string_view text);

// Whether the filter does that; None does nothing.
[[nodiscard]] bool Has(FilterId id, FilterTraits trait);
[[nodiscard]] inline bool IsPlayer(FilterId id) {
  return Has(id, kPlays);
}
[[nodiscard]] inline bool IsSearch(FilterId id) {
  return Has(id, kSearches);
}

// One row of a file dialog's type list.
struct FileFilter {
  std::string label;                  // "Mididatei (*.mid;*.rmi;*.rdl)"
  std::vector<std::string> patterns;  // "*.mid", "*.rmi", "*.rdl"
};
// Takes "label|pattern;pattern|label|...|" apart.
[[nodiscard]] std::vector<FileFilter> ParseFileFilter(std::string_view text);

}  // namespace ts5
