// Plays a search melody on a MIDI device, on a thread of its own. One player plays one melody at a time.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <thread>
#include <vector>

#include "platform/sound/midi_out.h"
#include "search/search_melody.h"
#include "search/search_parameters.h"

namespace ts5 {

// One element as it is played: the message that starts it (nothing for a rest), how long it lasts, and the
// message that ends the key that was started last (nothing before the first one).
struct MelodyStep {
  std::optional<std::uint32_t> start;
  std::chrono::milliseconds length{};
  std::optional<std::uint32_t> end;

  bool operator==(const MelodyStep&) const = default;
};
// Elements whose key lies outside 0..127, or whose duration is below 0, are silent. The tempo is kept within
// kLeastTempo..kMostTempo.
[[nodiscard]] std::vector<MelodyStep> MelodySteps(std::span<const MelodyElement> elements, int tempo);

class MelodyPlayer {
 public:
  MelodyPlayer() = default;
  ~MelodyPlayer() { Stop(); }
  MelodyPlayer(const MelodyPlayer&) = delete;
  MelodyPlayer& operator=(const MelodyPlayer&) = delete;

  // Stops what still plays, takes the open device and starts. ended is called on the player's thread when the
  // melody has come to its end (Success) or the device has gone (WriteFailed), but not after Stop.
  void Start(std::span<const MelodyElement> elements, std::unique_ptr<MidiOutput> device, int tempo,
             std::uint8_t program, std::function<void(Outcome)> ended);
  // The sound ends at once and the device is closed when it returns.
  void Stop();
  [[nodiscard]] bool Playing() const;

 private:
  [[nodiscard]] Outcome PlayMelody(const std::stop_token& stop, const std::vector<MelodyStep>& steps,
                                   MidiOutput& device, std::uint8_t program);

  mutable std::mutex mutex_;
  std::condition_variable_any stopped_;
  bool playing_ = false;
  std::jthread thread_;
};

}  // namespace ts5
