// Plays a sequence on a MIDI device in real time. One thread runs it; any other may steer it meanwhile.
//
//   MidiSequencer sequencer(sequence, *output);
//   std::jthread thread([&] { result = sequencer.Run(); });
//   sequencer.Seek(30s); sequencer.Pause(); sequencer.Resume(); sequencer.Stop();
//
// A pause and a stop end what sounds; a seek brings the device into the state that straight play would have
// left, but for the notes. A passage that is practised goes over and over; its end is such a seek.
#pragma once

#include <array>
#include <bitset>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <optional>

#include "frame/practice.h"
#include "midi/midi_sequence.h"
#include "midi/play_transport.h"
#include "platform/base/outcome.h"
#include "platform/sound/midi_out.h"

namespace ts5 {

class MidiSequencer {
 public:
  // Both must outlive the sequencer.
  MidiSequencer(const MidiSequence& sequence, MidiOutput& output)
      : sequence_(sequence), output_(output), transport_(output) {}

  // From the start, or where Seek has put it, to end (the whole sequence without one). Success when it has
  // come to the end, Cancelled after Stop, WriteFailed when the device has gone.
  [[nodiscard]] Outcome Run(std::optional<std::chrono::nanoseconds> end = {});

  void Stop() { transport_.Stop(); }
  void Pause() { transport_.Pause(); }
  void Resume() { transport_.Resume(); }
  // Passage, speed and the tracks that sound.
  void Practise(const Practice& practice);
  void Seek(std::chrono::nanoseconds position);  // before the end of the sequence; earlier than 0 is 0

  [[nodiscard]] bool Paused() const { return transport_.Paused(); }
  [[nodiscard]] std::chrono::nanoseconds Position() const;

 private:
  // Where it goes on, and the first message there.
  Outcome JumpTo(std::chrono::nanoseconds place, std::size_t& next);
  Outcome TakePractice();
  Outcome SendMessage(const SequenceMessage& message);
  Outcome Chase(std::size_t next);
  Outcome Silence();
  Outcome EndNote(std::size_t channel, std::uint8_t key);
  Outcome CutOff();

  const MidiSequence& sequence_;
  MidiOutput& output_;
  PlayTransport transport_;
  std::mutex mutex_;
  Practice wanted_;
  // The running thread's own.
  Practice practice_;
  std::array<std::bitset<128>, 16> sounding_;                  // by channel and key
  std::array<std::array<std::uint32_t, 128>, 16> soundsOf_{};  // the track whose note it is
  std::bitset<16> struck_;  // channels that may sound, if only by their pedal
  bool begun_ = false;      // something was sent
};

}  // namespace ts5
