// Volume and balance on a MIDI device: a device before the device that changes the channels' volumes
// (controller 7) and places (controller 10) on their way. At full volume in the middle everything passes as
// it is.
//
// Gains follow the recommended practice for controller 7: 40 dB per factor of ten.
#pragma once

#include <array>
#include <memory>
#include <mutex>

#include "frame/player_control.h"
#include "platform/sound/midi_out.h"

namespace ts5 {

class MidiLevel final : public MidiOutput {
 public:
  explicit MidiLevel(std::unique_ptr<MidiOutput> device) : device_(std::move(device)) {}

  // From any thread; what has changed is sent to all channels at once.
  void SetSound(PlayerSound sound);

  Outcome Send(std::uint32_t message) override;
  Outcome SendSystemExclusive(ByteView message) override;
  // Also undoes what the music has set and a reset of the controllers leaves: sounds, volumes, places, the
  // range of bends and the tuning.
  Outcome Reset() override;
  [[nodiscard]] bool Alive() override;
  [[nodiscard]] bool KeepsTime() const override { return device_->KeepsTime(); }
  void Elapse(std::chrono::nanoseconds time) override { device_->Elapse(time); }
  [[nodiscard]] Outcome Close() override;

 private:
  static constexpr std::uint8_t kNormalVolume = 100;  // of a channel that was never set, by General MIDI
  static constexpr std::uint8_t kMiddle = 64;
  struct Channel {
    std::uint8_t volume = kNormalVolume;
    std::uint8_t place = kMiddle;
    bool sounds = false;  // has its bank or program from the music
    bool tuned = false;   // has registered parameters from the music
  };

  [[nodiscard]] bool Changes() const { return sound_ != PlayerSound{}; }
  [[nodiscard]] std::uint8_t Volume(std::uint8_t volume) const;
  [[nodiscard]] std::uint8_t Place(std::uint8_t place) const;
  Outcome SendAll();
  Outcome Undo(std::uint8_t channel);

  std::mutex mutex_;
  std::unique_ptr<MidiOutput> device_;
  PlayerSound sound_;
  std::array<Channel, 16> channels_{};  // as the music has set them
};

}  // namespace ts5
