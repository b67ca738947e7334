#include "disc/burner.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "audio/playing_time.h"
#include "audio/texts.h"
#include "disc/burn_parameters.h"
#include "disc/disc_burn.h"
#include "disc/disc_codes.h"
#include "disc/drive_choice.h"
#include "disc/intermediate.h"
#include "disc/texts.h"
#include "frame/run.h"
#include "frame/texts.h"
#include "platform/base/casts.h"
#include "platform/base/text.h"
#include "platform/files/paths.h"

namespace ts5::disc {
namespace {

constexpr auto kBetweenTexts = std::chrono::milliseconds(200);

class BurnRun {
 public:
  BurnRun(Run& run, const BurnParameters& parameters)
      : run_(run),
        parameters_(parameters),
        intermediate_(run, parameters_),
        session_(run, RecorderPath(run)),
        burn_(run, session_, Order(), [this] { return AskForNextDisc(run_, [this] { FillResult({}); }); }) {}

  void Execute() {
    if (!parameters_.atOnce)
      run_.Result().titles.labels = {texts::CountTracksBurnt, texts::CountTracksNotBurnt, std::nullopt,
                                     std::nullopt};
    const DiscOutcome outcome = Burn();
    session_.End(outcome, parameters_.eject);
    FillResult(outcome);
  }

 private:
  [[nodiscard]] BurnOrder Order() const {
    BurnOrder order;
    order.action = parameters_.Action();
    order.copies = parameters_.Copies();
    order.speed = parameters_.speed;
    order.eject = parameters_.eject;
    order.verify = parameters_.verify;
    order.mode = parameters_.Mode(false);
    order.title = {parameters_.title, parameters_.performer};
    order.burning = texts::BurningDisc;
    order.simulating = texts::SimulatingDisc;
    order.done = texts::CopyBurnt;
    order.failed = texts::CopyNotBurnt;
    return order;
  }

  DiscOutcome Burn() {
    if (run_.ItemCount() > kMaxTracks) return {code::kTooManyTracks, 0};
    if (const DiscOutcome opened = session_.Open(); !opened.Good()) return opened;
    if (const DiscOutcome blank = session_.CheckBlank(); !blank.Good()) return blank;
    if (EstimatedSectors() > session_.FreeSectors()) return {code::kDiscTooSmall, 0};
    session_.Initialise(parameters_.speed);
    if (intermediate_.ConfirmStop()) return {Code(Outcome::Cancelled), 0};
    return parameters_.atOnce ? BurnAtOnce() : BurnTracks();
  }

  // What the list says, or the files themselves where it does not.
  std::uint32_t EstimatedSectors() {
    std::uint64_t sectors = 0;
    for (std::size_t i = 0; i < run_.ItemCount(); ++i) {
      const auto entry = ItemEntry(run_.GetJob(), i);
      const std::uint32_t pause = i == 0 || !entry ? 0 : entry->pause;
      sectors += std::uint64_t{pause} * kSectorsPerSecond;
      if (entry && entry->duration > 0) {
        sectors += std::uint64_t{entry->duration} * kSectorsPerSecond;
      } else {
        // Rounded down: whether it really fits shows when the files are ready.
        sectors += PlayingTimeOf(EntryFromPath(run_.Source(i))) * kSectorsPerSecond / 10'000'000;
      }
    }
    return ClampTo<std::uint32_t>(sectors);
  }

  // --- preparing

  // False when the user stopped.
  bool PrepareItem(std::size_t index) {
    PreparedFile file = intermediate_.Prepare(index);
    const bool stopped = file.outcome.code == Code(Outcome::Cancelled);
    if (!file.usable && !stopped) AddOutcome(run_, file.outcome);
    files_.push_back(std::move(file));
    return !stopped;
  }

  ProjectTrack TrackOf(const PreparedFile& file) {
    ProjectTrack track;
    track.bytes = file.bytes;
    track.pause = tracks_.empty() ? 0 : file.pause;
    track.isrc = isrc_.Next();
    track.text = file.text;
    track.open = [name = file.name] { return WaveSound(name); };
    return track;
  }

  // --- disc at once

  DiscOutcome BurnAtOnce() {
    for (std::size_t i = 0; i < run_.ItemCount(); ++i) {
      if (intermediate_.ConfirmStop() || !PrepareItem(i)) return {Code(Outcome::Cancelled), 0};
    }
    if (parameters_.Normalising() == NormaliseMode::Project) {
      const DiscOutcome normalised = intermediate_.NormaliseProject(files_);
      if (!normalised.Good()) return normalised;
    }
    AddTracks();
    if (const DiscOutcome allowed = CheckFailedFiles(); !allowed.Good()) return allowed;
    if (tracks_.empty()) return {code::kFilesNotPrepared, 0};
    if (ProjectSectors(tracks_, burn_.Mode(false)) > session_.FreeSectors()) return {code::kDiscTooSmall, 0};
    const DiscOutcome recorded = burn_.RecordDiscs(tracks_);
    burn_.HintAtPauses(tracks_);
    return recorded;
  }

  void AddTracks() {
    const bool paced = session_.Drive().Pace().poll.count() > 1;
    for (const PreparedFile& file : files_) {
      if (!file.usable) continue;
      const std::string name(FileNameOf(file.source));
      run_.StatusText(Format(Text(texts::AddingTrack), name));
      if (paced) (void)run_.Sleep(kBetweenTexts);
      tracks_.push_back(TrackOf(file));
      run_.StatusText(Format(Text(texts::TrackAdded), name));
      if (paced) (void)run_.Sleep(kBetweenTexts);
    }
    if (!parameters_.cdText) return;
    CdText text;
    text.disc = {parameters_.title, parameters_.performer};
    for (const ProjectTrack& track : tracks_) text.tracks.push_back(track.text);
    burn_.SetText(std::move(text));
  }

  DiscOutcome CheckFailedFiles() {
    const auto failed = std::ranges::count(files_, false, &PreparedFile::usable);
    if (failed == 0 || parameters_.OnFailed() == OnFailedFile::GoOn) return {};
    if (parameters_.OnFailed() == OnFailedFile::Ask) {
      const Answer answer =
          run_.Ask({.text = Format(Text(texts::AskFailedFiles), failed), .preset = Answer::No});
      if (answer == Answer::Yes) return {};
      return {Code(Outcome::Cancelled), 0};
    }
    run_.StatusText(Text(NotStartedText()));
    run_.ProtocolLine(Text(NotStartedText()));
    return {code::kFilesNotPrepared, 0};
  }

  [[nodiscard]] TextId NotStartedText() const {
    return parameters_.Action() == BurnAction::Burn ? texts::BurnNotStarted : texts::SimulationNotStarted;
  }

  // --- track by track

  DiscOutcome BurnTracks() {
    TrackQueue queue;
    queue.count = run_.ItemCount();
    queue.next = [this](std::size_t index, std::optional<ProjectTrack>& track) -> DiscOutcome {
      if (index >= files_.size()) {
        if (!PrepareItem(index)) return {Code(Outcome::Cancelled), 0};
        // Every copy has the same code.
        tracks_.push_back(TrackOf(files_.back()));
      }
      if (files_[index].usable) track = tracks_[index];
      return {};
    };
    queue.name = [this](std::size_t index) { return std::string(FileNameOf(files_[index].source)); };
    queue.stopped = [this] { return intermediate_.ConfirmStop(); };
    queue.notBurnt = texts::TrackNotBurnt;
    queue.notSimulated = texts::TrackNotSimulated;
    return burn_.RecordTracks(queue);
  }

  // --- the end

  void FillResult(const DiscOutcome& outcome) {
    RunResult& result = run_.Result();
    const auto usable = static_cast<std::uint32_t>(std::ranges::count(files_, true, &PreparedFile::usable));
    const auto all = ClampTo<std::uint32_t>(run_.ItemCount());
    const BurnCounts& counts = burn_.Counts();
    if (parameters_.atOnce) {
      result.counts = {usable, all - usable, counts.tracks, counts.discs};
    } else {
      const bool simulated = parameters_.Action() == BurnAction::Simulate && outcome.Good();
      const std::uint32_t done = simulated ? usable : counts.tracks;
      result.counts = {done,
                       all * static_cast<std::uint32_t>(std::max(1U, counts.discs)) -
                           std::min(done, all * std::max(1U, counts.discs)),
                       0, 0};
    }
    result.items.clear();
    for (std::size_t i = 0; i < run_.ItemCount(); ++i) {
      RunItem item;
      item.source = run_.Source(i);
      // A file that could not be prepared has its own reason; all others share the disc's.
      const bool own = i < files_.size() && !files_[i].usable;
      const DiscOutcome& what = own ? files_[i].outcome : outcome;
      // Copies that were not made spoil none of the files.
      item.code = what.code == code::kNoNextDisc ? 0 : what.code;
      item.remark = RemarkOf(what);
      result.items.push_back(std::move(item));
    }
    if (outcome.code == code::kNoNextDisc)
      result.items.push_back(
          {.source = {}, .destination = session_.Path(), .code = outcome.code, .remark = RemarkOf(outcome)});
    result.remarks = run_.Remarks();
  }

  [[nodiscard]] std::string RemarkOf(const DiscOutcome& outcome) const {
    if (outcome.code == code::kFilesNotPrepared) return std::string(Text(NotStartedText()));
    return outcome.Good() ? std::string() : code::RemarkText(outcome.code, outcome.number);
  }

  Run& run_;
  const BurnParameters& parameters_;
  Intermediate intermediate_;
  DiscSession session_;
  DiscBurn burn_;
  IsrcSeries isrc_ = IsrcSeries::OfNow();
  std::vector<PreparedFile> files_;
  std::vector<ProjectTrack> tracks_;
};

}  // namespace

FilterModule BurnerModule() {
  return MakeModule<BurnParameters>(
      {.id = FilterId::CdBurner,
       .fields = BurnFields(),
       .run = [](Run& run, const BurnParameters& own) { BurnRun(run, own).Execute(); },
       .remarks = code::Remarks(),
       .stop = {.status = texts::Stopping}});
}

}  // namespace ts5::disc
