// Frames of MPEG audio layer III (ISO 11172-3, 13818-3): their headers, and the first frame that holds no
// music but says how long the file is ("Info" for a constant bit rate), with the delay and padding in the
// form that LAME gave it.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/base/bytes.h"

namespace ts5 {

// What every layer III decoder puts before the music by itself.
inline constexpr std::uint32_t kMp3DecoderDelay = 529;

struct Mp3Header {
  std::array<std::uint8_t, 4> bytes{};
  std::size_t size = 0;       // bytes of the frame
  std::size_t sideSize = 0;   // of the side information behind the header (and the checksum)
  std::uint32_t samples = 0;  // frames of samples: 1152, or 576 of MPEG-2
  std::uint32_t bitRate = 0;  // kbit/s
  std::uint32_t sampleRate = 0;

  [[nodiscard]] bool HasCrc() const { return (bytes[1] & 1) == 0; }
  [[nodiscard]] bool IsMono() const { return bytes[3] >> 6 == 3; }
};

// The header at the start of these bytes; nothing when there is none, or one of another layer or of a free
// bit rate.
[[nodiscard]] std::optional<Mp3Header> ParseMp3Header(ByteView bytes);

// The checksum of a frame: over the last two bytes of its header and its side information (the polynomial
// 0x8005, begun with all bits set).
[[nodiscard]] std::uint16_t Mp3Checksum(ByteView header, ByteView sideInformation);

// Sets frames without checksums into frames of a greater bit rate that have one. The music of each frame must
// lie in itself, as it does with encoders that keep no reservoir of bits.
class CheckedFrames {
 public:
  explicit CheckedFrames(std::uint32_t kiloBits) : kiloBits_(kiloBits) {}
  // The next frame, padded so that the mean bit rate is exact. Nothing: it does not fit, or there is no such
  // bit rate.
  [[nodiscard]] std::optional<Bytes> Set(ByteView frame);

 private:
  std::uint32_t kiloBits_;
  std::uint64_t frames_ = 0;  // so far
};

struct Mp3LengthTag {
  std::uint64_t frames = 0;                // of music, without this one
  std::uint64_t bytes = 0;                 // of the file
  std::uint32_t delay = 0;                 // samples before the music
  std::uint32_t padding = 0;               // behind it
  std::string_view encoder = "LAMEshine";  // nine letters; decoders look for the first four
};
// The checksum at the end of such a tag: over all of the frame that lies before it.
[[nodiscard]] std::uint16_t LengthTagChecksum(ByteView frame);
// Bytes of a frame in which the library LAME has room for its own.
inline constexpr std::size_t kLameTagSize = 156;
// A frame like that of the header, without a checksum, whose size depends on the header only.
[[nodiscard]] Bytes LengthTagFrame(const Mp3Header& header, const Mp3LengthTag& tag);

}  // namespace ts5
