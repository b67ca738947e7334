#include "platform/disc/virtual_recorder.h"

#include <algorithm>
#include <cstdlib>
#include <span>
#include <utility>

#include "platform/base/text.h"
#include "platform/disc/cue_data.h"
#include "platform/disc/recorder_buffer.h"
#include "platform/disc/recorder_pages.h"
#include "platform/disc/sector_file.h"
#include "platform/disc/virtual_drive.h"
#include "platform/files/files.h"
#include "platform/files/input_file.h"
#include "platform/files/paths.h"

namespace ts5 {
namespace {

using Status = RecordedDisc::Status;

constexpr std::int32_t kRunOut = 2;  // sectors behind a track that is written alone
constexpr SenseData kEndOfDisc{0x05, 0x63, 0x00};
constexpr SenseData kNoFormat{0x05, 0x30, 0x05};  // cannot be written: incompatible format

class VirtualRecorder final : public VirtualDrive {
 public:
  explicit VirtualRecorder(RecorderTime time) : VirtualDrive(VirtualRecorderName()), time_(time) { Reload(); }

 private:
  enum class Writing : std::uint8_t { Nothing, Session, Track };
  using Clock = std::chrono::steady_clock;

  // --- the disc

  void Reload() {
    mark_ = MarkOfTray();
    const RecorderTray tray = ReadRecorderTray();
    open_ = tray.open;
    disc_.reset();
    reading_.reset();
    Forget();
    if (open_ || tray.disc.empty()) return;
    if (auto disc = RecordedDisc::Load(tray.disc)) disc_ = *std::move(disc);
  }
  std::optional<SenseData> Attention() override {
    if (MarkOfTray() == mark_) return std::nullopt;
    Reload();
    return sense::kMediumChanged;
  }
  std::optional<SenseData> NotReady() override {
    if (open_) return sense::kTrayOpen;
    if (!disc_) return sense::kMediumNotPresent;
    if (Clock::now() < busyUntil_) return sense::kLongWriteInProgress;
    return std::nullopt;
  }
  const DiscLayout* Layout() override {
    return disc_ && !disc_->layout.tracks.empty() ? &disc_->layout : nullptr;
  }
  Outcome ReadAudio(Lba address, std::span<std::uint8_t> out) override {
    if (!reading_) {
      auto file = InputFile::Open(disc_->BinFile());
      if (!file) return Outcome::ReadFailed;
      reading_ = *std::move(file);
    }
    const auto sector = static_cast<std::uint64_t>(address.value + kPregapSectors);
    const auto got = reading_->ReadAt(sector * kAudioSectorBytes, out);
    return got && *got == out.size() ? Outcome::Success : Outcome::ReadFailed;
  }

  // --- commands

  ScsiReply Other(const MmcCommandRow& row, const ScsiCommand& command) override {
    using Handler = ScsiReply (VirtualRecorder::*)(const ScsiCommand&);
    struct Entry {
      MmcCommand code;
      bool needsDisc;
      Handler handler;
    };
    static constexpr std::array kHandlers{
        Entry{MmcCommand::ModeSense6, false, &VirtualRecorder::ModeSense6},
        Entry{MmcCommand::ModeSense10, false, &VirtualRecorder::ModeSense10},
        Entry{MmcCommand::ModeSelect10, false, &VirtualRecorder::ModeSelect},
        Entry{MmcCommand::StartStopUnit, false, &VirtualRecorder::StartStop},
        Entry{MmcCommand::PreventAllowRemoval, false, &VirtualRecorder::Prevent},
        Entry{MmcCommand::SetCdSpeed, false, &VirtualRecorder::SetSpeed},
        Entry{MmcCommand::ReadBufferCapacity, false, &VirtualRecorder::BufferCapacity},
        Entry{MmcCommand::ReadToc, true, &VirtualRecorder::ReadAtip},
        Entry{MmcCommand::ReadDiscInformation, true, &VirtualRecorder::ReadDiscInformation},
        Entry{MmcCommand::ReadTrackInformation, true, &VirtualRecorder::ReadTrackInformation},
        Entry{MmcCommand::SendOpc, true, &VirtualRecorder::SendOpc},
        Entry{MmcCommand::SendCueSheet, true, &VirtualRecorder::SendCueSheet},
        Entry{MmcCommand::Write10, true, &VirtualRecorder::Write},
        Entry{MmcCommand::SynchronizeCache, true, &VirtualRecorder::Synchronize},
        Entry{MmcCommand::CloseTrackSession, true, &VirtualRecorder::Close},
        Entry{MmcCommand::Blank, true, &VirtualRecorder::BlankDisc},
    };
    const auto* const entry = std::ranges::find(kHandlers, row.code, &Entry::code);
    if (entry == kHandlers.end()) return Refused(sense::kUnknownCommand);
    if (entry->needsDisc) {
      if (const auto sense = NotReady()) return Refused(*sense);
    }
    return (this->*entry->handler)(command);
  }

  static ScsiReply Good() { return {true, {}, 0}; }
  static ScsiReply Took(const ScsiCommand& command) { return {true, {}, command.out.size()}; }

  ScsiReply ModeSense6(const ScsiCommand& command) { return ModeSense(command, false, command.cdb[4]); }
  ScsiReply ModeSense10(const ScsiCommand& command) { return ModeSense(command, true, Field(command, 7, 2)); }
  ScsiReply ModeSense(const ScsiCommand& command, bool longHeader, std::size_t allocation) {
    const auto reply = pages_.Sense(command.cdb[2] & 0x3F, longHeader);
    return reply ? Give(*reply, command, allocation) : Refused(sense::kInvalidField);
  }
  ScsiReply ModeSelect(const ScsiCommand& command) {
    if (command.out.size() != Field(command, 7, 2)) return Refused(sense::kParameterLength);
    if ((command.cdb[1] & 0x10) == 0) return Refused(sense::kInvalidField);
    // Between a cue sheet and its last sector nothing of it can change.
    if (writing_ != Writing::Nothing && begun_) return Refused(sense::kCommandSequence);
    if (const auto sense = pages_.Select(command.out)) return Refused(*sense);
    return Took(command);
  }

  ScsiReply StartStop(const ScsiCommand& command) {
    const bool loadEject = (command.cdb[4] & 0x02) != 0;
    if (!loadEject) return Good();
    const bool load = (command.cdb[4] & 0x01) != 0;
    if (!load && prevented_) return Refused(sense::kRemovalPrevented);
    RecorderTray tray = ReadRecorderTray();
    if (tray.open != load) return Good();
    tray.open = !load;
    if (Failed(WriteRecorderTray(tray))) return Refused({sense::kHardwareError, 0x53, 0x00});
    Reload();
    return Good();
  }
  ScsiReply Prevent(const ScsiCommand& command) {
    prevented_ = (command.cdb[4] & 0x01) != 0;
    return Good();
  }
  ScsiReply SetSpeed(const ScsiCommand& command) {
    pages_.SetSpeed(Field(command, 4, 2));
    return Good();
  }
  ScsiReply BufferCapacity(const ScsiCommand& command) {
    ByteWriter out;
    out.U16Be(10);
    out.U16Be(0);
    out.U32Be(static_cast<std::uint32_t>(RecorderBuffer::kBytes));
    out.U32Be(static_cast<std::uint32_t>(buffer_.Blank()));
    return Give(out.View(), command, Field(command, 7, 2));
  }

  ScsiReply ReadAtip(const ScsiCommand& command) {
    return Give(AtipReply(*disc_), command, Field(command, 7, 2));
  }
  ScsiReply ReadDiscInformation(const ScsiCommand& command) {
    return Give(DiscInformationReply(*disc_), command, Field(command, 7, 2));
  }
  ScsiReply ReadTrackInformation(const ScsiCommand& command) {
    const std::uint32_t number = Field(command, 2, 4);
    const auto& tracks = disc_->layout.tracks;
    const auto known = std::ranges::find(tracks, static_cast<int>(number), &DiscTrack::number);
    const std::uint32_t invisible = static_cast<std::uint32_t>(tracks.size()) + 1;
    TrackState state;
    if ((command.cdb[1] & 0x03) != 1) return Refused(sense::kInvalidField);
    if (known != tracks.end()) {
      state.track = *known;
    } else if ((number == kInvisibleTrack || number == invisible) && Writable()) {
      state.track.number = static_cast<int>(invisible);
      state.track.start = begun_ ? start_ : NextWritable();
      state.blank = !begun_;
      state.nextWritable = NextWritable();
      state.track.sectors = static_cast<std::uint32_t>(std::max(disc_->LastLeadOut() - state.track.start, 0));
    } else {
      return Refused(sense::kInvalidField);
    }
    return Give(TrackInformationReply(state, disc_->LastLeadOut()), command, Field(command, 7, 2));
  }
  ScsiReply SendOpc(const ScsiCommand& /*command*/) {
    return Writable() ? Good() : Refused(sense::kIncompatibleMedium);
  }

  // --- writing

  [[nodiscard]] bool Writable() const {
    return disc_->status == Status::Blank || disc_->status == Status::Open;
  }
  [[nodiscard]] Lba NextWritable() const {
    if (writing_ != Writing::Nothing) return next_;
    if (disc_->layout.tracks.empty()) return Lba{0};
    return disc_->layout.leadOut + (kRunOut + kPregapSectors);
  }

  ScsiReply SendCueSheet(const ScsiCommand& command) {
    if (command.out.size() != Field(command, 6, 3)) return Refused(sense::kParameterLength);
    if (pages_.Writing().type != WriteType::SessionAtOnce || begun_) return Refused(sense::kCommandSequence);
    if (disc_->status != Status::Blank) return Refused(sense::kIncompatibleMedium);
    auto cue = ParseCueData(command.out);
    if (!cue || cue->layout.leadOut > disc_->LastLeadOut()) return Refused(sense::kInvalidParameter);
    cue_ = *std::move(cue);
    writing_ = Writing::Session;
    start_ = next_ = cue_.cdText ? kLeadInStart : Lba{-kPregapSectors};
    return Took(command);
  }

  // What is wrong with the page of the write parameters for that way of writing.
  std::optional<SenseData> CheckParameters() {
    const WriteParameters parameters = pages_.Writing();
    if (parameters.dataBlockType != 0 || parameters.sessionFormat != 0) return kNoFormat;
    const bool atOnce = writing_ == Writing::Session;
    if ((parameters.type == WriteType::SessionAtOnce) != atOnce) return sense::kCommandSequence;
    return std::nullopt;
  }

  // The first sector of a session or of a track.
  std::optional<SenseData> Begin() {
    const WriteParameters parameters = pages_.Writing();
    if (const auto wrong = CheckParameters()) return wrong;
    test_ = parameters.testWrite;
    buffer_.Start(pages_.WriteSpeed() * 1000.0);
    if (writing_ == Writing::Nothing) {
      if (!Writable() || (disc_->status == Status::Open && disc_->atOnce)) return sense::kIncompatibleMedium;
      if (disc_->layout.tracks.size() >= kMaxTracks) return kEndOfDisc;
      start_ = next_ = NextWritable();
    }
    if (!test_) {
      const bool fresh = disc_->layout.tracks.empty();
      if (Failed(file_.Open(disc_->BinFile(), fresh))) return sense::kWriteError;
      // Until the session is closed the disc is one that broke off: so it is found after a power cut.
      RecordedDisc mark = *disc_;
      mark.status = Status::Damaged;
      if (writing_ == Writing::Session) mark.atOnce = true;
      if (Failed(mark.Save())) return sense::kWriteError;
      if (writing_ == Writing::Nothing && Failed(WriteZeros(start_ - GapBefore(), start_)))
        return sense::kWriteError;
    }
    if (writing_ == Writing::Nothing) writing_ = Writing::Track;
    begun_ = true;
    return std::nullopt;
  }
  // Sectors that the drive writes itself before a track: run-out of the one before it, and the pause.
  [[nodiscard]] std::int32_t GapBefore() const {
    return disc_->layout.tracks.empty() ? kPregapSectors : kRunOut + kPregapSectors;
  }
  Outcome WriteZeros(Lba from, Lba to) {
    return file_.Write(from, Bytes(static_cast<std::size_t>(to - from) * kAudioSectorBytes));
  }

  ScsiReply Write(const ScsiCommand& command) {
    const Lba address{static_cast<std::int32_t>(Field(command, 2, 4))};
    const auto count = static_cast<std::int32_t>(Field(command, 7, 2));
    if (count == 0) return Good();
    if (address != NextWritable()) return Refused(sense::kInvalidWriteAddress);
    const bool leadIn = writing_ == Writing::Session && address.value < -kPregapSectors;
    const std::size_t sectorBytes = leadIn ? kRawSubBytes : kAudioSectorBytes;
    if (command.out.size() != static_cast<std::size_t>(count) * sectorBytes)
      return Refused(sense::kInvalidField);
    const Lba end = leadIn ? Lba{-kPregapSectors}
                           : (writing_ == Writing::Session ? cue_.layout.leadOut : disc_->LastLeadOut());
    if (address + count > end) return Refused(writing_ == Writing::Session ? sense::kOutOfRange : kEndOfDisc);
    if (!begun_) {
      if (const auto wrong = Begin()) return Refused(*wrong);
    }
    if (const auto wrong = PassBuffer(command.out.size())) return Refused(*wrong);
    if (leadIn) {
      if (leadInPacks_.size() < kMostLeadInPacks * kCdTextPackBytes) {
        const Bytes packs = PacksOfLeadInSector(command.out);
        leadInPacks_.insert(leadInPacks_.end(), packs.begin(), packs.end());
      }
    } else if (!test_ && Failed(file_.Write(address, command.out))) {
      return Refused(sense::kWriteError);
    }
    next_ = address + count;
    return Took(command);
  }

  std::optional<SenseData> PassBuffer(std::size_t bytes) {
    if (time_ == RecorderTime::None) return std::nullopt;
    switch (buffer_.Put(static_cast<double>(bytes), Clock::now())) {
      case RecorderBuffer::Taken::Full:
        return sense::kLongWriteInProgress;
      case RecorderBuffer::Taken::RanDry:
        // With protection the laser goes on where it stopped.
        if (pages_.Writing().underrunProtection) return std::nullopt;
        Abandon();
        return sense::kLossOfStreaming;
      case RecorderBuffer::Taken::Yes:
        break;
    }
    return std::nullopt;
  }

  ScsiReply Synchronize(const ScsiCommand& /*command*/) {
    if (time_ == RecorderTime::Real && begun_)
      busyUntil_ = Clock::now() + std::chrono::duration_cast<Clock::duration>(buffer_.Rest(Clock::now()));
    return Failed(file_.Flush()) ? Refused(sense::kWriteError) : Good();
  }

  ScsiReply Close(const ScsiCommand& command) {
    const auto what = static_cast<CloseWhat>(command.cdb[2] & 0x07);
    if (what == CloseWhat::Track) return CloseTrack(Field(command, 4, 2));
    if (what == CloseWhat::Session) return CloseSession();
    return Refused(sense::kInvalidField);
  }

  ScsiReply CloseTrack(std::uint32_t number) {
    if (writing_ != Writing::Track || number != disc_->layout.tracks.size() + 1)
      return Refused(sense::kCommandSequence);
    if (!test_) {
      const WriteParameters parameters = pages_.Writing();
      DiscLayout& layout = disc_->layout;
      DiscTrack track;
      track.number = static_cast<int>(number);
      track.control = parameters.trackMode;
      track.pause = start_ - kPregapSectors;
      track.start = start_;
      track.sectors = static_cast<std::uint32_t>(next_ - start_);
      track.isrc = parameters.isrc;
      if (layout.tracks.empty()) layout.catalogue = parameters.catalogue;
      layout.tracks.push_back(std::move(track));
      layout.leadOut = next_;
      if (Failed(SaveAs(Status::Open, false))) return Refused(sense::kWriteError);
    }
    Rest();
    return Good();
  }

  ScsiReply CloseSession() {
    switch (writing_) {
      case Writing::Track:
        return Refused(sense::kSessionNotClosable);
      case Writing::Session:
        if (!begun_ || next_ != cue_.layout.leadOut) return Refused(sense::kSessionNotClosable);
        if (!test_) {
          disc_->layout = cue_.layout;
          disc_->text = ParseCdText(leadInPacks_);
          disc_->layout.cdText = CdTextPacks(disc_->text);
          if (Failed(SaveAs(Status::Finalized, true))) return Refused(sense::kWriteError);
        }
        break;
      case Writing::Nothing:
        if (disc_->status != Status::Open) return Refused(sense::kCommandSequence);
        if (Failed(SaveAs(Status::Finalized, disc_->atOnce))) return Refused(sense::kWriteError);
        break;
    }
    Rest();
    return Good();
  }

  Outcome SaveAs(Status status, bool atOnce) {
    if (const Outcome flushed = file_.Flush(); Failed(flushed)) return flushed;
    disc_->status = status;
    disc_->atOnce = atOnce;
    reading_.reset();
    return disc_->Save();
  }

  // A track or a session is at its end.
  void Rest() {
    if (time_ == RecorderTime::Real) busyUntil_ = Clock::now() + kClosing;
    Forget();
  }
  void Forget() {
    file_.Close();
    writing_ = Writing::Nothing;
    begun_ = false;
    test_ = false;
    leadInPacks_.clear();
  }
  // The laser stopped in the middle.
  void Abandon() {
    const bool spoilt = !test_;
    Forget();
    if (spoilt) disc_->status = Status::Damaged;
  }

  ScsiReply BlankDisc(const ScsiCommand& command) {
    const unsigned type = command.cdb[1] & 0x07;
    if (type > static_cast<unsigned>(BlankType::Minimal)) return Refused(sense::kInvalidField);
    if (!disc_->rewritable) return Refused(sense::kIncompatibleMedium);
    if (begun_) return Refused(sense::kCommandSequence);
    Forget();
    reading_.reset();
    return Failed(disc_->Erase()) ? Refused(sense::kWriteError) : Good();
  }

  static constexpr std::size_t kMostLeadInPacks = 2048;
  static constexpr auto kClosing = std::chrono::milliseconds(500);

  RecorderTime time_;
  TrayMark mark_;
  bool open_ = false;
  bool prevented_ = false;
  std::optional<RecordedDisc> disc_;
  std::optional<InputFile> reading_;
  RecorderPages pages_;

  Writing writing_ = Writing::Nothing;
  bool begun_ = false;  // the laser is on
  bool test_ = false;
  Lba start_ = {};
  Lba next_ = {};
  CueData cue_;
  Bytes leadInPacks_;
  SectorFile file_;
  RecorderBuffer buffer_;
  Clock::time_point busyUntil_ = {};
};

}  // namespace

DriveName VirtualRecorderName() {
  return {"STAVORA", "VIRTUELLER BRENNER"};
}

RecorderTime RecorderTimeOfEnvironment() {
  const char* const value =
      std::getenv("STAVORA_RECORDER_TIME");  // NOLINT(concurrency-mt-unsafe): nobody changes it
  return value != nullptr && EqualsIgnoringCase(value, "real") ? RecorderTime::Real : RecorderTime::None;
}

std::unique_ptr<ScsiTransport> OpenVirtualRecorder(RecorderTime time) {
  return std::make_unique<VirtualRecorder>(time);
}

}  // namespace ts5
