#include "disc/recorder.h"

#include <algorithm>
#include <atomic>
#include <future>
#include <thread>
#include <utility>

#include "disc/texts.h"
#include "platform/base/text.h"
#include "platform/disc/cue_data.h"
#include "platform/sound/thread_priority.h"

namespace ts5::disc {
namespace {

constexpr std::uint8_t kWriteFailed = 0xFF;
constexpr std::uint8_t kCloseFailed = 0xFE;
constexpr auto kTellAgain = std::chrono::milliseconds(10);

bool WriteZeros(SectorPipe& pipe, std::uint64_t bytes, const std::function<void()>& step) {
  static const Bytes zeros(kPortion);
  while (bytes > 0) {
    const auto part = static_cast<std::size_t>(std::min<std::uint64_t>(bytes, zeros.size()));
    if (!pipe.Write(ByteView(zeros).first(part))) return false;
    bytes -= part;
    step();
  }
  return true;
}

// Takes what is in the pipe to the drive, before all other work of this machine where the system lets it.
class WriterThread {
 public:
  WriterThread(SectorPipe& pipe, CdDrive& drive, Lba start)
      : writer_(pipe, drive, start), next_(start.value), thread_([this, &pipe] {
          hurried_ = HurryThisThread();
          pipe.WaitForReserve();
          while (writer_.Step()) next_ = writer_.Next().value;
          pipe.CloseReading();
          ended_.set_value();
        }) {}

  [[nodiscard]] Lba Next() const { return {next_.load()}; }
  [[nodiscard]] bool EndsWithin(std::chrono::milliseconds time) {
    return end_.wait_for(time) == std::future_status::ready;
  }
  // Once it has ended.
  [[nodiscard]] EngineError Error() const { return writer_.Error(); }
  [[nodiscard]] bool Hurried() const { return hurried_; }

 private:
  SectorWriter writer_;
  std::atomic<std::int32_t> next_;
  std::promise<void> ended_;
  std::future<void> end_ = ended_.get_future();
  std::atomic<bool> hurried_ = false;
  std::jthread thread_;
};

// How many of the tracks are written whole; the last one never is.
int TracksBefore(std::span<const PlannedTrack> plan, std::uint32_t sectors) {
  std::uint64_t bytes = std::uint64_t{sectors} * kAudioSectorBytes;
  int tracks = 0;
  for (const PlannedTrack& track : plan) {
    const std::uint64_t whole =
        std::uint64_t{track.silence} * kAudioSectorBytes + track.bytes + track.padding;
    if (bytes < whole || &track == &plan.back()) break;
    bytes -= whole;
    ++tracks;
  }
  return tracks;
}

int Percent(std::uint32_t done, std::uint32_t total) {
  return total == 0 ? 100 : static_cast<int>(std::uint64_t{done} * 100 / total);
}

}  // namespace

bool engine::IsUnderrun(EngineError error) {
  return error == SenseNumber(kWriteFailed, sense::kLossOfStreaming);
}

std::string ProgressText(const RecordingProgress& progress, const RecordingMode& mode) {
  const auto done = static_cast<int>(progress.done);
  const auto total = static_cast<int>(progress.total);
  const int percent = Percent(progress.done, progress.total);
  if (mode.onTheFly) {
    // Until the pipe is full enough to begin, there is only something to read.
    const bool reads = progress.done == 0;
    const auto part = static_cast<int>(reads ? progress.fed : progress.done);
    const TextId text = reads            ? texts::DiscReadPart
                        : mode.testWrite ? texts::DiscSimulatedFly
                                         : texts::DiscBurntFly;
    return Format(Text(text), part, total, Percent(static_cast<std::uint32_t>(part), progress.total), '%');
  }
  if (mode.atOnce) {
    const TextId text = mode.testWrite ? texts::DiscSimulated : texts::DiscBurnt;
    return Format(Text(text), done, total, percent, '%', progress.track);
  }
  const TextId text = mode.testWrite ? texts::TrackSimulatedPart : texts::TrackBurntPart;
  return Format(Text(text), progress.track, done, total, percent, '%');
}

EngineError FeedTrack(SectorPipe& pipe, const ProjectTrack& track, const PlannedTrack& plan,
                      const std::function<void()>& step) {
  if (!WriteZeros(pipe, std::uint64_t{plan.silence} * kAudioSectorBytes, step)) return engine::kPipeBroken;
  auto sound = track.open();
  if (!sound) return engine::kSourceOpen;
  for (std::uint64_t left = plan.bytes; left > 0;) {
    const auto room = pipe.Room(static_cast<std::size_t>(std::min<std::uint64_t>(left, kPortion)));
    if (room.empty()) return engine::kPipeBroken;
    const auto got = (*sound)->Read(room);
    // A source that has become shorter would shift all tracks behind it.
    if (!got || *got != room.size()) return engine::kSourceRead;
    pipe.Add(room.size());
    left -= room.size();
    step();
  }
  return WriteZeros(pipe, plan.padding, step) ? engine::kNone : engine::kPipeBroken;
}

bool SectorWriter::Step() {
  if (error_ != engine::kNone) return false;
  const ByteView there = pipe_.Next(kPortion);
  const auto sectors = static_cast<std::int32_t>(there.size() / kAudioSectorBytes);
  if (sectors == 0) return false;
  const ByteView data = there.first(static_cast<std::size_t>(sectors) * kAudioSectorBytes);
  if (Failed(drive_.WriteSectors(next_, data))) {
    error_ = SenseNumber(kWriteFailed, drive_.LastSense());
    return false;
  }
  pipe_.Drop(data.size());
  next_ = next_ + sectors;
  return true;
}

Recorder::Recorder(CdDrive& drive, RecordingMode mode, RecordingEvents events)
    : drive_(drive), mode_(std::move(mode)), events_(std::move(events)) {}

void Recorder::Say(std::string_view text) const {
  if (events_.status) events_.status(text);
}

EngineError Recorder::SetParameters(std::uint8_t control, const std::string& isrc) {
  Say(Text(mode_.atOnce ? texts::PreparingDisc : texts::PreparingTrack));
  WriteParameters parameters;
  parameters.type = mode_.atOnce ? WriteType::SessionAtOnce : WriteType::TrackAtOnce;
  parameters.testWrite = mode_.testWrite;
  parameters.underrunProtection = mode_.underrunProtection;
  parameters.copy = mode_.copyProtected;
  parameters.trackMode = control;
  if (!mode_.atOnce) {
    parameters.catalogue = mode_.catalogue;
    parameters.isrc = isrc;
  }
  switch (drive_.SetWriteParameters(parameters)) {
    case Outcome::Success:
      return engine::kNone;
    case Outcome::InvalidParameter:
      return engine::kParametersUnread;
    default:
      return engine::kParametersRefused;
  }
}

// The lead-in's sub-channel, from where it begins up to the pre-gap.
EngineError Recorder::WriteTexts() {
  const Bytes packs = CdTextPacks(mode_.text);
  const auto info = drive_.ReadDiscInfo();
  if (!info || !info->leadIn) return engine::kDiscUnknown;
  Lba next = *info->leadIn;
  for (std::size_t sector = 0; next.value < -kPregapSectors;) {
    const auto count = std::min<std::int32_t>(kSectorsPerCommand, -kPregapSectors - next.value);
    Bytes data;
    for (std::int32_t i = 0; i < count; ++i) {
      const Bytes one = LeadInSector(packs, sector++);
      data.insert(data.end(), one.begin(), one.end());
    }
    if (Failed(drive_.WriteSectors(next, data, kRawSubBytes)))
      return SenseNumber(kWriteFailed, drive_.LastSense());
    next = next + count;
  }
  return engine::kNone;
}

EngineError Recorder::RecordDiscAtOnce(std::span<const ProjectTrack> tracks) {
  const DiscPlan plan = DiscPlan::AtOnce(tracks, mode_);
  layout_ = plan.layout;
  if (const EngineError error = SetParameters(mode_.Control(), {}); error != engine::kNone) return error;
  // Some drives want to be asked before they take a cue sheet.
  (void)drive_.ReadNextWritable();
  const bool texts = !mode_.text.Empty();
  const Bytes cue = MakeCueData(plan.layout, {.copyProtected = mode_.copyProtected, .cdText = texts});
  if (Failed(drive_.SendCueSheet(cue))) return engine::kCueSheet;
  if (texts) {
    if (const EngineError error = WriteTexts(); error != engine::kNone) return error;
  }
  return Write(Lba{-kPregapSectors}, plan.Sectors(), tracks, plan.tracks, 1);
}

EngineError Recorder::RecordTrack(const ProjectTrack& track, int number) {
  if (const EngineError error = SetParameters(ControlOf(track, mode_), track.isrc); error != engine::kNone)
    return error;
  const auto info = drive_.ReadNextWritable();
  if (!info) return engine::kNoWritable;
  const std::uint32_t sectors = SectorsOf(track.bytes);
  const PlannedTrack plan{0, track.bytes, std::uint64_t{sectors} * kAudioSectorBytes - track.bytes};
  const Lba start = *info->nextWritable;
  const EngineError error = Write(start, sectors, {&track, 1}, {&plan, 1}, number);
  if (error != engine::kNone) return error;
  Say(Text(texts::ClosingTrack));
  if (Failed(drive_.Close(CloseWhat::Track, info->track)))
    return SenseNumber(kCloseFailed, drive_.LastSense());
  if (!mode_.testWrite) {
    DiscTrack entry{number, ControlOf(track, mode_), start - kPregapSectors, start, sectors, track.isrc};
    layout_.catalogue = mode_.catalogue;
    layout_.leadOut = start + static_cast<std::int32_t>(sectors);
    layout_.tracks.push_back(std::move(entry));
  }
  return engine::kNone;
}

EngineError Recorder::Write(Lba start, std::uint32_t total, std::span<const ProjectTrack> tracks,
                            std::span<const PlannedTrack> plan, int firstNumber) {
  SectorPipe pipe;
  WriterThread writer(pipe, drive_, start);

  std::uint32_t told = UINT32_MAX;
  const auto tell = [&] {
    const auto done = static_cast<std::uint32_t>(writer.Next() - start);
    if ((done == told && done > 0) || !events_.progress) return;
    told = done;
    const double fill = pipe.Fill();
    const auto waiting = static_cast<std::uint32_t>(fill * kPipeBytes / kAudioSectorBytes);
    events_.progress(
        {firstNumber + TracksBefore(plan, done), done, total, std::min(done + waiting, total), fill});
  };
  EngineError error = engine::kNone;
  for (std::size_t i = 0; i < tracks.size() && error == engine::kNone; ++i)
    error = FeedTrack(pipe, tracks[i], plan[i], tell);
  pipe.CloseWriting();
  if (mode_.onTheFly && error == engine::kNone) Say(Text(texts::DiscWasRead));
  while (!writer.EndsWithin(kTellAgain)) tell();
  hurried_ = writer.Hurried();
  tell();
  if (events_.ended) events_.ended();
  // A write that failed is why the pipe broke.
  if (writer.Error() != engine::kNone) return writer.Error();
  if (error != engine::kNone) return error;
  if (writer.Next() - start != static_cast<std::int32_t>(total)) return engine::kPipeBroken;
  return Failed(drive_.SynchronizeCache()) ? engine::kLastStep : engine::kNone;
}

EngineError Recorder::CloseDisc() {
  Say(Text(texts::ClosingDisc));
  std::this_thread::sleep_for(mode_.atOnce ? drive_.Pace().beforeCloseAtOnce : drive_.Pace().beforeClose);
  const bool flushed = Succeeded(drive_.SynchronizeCache());
  if (!flushed || Failed(drive_.Close(CloseWhat::Session)))
    return SenseNumber(kCloseFailed, drive_.LastSense());
  Say(Text(texts::DiscClosed));
  return engine::kNone;
}

}  // namespace ts5::disc
