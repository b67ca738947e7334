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
#include "midi/player_output.h"
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

class MidiTitle final : public PlayedTitle {
 public:
  MidiTitle(MidiSequence sequence, TimeSignatureMap signatures, MidiOutput& output)
      : sequence_(std::move(sequence)), signatures_(std::move(signatures)), sequencer_(sequence_, output) {}

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
    auto signatures = SignaturesOf(*file, sequence->Division());
    return std::make_unique<MidiTitle>(*std::move(sequence), std::move(signatures), *output_);
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
