#include "frame/player_choice.h"

#include "frame/filter_bar.h"
#include "frame/filter_catalogue.h"

namespace ts5 {

FilterId PlayerOf(const FileListEntry& entry) {
  SourceContext source;
  source.listMode = true;
  source.sourceIsAudioCd = entry.cdTrack;
  source.selection.Add(entry.path, entry.cdTrack);
  for (const FilterDescriptor& filter : FilterCatalogue()) {
    if (filter.Has(kPlays) && Accepts(filter.id, source)) return filter.id;
  }
  return FilterId::None;
}

}  // namespace ts5
