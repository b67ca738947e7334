// CD-TEXT: titles and performers in the lead-in of a disc (Sony/Philips, Red Book extension; MMC-3, annex J).
// Packs of 18 bytes with a check sum each; one language, Latin-1.
#pragma once

#include <string>
#include <vector>

#include "platform/base/bytes.h"

namespace ts5 {

struct CdText {
  struct Entry {
    std::string title = {};  // UTF-8; at most 159 characters are written
    std::string performer = {};

    bool operator==(const Entry&) const = default;
  };
  Entry disc = {};
  int firstTrack = 1;
  std::vector<Entry> tracks = {};

  [[nodiscard]] bool Empty() const;
  [[nodiscard]] Entry Track(int number) const;  // empty when there is none
  bool operator==(const CdText&) const = default;
};

inline constexpr std::size_t kCdTextPackBytes = 18;

// The packs of the texts, with the three that describe them; none when there is no text. What does not fit
// into the 256 packs of a language is cut evenly; a character that Latin-1 lacks becomes its nearest one, or
// '?'.
[[nodiscard]] Bytes CdTextPacks(const CdText& text);
// The first language in Latin-1 or ASCII. Packs with a wrong check sum are passed over, and so is what they
// cut.
[[nodiscard]] CdText ParseCdText(ByteView packs);

// Four packs as the 96 bytes of one sector of the lead-in: six bits in each byte.
inline constexpr std::size_t kPacksPerSector = 4;
[[nodiscard]] Bytes LeadInSector(ByteView packs, std::size_t sector);  // which one, in an endless repetition
// The packs in such a sector that have a right check sum.
[[nodiscard]] Bytes PacksOfLeadInSector(ByteView sector);

}  // namespace ts5
