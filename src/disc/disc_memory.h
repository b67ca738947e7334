// Discs that were seen before: their titles come back when the same disc does. A disc is known by its table
// of contents; nothing is asked of any network.
#pragma once

#include <optional>
#include <string>

#include "platform/base/outcome.h"
#include "platform/disc/cd_text.h"
#include "platform/disc/mmc_replies.h"

namespace ts5::disc {

// "9E0B4A0C-209732-1C291CA3": the number of eight hexadecimal digits that programs for discs have used since
// the nineties (sum of the digits of all start seconds, playing time in seconds, number of tracks), the
// lead-out's sector, and the CRC-32 of all starts, as many discs share the first number.
[[nodiscard]] std::string DiscIdentity(const DiscToc& toc);

class DiscMemory {
 public:
  // path: the file that keeps them; "": that of the program.
  explicit DiscMemory(std::string path = {});

  // Empty when the disc is not known.
  [[nodiscard]] CdText Recall(const DiscToc& toc) const;
  // What text says of the disc; what it does not say stays as it was known. TargetFailed, WriteFailed.
  Outcome Remember(const DiscToc& toc, const CdText& text) const;
  // What the disc itself says, and what is known of it where it says nothing.
  [[nodiscard]] CdText Completed(const DiscToc& toc, CdText text) const;

 private:
  std::string path_;
};

}  // namespace ts5::disc
