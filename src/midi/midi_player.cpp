#include "midi/midi_player.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "frame/player_run.h"
#include "frame/run.h"
#include "frame/texts.h"
#include "midi/conductor.h"
#include "midi/midi_file.h"
#include "midi/midi_sequence.h"
#include "midi/midi_sequencer.h"
#include "midi/midi_summary.h"
#include "midi/midi_transposer.h"
#include "midi/player_output.h"
#include "platform/base/text.h"
#include "platform/files/files.h"
#include "platform/sound/thread_priority.h"

namespace ts5 {
namespace {

using std::chrono::nanoseconds;

constexpr auto kRemarks =
    PlayerRemarks(texts::PlayerMidiDeviceFailed, {Code(Outcome::DamagedMidi), texts::RemarkDamagedMidi});

// Where the bars lie, from the first track; 4/4 where that does not say it.
TimeSignatureMap SignaturesOf(ByteView file, std::uint16_t division) {
  ByteView first;
  MidiTrackReader tracks(MidiBytesOf(file), 1);
  if (tracks.Next(first)) {
    if (auto conductor = ScanConductorTrack(first, division)) return std::move(conductor->signatures);
  }
  return {TimeSignatureEntry{}};
}

// Bars that begin before the end, as far as a window can show them.
constexpr std::size_t kMostBars = 20'000;

std::vector<nanoseconds> BarsOf(const MidiSequence& sequence, const TimeSignatureMap& signatures) {
  std::vector<nanoseconds> bars;
  const std::uint64_t end = sequence.TickAt(sequence.Duration());
  for (std::size_t i = 0; i < signatures.size(); ++i) {
    const TimeSignatureEntry& entry = signatures[i];
    const std::uint64_t next = i + 1 < signatures.size() ? signatures[i + 1].tick : end;
    const std::uint64_t bar =
        std::max<std::uint64_t>(BarTicks(sequence.Division(), entry.numerator, entry.denominator), 1);
    for (std::uint64_t tick = entry.tick; tick < std::min(next, end); tick += bar) {
      if (bars.size() == kMostBars) return bars;
      bars.push_back(sequence.TimeOf(tick));
    }
  }
  return bars;
}

// The tracks with notes have names to choose by, the others none.
std::vector<std::string> TracksOf(const MidiSummary& summary) {
  std::vector<std::string> names;
  for (std::size_t i = 0; i < summary.tracks.size(); ++i) {
    const MidiTrackSummary& track = summary.tracks[i];
    std::string name;
    if (track.notes > 0) {
      name = track.name;
      if (Trim(name).empty()) name = Format(Text(texts::PracticeTrack), i + 1);
    }
    names.push_back(std::move(name));
  }
  return names;
}

class MidiTitle final : public PlayedTitle {
 public:
  MidiTitle(MidiSequence sequence, TimeSignatureMap signatures, std::vector<std::string> tracks,
            MidiOutput& output)
      : sequence_(std::move(sequence)),
        signatures_(std::move(signatures)),
        tracks_(std::move(tracks)),
        transposer_(output),
        sequencer_(sequence_, transposer_) {}

  Outcome Play(nanoseconds end) override {
    HurryThisThread();
    return end < sequence_.Duration() ? sequencer_.Run(end) : sequencer_.Run();
  }
  void Stop() override { sequencer_.Stop(); }
  void Pause() override { sequencer_.Pause(); }
  void Resume() override { sequencer_.Resume(); }
  void Seek(nanoseconds position) override { sequencer_.Seek(position); }
  nanoseconds Position() const override { return sequencer_.Position(); }
  nanoseconds Duration() const override { return sequence_.Duration(); }
  void Practise(const Practice& practice) override {
    transposer_.SetShift(practice.shift);
    sequencer_.Practise(practice);
  }
  PlayerScore Score() const override { return {tracks_, BarsOf(sequence_, signatures_), true}; }
  std::optional<BarBeat> Place() const override {
    const std::uint64_t tick = sequence_.TickAt(Position());
    const auto next = std::ranges::upper_bound(signatures_, tick, {}, &TimeSignatureEntry::tick);
    if (next == signatures_.begin()) return std::nullopt;
    const TimeSignatureEntry& entry = *std::prev(next);
    const std::uint64_t beatTicks =
        std::max<std::uint64_t>(BarTicks(sequence_.Division(), 1, entry.denominator), 1);
    const std::uint64_t beats = (tick - entry.tick) / beatTicks;
    return BarBeat{entry.bars + beats / entry.numerator + 1,
                   static_cast<std::uint32_t>(beats % entry.numerator) + 1};
  }

 private:
  MidiSequence sequence_;
  TimeSignatureMap signatures_;
  std::vector<std::string> tracks_;
  MidiTransposer transposer_;
  MidiSequencer sequencer_;
};

class MidiDevice final : public PlayerDevice {
 public:
  explicit MidiDevice(std::unique_ptr<MidiLevel> output) : output_(std::move(output)) {}

  Result<std::unique_ptr<PlayedTitle>> Open(const std::string& source) override {
    // A title begins on a device that stands as if nothing had been played before.
    if (begun_) {
      if (const Outcome reset = output_->Reset(); Failed(reset)) return Failure(reset);
    }
    begun_ = true;
    const auto start = ReadMidiFileHeader(source);
    if (!start) return Failure(start.error());
    const auto file = ReadFile(source);
    if (!file) return Failure(file.error());
    auto sequence = MidiSequence::FromFile(*file);
    if (!sequence) return Failure(sequence.error());
    const auto summary = SummariseMidi(*file);
    if (!summary) return Failure(summary.error());
    // Nobody would know why nothing is heard.
    if (sequence->Duration() == nanoseconds{0} && summary->Damaged()) return Failure(Outcome::DamagedMidi);
    auto signatures = SignaturesOf(*file, sequence->Division());
    return std::make_unique<MidiTitle>(*std::move(sequence), std::move(signatures), TracksOf(*summary),
                                       *output_);
  }
  void SetSound(PlayerSound sound) override { output_->SetSound(sound); }
  bool Alive() override { return output_->Alive(); }
  Outcome Close() override { return output_->Close(); }

 private:
  std::unique_ptr<MidiLevel> output_;
  bool begun_ = false;
};

Result<std::unique_ptr<PlayerDevice>> OpenDevice(Run& run) {
  auto output = OpenPlayerOutput(run);
  if (!output) return Failure(output.error());
  return std::make_unique<MidiDevice>(*std::move(output));
}

}  // namespace

FilterModule MidiPlayerModule() {
  FieldTable<PlayerParameters> table;
  AddPlayerFields(table);
  return MakeModule<PlayerParameters>(
      {.id = FilterId::MidiPlayer,
       .fields = table.Build(),
       .run = [](Run& run, const PlayerParameters& parameters) { RunPlayer(run, parameters, OpenDevice); },
       .remarks = kRemarks,
       .midiDevice = [](const PlayerParameters&,
                        const Job& job) { return std::optional(PlayerDeviceIndex(job)); }});
}

}  // namespace ts5
