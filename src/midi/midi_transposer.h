// Another key on a MIDI device: a device before the device that moves notes up or down by semitones on their
// way. Drums stay, as their keys are instruments. What would leave the range of keys is not struck.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>

#include "platform/sound/midi_out.h"

namespace ts5 {

class MidiTransposer final : public MidiOutput {
 public:
  // The device must outlive it; whoever owns the device closes it.
  explicit MidiTransposer(MidiOutput& device) : device_(device) {
    for (auto& channel : struck_) channel.fill(kNotStruck);
  }

  // From any thread; for the notes from now on. What sounds ends at its own key.
  void SetShift(int semitones) { shift_ = semitones; }

  Outcome Send(std::uint32_t message) override;
  Outcome SendSystemExclusive(ByteView message) override { return device_.SendSystemExclusive(message); }
  Outcome Reset() override;
  [[nodiscard]] bool Alive() override { return device_.Alive(); }
  [[nodiscard]] bool KeepsTime() const override { return device_.KeepsTime(); }
  void Elapse(std::chrono::nanoseconds time) override { device_.Elapse(time); }
  [[nodiscard]] Outcome Close() override { return device_.Close(); }

 private:
  static constexpr std::int8_t kNotStruck = -1;

  [[nodiscard]] Outcome SendKey(std::uint32_t message, int key);

  MidiOutput& device_;
  std::atomic<int> shift_ = 0;
  std::array<std::array<std::int8_t, 128>, 16> struck_{};  // the key that sounds, by channel and written key
};

}  // namespace ts5
