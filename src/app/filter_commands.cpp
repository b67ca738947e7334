#include "app/filter_commands.h"

#include <QApplication>

#include "app/main_window.h"
#include "app/parameter_windows.h"
#include "app/playback_commands.h"
#include "app/source_commands.h"
#include "frame/filter_bar.h"
#include "frame/texts.h"
#include "frame/ui/message_box.h"

namespace ts5 {

FilterCommands::FilterCommands(MainWindow& window) : window_(window) {
  FilterPanel& panel = window_.Filters();
  connect(&panel, &FilterPanel::FilterChosen, this, [this](FilterId filter) { Choose(filter); });
  connect(&panel, &FilterPanel::TileToggled, this, [this](FilterId filter) { ToggleTile(filter); });
  connect(&panel, &FilterPanel::FixToggled, this, [this](bool fixed) { Fix(fixed); });
}

void FilterCommands::Choose(FilterId filter) {
  window_.Sources().TakeSelection();
  Job& job = window_.ActiveJob();
  if (!job.MayChange()) {
    // The window of a player can be opened while it plays.
    if (IsPlayer(filter) && job.filter == filter) return EditParameters();
    QApplication::beep();
    return;
  }
  if (job.filter != filter) {
    if (const auto panel = window_.Panel()) CommitDestination(job, *panel);
    if (!window_.App().GetJobs().SwitchFilter(job, filter, window_)) return;
    window_.ShowFilter();
  }
  EditParameters();
}

void FilterCommands::EditParameters() {
  Job& job = window_.ActiveJob();
  if (IsPlayer(job.filter) && job.parameters) return window_.Playback().Open(job);
  const ParameterDialog* dialog = FindParameterDialog(job.filter);
  if (dialog == nullptr || !job.parameters) {
    ShowNotice(&window_, texts::NoDecoderPage);
    return;
  }
  if (dialog->edit(job, window_.App(), window_, &window_)) {
    window_.RefreshDestination();
    window_.Refresh();
  }
}

void FilterCommands::ToggleTile(FilterId filter) {
  Job& job = window_.ActiveJob();
  std::uint32_t& word = job.filterStatus.at(static_cast<std::size_t>(filter));
  word = ToggledStatus(word);
  window_.RefreshFilterBar();
}

void FilterCommands::Fix(bool fixed) {
  window_.ActiveJob().filterFixed = fixed;
  window_.RefreshFilterBar();
}

}  // namespace ts5
