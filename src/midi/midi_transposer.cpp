#include "midi/midi_transposer.h"

namespace ts5 {
namespace {

constexpr std::uint32_t kDrums = 9;
constexpr std::uint32_t kNoteOff = 0x80;
constexpr std::uint32_t kNoteOn = 0x90;
constexpr std::uint32_t kKeyPressure = 0xA0;

}  // namespace

Outcome MidiTransposer::Send(std::uint32_t message) {
  const std::uint32_t kind = message & 0xF0;
  const std::uint32_t channel = message & 0x0F;
  if (channel == kDrums || (kind != kNoteOff && kind != kNoteOn && kind != kKeyPressure))
    return device_.Send(message);
  const auto written = static_cast<int>(message >> 8 & 0x7F);
  std::int8_t& struck = struck_[channel][static_cast<std::size_t>(written)];
  const bool begins = kind == kNoteOn && (message >> 16 & 0x7F) != 0;
  const int key = written + shift_;
  if (begins) {
    // Struck again at another key: the first one would never end.
    if (struck != kNotStruck && struck != key) {
      const Outcome ended = SendKey(kNoteOff | channel, struck);
      if (Failed(ended)) return ended;
    }
    struck = key >= 0 && key < 128 ? static_cast<std::int8_t>(key) : kNotStruck;
    return SendKey(message, key);
  }
  const int sounding = struck != kNotStruck ? struck : key;
  if (kind != kKeyPressure) struck = kNotStruck;
  return SendKey(message, sounding);
}

Outcome MidiTransposer::SendKey(std::uint32_t message, int key) {
  if (key < 0 || key > 127) return Outcome::Success;
  return device_.Send((message & ~0x7F00U) | static_cast<std::uint32_t>(key) << 8);
}

Outcome MidiTransposer::Reset() {
  for (auto& channel : struck_) channel.fill(kNotStruck);
  return device_.Reset();
}

}  // namespace ts5
