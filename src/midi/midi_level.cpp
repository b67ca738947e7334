#include "midi/midi_level.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace ts5 {
namespace {

constexpr std::uint8_t kVolumeController = 7;
constexpr std::uint8_t kPlaceController = 10;
constexpr std::uint8_t kController = 0xB0;
constexpr std::uint8_t kProgram = 0xC0;
constexpr std::int32_t kSilent = -10'000;

struct ControllerValue {
  std::uint8_t controller;
  std::uint8_t value;
};
constexpr ControllerValue kFirstBank[] = {{0, 0}, {32, 0}};
// Two semitones of bend, no tuning, and no parameter chosen.
constexpr ControllerValue kUntuned[] = {{101, 0}, {100, 0}, {6, 2},  {38, 0},    {100, 1},  {6, 64},
                                        {38, 0},  {100, 2}, {6, 64}, {101, 127}, {100, 127}};

bool IsBank(std::uint8_t controller) {
  return controller == 0 || controller == 32;
}
bool IsParameterData(std::uint8_t controller) {
  return controller == 6 || controller == 38 || controller == 96 || controller == 97;
}

std::uint8_t Limited(double value) {
  return static_cast<std::uint8_t>(std::clamp(std::lround(value), 0L, 127L));
}

}  // namespace

std::uint8_t MidiLevel::Volume(std::uint8_t volume) const {
  if (sound_.volume <= kSilent) return 0;
  return Limited(volume * std::pow(10.0, sound_.volume / 100.0 / 40.0));
}

std::uint8_t MidiLevel::Place(std::uint8_t place) const {
  return Limited(place + sound_.balance / 10'000.0 * kMiddle);
}

void MidiLevel::SetSound(PlayerSound sound) {
  const std::lock_guard lock(mutex_);
  if (sound == sound_) return;
  sound_ = sound;
  (void)SendAll();  // a device that has gone says so at the next message of the music
}

Outcome MidiLevel::SendAll() {
  for (std::uint8_t i = 0; i < channels_.size(); ++i) {
    const auto status = static_cast<std::uint8_t>(0xB0 | i);
    Outcome sent = device_->Send(ShortMidiMessage(status, kVolumeController, Volume(channels_[i].volume)));
    if (Succeeded(sent))
      sent = device_->Send(ShortMidiMessage(status, kPlaceController, Place(channels_[i].place)));
    if (Failed(sent)) return sent;
  }
  return Outcome::Success;
}

Outcome MidiLevel::Send(std::uint32_t message) {
  const std::lock_guard lock(mutex_);
  if ((message & 0xF0) == kController) {
    Channel& channel = channels_[message & 0x0F];
    const auto controller = static_cast<std::uint8_t>(message >> 8 & 0x7F);
    channel.sounds |= IsBank(controller);
    channel.tuned |= IsParameterData(controller);
    const auto value = static_cast<std::uint8_t>(message >> 16 & 0x7F);
    const auto status = static_cast<std::uint8_t>(message);
    if (controller == kVolumeController) {
      channel.volume = value;
      if (Changes()) return device_->Send(ShortMidiMessage(status, controller, Volume(value)));
    } else if (controller == kPlaceController) {
      channel.place = value;
      if (Changes()) return device_->Send(ShortMidiMessage(status, controller, Place(value)));
    }
  }
  if ((message & 0xF0) == kProgram) channels_[message & 0x0F].sounds = true;
  return device_->Send(message);
}

// A reset of the device (GM, GS, XG) puts the channels back to their normal volumes.
Outcome MidiLevel::SendSystemExclusive(ByteView message) {
  const std::lock_guard lock(mutex_);
  const Outcome sent = device_->SendSystemExclusive(message);
  return Succeeded(sent) && Changes() ? SendAll() : sent;
}

Outcome MidiLevel::Reset() {
  const std::lock_guard lock(mutex_);
  Outcome done = device_->Reset();
  for (std::uint8_t channel = 0; channel < channels_.size() && Succeeded(done); ++channel)
    done = Undo(channel);
  return done;
}

Outcome MidiLevel::Undo(std::uint8_t channel) {
  const Channel was = std::exchange(channels_[channel], {});
  Outcome sent = Outcome::Success;
  const auto send = [&](std::uint8_t kind, std::uint8_t first, std::uint8_t second) {
    const auto status = static_cast<std::uint8_t>(kind | channel);
    if (Succeeded(sent)) sent = device_->Send(ShortMidiMessage(status, first, second));
  };
  if (was.tuned) {
    for (const auto& [controller, value] : kUntuned) send(kController, controller, value);
  }
  if (was.sounds) {
    for (const auto& [controller, value] : kFirstBank) send(kController, controller, value);
    send(kProgram, 0, 0);
  }
  if (Changes() || was.volume != kNormalVolume) send(kController, kVolumeController, Volume(kNormalVolume));
  if (Changes() || was.place != kMiddle) send(kController, kPlaceController, Place(kMiddle));
  return sent;
}

bool MidiLevel::Alive() {
  const std::lock_guard lock(mutex_);
  return device_->Alive();
}

Outcome MidiLevel::Close() {
  const std::lock_guard lock(mutex_);
  return device_->Close();
}

}  // namespace ts5
