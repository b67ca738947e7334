#include "disc/copier.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <utility>

#include "audio/wave_file.h"
#include "disc/copy_source.h"
#include "disc/disc_burn.h"
#include "disc/disc_codes.h"
#include "disc/drive_choice.h"
#include "disc/grab_parameters.h"
#include "disc/texts.h"
#include "disc/track_file.h"
#include "frame/run.h"
#include "frame/texts.h"
#include "platform/base/casts.h"
#include "platform/base/text.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"
#include "platform/files/remove_tree.h"

namespace ts5::disc {
namespace {

// A folder for the tracks, which goes with them.
class CopyFolder {
 public:
  CopyFolder(const CopyParameters& parameters) : keep_(!parameters.deleteIntermediate) {
    std::error_code error;
    const std::string base =
        parameters.systemFolder ? std::filesystem::temp_directory_path(error).string() : parameters.folder;
    std::string path = JoinPath(base, std::string(kTemporaryPrefix) + "XXXXXX");
    if (::mkdtemp(path.data()) != nullptr) path_ = path;
  }
  ~CopyFolder() {
    if (!keep_ && !path_.empty()) RemoveTree(path_);
  }
  CopyFolder(const CopyFolder&) = delete;
  CopyFolder& operator=(const CopyFolder&) = delete;
  [[nodiscard]] std::string NameOf(int track) const {
    return JoinPath(path_, Format(Text(texts::GrabName), track));
  }
  [[nodiscard]] bool Made() const { return !path_.empty(); }

 private:
  std::string path_;
  bool keep_;
};

class CopyRun {
 public:
  CopyRun(Run& run, const CopyParameters& parameters)
      : run_(run),
        parameters_(parameters),
        sourcePath_(SourceDrivePath(run)),
        session_(run, RecorderPath(run)),
        oneDrive_(sourcePath_ == session_.Path()) {}

  void Execute() {
    const DiscOutcome outcome = Copy();
    session_.End(outcome, parameters_.eject);
    FillResult(outcome);
  }

 private:
  [[nodiscard]] BurnOrder Order() const {
    const bool fly = parameters_.OnTheFly();
    BurnOrder order;
    order.action = parameters_.Action();
    order.copies = parameters_.Copies();
    order.speed = parameters_.speed;
    order.eject = parameters_.eject;
    order.verify = parameters_.verify;
    order.mode.atOnce = parameters_.atOnce;
    order.mode.underrunProtection = parameters_.underrunProtection;
    order.mode.copyProtected = parameters_.copyProtected;
    order.mode.preEmphasis = parameters_.preEmphasis;
    order.mode.onTheFly = fly;
    order.mode.catalogue = source_->Catalogue();
    order.title = source_->Text().disc;
    if (parameters_.atOnce) order.mode.text = source_->Text();
    order.burning = fly ? texts::CopyingFly : texts::BurningDisc;
    order.simulating = fly ? texts::SimulatingFly : texts::SimulatingDisc;
    order.done = fly ? texts::CopyMade : texts::CopyBurnt;
    order.failed = fly ? texts::CopyNotMade : texts::CopyNotBurnt;
    return order;
  }

  DiscOutcome Copy() {
    if (oneDrive_ && parameters_.OnTheFly()) return {code::kDriveBusy, 0};
    if (const DiscOutcome opened = OpenSource(); !opened.Good()) return opened;
    if (!oneDrive_) {
      if (const DiscOutcome ready = OpenRecorder(); !ready.Good()) return ready;
    }
    if (const DiscOutcome read = ReadSource(); !read.Good()) return read;
    if (!oneDrive_) {
      if (const DiscOutcome fits = CheckSpace(); !fits.Good()) return fits;
    }
    burn_.emplace(run_, session_, Order(), [this] { return AskNextDisc(); });
    if (parameters_.OnTheFly()) {
      for (std::size_t i = 0; i < source_->Tracks().size(); ++i) AddTrack(i, source_->Direct(i, true));
      return Record();
    }
    if (const DiscOutcome read = ReadTracks(); !read.Good()) return read;
    if (oneDrive_) {
      // The source makes room for the copy.
      const bool eject = parameters_.eject;
      CloseSource(eject);
      if (!AskNextDisc()) return {code::kNoNextDisc, 0};
      if (const DiscOutcome ready = OpenRecorder(); !ready.Good()) return ready;
      if (const DiscOutcome fits = CheckSpace(); !fits.Good()) return fits;
    }
    return parameters_.atOnce ? Record() : RecordTracks();
  }

  // --- the source

  DiscOutcome OpenSource() {
    auto opened = OpenSourceDrive(run_, sourcePath_);
    if (!opened) return opened.error();
    drive_ = *std::move(opened);
    return {};
  }

  void CloseSource(bool eject) {
    if (eject && drive_) (void)drive_->drive.Eject();
    drive_.reset();
  }

  DiscOutcome ReadSource() {
    run_.StatusText(Text(texts::ReadingSourceDisc));
    const auto toc = drive_->drive.ReadToc([this] { return run_.Cancelled(); });
    if (!toc) {
      // A blank disc has no table of contents, but says that it is one.
      const auto info = drive_->drive.ReadDiscInfo();
      if (info && info->status == DiscStatus::Blank) return {code::kNoTracks, 0};
      run_.StatusText(Text(texts::SourceDiscNotRead));
      return {code::kDiscUnknown, static_cast<std::int32_t>(engine::kDiscUnknown)};
    }
    run_.StatusText(Text(texts::SourceDiscRead));
    if (toc->tracks.empty()) return {code::kNoTracks, 0};
    if (!toc->IsAudioCd()) return {code::kNoAudioDisc, 0};
    (void)drive_->drive.SetSpeed(0);
    source_.emplace(drive_->drive, *toc);
    return parameters_.noPauses ? DiscOutcome{} : FindPauses();
  }

  DiscOutcome FindPauses() {
    bool all = true;
    for (std::size_t i = 0; i < source_->Tracks().size();) {
      if (ConfirmStop()) return {Code(Outcome::Cancelled), 0};
      run_.StatusText(Format(Text(texts::ReadingTrackInfo), std::to_string(source_->Tracks()[i].number)));
      const bool found = source_->FindPauseOf(i, [this] { return run_.Cancelled(); });
      if (run_.Cancelled()) continue;  // who does not stop after all still gets this one
      if (drive_->drive.DiscChanged())
        return {code::kTrackNotRead, static_cast<std::int32_t>(engine::kDiscChanged)};
      all = found && all;
      ++i;
    }
    if (all) {
      run_.StatusText(Text(texts::TrackInfoRead));
      return {};
    }
    run_.StatusText(Text(texts::TrackInfoNotRead));
    if (run_.Ask({.text = std::string(Text(texts::AskPauses)), .preset = Answer::No}) == Answer::Yes)
      return {Code(Outcome::Cancelled), 0};
    source_->DropPauses();
    run_.AddStatus({code::kPausesUnknown, false, 0});
    return {};
  }

  // Every track as a wave file. One that cannot be read is left out when the user wants that.
  DiscOutcome ReadTracks() {
    folder_.emplace(parameters_);
    if (!folder_->Made()) return {code::kTrackNotRead, static_cast<std::int32_t>(engine::kNotCreated)};
    std::uint32_t failed = 0;
    DiscOutcome failure;
    for (std::size_t i = 0; i < source_->Tracks().size(); ++i) {
      const int number = source_->Tracks()[i].number;
      run_.StatusText(Format(Text(texts::ReadingTrack), std::to_string(number)));
      const std::uint32_t error = ReadTrack(i);
      if (error == engine::kStopped) return {Code(Outcome::Cancelled), 0};
      if (error != 0) {
        run_.StatusText(Text(texts::TrackNotRead));
        ++failed;
        failure = {code::kTrackNotRead, static_cast<std::int32_t>(error)};
        AddOutcome(run_, failure);
        continue;
      }
      ++tracksRead_;
      AddTrack(i, [name = folder_->NameOf(number)] { return WaveSound(name); });
    }
    if (source_->Reader().Doubtful() > 0) run_.AddStatus({code::kUnreliable, false, 0});
    if (failed > 0) {
      const std::string question = Format(Text(texts::AskFailedTracks), failed);
      if (tracks_.empty() || run_.Ask({.text = question, .preset = Answer::No}) != Answer::Yes)
        return failure;
      readFailure_ = failure;
    }
    run_.StatusText(Text(texts::AllTracksRead));
    return {};
  }

  std::uint32_t ReadTrack(std::size_t index) {
    const SourceTrack& track = source_->Tracks()[index];
    const std::uint32_t sectors = track.Sectors(parameters_.atOnce);
    auto wave = WaveFile::Create(folder_->NameOf(track.number), AudioCdFormat(),
                                 std::uint64_t{sectors} * kAudioSectorBytes);
    auto sound = source_->Direct(index, parameters_.atOnce)();
    if (!wave || !sound) return engine::kNotCreated;
    const auto all = static_cast<std::uint32_t>(source_->Tracks().size());
    const auto item = static_cast<std::uint32_t>(index) + 1;
    return ReadTrackToFile(**sound, {track.number, sectors}, *std::move(wave),
                           {[this] { return run_.ConfirmStop(Text(texts::AskStopGrabbing)); },
                            [=, this](double fraction) { run_.Progress(item, all, fraction); },
                            [this](std::string_view text) { run_.StatusText(text); }});
  }

  // --- the copy

  DiscOutcome OpenRecorder() {
    if (const DiscOutcome opened = session_.Open(); !opened.Good()) return opened;
    const DiscOutcome blank = session_.CheckBlank();
    if (blank.code == code::kDiscNotBlank) run_.StatusText(Text(texts::CopyNotBlank));
    return blank;
  }

  DiscOutcome CheckSpace() {
    std::vector<ProjectTrack> tracks;
    for (std::size_t i = 0; i < source_->Tracks().size(); ++i)
      tracks.push_back(source_->Project(i, parameters_.atOnce, {}));
    RecordingMode mode;
    mode.atOnce = parameters_.atOnce;
    if (ProjectSectors(tracks, mode) > session_.FreeSectors()) {
      run_.StatusText(Text(texts::TargetTooSmall));
      return {code::kDiscTooSmall, 0};
    }
    run_.StatusText(Text(texts::SourceFits));
    session_.Initialise(parameters_.speed);
    return {};
  }

  void AddTrack(std::size_t index, SoundOpener sound) {
    const std::string name = Format(Text(texts::CopyTrackName), source_->Tracks()[index].number);
    run_.StatusText(Format(Text(texts::AddingCopy), name));
    tracks_.push_back(source_->Project(index, parameters_.atOnce, std::move(sound)));
    names_.push_back(name);
    run_.StatusText(Format(Text(texts::CopyAdded), name));
  }

  DiscOutcome Record() {
    DiscOutcome outcome = burn_->RecordDiscs(tracks_);
    if (burn_->CueSheetRefused()) {
      const Answer answer = run_.Ask({.text = std::string(Text(texts::AskCueSheet)), .preset = Answer::No});
      if (answer != Answer::Yes) {
        burn_->HintAtPauses(tracks_);
        AddOutcome(run_, outcome);
        return {Code(Outcome::Cancelled), 0};
      }
      run_.AddStatus({code::kPausesDropped, false, 0});
      // The sectors stay those of the source; only the marks of the pauses go.
      std::uint64_t moved = 0;
      for (std::size_t i = 1; i < tracks_.size(); ++i) moved += tracks_[i].pause;
      if (parameters_.OnTheFly()) {
        source_->DropPauses();
        tracks_.clear();
        names_.clear();
        for (std::size_t i = 0; i < source_->Tracks().size(); ++i) AddTrack(i, source_->Direct(i, true));
      } else if (moved > 0) {
        source_->DropPauses();
        tracks_.clear();
        names_.clear();
        tracksRead_ = 0;
        if (const DiscOutcome read = ReadTracks(); !read.Good()) return read;
      }
      outcome = burn_->RecordDiscs(tracks_);
    }
    if (parameters_.OnTheFly() && outcome.Good()) tracksRead_ = static_cast<std::uint32_t>(tracks_.size());
    if (source_->Reader().Doubtful() > 0) run_.AddStatus({code::kUnreliable, false, 0});
    return outcome;
  }

  // Track by track: each has the two seconds that the recorder makes.
  DiscOutcome RecordTracks() {
    TrackQueue queue;
    queue.count = tracks_.size();
    queue.next = [this](std::size_t index, std::optional<ProjectTrack>& track) -> DiscOutcome {
      track = tracks_[index];
      return {};
    };
    queue.name = [this](std::size_t index) { return names_[index]; };
    queue.stopped = [this] { return ConfirmStop(); };
    queue.notBurnt = queue.notSimulated = texts::TrackNotWritten;
    return burn_->RecordTracks(queue);
  }

  // --- what is asked and what is left

  bool ConfirmStop() { return run_.ConfirmStop(Text(texts::AskStopCopying)); }

  bool AskNextDisc() {
    return AskForNextDisc(run_, [this] { FillResult({}); });
  }

  void FillResult(const DiscOutcome& outcome) {
    RunResult& result = run_.Result();
    const BurnCounts counts = burn_ ? burn_->Counts() : BurnCounts{};
    const auto all = source_ ? ClampTo<std::uint32_t>(source_->Tracks().size()) : 0U;
    const bool simulated = parameters_.Action() == BurnAction::Simulate;
    const std::uint32_t wanted = simulated ? 0 : all * static_cast<std::uint32_t>(parameters_.Copies());
    result.counts = {tracksRead_, counts.tracks, wanted - std::min(wanted, counts.tracks), counts.discs};
    result.items.clear();
    RunItem item;
    item.source = sourcePath_;
    item.destination = session_.Path();
    const DiscOutcome& what = outcome.Good() ? readFailure_ : outcome;
    item.code = what.code;
    if (!what.Good()) item.remark = code::RemarkText(what.code, what.number);
    result.items.push_back(std::move(item));
    result.remarks = run_.Remarks();
  }

  Run& run_;
  const CopyParameters& parameters_;
  std::string sourcePath_;
  std::optional<ClaimedDrive> drive_;
  std::optional<CopySource> source_;
  std::optional<CopyFolder> folder_;
  DiscSession session_;
  std::optional<DiscBurn> burn_;
  std::vector<ProjectTrack> tracks_;
  std::vector<std::string> names_;  // of them
  std::uint32_t tracksRead_ = 0;
  DiscOutcome readFailure_ = {};  // of a track that was left out
  bool oneDrive_;
};

}  // namespace

FilterModule CopierModule() {
  return MakeModule<CopyParameters>(
      {.id = FilterId::CdCopier,
       .fields = CopyFields(),
       .run = [](Run& run, const CopyParameters& own) { CopyRun(run, own).Execute(); },
       .remarks = code::Remarks(),
       .stop = {.status = texts::Stopping}});
}

}  // namespace ts5::disc
