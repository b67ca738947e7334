// The filter bar: which filters are offered for the selected source files, and how their tiles stand.
//
// All functions are pure: the desktop hands in the selection and what it knows of devices, and lays out what
// comes back.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "frame/file_list.h"
#include "frame/filter_id.h"
#include "frame/settings.h"
#include "platform/strings.h"
#include "platform/text.h"

namespace ts5 {

// Bits of a filter's status word, as jobs store them.
enum FilterStatus : std::uint32_t {
  kStatusDeviceMissing = 0x00100000,
  kStatusNotApplicable = 0x00200000,
  kStatusExpanded = 0x01000000,
  kStatusDisabled = 0x08000000,  // one of the two above; the Run command is disabled with it
  kStatusShown = 0x10000000,
  kStatusCollapsed = 0x20000000,
};
using FilterStatusWords = std::array<std::uint32_t, kFilterCount>;
// Every tile expanded: a new job, or one whose words cannot be read.
[[nodiscard]] FilterStatusWords FreshStatusWords();

// The selected source files as the filters look at them: how many there are, how many of them are CD tracks,
// and the different extensions of the rest.
class SourceSelection {
 public:
  void Add(std::string_view name, bool cdTrack = false);

  [[nodiscard]] std::size_t Count() const { return count_; }
  [[nodiscard]] std::size_t CdTracks() const { return cdTracks_; }
  [[nodiscard]] const std::set<std::string, LessIgnoringCase>& Extensions() const { return extensions_; }

 private:
  std::size_t count_ = 0;
  std::size_t cdTracks_ = 0;
  std::set<std::string, LessIgnoringCase> extensions_;
};

struct SourceContext {
  bool listMode = false;
  // Directory mode: the directory lies on an audio CD. List mode: ListSourceIsAudioCd().
  bool sourceIsAudioCd = false;
  SourceSelection selection;
};
// The selection of a free file list, with its focused entry.
[[nodiscard]] SourceContext ListContext(const FreeFileList& list);
[[nodiscard]] SourceContext DirectoryContext(const DirectorySelection& directory, bool sourceIsAudioCd);
// Whether the focused entry is selected and a CD track.
[[nodiscard]] bool ListSourceIsAudioCd(const FreeFileList& list);

// Whether the filter can take a selection that is not empty.
[[nodiscard]] bool Accepts(FilterId filter, const SourceContext& source);
// Whether the filter fits at all, with or without a selection.
[[nodiscard]] bool IsApplicable(FilterId filter, const SourceContext& source);

struct DeviceCounts {
  std::size_t audioOutputs = 0;
  std::size_t midiOutputs = 0;
  std::size_t printers = 0;
  std::size_t writers = 0;  // drives that can write
};
[[nodiscard]] bool IsDevicePresent(FilterId filter, const DeviceCounts& devices);

struct FilterBarInput {
  SourceContext source;
  DeviceCounts devices;
  bool jobIsIdle = true;  // idle or stopped between two steps
  FilterId filter = FilterId::None;
  bool filterFixed = false;
  FilterStatusWords words = FreshStatusWords();
  SkinLayout appearance = SkinLayout::Stavora5;
};

struct FilterTile {
  bool shown = false;
  int position = -1;  // from the top, -1 while hidden
  int top = 0;        // pixels at 96 dpi
  int height = 0;
  bool buttonEnabled = false;
  bool toggleEnabled = false;
};

struct FilterBar {
  std::array<FilterTile, kFilterCount> tiles;
  FilterStatusWords words{};
  FilterId filter = FilterId::None;  // a job without a filter gets the score search and is no longer fixed
  bool filterFixed = false;

  // Whether the Run command is enabled as far as the filter is concerned.
  [[nodiscard]] bool CanRun() const {
    return (words.at(static_cast<std::size_t>(filter)) & kStatusDisabled) == 0;
  }
};

// The words of hidden filters keep their device and selection bits, except for the current filter's.
[[nodiscard]] FilterBar RefreshFilterBar(const FilterBarInput& input);

// The word after its toggle was pressed: collapsed becomes expanded and the other way round.
[[nodiscard]] std::uint32_t ToggledStatus(std::uint32_t word);
[[nodiscard]] constexpr bool IsCollapsed(std::uint32_t word) {
  return (word & kStatusCollapsed) != 0;
}
// Name while collapsed, description otherwise.
[[nodiscard]] std::string_view TileToolTip(FilterId filter, std::uint32_t word);
// The colour (0x00BBGGRR) of one row of a tile's gradient: colour 2 at the top, colour 1 at the bottom.
[[nodiscard]] std::uint32_t TileRowColour(FilterId filter, int row, int rows);

// What has to happen before a job gets another filter.
struct FilterSwitch {
  enum class Kind : std::uint8_t {
    Refused,  // the job runs
    Same,     // nothing to switch
    Ask,      // Yes/No with question, No as default; Yes empties the free file list and switches
    Free,     // switch at once
  };
  Kind kind = Kind::Refused;
  std::optional<TextId> question;
};
[[nodiscard]] FilterSwitch PlanFilterSwitch(FilterId current, FilterId next, bool listIsEmpty,
                                            bool jobIsIdle);

}  // namespace ts5
