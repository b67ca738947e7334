#include "disc/disc_burn.h"

#include <algorithm>
#include <utility>

#include "disc/disc_codes.h"
#include "disc/disc_memory.h"
#include "disc/texts.h"
#include "platform/base/text.h"

namespace ts5::disc {

std::string TextWith(TextId text, std::string_view value) {
  const std::string_view format = Text(text);
  return format.find("%s") == std::string_view::npos ? std::string(format) : Format(format, value);
}

bool AskForNextDisc(Run& run, const std::function<void()>& fill) {
  fill();
  run.Result().cancelButton = true;
  RunResult shown = run.Result();
  const Answer answer = run.Ask({.text = std::string(Text(texts::AskNextDisc)),
                                 .buttons = QuestionButtons::OkCancel,
                                 .results = std::move(shown)});
  run.Result().cancelButton = false;
  run.Result().items.clear();
  return answer == Answer::Yes;
}

DiscBurn::DiscBurn(Run& run, DiscSession& session, BurnOrder order, std::function<bool()> next)
    : run_(run), session_(session), order_(std::move(order)), next_(std::move(next)) {}

void DiscBurn::Say(TextId text, std::int32_t copy) const {
  run_.StatusText(TextWith(text, std::to_string(copy)));
}

// How the disc is written, and which copy it is.
void DiscBurn::SayMode(std::int32_t copy) {
  const TextId mode = order_.mode.onTheFly ? texts::ModeFly
                      : order_.mode.atOnce ? texts::ModeAtOnce
                                           : texts::ModeTracks;
  std::string text(Text(mode));
  if (order_.copies > 1) text += ", " + Format(Text(texts::TaskCopy), copy, order_.copies);
  run_.TaskText(text);
}

void DiscBurn::SayHurry(const Recorder& recorder) {
  // Only where it matters: a real drive without protection.
  if (!recorder.Hurried() && session_.Drive().Pace().poll.count() > 1 && !order_.mode.underrunProtection)
    run_.AddStatus({code::kNotHurried, false, 0});
}

void DiscBurn::HintAtPauses(std::span<const ProjectTrack> tracks) const {
  const bool shortPause =
      std::ranges::any_of(tracks, [](const ProjectTrack& track) { return track.pause == kSectorsPerSecond; });
  if (cueSheetRefused_ && shortPause) run_.AddStatus({code::kPauses, false, 0});
}

RecordingMode DiscBurn::Mode(bool testWrite) const {
  RecordingMode mode = order_.mode;
  mode.testWrite = testWrite;
  mode.underrunProtection = mode.underrunProtection && session_.ProtectsFromUnderruns();
  return mode;
}

// --- at once

DiscOutcome DiscBurn::RecordDiscs(std::vector<ProjectTrack>& tracks) {
  needed_ = ProjectSectors(tracks, order_.mode);
  if (order_.action != BurnAction::Burn) {
    const DiscOutcome simulated = Simulate(tracks);
    if (!simulated.Good() || order_.action == BurnAction::Simulate) return simulated;
    if (run_.Cancelled()) return {Code(Outcome::Cancelled), 0};
  }
  for (std::int32_t copy = 1;; ++copy) {
    if (const DiscOutcome recorded = RecordCopy(tracks, copy); !recorded.Good()) return recorded;
    if (copy == order_.copies) return {};
    if (const DiscOutcome ready = NextDisc(copy); !ready.Good()) return ready;
  }
}

DiscOutcome DiscBurn::NextDisc(std::int32_t copy) {
  session_.ReleaseDrive(order_.eject);
  if (!next_()) return {code::kNoNextDisc, copy};
  if (const DiscOutcome opened = session_.Open(); !opened.Good()) return opened;
  if (const DiscOutcome blank = session_.CheckBlank(); !blank.Good()) return blank;
  if (needed_ > session_.FreeSectors()) return {code::kDiscTooSmall, 0};
  session_.Initialise(order_.speed);
  return {};
}

DiscOutcome DiscBurn::Simulate(std::vector<ProjectTrack>& tracks) {
  SayMode(1);
  Say(order_.simulating, 1);
  Recorder recorder = session_.MakeRecorder(Mode(true));
  const EngineError error = recorder.RecordDiscAtOnce(tracks);
  cueSheetRefused_ = error == engine::kCueSheet;
  if (error != engine::kNone) {
    Say(texts::DiscNotSimulated, 1);
    return OutcomeOf(error, code::kNotSimulated);
  }
  // Nothing was written; the drive forgets the session.
  (void)session_.Drive().Close(CloseWhat::Session);
  Say(texts::WholeDiscSimulated, 1);
  return {};
}

DiscOutcome DiscBurn::RecordCopy(std::vector<ProjectTrack>& tracks, std::int32_t copy) {
  SayMode(copy);
  Say(order_.burning, copy);
  Recorder recorder = session_.MakeRecorder(Mode(false));
  const EngineError error = recorder.RecordDiscAtOnce(tracks);
  cueSheetRefused_ = error == engine::kCueSheet;
  SayHurry(recorder);
  if (error != engine::kNone) {
    Say(order_.failed, copy);
    return OutcomeOf(error, code::kDiscNotBurnt);
  }
  Say(order_.done, copy);
  counts_.tracks += static_cast<std::uint32_t>(tracks.size());
  return Finish(recorder, tracks, copy);
}

DiscOutcome DiscBurn::Finish(Recorder& recorder, std::vector<ProjectTrack>& tracks, std::int32_t copy) {
  const bool atOnce = order_.mode.atOnce;
  Say(atOnce ? texts::ClosingCopy : texts::ClosingDisc, copy);
  if (const EngineError error = recorder.CloseDisc(); error != engine::kNone) {
    Say(atOnce ? texts::CopyNotClosed : texts::TracksNotClosed, copy);
    return {code::kDiscNotClosed, static_cast<std::int32_t>(error)};
  }
  Say(atOnce ? texts::CopyClosed : texts::TracksClosed, copy);
  Remember(recorder.Layout(), tracks);
  if (order_.verify) {
    const DiscOutcome verified = session_.Verify(recorder.Layout(), tracks, Mode(false));
    // A disc that is whole stays so when nobody waits for the proof.
    if (verified.code == Code(Outcome::Cancelled)) ++counts_.discs;
    if (!verified.Good()) return verified;
    run_.AddStatus({verified.code, false, verified.number});
  }
  ++counts_.discs;
  return {};
}

void DiscBurn::Remember(const DiscLayout& layout, std::span<const ProjectTrack> tracks) const {
  DiscToc toc;
  CdText text{order_.title, 1, {}};
  for (std::size_t i = 0; i < layout.tracks.size() && i < tracks.size(); ++i) {
    const DiscTrack& track = layout.tracks[i];
    toc.tracks.push_back(
        {track.number, true, static_cast<std::uint32_t>(track.start.value), track.sectors, track.control});
    text.tracks.push_back(tracks[i].text);
  }
  toc.leadOut = static_cast<std::uint32_t>(layout.leadOut.value);
  // Not to know the disc next time is no failure of this run.
  (void)DiscMemory().Remember(toc, text);
}

// --- track by track

DiscOutcome DiscBurn::RecordTracks(const TrackQueue& queue) {
  if (order_.action != BurnAction::Burn) {
    const DiscOutcome simulated = RecordQueue(queue, true, 1);
    if (!simulated.Good() || order_.action == BurnAction::Simulate) return simulated;
  }
  for (std::int32_t copy = 1;; ++copy) {
    if (const DiscOutcome recorded = RecordQueue(queue, false, copy); !recorded.Good()) return recorded;
    if (copy == order_.copies) return {};
    if (const DiscOutcome ready = NextDisc(copy); !ready.Good()) return ready;
  }
}

DiscOutcome DiscBurn::RecordQueue(const TrackQueue& queue, bool simulate, std::int32_t copy) {
  SayMode(copy);
  Recorder recorder = session_.MakeRecorder(Mode(simulate));
  written_.clear();
  DiscOutcome outcome;
  for (std::size_t i = 0; i < queue.count && outcome.Good(); ++i) {
    if (queue.stopped()) {
      outcome = {Code(Outcome::Cancelled), 0};
      break;
    }
    std::optional<ProjectTrack> track;
    outcome = queue.next(i, track);
    if (outcome.Good() && track) outcome = RecordOne(recorder, *track, queue, i, simulate);
  }
  SayHurry(recorder);
  needed_ = ProjectSectors(written_, order_.mode);
  if (!simulate && !written_.empty()) {
    const DiscOutcome finished = Finish(recorder, written_, copy);
    return outcome.Good() ? finished : outcome;
  }
  return outcome.Good() && written_.empty() ? DiscOutcome{code::kFilesNotPrepared, 0} : outcome;
}

DiscOutcome DiscBurn::RecordOne(Recorder& recorder, const ProjectTrack& track, const TrackQueue& queue,
                                std::size_t index, bool simulate) {
  const std::string name = queue.name(index);
  run_.StatusText(TextWith(simulate ? texts::SimulatingTrack : texts::BurningTrack, name));
  // A simulated track takes no place: whether all of them fit is counted.
  written_.push_back(track);
  const bool fits = ProjectSectors(written_, order_.mode) <= session_.FreeSectors();
  const EngineError error =
      fits ? recorder.RecordTrack(track, static_cast<int>(written_.size())) : engine::kNone;
  if (fits && error == engine::kNone) {
    if (!simulate) ++counts_.tracks;
    run_.StatusText(TextWith(simulate ? texts::TrackSimulated : texts::TrackBurnt, name));
    return {};
  }
  written_.pop_back();
  run_.StatusText(TextWith(simulate ? queue.notSimulated : queue.notBurnt, name));
  if (!fits) return {code::kDiscTooSmall, 0};
  return OutcomeOf(error, simulate ? code::kNotSimulated : code::kTrackNotBurnt);
}

}  // namespace ts5::disc
