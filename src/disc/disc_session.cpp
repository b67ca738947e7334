#include "disc/disc_session.h"

#include <algorithm>

#include "disc/disc_codes.h"
#include "disc/engine_reason.h"
#include "disc/texts.h"
#include "disc/verify.h"
#include "platform/base/text.h"

namespace ts5::disc {
namespace {

using namespace std::chrono_literals;

constexpr auto kWaitForDisc = 120s;
constexpr auto kWaitPoll = 500ms;
constexpr auto kSettling = 12s;  // of a source

}  // namespace

DiscOutcome OutcomeOf(EngineError error, std::int32_t otherwise) {
  if (error == engine::kNone) return {};
  if (engine::IsUnderrun(error)) return {code::kUnderrun, 0};
  return {otherwise, static_cast<std::int32_t>(error)};
}

void AddOutcome(Run& run, const DiscOutcome& outcome) {
  if (outcome.Good()) return;
  run.AddStatus({outcome.code, false, outcome.number});
  const bool ofEngine = outcome.code == code::kDiscNotBurnt || outcome.code == code::kTrackNotBurnt ||
                        outcome.code == code::kNotSimulated || outcome.code == code::kDiscNotClosed ||
                        outcome.code == code::kTrackNotRead || outcome.code == code::kDiscUnknown;
  const auto reason = ofEngine ? ReasonOf(static_cast<EngineError>(outcome.number)) : std::optional<TextId>();
  if (reason) run.AddStatus({.code = outcome.code, .line = std::string(Text(*reason))});
}

tl::expected<ClaimedDrive, DiscOutcome> OpenSourceDrive(Run& run, const std::string& path) {
  run.StatusText(Text(texts::OpeningSource));
  auto opened = ClaimedDrive::Open(path);
  const auto cancelled = [&run] { return run.Cancelled(); };
  if (opened && Succeeded(opened->drive.WaitUntilReady(kSettling, cancelled))) {
    run.StatusText(Text(texts::SourceOpened));
    return *std::move(opened);
  }
  run.StatusText(Text(texts::SourceNotOpened));
  const bool busy = !opened && opened.error() == Outcome::InUse;
  const std::int32_t failed = busy ? code::kDriveBusy : code::kDriveNotOpened;
  return tl::unexpected(DiscOutcome{run.Cancelled() ? Code(Outcome::Cancelled) : failed, 0});
}

// While a run waits for a disc the drive belongs to nobody, so that one can be put in.
Outcome DiscSession::Take() {
  auto opened = ClaimedDrive::OpenSoon(path_);
  if (!opened) return opened.error();
  const Outcome ready = opened->drive.WaitUntilReady(kWaitPoll, [this] { return run_.Cancelled(); });
  if (Failed(ready)) return ready;
  held_ = *std::move(opened);
  Drive().PreventRemoval(true);
  return Outcome::Success;
}

DiscOutcome DiscSession::Open() {
  run_.StatusText(Text(texts::OpeningRecorder));
  const auto end = std::chrono::steady_clock::now() + kWaitForDisc;
  for (;;) {
    const Outcome taken = Take();
    if (Succeeded(taken)) {
      run_.StatusText(Text(texts::RecorderOpened));
      return {};
    }
    if (taken == Outcome::InUse) {
      run_.StatusText(Text(texts::RecorderNotOpened));
      return {code::kDriveBusy, 0};
    }
    const auto left = std::chrono::ceil<std::chrono::seconds>(end - std::chrono::steady_clock::now()).count();
    if (run_.Cancelled()) return {Code(Outcome::Cancelled), 0};
    if (left <= 0) break;
    run_.StatusText(Format(Text(texts::WaitingForDisc), left / 60, left % 60));
    if (!run_.Sleep(kWaitPoll)) return {Code(Outcome::Cancelled), 0};
  }
  run_.StatusText(Text(texts::RecorderNotOpened));
  return {code::kDriveNotOpened, 0};
}

DiscOutcome DiscSession::CheckBlank() {
  run_.StatusText(Text(texts::ReadingBlank));
  const auto info = Drive().ReadDiscInfo();
  if (!info) {
    // A drive without recordable media knows no such command.
    const bool unknown = Drive().LastSense() == sense::kUnknownCommand;
    run_.StatusText(Text(texts::BlankNotRead));
    if (unknown) return {code::kNotWritable, 0};
    return {code::kDiscUnknown, static_cast<std::int32_t>(engine::kDiscUnknown)};
  }
  if (info->status == DiscStatus::Other) return {code::kNotWritable, 0};
  if (info->status != DiscStatus::Blank) return {code::kDiscNotBlank, 0};
  const auto next = Drive().ReadNextWritable();
  if (!next) {
    run_.StatusText(Text(texts::BlankNotRead));
    return {code::kDiscUnknown, static_cast<std::int32_t>(engine::kNoWritable)};
  }
  // The lead-out's place is exact; drives round what they call free.
  free_ = info->leadOut ? static_cast<std::uint32_t>(std::max(info->leadOut->value, 0))
                        : std::min(next->freeSectors, static_cast<std::uint32_t>(kEndOfTimes));
  const auto capabilities = Drive().ReadCapabilities();
  protects_ = capabilities && capabilities->underrunProtection;
  run_.StatusText(Text(texts::BlankRead));
  return {};
}

void DiscSession::Initialise(std::int32_t speed) {
  run_.StatusText(Text(texts::InitialisingDrive));
  const bool fast = Succeeded(Drive().SetSpeed(static_cast<std::uint32_t>(speed)));
  const bool calibrated = Succeeded(Drive().SendOpc());
  if (!fast || !calibrated) run_.AddStatus({code::kCalibrationRefused, false, 0});
  run_.StatusText(Text(texts::DriveInitialised));
}

Recorder DiscSession::MakeRecorder(const RecordingMode& mode) {
  RecordingEvents events;
  events.status = [this](std::string_view text) { run_.StatusText(text); };
  events.progress = [this, mode, percent = -1](const RecordingProgress& progress) mutable {
    const double fraction = progress.total == 0 ? 1.0 : static_cast<double>(progress.done) / progress.total;
    RunProgress shown;
    shown.item = static_cast<std::uint32_t>(std::max(progress.track, 1));
    shown.items = std::max<std::uint32_t>(static_cast<std::uint32_t>(run_.ItemCount()), shown.item);
    shown.fraction = fraction;
    if (mode.atOnce) shown.whole = fraction;
    shown.buffer = progress.buffer;
    run_.Progress(shown);
    shown_ = shown;
    shown_.buffer.reset();
    const int now = static_cast<int>(fraction * 100);
    if (now == percent) return;
    percent = now;
    run_.StatusText(ProgressText(progress, mode));
  };
  events.ended = [this] { run_.Progress(shown_); };
  return {Drive(), mode, std::move(events)};
}

DiscOutcome DiscSession::Verify(const DiscLayout& layout, std::span<const ProjectTrack> tracks,
                                const RecordingMode& mode) {
  const WorkWatch watch{[this] { return run_.Cancelled(); },
                        [this, percent = -1](double fraction) mutable {
                          const int now = static_cast<int>(fraction * 100);
                          if (now == percent) return;
                          percent = now;
                          run_.StatusText(Format(Text(texts::Verifying), now, '%'));
                        }};
  const DiscComparison compared = CompareDisc(Drive(), layout, tracks, mode, watch);
  switch (compared.outcome) {
    case Outcome::Success:
      run_.StatusText(Text(texts::Verified));
      return {code::kVerified, 0};
    case Outcome::Cancelled:
      return {Code(Outcome::Cancelled), 0};
    case Outcome::SourceFailed:
      run_.StatusText(Text(texts::RemarkNotCompared));
      return {code::kNotCompared, 0};
    case Outcome::ReadFailed:
      run_.StatusText(Format(Text(texts::RemarkNotReadBack), compared.sector));
      return {code::kNotReadBack, compared.sector};
    default:
      run_.StatusText(Format(Text(texts::NotVerified), compared.sector));
      // From its very beginning on: no sector is worth naming.
      return {compared.sector > 0 ? code::kNotVerified : code::kAnotherDisc, compared.sector};
  }
}

void DiscSession::ReleaseDrive(bool eject) {
  if (held_) {
    Drive().PreventRemoval(false);
    if (eject) (void)Drive().Eject();
  }
  held_.reset();
}

void DiscSession::End(const DiscOutcome& outcome, bool eject) {
  AddOutcome(run_, outcome);
  if (outcome.code == Code(Outcome::Cancelled)) {
    run_.StatusText(Text(texts::StoppedByUser));
    run_.Result().cancelled = true;
  }
  ReleaseDrive(eject);
}

}  // namespace ts5::disc
