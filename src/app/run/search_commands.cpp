#include "app/run/search_commands.h"

#include <QApplication>
#include <QClipboard>
#include <QGuiApplication>
#include <QMenu>
#include <algorithm>
#include <utility>

#include "app/shell/application.h"
#include "app/shell/sibling_visit.h"
#include "app/texts.h"
#include "frame/texts.h"
#include "frame/ui/qt_text.h"
#include "midi/midi_capture.h"
#include "platform/base/text.h"
#include "platform/files/paths.h"
#include "preview/hit_line.h"
#include "preview/texts.h"
#include "preview/ui/line_painter.h"
#include "preview/ui/preview_window.h"
#include "resources/icons.h"
#include "search/search_parameters.h"
#include "search/texts.h"
#include "search/ui/result_viewer_dialog.h"

namespace ts5 {
namespace {

constexpr int kBrowsedMilliseconds = 180;
constexpr double kPrintedSpaces = 11;  // of a usual line of notes, over the height of its place

// The bars beside each hit of a printed list.
HitPainter PrintedMusic() {
  return [lines = std::make_shared<preview::HitLines>()](QPainter& painter, const QRectF& place,
                                                         const SearchHit& hit, std::size_t notes) {
    if (const auto line = lines->Draw(hit, notes))
      preview::PaintLine(painter, place, *line, place.height() / kPrintedSpaces, Qt::black);
  };
}

}  // namespace

SearchCommands::SearchCommands(Desk& desk, ActiveJob& active, RunPanels& panels, Application& application)
    : desk_(desk),
      active_(active),
      panels_(panels),
      application_(application),
      printing_(std::make_unique<ResultsPrinting>(application.Devices().printers, desk, PrintedMusic())),
      player_(std::make_unique<HitPlayer>()) {
  CommandActions& actions = desk_.Actions();
  actions.On(CommandId::SearchResults, [this] { ShowResults(); });
  actions.On(CommandId::PrintSearchResults, [this] { Print(); });
  actions.On(CommandId::CopyHits, [this] { Copy(); });
  actions.On(CommandId::PlayHit, [this] { TogglePlaying(); });
  actions.On(CommandId::ShowSearchResult, [this] { ShowHitInApplication(); });
  // Esc stops the run, and a hit that sounds before it.
  actions.On(CommandId::StopByEscape,
             [this] { playing_ ? TogglePlaying() : desk_.Actions().Trigger(CommandId::Stop); });
  browsed_.setSingleShot(true);
  browsed_.setInterval(kBrowsedMilliseconds);
  connect(&browsed_, &QTimer::timeout, this, &SearchCommands::PlayBrowsed);
  connect(&panels_, &RunPanels::Made, this, [this](const RunPanel* panel) { Attach(*panel); });
  connect(&active_, &ActiveJob::Changed, this, &SearchCommands::Refresh);
}

SearchCommands::~SearchCommands() {
  Close();
}

void SearchCommands::Close() {
  ++round_;
  browsed_.stop();
  playing_ = false;
  player_.reset();
  if (visit_) visit_->Leave();
  visit_.reset();
}

void SearchCommands::Attach(const RunPanel& panel) {
  const HitView* const view = panel.Hitlist();
  const auto trigger = [this](CommandId command) { desk_.Actions().Trigger(command); };
  connect(view, &HitView::SelectionChanged, this, &SearchCommands::Refresh);
  connect(view, &HitView::CopyWanted, this, [trigger] { trigger(CommandId::CopyHits); });
  connect(view, &HitView::MenuWanted, this, &SearchCommands::ShowMenu);
  connect(view, &HitView::Browsed, &browsed_, qOverload<>(&QTimer::start));
  connect(view, &HitView::PlayWanted, this, [this, trigger] {
    if (playing_) TogglePlaying();
    trigger(CommandId::PlayHit);
  });
}

std::optional<std::size_t> SearchCommands::Row() const {
  const auto current = Panel().Hitlist()->CurrentHit();
  return current && *current < Panel().Results().Size() ? current : std::nullopt;
}

bool SearchCommands::SiblingIsKnown() const {
  const SiblingPrograms& siblings = application_.Siblings();
  return Panel().Results().Record().kind == SearchKind::Midi ? siblings.sequencer.available
                                                             : siblings.score.available;
}

std::optional<std::string> SearchCommands::Device() const {
  const auto& devices = application_.Devices().midiOutputs;
  if (devices.empty()) return std::nullopt;
  const Job& job = *active_;
  if (!IsSearch(job.filter) || !job.parameters) return std::string();
  const std::int32_t device = As<SearchParameters>(*job.parameters).device;
  // The mapper takes the first one.
  return devices[device > 0 && static_cast<std::size_t>(device) < devices.size()
                     ? static_cast<std::size_t>(device)
                     : 0];
}

void SearchCommands::Refresh() {
  if (!player_) return;
  CommandActions& actions = desk_.Actions();
  const RunPanel& panel = Panel();
  const bool any = panel.Results().Size() > 0;
  const bool shown = any && IsFilter(active_->filter) && IsSearch(active_->filter);
  const bool hit = shown && panel.Hitlist()->CurrentHit().has_value();
  actions.SetEnabled(CommandId::StopByEscape,
                     playing_ || (active_->State() != RunState::Idle && !panel.Recording()));
  actions.SetEnabled(CommandId::PrintSearchResults, any && !panel.Searching());
  actions.SetEnabled(CommandId::CopyHits, hit);
  actions.SetEnabled(CommandId::PlayHit, playing_ || (hit && Device().has_value()));
  actions.SetText(CommandId::PlayHit, playing_ ? texts::StopHit : texts::PlayHit);
  actions.Action(CommandId::PlayHit)->setIcon(Icon(playing_ ? "stop" : "play"));
  actions.SetEnabled(CommandId::ShowSearchResult, hit && SiblingIsKnown() && (!visit_ || visit_->Ended()));
}

// --- reading, printing, copying

void SearchCommands::ShowResults() {
  Settings& settings = application_.GetSettings();
  ResultViewerDialog dialog(Panel().Results(), settings.searchWholePath, application_.lastResultFile,
                            *printing_, desk_, desk_.Window());
  if (const auto& stored = settings.viewResultPosition) {
    const QRect place(QPoint(stored->left, stored->top), QPoint(stored->right - 1, stored->bottom - 1));
    // A place on a screen that is no longer there is given up.
    if (QGuiApplication::screenAt(place.center()) != nullptr) dialog.setGeometry(place);
  }
  dialog.exec();
  const QRect place = dialog.geometry();
  settings.viewResultPosition =
      WindowRectangle{place.left(), place.top(), place.right() + 1, place.bottom() + 1};
  application_.lastResultFile = dialog.LastFile();
}

void SearchCommands::Print() {
  printing_->PrintHits(Panel().Results(), application_.GetSettings().searchWholePath, desk_.Window());
}

void SearchCommands::Copy() {
  const std::vector<std::size_t> hits = Panel().Hitlist()->SelectedHits();
  const bool whole = application_.GetSettings().searchWholePath;
  QApplication::clipboard()->setText(ToQt(Panel().Results().CopyText(hits, whole)));
}

void SearchCommands::ShowMenu(const QPoint& position) {
  const CommandActions& actions = desk_.Actions();
  const bool midi = Panel().Results().Record().kind == SearchKind::Midi;
  QMenu menu(desk_.Window());
  menu.setAccessibleName(QtText(texts::HitMenuName));
  QAction* const show = menu.addAction(QtText(midi ? texts::ShowInSequencer : texts::ShowInScore), this,
                                       [this] { desk_.Actions().Trigger(CommandId::ShowSearchResult); });
  show->setEnabled(actions.Action(CommandId::ShowSearchResult)->isEnabled());
  show->setToolTip(QtText(texts::ShowHitTitle));
  show->setStatusTip(QtText(texts::HintShowSearchResult));
  if (const auto row = Row(); row && !midi) {
    menu.addAction(QtText(texts::PreviewShow), this, [this, hit = Panel().Results().Hit(*row)] {
      preview::ShowNotation(hit, desk_, desk_.Window());
    });
  }
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
  desk_.ShowPrompt(ToQt(Format(Text(texts::HitPlaying), FileNameOf(hit.file), std::int64_t{hit.bar} + 1)));
  active_.Refresh();
}

void SearchCommands::PlayBrowsed() {
  if (!player_ || !Row() || !Device()) return;
  if (playing_) TogglePlaying();
  desk_.Actions().Trigger(CommandId::PlayHit);
}

void SearchCommands::PlayingEnded(int round, Outcome outcome) {
  if (round != round_ || !playing_) return;
  playing_ = false;
  desk_.ShowPrompt({});
  active_.Refresh();
  if (outcome == Outcome::SourceFailed) {
    TellLater(texts::HitNotInFile);
  } else if (outcome == Outcome::TargetFailed) {
    TellLater(texts::HitDeviceFailed);
  } else if (Failed(outcome) && outcome != Outcome::Cancelled) {
    TellLater(texts::MidiDeviceGone);
  }
}

// --- showing in the sibling programs

void SearchCommands::ShowHitInApplication() {
  const auto row = Row();
  if (!row || (visit_ && !visit_->Ended())) return;
  visit_ = std::make_shared<SiblingVisit>(this, [this](std::optional<TextId> message) {
    Refresh();
    if (message) TellLater(*message);
  });
  const SearchHit hit = Panel().Results().Hit(*row);
  const SiblingPrograms& siblings = application_.Siblings();
  if (Panel().Results().Record().kind == SearchKind::Midi) {
    visit_->ToSequencer(hit, siblings.sequencer);
  } else {
    visit_->ToScoreProgram(hit, [this] { return FindSiblings(application_.GetRegistry()).score; });
  }
  Refresh();
}

void SearchCommands::TellLater(TextId text) {
  desk_.TellLater(Text(text), MessageIcon::Exclamation);
}

}  // namespace ts5
