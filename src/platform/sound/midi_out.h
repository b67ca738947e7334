// MIDI output: the devices that music can be sent to.
//
// A device is named as the user sees it in the device list. Index -1 is the mapper, which takes what is
// heard: the built-in "Stavora-Synthesizer", or the first device where that has no sound. The list has the
// ports of the system (hardware and other programs), then the synthesiser, and last ports that only lead on
// to something else. "null" swallows everything; "synth:FILE.wav" is the synthesiser writing a 16-bit wave
// file in a time of its own, as fast as it can. Recording devices that turn what they get into a file belong
// to the room that knows the file's format.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/bytes.h"
#include "platform/base/outcome.h"

namespace ts5 {

inline constexpr std::string_view kSynthesizerName = "Stavora-Synthesizer";
inline constexpr std::string_view kSynthesisPrefix = "synth:";
inline constexpr std::int32_t kMidiMapper = -1;

// One channel message: the status byte in the low byte, then the first and the second data byte.
[[nodiscard]] constexpr std::uint32_t ShortMidiMessage(std::uint8_t status, std::uint8_t first,
                                                       std::uint8_t second = 0) {
  return std::uint32_t{status} | std::uint32_t{first} << 8 | std::uint32_t{second} << 16;
}
// Bytes of the message that the device gets: 2 for program change and channel pressure, 3 for the others.
[[nodiscard]] constexpr std::size_t ShortMidiLength(std::uint32_t message) {
  const std::uint32_t kind = message & 0xF0;
  return kind == 0xC0 || kind == 0xD0 ? 2 : 3;
}

// An open device. Sent messages sound at once; all calls come from one thread at a time.
class MidiOutput {
 public:
  virtual ~MidiOutput() = default;
  // WriteFailed: the device has gone.
  [[nodiscard]] virtual Outcome Send(std::uint32_t message) = 0;
  [[nodiscard]] virtual Outcome SendSystemExclusive(ByteView message) = 0;  // F0 to F7
  // False once the device has gone; what does not know it says true.
  [[nodiscard]] virtual bool Alive() { return true; }
  // Ends every sounding note and lets go of the pedals on all channels.
  virtual Outcome Reset();
  // A device with a time of its own: what plays on it does not wait, but says how far the music goes on.
  // What fails there is said by what is sent next, or by Close.
  [[nodiscard]] virtual bool KeepsTime() const { return false; }
  virtual void Elapse(std::chrono::nanoseconds /*time*/) {}
  // Ends the use of the device; a device that makes a file completes it (WriteFailed, TargetFailed). After
  // it nothing may be sent. Destroying an open device resets it.
  [[nodiscard]] virtual Outcome Close() { return Reset(); }
};

// The device list, made of the system's ports; those of this program are left out.
[[nodiscard]] std::vector<std::string> MidiOutputsOf(std::vector<std::string> ports, bool synthesizer);
// The names of all MIDI output devices in the order of the device list, the mapper not among them.
[[nodiscard]] std::vector<std::string> MidiOutputDevices();

// By name, or "" for the mapper, "null" or "synth:FILE". audioDevice is where the built-in synthesiser
// sounds, as OpenAudioOutput takes it. TargetFailed: no such device, or it is in use; SourceFailed: no sound
// font.
[[nodiscard]] Result<std::unique_ptr<MidiOutput>> OpenMidiOutput(std::string_view device,
                                                                 std::string_view audioDevice = {});

}  // namespace ts5
