#include "app/run/run_display.h"

#include <QApplication>

#include "app/source/disc_tray.h"
#include "frame/destination.h"
#include "frame/ui/qt_text.h"

namespace ts5 {
namespace {

// A menu text as the text of a button: without its keys.
QString WithoutKeys(TextId text) {
  return QtText(text).section('\t', 0, 0);
}

}  // namespace

RunDisplay::RunDisplay(ActiveJob& active, SourceArea& source, TargetArea& target, RunPanels& panels,
                       CommandActions& actions)
    : active_(active), source_(source), target_(target), panels_(panels), actions_(actions) {
  connect(&active_, &ActiveJob::Changed, this, &RunDisplay::Show);
  connect(&target_, &TargetArea::ChoiceChanged, this, &RunDisplay::Show);
  connect(&target_, &TargetArea::RunClicked, this, [this] {
    actions_.Trigger(RunButtonStops(active_->filter, active_->State()) ? CommandId::Stop : CommandId::Run);
  });
  connect(&target_, &TargetArea::StopClicked, this, [this] { actions_.Trigger(CommandId::Stop); });
}

void RunDisplay::Show() {
  const Job& job = *active_;
  const RunState state = job.State();
  const bool idle = job.MayChange();
  // What is being written cannot be stopped.
  const bool mayStop = state != RunState::Idle && !panels_.Current().Recording();
  const RunWording wording = RunWordingOf(job.filter, state);
  target_.SetRunTexts(QtText(wording.button), WithoutKeys(wording.stopMenu));
  actions_.SetText(CommandId::Run, wording.menu);
  actions_.SetText(CommandId::Stop, wording.stopMenu);

  if (!idle && focusBeforeRun_ == nullptr) focusBeforeRun_ = QApplication::focusWidget();
  const bool mayRun = active_.CanRun() && (idle || (IsPlayer(job.filter) && state != RunState::Waiting));
  target_.Enable({.field = idle && DestinationModeOf(job, false).editable,
                  .choice = idle,
                  .devices = idle,
                  .run = mayRun || (RunButtonStops(job.filter, state) && mayStop),
                  .stop = mayStop});
  source_.Enable({.drives = idle,
                  .tree = idle,
                  .files = idle && (source_.Model().Total() > 0 || job.Mode() == SourceMode::List ||
                                    SourceIsVirtualDrive(job)),
                  .subdirectories = idle && !source_.Model().ShowsAudioCd()});
  actions_.SetEnabled(CommandId::Run, mayRun);
  actions_.SetEnabled(CommandId::Stop, mayStop);
  MoveFocus(idle);
}

// A run takes the focus from what it locks, and gives it back at its end.
void RunDisplay::MoveFocus(bool idle) {
  const QWidget* const focused = QApplication::focusWidget();
  if (!idle) {
    if (focused == nullptr || !focused->isEnabled()) target_.StopButton()->setFocus();
    return;
  }
  if (focusBeforeRun_ != nullptr && focusBeforeRun_->isEnabled() && focusBeforeRun_->isVisible())
    focusBeforeRun_->setFocus();
  focusBeforeRun_ = nullptr;
}

}  // namespace ts5
