#include "frame/filter_bar.h"

#include <algorithm>

#include "frame/filter_catalogue.h"
#include "frame/texts.h"
#include "platform/paths.h"

namespace ts5 {
namespace {

using enum FilterId;

constexpr int kCollapsedHeight = 19;
constexpr int kExpandedHeight = 63;
constexpr int kExpandedHeightWindows = 66;

bool TakesCdTracks(FilterId filter) {
  return filter == AudioPlayer || filter == CdGrabber;
}

bool Contains(std::span<const std::string_view> extensions, std::string_view extension) {
  return std::ranges::any_of(extensions,
                             [&](std::string_view own) { return EqualsIgnoringCase(own, extension); });
}

// With two or more files an entry without an extension is also matched by the empty extension, a CD track
// too.
bool AcceptsTracks(FilterId filter, std::span<const std::string_view> extensions,
                   const SourceContext& source) {
  if (TakesCdTracks(filter) && (source.sourceIsAudioCd || source.listMode)) return true;
  return source.selection.Count() > 1 && Contains(extensions, "");
}

bool IsApplicableToAll(FilterId filter, const SourceContext& source) {
  const bool runsOverList = !TakesCdTracks(filter) && !Descriptor(filter).wholeList.empty();
  if (source.listMode) return runsOverList;
  if (source.sourceIsAudioCd) return TakesCdTracks(filter) || filter == CdCopier;
  return runsOverList && filter != CdBurner;
}

void SetBit(std::uint32_t& word, std::uint32_t bit, bool on) {
  word = on ? word | bit : word & ~bit;
}

int TileHeight(std::uint32_t word, SkinLayout appearance) {
  if (IsCollapsed(word)) return kCollapsedHeight;
  return appearance == SkinLayout::Windows ? kExpandedHeightWindows : kExpandedHeight;
}

}  // namespace

FilterStatusWords FreshStatusWords() {
  FilterStatusWords words;
  words.fill(kStatusExpanded);
  return words;
}

void SourceSelection::Add(std::string_view name, bool cdTrack) {
  ++count_;
  if (cdTrack) {
    ++cdTracks_;
    return;
  }
  const std::string_view extension = ExtensionOf(name);
  if (!extensions_.contains(extension)) extensions_.emplace(extension);
}

SourceContext ListContext(const FreeFileList& list) {
  SourceContext source{.listMode = true, .sourceIsAudioCd = ListSourceIsAudioCd(list), .selection = {}};
  for (const std::size_t index : list.Selection())
    source.selection.Add(list[index].path, list[index].cdTrack);
  return source;
}

SourceContext DirectoryContext(const DirectorySelection& directory, bool sourceIsAudioCd) {
  SourceContext source{.listMode = false, .sourceIsAudioCd = sourceIsAudioCd, .selection = {}};
  for (const std::string& name : directory.names) source.selection.Add(name, sourceIsAudioCd);
  return source;
}

bool ListSourceIsAudioCd(const FreeFileList& list) {
  const std::size_t focus = list.Focus();
  return std::ranges::binary_search(list.Selection(), focus) && list[focus].cdTrack;
}

bool Accepts(FilterId filter, const SourceContext& source) {
  const FilterDescriptor& descriptor = Descriptor(filter);
  const SourceSelection& selection = source.selection;
  const auto extensions = selection.Count() > 1 ? descriptor.several : descriptor.single;
  if (selection.Count() == 0 || extensions.empty()) return false;
  if (selection.CdTracks() > 0 && !AcceptsTracks(filter, extensions, source)) return false;
  return std::ranges::all_of(selection.Extensions(),
                             [&](const std::string& own) { return Contains(extensions, own); });
}

bool IsApplicable(FilterId filter, const SourceContext& source) {
  if (filter == Artworker) return true;
  if (source.selection.Count() == 0) return IsApplicableToAll(filter, source);
  if (!source.listMode && source.selection.Count() > 1 && filter == CdGrabber) return source.sourceIsAudioCd;
  return Accepts(filter, source);
}

bool IsDevicePresent(FilterId filter, const DeviceCounts& devices) {
  switch (filter) {
    case AudioPlayer:
      return devices.audioOutputs > 0;
    case MidiPlayer:
    case ScorePlayer:
      return devices.midiOutputs > 0;
    case Artworker:
      return devices.printers > 0;
    case CdBurner:
    case CdCopier:
      return devices.writers > 0;
    default:
      return true;
  }
}

FilterBar RefreshFilterBar(const FilterBarInput& input) {
  FilterBar bar{.tiles = {}, .words = input.words, .filter = input.filter, .filterFixed = input.filterFixed};
  if (!IsFilter(bar.filter)) {
    bar.filter = ScoreSearch;
    bar.filterFixed = false;
  }

  int position = 0;
  int top = 0;
  for (const FilterDescriptor& descriptor : FilterCatalogue()) {
    const auto index = static_cast<std::size_t>(descriptor.id);
    const bool current = descriptor.id == bar.filter;
    const bool applicable = IsApplicable(descriptor.id, input.source);
    const bool usable = applicable && IsDevicePresent(descriptor.id, input.devices);
    std::uint32_t& word = bar.words[index];
    FilterTile& tile = bar.tiles[index];

    tile.shown = bar.filterFixed ? current : applicable;
    SetBit(word, kStatusShown, tile.shown);
    if (tile.shown || current) {
      SetBit(word, kStatusDeviceMissing, !IsDevicePresent(descriptor.id, input.devices));
      SetBit(word, kStatusNotApplicable, !applicable);
      SetBit(word, kStatusDisabled, !usable);
    }
    if (!tile.shown) continue;

    tile.position = position++;
    tile.top = top;
    tile.height = TileHeight(word, input.appearance);
    top += tile.height;
    tile.buttonEnabled = usable && (input.jobIsIdle || (current && IsPlayer(descriptor.id)));
    tile.toggleEnabled = usable;
  }
  return bar;
}

std::uint32_t ToggledStatus(std::uint32_t word) {
  const bool expand = IsCollapsed(word);
  SetBit(word, kStatusCollapsed, !expand);
  SetBit(word, kStatusExpanded, expand);
  return word;
}

std::string_view TileToolTip(FilterId filter, std::uint32_t word) {
  return IsCollapsed(word) ? Descriptor(filter).Name() : Descriptor(filter).Description();
}

std::uint32_t TileRowColour(FilterId filter, int row, int rows) {
  const FilterDescriptor& descriptor = Descriptor(filter);
  const int last = std::max(1, rows - 1);
  const int place = std::clamp(row, 0, last);
  std::uint32_t colour = 0;
  for (unsigned shift = 0; shift < 24; shift += 8) {
    const int first = static_cast<int>(descriptor.colour2 >> shift & 0xFF);
    const int end = static_cast<int>(descriptor.colour1 >> shift & 0xFF);
    colour |= static_cast<std::uint32_t>(std::clamp(first + (end - first) * place / last, 0, 255)) << shift;
  }
  return colour;
}

FilterSwitch PlanFilterSwitch(FilterId current, FilterId next, bool listIsEmpty, bool jobIsIdle) {
  using enum FilterSwitch::Kind;
  if (!jobIsIdle) return {Refused, {}};
  if (current == next) return {Same, {}};
  if (listIsEmpty || (current != CdBurner && next != CdBurner)) return {Free, {}};
  return {Ask, next == CdBurner ? texts::AskSwitchToBurner : texts::AskSwitchFromBurner};
}

}  // namespace ts5
