#include "platform/media/mp3_frame.h"

#include <algorithm>
#include <string>

namespace ts5 {
namespace {

constexpr std::array<std::uint32_t, 15> kRates1{0,   32,  40,  48,  56,  64,  80, 96,
                                                112, 128, 160, 192, 224, 256, 320};
constexpr std::array<std::uint32_t, 15> kRates2{0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160};
constexpr std::array<std::uint32_t, 3> kSampleRates{44100, 48000, 32000};
constexpr std::size_t kEncoderName = 9;
constexpr std::uint32_t kHasFramesAndBytes = 3;
constexpr std::uint8_t kConstantRate = 1;  // revision 0 and the method

}  // namespace

std::optional<Mp3Header> ParseMp3Header(ByteView bytes) {
  if (bytes.size() < 4 || bytes[0] != 0xFF || (bytes[1] & 0xE0) != 0xE0) return std::nullopt;
  const unsigned version = bytes[1] >> 3 & 3;  // 3: MPEG-1, 2: MPEG-2, 0: MPEG-2.5
  const unsigned layer = bytes[1] >> 1 & 3;
  const unsigned rate = bytes[2] >> 4;
  const unsigned frequency = bytes[2] >> 2 & 3;
  if (version == 1 || layer != 1 || rate == 0 || rate == 15 || frequency == 3) return std::nullopt;
  const bool first = version == 3;
  const bool mono = bytes[3] >> 6 == 3;
  Mp3Header header;
  std::copy_n(bytes.begin(), 4, header.bytes.begin());
  header.bitRate = (first ? kRates1 : kRates2).at(rate);
  header.sampleRate = kSampleRates.at(frequency) >> (first ? 0U : version == 2 ? 1U : 2U);
  header.samples = first ? 1152 : 576;
  header.sideSize = first ? (mono ? 17 : 32) : (mono ? 9 : 17);
  header.size = header.samples / 8 * header.bitRate * 1000 / header.sampleRate + (bytes[2] >> 1 & 1);
  return header;
}

std::uint16_t Mp3Checksum(ByteView header, ByteView sideInformation) {
  constexpr unsigned kPolynomial = 0x8005;
  unsigned sum = 0xFFFF;
  const auto add = [&sum](std::uint8_t byte) {
    for (int bit = 7; bit >= 0; --bit) {
      const bool carry = (sum >> 15 & 1) != (byte >> bit & 1U);
      sum = (sum << 1 ^ (carry ? kPolynomial : 0)) & 0xFFFF;
    }
  };
  for (const std::uint8_t byte : header.subspan(2, 2)) add(byte);
  for (const std::uint8_t byte : sideInformation) add(byte);
  return static_cast<std::uint16_t>(sum);
}

std::optional<Bytes> CheckedFrames::Set(ByteView frame) {
  constexpr std::size_t kHeader = 4;
  constexpr std::size_t kChecksum = 2;
  const auto old = ParseMp3Header(frame);
  if (!old || old->HasCrc() || frame.size() < kHeader + old->sideSize) return std::nullopt;
  const ByteView side = frame.subspan(kHeader, old->sideSize);
  // How far back the music begins: 9 bits, 8 of MPEG-2.
  const bool first = old->samples == 1152;
  if (side[0] != 0 || (first && (side[1] & 0x80) != 0)) return std::nullopt;
  const auto& rates = first ? kRates1 : kRates2;
  const auto rate = std::ranges::find(rates, kiloBits_);
  if (rate == rates.end()) return std::nullopt;
  const auto end = [&](std::uint64_t count) {
    return count * old->samples / 8 * kiloBits_ * 1000 / old->sampleRate;
  };
  const std::uint64_t size = end(frames_ + 1) - end(frames_);
  ++frames_;
  Bytes set(frame.begin(), frame.begin() + kHeader);
  set[1] &= 0xFE;
  set[2] = static_cast<std::uint8_t>((set[2] & 0x0D) | (rate - rates.begin()) << 4);
  if (ParseMp3Header(set)->size < size) set[2] |= 2;
  const std::uint16_t checksum = Mp3Checksum(set, side);
  set.push_back(static_cast<std::uint8_t>(checksum >> 8));
  set.push_back(static_cast<std::uint8_t>(checksum));
  set.insert(set.end(), side.begin(), frame.end());
  if (set.size() > size || frame.size() + kChecksum > size) return std::nullopt;
  set.resize(size);
  return set;
}

std::uint16_t LengthTagChecksum(ByteView frame) {
  constexpr unsigned kPolynomial = 0xA001;
  unsigned sum = 0;
  for (const std::uint8_t byte : frame) {
    sum ^= byte;
    for (int bit = 0; bit < 8; ++bit) sum = sum >> 1 ^ ((sum & 1) != 0 ? kPolynomial : 0);
  }
  return static_cast<std::uint16_t>(sum);
}

Bytes LengthTagFrame(const Mp3Header& header, const Mp3LengthTag& tag) {
  // A bit rate at which the tag has room, of the same kind otherwise; without padding and checksum.
  Mp3Header frame = header;
  const std::size_t needed = 4 + header.sideSize + kLameTagSize;
  for (unsigned rate = header.bytes[2] >> 4; rate < 15; ++rate) {
    std::array<std::uint8_t, 4> bytes = header.bytes;
    bytes[1] |= 1;
    bytes[2] = static_cast<std::uint8_t>((bytes[2] & 0x0D) | rate << 4);
    const auto parsed = ParseMp3Header(bytes);
    if (parsed) frame = *parsed;
    if (frame.size >= needed) break;
  }
  ByteWriter out;
  out.Append(frame.bytes);
  out.Fill(frame.sideSize, 0);
  out.Append("Info");
  out.U32Be(kHasFramesAndBytes);
  out.U32Be(static_cast<std::uint32_t>(std::min<std::uint64_t>(tag.frames, UINT32_MAX)));
  out.U32Be(static_cast<std::uint32_t>(std::min<std::uint64_t>(tag.bytes, UINT32_MAX)));
  std::string encoder(tag.encoder);
  encoder.resize(kEncoderName);
  out.Append(encoder);
  out.U8(kConstantRate);
  out.Fill(11, 0);  // low pass, levels, flags and bit rate are not told
  out.U24Be(std::min(tag.delay, 0xFFFU) << 12 | std::min(tag.padding, 0xFFFU));
  out.Fill(4, 0);  // nor are noise, gain and preset
  out.U32Be(static_cast<std::uint32_t>(std::min<std::uint64_t>(tag.bytes, UINT32_MAX)));
  out.Fill(2, 0);
  Bytes bytes = out.Release();
  const std::uint16_t sum = LengthTagChecksum(bytes);
  bytes.push_back(static_cast<std::uint8_t>(sum >> 8));
  bytes.push_back(static_cast<std::uint8_t>(sum));
  bytes.resize(frame.size);
  return bytes;
}

}  // namespace ts5
