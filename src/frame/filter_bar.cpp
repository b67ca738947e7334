#include "frame/filter_bar.h"

#include <algorithm>
#include <array>

#include "frame/filter_catalogue.h"
#include "frame/texts.h"
#include "platform/base/text.h"
#include "platform/files/paths.h"

namespace ts5 {
namespace {

bool Contains(std::span<const std::string_view> extensions, std::string_view extension) {
  return std::ranges::any_of(extensions,
                             [&](std::string_view own) { return EqualsIgnoringCase(own, extension); });
}

// With two or more files an entry without an extension is also matched by the empty extension, a CD track
// too.
bool AcceptsTracks(FilterId filter, std::span<const std::string_view> extensions,
                   const SourceContext& source) {
  if (Has(filter, kTakesTracks) && (source.sourceIsAudioCd || source.listMode)) return true;
  return source.selection.Count() > 1 && Contains(extensions, "");
}

bool IsApplicableToAll(FilterId filter, const SourceContext& source) {
  const bool runsOverList = !Has(filter, kTakesTracks) && !Descriptor(filter).wholeList.empty();
  if (source.listMode) return runsOverList;
  if (source.sourceIsAudioCd) return Has(filter, kTakesTracks) || Has(filter, kTakesDisc);
  return runsOverList && !Has(filter, kTimedList);
}

void SetBit(std::uint32_t& word, std::uint32_t bit, bool on) {
  word = on ? word | bit : word & ~bit;
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

SourceContext WholeListContext(const FreeFileList& list) {
  SourceContext source{.listMode = true, .sourceIsAudioCd = false, .selection = {}};
  for (std::size_t i = 0; i < list.Size(); ++i) source.selection.Add(list[i].path, list[i].cdTrack);
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
  if (Has(filter, kNeedsNoSources)) return true;
  if (source.selection.Count() == 0) return IsApplicableToAll(filter, source);
  if (!source.listMode && source.selection.Count() > 1 && Has(filter, kTracksOnly))
    return source.sourceIsAudioCd;
  return Accepts(filter, source);
}

bool IsDevicePresent(FilterId filter, const DeviceCounts& devices) {
  const FilterDescriptor& descriptor = Descriptor(filter);
  const auto there = [&](PanelFlags panel, std::size_t count) {
    return !descriptor.Shows(panel) || count > 0;
  };
  return there(kPanelAudioDevices, devices.audioOutputs) && there(kPanelMidiDevices, devices.midiOutputs) &&
         there(kPanelPrinters, devices.printers) && there(kPanelDiscDrives, devices.writers);
}

namespace {

struct MissingDevice {
  PanelFlags panel;
  std::size_t DeviceCounts::*count;
  TextId reason;
  TextId remedy;
};
constexpr std::array kDevices = {
    MissingDevice{kPanelAudioDevices, &DeviceCounts::audioOutputs, texts::RefusedAudioDevice,
                  texts::RemedyAudioDevice},
    MissingDevice{kPanelMidiDevices, &DeviceCounts::midiOutputs, texts::RefusedMidiDevice,
                  texts::RemedyMidiDevice},
    MissingDevice{kPanelDiscDrives, &DeviceCounts::writers, texts::RefusedWriter, texts::RemedyWriter},
    MissingDevice{kPanelPrinters, &DeviceCounts::printers, texts::RefusedPrinter, texts::RemedyPrinter},
};

FilterRefusal Refusal(TextId reason, TextId remedy) {
  return {std::string(Text(reason)), std::string(Text(remedy))};
}

// ".mid, .rmi, .rdl"
std::string Kinds(const FilterDescriptor& filter) {
  std::string kinds;
  for (const std::string_view extension : filter.single) {
    if (extension.empty()) continue;  // a CD track
    kinds += (kinds.empty() ? "." : ", .") + std::string(extension);
  }
  return kinds;
}

}  // namespace

std::optional<FilterRefusal> RefusalOf(FilterId filter, const SourceContext& source,
                                       const DeviceCounts& devices) {
  const FilterDescriptor& descriptor = Descriptor(filter);
  for (const MissingDevice& device : kDevices) {
    if (descriptor.Shows(device.panel) && devices.*device.count == 0)
      return Refusal(device.reason, device.remedy);
  }
  if (IsApplicable(filter, source)) return std::nullopt;
  if (descriptor.Has(kTakesDisc) || descriptor.Has(kTracksOnly))
    return Refusal(descriptor.needs, texts::RemedyAudioCd);
  if (descriptor.Has(kTimedList)) return Refusal(descriptor.needs, texts::RemedyTitles);
  const bool some = std::ranges::any_of(source.selection.Extensions(), [&](const std::string& own) {
    return Contains(descriptor.single, own);
  });
  return FilterRefusal{std::string(Text(some ? texts::RefusedSome : descriptor.needs)),
                       Format(Text(some ? texts::RemedyMarkOnly : texts::RemedyMark), Kinds(descriptor))};
}

FilterBar RefreshFilterBar(const FilterBarInput& input) {
  FilterBar bar{.tiles = {}, .words = input.words, .filter = input.filter, .filterFixed = input.filterFixed};
  if (!IsFilter(bar.filter)) {
    bar.filter = FilterId::ScoreSearch;
    bar.filterFixed = false;
  }

  int position = 0;
  for (const FilterDescriptor& descriptor : FilterCatalogue()) {
    const auto index = static_cast<std::size_t>(descriptor.id);
    const bool current = descriptor.id == bar.filter;
    const bool applicable = IsApplicable(descriptor.id, input.source);
    const bool usable = applicable && IsDevicePresent(descriptor.id, input.devices);
    std::uint32_t& word = bar.words[index];
    FilterTile& tile = bar.tiles[index];

    tile.shown = bar.filterFixed ? current : applicable || input.showAll;
    SetBit(word, kStatusShown, tile.shown);
    if (tile.shown || current) {
      SetBit(word, kStatusDeviceMissing, !IsDevicePresent(descriptor.id, input.devices));
      SetBit(word, kStatusNotApplicable, !applicable);
      SetBit(word, kStatusDisabled, !usable);
    }
    if (!tile.shown) {
      // A current filter without a tile is spoken of all the same.
      if (current) tile.refusal = RefusalOf(descriptor.id, input.source, input.devices);
      continue;
    }

    tile.position = position++;
    tile.marksAll = input.showAll && !usable && input.source.selection.Count() == 0 &&
                    IsDevicePresent(descriptor.id, input.devices) && Accepts(descriptor.id, input.whole);
    const bool fits = usable || tile.marksAll;
    tile.buttonEnabled = fits && (input.jobIsIdle || (current && descriptor.Has(kPlays)));
    tile.toggleEnabled = fits;
    if (!fits) tile.refusal = RefusalOf(descriptor.id, input.source, input.devices);
  }
  return bar;
}

std::uint32_t ToggledStatus(std::uint32_t word) {
  const bool expand = IsCollapsed(word);
  SetBit(word, kStatusCollapsed, !expand);
  SetBit(word, kStatusExpanded, expand);
  return word;
}

}  // namespace ts5
