#include "app/shell/filter_commands.h"

#include <QApplication>
#include <utility>
#include <vector>

#include "app/texts.h"
#include "frame/filter_catalogue.h"
#include "frame/ui/qt_text.h"

namespace ts5 {

FilterCommands::FilterCommands(ActiveJob& active, FilterPanel& panel) : active_(active), panel_(panel) {
  connect(&active_, &ActiveJob::BarChanged, this, &FilterCommands::ShowBar);
  connect(&panel_, &FilterPanel::FilterChosen, this, &FilterCommands::Choose);
  connect(&panel_, &FilterPanel::TileToggled, &active_, &ActiveJob::ToggleTile);
  connect(&panel_, &FilterPanel::FixToggled, &active_, &ActiveJob::FixFilter);
  connect(&panel_, &FilterPanel::AllToggled, &active_, &ActiveJob::ShowAllFilters);
}

void FilterCommands::ShowBar() {
  const FilterBar& bar = active_.Bar();
  std::vector<FilterPanel::Tile> tiles;
  for (std::size_t i = 0; i < kFilterCount; ++i) {
    const auto filter = static_cast<FilterId>(i);
    const FilterTile& tile = bar.tiles[i];
    FilterPanel::Tile shown{.filter = filter,
                            .shown = tile.shown,
                            .enabled = tile.buttonEnabled && active_.Offers(filter),
                            .toggleEnabled = tile.toggleEnabled,
                            .expanded = !IsCollapsed(bar.words[i])};
    if (!active_.Offers(filter)) {
      shown.reason = QtText(texts::FilterAbsent);
    } else if (tile.refusal) {
      shown.reason = ToQt(tile.refusal->reason);
      shown.help = ToQt(tile.refusal->remedy);
      // One that is here only because all are.
      shown.compact = !active_->filterFixed && (bar.words[i] & kStatusNotApplicable) != 0;
    } else if (tile.marksAll) {
      shown.help = QtText(texts::FilterForWholeList);
    } else if (tile.shown && !tile.buttonEnabled) {
      shown.help = QtText(texts::FilterWhileRunning);
    }
    tiles.push_back(std::move(shown));
  }
  panel_.Show(tiles, active_->filter, active_->filterFixed, active_.ShowsAllFilters());
}

void FilterCommands::Choose(FilterId filter) {
  active_.Settle();
  if (active_.Bar().tiles.at(static_cast<std::size_t>(filter)).marksAll) {
    emit AllFilesWanted();
    active_.Settle();
  }
  const Job& job = *active_;
  if (!job.MayChange()) {
    // The window of a player can be opened while it plays.
    if (!IsPlayer(filter) || job.filter != filter) return QApplication::beep();
  } else if (job.filter != filter) {
    if (!active_.SwitchFilter(filter)) return;
  }
  emit ParametersWanted();
}

}  // namespace ts5
