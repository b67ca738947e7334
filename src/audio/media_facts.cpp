#include "audio/media_facts.h"

namespace ts5 {

std::uint64_t MediaProbe::Milliseconds() const {
  if (format.bytesPerSecond == 0) return 0;
  const std::uint64_t whole = dataLength / format.bytesPerSecond;
  return whole * 1000 + dataLength % format.bytesPerSecond * 1000 / format.bytesPerSecond;
}

}  // namespace ts5
