#include "app/search_commands.h"

#include <QApplication>
#include <QClipboard>
#include <QGuiApplication>
#include <QMenu>
#include <QMessageBox>
#include <utility>

#include "app/main_window.h"
#include "app/sibling_visit.h"
#include "app/texts.h"
#include "frame/texts.h"
#include "frame/ui/qt_text.h"
#include "midi/midi_capture.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "resources/icons.h"
#include "search/search_parameters.h"
#include "search/texts.h"
#include "search/ui/result_viewer_dialog.h"

namespace ts5 {

SearchCommands::SearchCommands(MainWindow& window)
    : window_(window),
      printing_(std::make_unique<ResultsPrinting>(window.App().Devices().printers, window)),
      player_(std::make_unique<HitPlayer>()) {
  window_.On(CommandId::SearchResults, [this] { ShowResults(); });
  window_.On(CommandId::PrintSearchResults, [this] { Print(); });
  window_.On(CommandId::CopyHits, [this] { Copy(); });
  window_.On(CommandId::PlayHit, [this] { TogglePlaying(); });
  window_.On(CommandId::ShowSearchResult, [this] { ShowHitInApplication(); });
  // Esc stops the run, and a hit that sounds before it.
  window_.On(CommandId::StopByEscape,
             [this] { playing_ ? TogglePlaying() : window_.Trigger(CommandId::Stop); });
}

SearchCommands::~SearchCommands() {
  Close();
}

void SearchCommands::Close() {
  ++round_;
  playing_ = false;
  player_.reset();
  if (visit_) visit_->Leave();
  visit_.reset();
}

void SearchCommands::Attach(RunPanel& panel) {
  HitView* const view = panel.Hitlist();
  connect(view, &HitView::SelectionChanged, this, &SearchCommands::Refresh);
  connect(view, &HitView::CopyWanted, this, [this] { window_.Trigger(CommandId::CopyHits); });
  connect(view, &HitView::MenuWanted, this, &SearchCommands::ShowMenu);
  connect(view, &HitView::PlayWanted, this, [this] {
    if (playing_) TogglePlaying();
    window_.Trigger(CommandId::PlayHit);
  });
}

RunPanel& SearchCommands::Panel() const {
  return window_.PanelOf(window_.ActiveJob());
}

std::optional<std::size_t> SearchCommands::Row() const {
  const auto current = Panel().Hitlist()->CurrentHit();
  return current && *current < Panel().Results().Size() ? current : std::nullopt;
}

bool SearchCommands::SiblingIsKnown() const {
  const SiblingPrograms& siblings = window_.App().Siblings();
  return Panel().Results().Record().kind == SearchKind::Midi ? siblings.sequencer.available
                                                             : siblings.score.available;
}

std::optional<std::string> SearchCommands::Device() const {
  const auto& devices = window_.App().Devices().midiOutputs;
  if (devices.empty()) return std::nullopt;
  const Job& job = window_.ActiveJob();
  if (!IsSearch(job.filter) || !job.parameters) return std::string();
  const std::int32_t device = static_cast<const SearchParameters&>(*job.parameters).device;
  // The mapper takes the first one.
  return devices[device > 0 && static_cast<std::size_t>(device) < devices.size()
                     ? static_cast<std::size_t>(device)
                     : 0];
}

void SearchCommands::Refresh() {
  if (!player_) return;
  CommandActions& actions = window_.Actions();
  const RunPanel& panel = Panel();
  const bool any = panel.Results().Size() > 0;
  const bool shown = any && IsFilter(window_.ActiveJob().filter) && IsSearch(window_.ActiveJob().filter);
  const bool hit = shown && panel.Hitlist()->CurrentHit().has_value();
  actions.SetEnabled(CommandId::PrintSearchResults, any && !panel.Searching());
  actions.SetEnabled(CommandId::CopyHits, hit);
  actions.SetEnabled(CommandId::PlayHit, playing_ || (hit && Device().has_value()));
  actions.SetText(CommandId::PlayHit, playing_ ? texts::StopHit : texts::PlayHit);
  actions.Action(CommandId::PlayHit)->setIcon(Icon(playing_ ? "stop" : "play"));
  actions.SetEnabled(CommandId::ShowSearchResult, hit && SiblingIsKnown() && (!visit_ || visit_->Ended()));
}

// --- reading, printing, copying

void SearchCommands::ShowResults() {
  Settings& settings = window_.App().GetSettings();
  ResultViewerDialog dialog(Panel().Results(), settings.searchWholePath, window_.App().lastResultFile,
                            *printing_, window_, &window_);
  if (const auto& stored = settings.viewResultPosition) {
    const QRect place(QPoint(stored->left, stored->top), QPoint(stored->right - 1, stored->bottom - 1));
    // A place on a screen that is no longer there is given up.
    if (QGuiApplication::screenAt(place.center()) != nullptr) dialog.setGeometry(place);
  }
  dialog.exec();
  const QRect place = dialog.geometry();
  settings.viewResultPosition =
      WindowRectangle{place.left(), place.top(), place.right() + 1, place.bottom() + 1};
  window_.App().lastResultFile = dialog.LastFile();
}

void SearchCommands::Print() {
  printing_->PrintHits(Panel().Results(), window_.App().GetSettings().searchWholePath, &window_);
}

void SearchCommands::Copy() {
  const std::vector<std::size_t> hits = Panel().Hitlist()->SelectedHits();
  const bool whole = window_.App().GetSettings().searchWholePath;
  QApplication::clipboard()->setText(ToQt(Panel().Results().CopyText(hits, whole)));
}

void SearchCommands::ShowMenu(const QPoint& position) {
  const CommandActions& actions = window_.Actions();
  const bool midi = Panel().Results().Record().kind == SearchKind::Midi;
  QMenu menu(&window_);
  menu.setAccessibleName(QtText(texts::HitMenuName));
  QAction* const show = menu.addAction(QtText(midi ? texts::ShowInSequencer : texts::ShowInScore), this,
                                       [this] { window_.Trigger(CommandId::ShowSearchResult); });
  show->setEnabled(actions.Action(CommandId::ShowSearchResult)->isEnabled());
  show->setToolTip(QtText(texts::ShowHitTitle));
  show->setStatusTip(QtText(texts::HintShowSearchResult));
  for (const CommandId command : {CommandId::PlayHit, CommandId::CopyHits}) actions.AddTo(menu, command);
  menu.addSeparator();
  for (const CommandId command : {CommandId::PrintSearchResults, CommandId::SearchResults})
    actions.AddTo(menu, command);
  menu.exec(position);
}

// --- hearing

void SearchCommands::TogglePlaying() {
  if (playing_) {
    player_->Stop();
    PlayingEnded(round_, Outcome::Cancelled);
    return;
  }
  const auto row = Row();
  const auto device = Device();
  if (!row || !device) return;
  const SearchHit hit = Panel().Results().Hit(*row);
  const int round = ++round_;
  playing_ = true;
  player_->Start(
      hit, Panel().Results().Notes(*row), [name = *device] { return OpenMidiDevice(name); },
      [this, round](Outcome outcome) {
        QMetaObject::invokeMethod(
            this, [this, round, outcome] { PlayingEnded(round, outcome); }, Qt::QueuedConnection);
      });
  window_.ShowPrompt(ToQt(Format(Text(texts::HitPlaying), FileNameOf(hit.file), std::int64_t{hit.bar} + 1)));
  window_.Refresh();
}

void SearchCommands::PlayingEnded(int round, Outcome outcome) {
  if (round != round_ || !playing_) return;
  playing_ = false;
  window_.ShowPrompt({});
  window_.Refresh();
  if (outcome == Outcome::SourceFailed) {
    Tell(texts::HitNotInFile);
  } else if (outcome == Outcome::TargetFailed) {
    Tell(texts::HitDeviceFailed);
  } else if (Failed(outcome) && outcome != Outcome::Cancelled) {
    Tell(texts::MidiDeviceGone);
  }
}

// --- showing in the sibling programs

void SearchCommands::ShowHitInApplication() {
  const auto row = Row();
  if (!row || (visit_ && !visit_->Ended())) return;
  visit_ = std::make_shared<SiblingVisit>(this, [this](std::optional<TextId> message) {
    Refresh();
    if (message) Tell(*message);
  });
  const SearchHit hit = Panel().Results().Hit(*row);
  const SiblingPrograms& siblings = window_.App().Siblings();
  if (Panel().Results().Record().kind == SearchKind::Midi) {
    visit_->ToSequencer(hit, siblings.sequencer);
  } else {
    visit_->ToScoreProgram(hit, [this] { return FindSiblings(window_.App().GetRegistry()).score; });
  }
  Refresh();
}

void SearchCommands::Tell(TextId text) {
  window_.Dialogs().Add([this, text]() -> QDialog* {
    return new QMessageBox(QMessageBox::Warning, QtText(texts::ApplicationTitle), QtText(text),
                           QMessageBox::Ok, &window_);
  });
}

}  // namespace ts5
