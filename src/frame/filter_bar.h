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
#include "platform/base/text.h"

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
// The same as if all entries were selected.
[[nodiscard]] SourceContext WholeListContext(const FreeFileList& list);
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

// Why a filter cannot be chosen, in the words of its tile, and what to do about it.
struct FilterRefusal {
  std::string reason = {};
  std::string remedy = {};
  bool operator==(const FilterRefusal&) const = default;
};
[[nodiscard]] std::optional<FilterRefusal> RefusalOf(FilterId filter, const SourceContext& source,
                                                     const DeviceCounts& devices);

struct FilterBarInput {
  SourceContext source;
  // All of a free file list in which nothing is selected: what its filters could be given instead.
  SourceContext whole = {};
  DeviceCounts devices;
  bool jobIsIdle = true;  // idle or stopped between two steps
  FilterId filter = FilterId::None;
  bool filterFixed = false;
  bool showAll = false;  // also what does not fit
  FilterStatusWords words = FreshStatusWords();
};

struct FilterTile {
  bool shown = false;
  int position = -1;  // from the top, -1 while hidden
  bool buttonEnabled = false;
  bool toggleEnabled = false;
  bool marksAll =
      false;  // it does not fit, but would with all files of the list selected, and may be chosen so
  std::optional<FilterRefusal> refusal = {};  // of one that cannot be chosen and is shown, or current
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

}  // namespace ts5
