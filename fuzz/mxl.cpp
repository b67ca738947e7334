// Compressed MusicXML: the archive around a score.
#include <cstdint>
#include <cstdlib>

#include "converters/mxl_container.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace ts5;
  const auto content = converters::ReadMxl({data, size});
  if (content && content->size() > size * converters::kMostCompression) abort();
  return 0;
}
