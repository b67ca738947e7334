// Wave files made by hand for the tests of the audio room.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/bytes.h"
#include "platform/media/wave_format.h"

namespace ts5::test {

inline Bytes Chunk(std::string_view id, ByteView data, bool pad = true) {
  ByteWriter out;
  out.Append(id);
  out.U32Le(static_cast<std::uint32_t>(data.size()));
  out.Append(data);
  if (pad && data.size() % 2 != 0) out.U8(0);
  return out.Release();
}

inline Bytes Riff(std::initializer_list<Bytes> chunks, std::string_view id = "RIFF",
                  std::string_view type = "WAVE") {
  ByteWriter body;
  for (const Bytes& chunk : chunks) body.Append(chunk);
  ByteWriter out;
  out.Append(id);
  out.U32Le(static_cast<std::uint32_t>(body.Size() + 4));
  out.Append(type);
  out.Append(body.View());
  return out.Release();
}

inline Bytes FormatChunk(const WaveFormat& format) {
  return Chunk("fmt ", WaveFormatBytes(format));
}

inline Bytes Samples16(std::span<const std::int16_t> samples) {
  ByteWriter out;
  for (const std::int16_t sample : samples) out.U16Le(static_cast<std::uint16_t>(sample));
  return out.Release();
}
inline Bytes Samples16(std::initializer_list<std::int16_t> samples) {
  return Samples16(std::span(samples.begin(), samples.size()));
}

inline Bytes Wave(const WaveFormat& format, ByteView data) {
  return Riff({FormatChunk(format), Chunk("data", data)});
}
inline Bytes Wave16(std::initializer_list<std::int16_t> samples, std::uint16_t channels = 1,
                    std::uint32_t rate = 44100) {
  return Wave(PcmFormat(rate, 16, channels), Samples16(samples));
}

}  // namespace ts5::test
