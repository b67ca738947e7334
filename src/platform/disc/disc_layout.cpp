#include "platform/disc/disc_layout.h"

#include <algorithm>
#include <array>
#include <span>

#include "platform/disc/mmc_commands.h"

namespace ts5 {
namespace {

// How often catalogue number and ISRC take the place of the position: at least once in 100 sectors.
constexpr std::int32_t kOtherModes = 96;
constexpr std::size_t kQData = 10;

constexpr std::uint8_t Bcd(std::uint32_t value) {
  return static_cast<std::uint8_t>(value / 10 % 10 << 4 | value % 10);
}

void PutTime(std::span<std::uint8_t> out, Msf time) {
  out[0] = Bcd(time.minute);
  out[1] = Bcd(time.second);
  out[2] = Bcd(time.frame);
}

// Fields of a few bits, one behind the other.
class BitWriter {
 public:
  explicit BitWriter(std::span<std::uint8_t> out) : out_(out) {}
  void Put(unsigned value, unsigned bits) {
    while (bits-- > 0) {
      if ((value >> bits & 1U) != 0)
        out_[at_ / 8] = static_cast<std::uint8_t>(out_[at_ / 8] | 0x80U >> at_ % 8);
      ++at_;
    }
  }

 private:
  std::span<std::uint8_t> out_;
  std::size_t at_ = 0;
};

void PutIsrc(std::span<std::uint8_t> out, std::string_view isrc) {
  BitWriter bits(out);
  constexpr std::size_t kLetters = 5;
  for (const char c : isrc.substr(0, kLetters))
    bits.Put(static_cast<unsigned>(c >= 'A' ? c - 'A' + 17 : c - '0'), 6);
  bits.Put(0, 2);
  for (const char c : isrc.substr(kLetters)) bits.Put(static_cast<unsigned>(c - '0'), 4);
}

}  // namespace

Lba DiscLayout::First() const {
  return tracks.empty() ? Lba{} : tracks.front().pause.value_or(tracks.front().start);
}

DiscPlace DiscLayout::PlaceOf(Lba address) const {
  if (tracks.empty() || address >= leadOut)
    return {kLeadOutTrack, 1, static_cast<std::uint8_t>(tracks.empty() ? 0 : tracks.back().control),
            static_cast<std::uint32_t>(address >= leadOut ? address - leadOut : 0), nullptr};
  auto next = std::ranges::upper_bound(
      tracks, address, {}, [](const DiscTrack& track) { return track.pause.value_or(track.start); });
  const DiscTrack& track = next == tracks.begin() ? tracks.front() : *std::prev(next);
  const bool inPause = address < track.start;
  return {track.number, inPause ? 0 : 1, track.control,
          static_cast<std::uint32_t>(inPause ? track.start - address : address - track.start), &track};
}

std::array<std::uint8_t, 12> SubQOf(const DiscLayout& layout, Lba address) {
  std::array<std::uint8_t, 12> q{};
  const DiscPlace place = layout.PlaceOf(address);
  const auto control = static_cast<std::uint8_t>(place.control << 4);
  const std::int32_t turn = (address.value + kPregapSectors) % kOtherModes;
  if (turn == 1 && !layout.catalogue.empty()) {
    q[0] = control | 2;
    BitWriter bits(std::span<std::uint8_t>(q).subspan(1));
    for (const char c : layout.catalogue) bits.Put(static_cast<unsigned>(c - '0'), 4);
    q[9] = Bcd(MsfOf(address).frame);
  } else if (turn == 2 && place.entry != nullptr && !place.entry->isrc.empty()) {
    q[0] = control | 3;
    PutIsrc(std::span<std::uint8_t>(q).subspan(1), place.entry->isrc);
    q[9] = Bcd(MsfOf(address).frame);
  } else {
    q[0] = control | 1;
    q[1] = place.track == kLeadOutTrack ? kLeadOutTrack : Bcd(static_cast<std::uint32_t>(place.track));
    q[2] = Bcd(static_cast<std::uint32_t>(place.index));
    PutTime(std::span<std::uint8_t>(q).subspan(3), MsfOfLength(static_cast<std::int32_t>(place.relative)));
    PutTime(std::span<std::uint8_t>(q).subspan(7), MsfOf(address));
  }
  const std::uint16_t crc = DiscCrc(ByteView(q).first(kQData));
  q[10] = static_cast<std::uint8_t>(crc >> 8);
  q[11] = static_cast<std::uint8_t>(crc);
  return q;
}

std::uint16_t DiscCrc(ByteView bytes) {
  constexpr unsigned kPolynomial = 0x1021;
  unsigned crc = 0;
  for (const std::uint8_t byte : bytes) {
    crc ^= static_cast<unsigned>(byte) << 8;
    for (int bit = 0; bit < 8; ++bit) crc = (crc & 0x8000) != 0 ? crc << 1 ^ kPolynomial : crc << 1;
    crc &= 0xFFFF;
  }
  return static_cast<std::uint16_t>(~crc);
}

}  // namespace ts5
