// The sound cards of the system, for output and for input: what audio_out and audio_in have in common.
//
// A sound server that hangs may hold the thread of a stream for ever. So a stream is stopped with a limit:
// what does not end in time is left to itself, cut off from its user.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/sound/audio_format.h"

namespace ts5 {

enum class SoundDirection : std::uint8_t { Output, Input };

struct SoundCardInfo {
  std::string name;
  unsigned index = 0;  // in the system's list
  std::uint32_t channels = 0;
  std::vector<std::uint32_t> rates;
};
// Those with channels in this direction, in the order of the system.
[[nodiscard]] std::vector<SoundCardInfo> SoundCards(SoundDirection direction);

class SoundCard {
 public:
  // Fills or takes a block of interleaved samples; called on the card's thread, must not block.
  using Move = std::function<void(std::span<float> interleaved)>;

  SoundCard() = default;
  ~SoundCard() { Stop(); }
  SoundCard(const SoundCard&) = delete;
  SoundCard& operator=(const SoundCard&) = delete;

  // device: "" for the system's own choice. False: no such card, or not in this format.
  [[nodiscard]] bool Open(SoundDirection direction, std::string_view device, AudioFormat format, Move move);
  [[nodiscard]] bool Start();
  // When it returns, the function is not called any more. May be called twice.
  void Stop();
  // False once the card has gone, while it plays or records.
  [[nodiscard]] bool Alive() const;

 private:
  struct Stream;
  std::shared_ptr<Stream> stream_;
};

}  // namespace ts5
