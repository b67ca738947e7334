#include "frame/player_run.h"

#include <algorithm>
#include <atomic>
#include <thread>
#include <utility>

#include "frame/failure_reason.h"
#include "frame/practice_book.h"
#include "frame/run.h"
#include "frame/texts.h"
#include "platform/base/casts.h"
#include "platform/base/strings.h"
#include "platform/base/text.h"
#include "platform/files/fault.h"
#include "platform/files/paths.h"

namespace ts5 {
namespace {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;

// How often the position is reported: as often as a window can show it.
constexpr milliseconds kReportInterval{15};

TextId TitleFailedText(Outcome code) {
  switch (code) {
    case Outcome::InUse:
      return texts::PlayerCdBusy;
    case Outcome::CdDriveFailed:
      return texts::PlayerCdFailed;
    case Outcome::WriteFailed:
      return texts::PlayerDeviceGone;
    case Outcome::TargetFailed:
      return texts::PlayerAudioDeviceFailed;
    default:
      return texts::PlayerTitleFailed;
  }
}

class PlayerRun {
 public:
  PlayerRun(Run& run, const PlayerOptions& options, const OpenPlayer& open)
      : run_(run), control_(run.Player()), options_(options), open_(open), count_(run.ItemCount()) {}

  void Execute() {
    control_.Clear();
    control_.SetSound({options_.volume, options_.balance});
    auto device = open_(run_);
    if (device) {
      device_ = *std::move(device);
      device_->SetSound(control_.Sound());
      PlayAll();
      if (const Outcome closed = device_->Close(); Failed(closed)) run_.AddCode(closed);
    } else {
      run_.AddCode(device.error());
      if (count_ > 0) run_.Result().items.push_back({run_.Source(0), "", Code(device.error())});
      ++failed_;
      run_.Notice(Format(Text(texts::PlaybackNotStarted), Code(device.error())));
    }
    control_.Report({});
    Conclude();
  }

 private:
  // Where the user or the end of a title leads.
  struct Turn {
    Outcome code = Outcome::Success;
    std::optional<PlayerStep> step;
  };

  void PlayAll() {
    for (std::size_t index = 0; index < count_;) {
      if (run_.Cancelled()) return EndCancelled();
      const Turn turn = PlayItem(index);
      if (run_.Cancelled()) return EndCancelled();
      if (deviceGone_) return;
      std::size_t next = Next(index, turn.step);
      if (!turn.step && next < count_) {
        if (const auto step = PauseBefore(next)) next = Next(index, step);
        if (run_.Cancelled()) return EndCancelled();
      }
      index = next;
    }
  }

  [[nodiscard]] std::size_t Next(std::size_t index, std::optional<PlayerStep> step) const {
    switch (step.value_or(PlayerStep::Next)) {
      case PlayerStep::Previous:
        return index == 0 ? 0 : index - 1;
      case PlayerStep::Restart:
        return index;
      case PlayerStep::Next:
        break;
    }
    // There is nothing behind the last title: it goes on from its start.
    return step && index + 1 == count_ ? index : index + 1;
  }

  Turn PlayItem(std::size_t index) {
    const std::string source = run_.Source(index);
    run_.Progress(ClampTo<std::uint32_t>(index + 1), ClampTo<std::uint32_t>(count_), 0);
    run_.StatusText(Format(Text(texts::PlayerNowPlaying), FileNameOf(source)));
    run_.SetState(RunState::Preparing);
    ForgetFault();
    auto title = IsUsablePath(source) ? device_->Open(source)
                                      : Result<std::unique_ptr<PlayedTitle>>(Failure(Outcome::SourceFailed));
    if (!title) {
      deviceGone_ = title.error() == Outcome::WriteFailed;
      Book(source, title.error());
      return {title.error(), {}};
    }
    ++started_;
    if (const std::string name = (*title)->Name(); !name.empty()) run_.StatusText(name);
    run_.SetState(RunState::Running);
    const Turn turn = Supervise(index, source, **title);
    // A disk that takes nothing costs no music: it is tried again after the next title.
    if (run_.Practices()) (void)run_.Practices()->Save();
    if (Succeeded(turn.code)) ++finished_;
    if (turn.code == Outcome::WriteFailed) deviceGone_ = true;
    Book(source, turn.code);
    return turn;
  }

  Turn Supervise(std::size_t index, const std::string& source, PlayedTitle& title) {
    nanoseconds end = title.Duration();
    if (options_.shortPlay) end = std::min<nanoseconds>(end, std::chrono::seconds(options_.shortSeconds));
    const auto score = std::make_shared<const PlayerScore>(title.Score());
    tracks_ = score->tracks.size();
    BeginPractice(source, title);
    control_.Report({.title = source,
                     .name = title.Name(),
                     .duration = title.Duration(),
                     .place = title.Place(),
                     .score = score});

    Turn turn;
    std::atomic<bool> ended = false;
    bool paused = false;
    std::jthread thread([&] {
      turn.code = title.Play(end);
      ended = true;
      control_.Wake();
    });
    while (!ended) {
      const PlayerOrders orders = control_.Take(kReportInterval);
      if (orders.sound) device_->SetSound(control_.Sound());
      Practise(source, title);
      if (orders.step || run_.Cancelled()) {
        title.Stop();
        thread.join();
        // What had come to its end meanwhile has done so.
        if (Succeeded(turn.code)) turn.code = Outcome::Cancelled;
        turn.step = orders.step;
        return turn;
      }
      if (orders.seek) title.Seek(std::min(*orders.seek, end));
      if (orders.togglePause) {
        paused = !paused;
        paused ? title.Pause() : title.Resume();
        run_.SetState(paused ? RunState::Paused : RunState::Running);
      }
      const nanoseconds position = title.Position();
      control_.ReportPosition(position, title.Place(), paused);
      const double fraction =
          end.count() > 0 ? static_cast<double>(position.count()) / static_cast<double>(end.count()) : 0;
      run_.Progress(ClampTo<std::uint32_t>(index + 1), ClampTo<std::uint32_t>(count_), fraction);
    }
    thread.join();
    // Also what was chosen while the title came to its end.
    Practise(source, title);
    return turn;
  }

  // As it was practised last. Of several titles none keeps the others waiting with its passage.
  void BeginPractice(const std::string& source, PlayedTitle& title) {
    Practice practice;
    if (run_.Practices()) practice = Limited(run_.Practices()->Of(source), title.Duration(), tracks_);
    if (count_ > 1) practice.passage.reset();
    title.Practise(practice);
    if (practice.passage) title.Seek(practice.passage->from);
    practised_ = practice;
    control_.BeginPractice(std::move(practice));
  }

  // What the user changed holds at once, and the next time.
  void Practise(const std::string& source, PlayedTitle& title) {
    Practice chosen = control_.GetPractice();
    if (chosen == practised_) return;
    practised_ = std::move(chosen);
    const Practice practice = Limited(practised_, title.Duration(), tracks_);
    title.Practise(practice);
    if (run_.Practices()) run_.Practices()->Keep(source, practice);
  }

  // The silence before the next title; what the user chose to end it with, if anything.
  std::optional<PlayerStep> PauseBefore(std::size_t next) {
    if (options_.interval <= 0 || next >= count_) return std::nullopt;
    run_.SetState(RunState::Waiting);
    run_.StatusText(Text(texts::PlayerWaiting));
    control_.Report({});
    const auto until = std::chrono::steady_clock::now() + options_.Pause();
    while (!run_.Cancelled()) {
      const auto left = until - std::chrono::steady_clock::now();
      if (left <= left.zero() || !device_->Alive()) break;
      const PlayerOrders orders = control_.Take(std::min(kCancelPoll, std::chrono::ceil<milliseconds>(left)));
      if (orders.sound) device_->SetSound(control_.Sound());
      if (orders.step) return orders.step;
    }
    return std::nullopt;
  }

  // What became of a title. One that was stopped, if only while it was read, has not failed.
  void Book(const std::string& source, Outcome code) {
    const std::string reason = FailureReason(code, source, {}, TakeFault());
    run_.Result().items.push_back({.source = source, .code = Code(code), .reason = reason});
    if (Succeeded(code) || code == Outcome::Cancelled) return;
    ++failed_;
    run_.AddCode(code);
    const std::string_view text = Text(TitleFailedText(code));
    if (count_ == 1 || code == Outcome::WriteFailed) {
      run_.Notice(reason.empty() ? std::string(text) : std::string(text) + "\n" + reason);
    } else {
      run_.ProtocolLine(source + ": " + std::string(text));
    }
  }

  void EndCancelled() {
    run_.AddCode(Outcome::Cancelled);
    run_.Result().cancelled = true;
  }

  void Conclude() {
    RunResult& result = run_.Result();
    const auto begun = ClampTo<std::uint32_t>(result.items.size());
    result.counts = {started_, finished_, begun - std::min(begun, finished_)};
    result.remarks = run_.Remarks();
    result.show = options_.resultDialog;
    if (!device_ || failed_ == 0) return;
    result.remarks.emplace_back(Text(texts::PlayerSomeFailed));
    // Of a single title it has been said already.
    if (!result.show && count_ > 1) run_.Notice(Text(texts::PlayerSomeFailed));
  }

  Run& run_;
  PlayerControl& control_;
  const PlayerOptions& options_;
  const OpenPlayer& open_;
  std::size_t count_;
  std::unique_ptr<PlayerDevice> device_;
  bool deviceGone_ = false;
  std::size_t tracks_ = 0;  // of the title
  Practice practised_;      // as the user has it, of the title
  std::uint32_t started_ = 0;
  std::uint32_t finished_ = 0;
  std::uint32_t failed_ = 0;
};

}  // namespace

void RunPlayer(Run& run, const PlayerOptions& options, const OpenPlayer& open) {
  PlayerRun(run, options, open).Execute();
}

}  // namespace ts5
