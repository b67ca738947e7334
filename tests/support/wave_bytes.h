// Wave files of 16 bits, made in memory.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/base/bytes.h"

namespace ts5::test {

// Of those sample bytes; as on an audio CD unless another rate or channel count is given.
inline std::string WaveBytes(std::string_view samples, std::uint32_t rate = 44'100,
                             std::uint16_t channels = 2) {
  ByteWriter out;
  out.Append("RIFF");
  out.U32Le(static_cast<std::uint32_t>(36 + samples.size()));
  out.Append("WAVEfmt ");
  out.U32Le(16);
  out.U16Le(1);
  out.U16Le(channels);
  out.U32Le(rate);
  out.U32Le(rate * channels * 2);
  out.U16Le(static_cast<std::uint16_t>(channels * 2));
  out.U16Le(16);
  out.Append("data");
  out.U32Le(static_cast<std::uint32_t>(samples.size()));
  out.Append(samples);
  return std::string(AsText(out.View()));
}

// Bytes that tell where they come from: other seeds, other bytes.
inline std::string Noise(std::size_t bytes, std::uint32_t seed = 1) {
  std::string data(bytes, '\0');
  for (char& byte : data) {
    seed = seed * 1664525 + 1013904223;
    byte = static_cast<char>(seed >> 24);
  }
  return data;
}

}  // namespace ts5::test
