// What is where on a CD, as its table of contents and its sub-channel tell it.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/base/bytes.h"
#include "platform/disc/disc_address.h"

namespace ts5 {

struct DiscTrack {
  int number = 0;
  std::uint8_t control = 0;       // the control nibble
  std::optional<Lba> pause = {};  // index 0: where the pause before it begins
  Lba start = {};                 // index 1
  std::uint32_t sectors = 0;      // from index 1 to its end
  std::string isrc = {};          // 12 characters, or ""

  bool operator==(const DiscTrack&) const = default;
};

// The place of a sector as the sub-channel names it.
struct DiscPlace {
  int track = 0;  // kLeadOutTrack behind the disc
  int index = 0;  // 0 in a pause
  std::uint8_t control = 0;
  std::uint32_t relative = 0;  // sectors from index 1; in a pause: up to it
  const DiscTrack* entry = nullptr;
};

struct DiscLayout {
  std::string catalogue = {};  // 13 digits, or ""
  std::vector<DiscTrack> tracks = {};
  Lba leadOut = {};
  Bytes cdText = {};  // packs of 18 bytes, or nothing

  [[nodiscard]] Lba First() const;  // the first sector that can be read
  [[nodiscard]] DiscPlace PlaceOf(Lba address) const;
};

// The Q sub-channel of a sector: 12 bytes with their check sum, as they lie on the disc (Red Book, mode 1;
// now and then the catalogue number in mode 2 and the track's ISRC in mode 3).
[[nodiscard]] std::array<std::uint8_t, 12> SubQOf(const DiscLayout& layout, Lba address);

// CRC-16 of the Q sub-channel and of CD-TEXT packs (x^16 + x^12 + x^5 + 1, inverted).
[[nodiscard]] std::uint16_t DiscCrc(ByteView bytes);

}  // namespace ts5
