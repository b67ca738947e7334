// INFO lists of RIFF files, and the rows that are shown of them.
#include <cstdint>
#include <cstdlib>

#include "midi/midi_properties.h"
#include "platform/base/text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto entries = ts5::ReadRiffInfo(ts5::ByteView(data, size));
  if (!entries) return 0;
  const auto rows = ts5::RiffAttributeRows(*entries);
  if (rows.size() != entries->size()) abort();
  for (const auto& row : rows) {
    if (!ts5::IsUtf8(row.label) || !ts5::IsUtf8(row.value)) abort();
  }
  return 0;
}
