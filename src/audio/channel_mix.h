// Changes the number of channels.
//
// Mono to two channels gives the same samples to both. Two channels to mono gives their mean. More channels
// than two are folded down as ITU-R BS.775 has it: front left and right as they are, the centre and the
// surround channels of each side at -3 dB, a back centre at -6 dB on both sides, the low frequency channel
// left out; all of it divided by the greatest sum of gains, so that nothing is driven beyond full scale.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace ts5 {

class ChannelMix {
 public:
  // mask: loudspeakers of the source's channels, see ChannelMaskOf; 0 when they are not known.
  ChannelMix(std::uint32_t from, std::uint32_t to, std::uint32_t mask);

  [[nodiscard]] bool Changes() const { return from_ != to_; }
  [[nodiscard]] std::uint32_t From() const { return from_; }
  [[nodiscard]] std::uint32_t To() const { return to_; }
  // out has room for as many frames as in holds.
  void Apply(std::span<const double> in, std::span<double> out) const;

 private:
  std::uint32_t from_;
  std::uint32_t to_;
  std::vector<double> gains_;  // to_ rows of from_
};

}  // namespace ts5
