// Any bytes may stand where a key keeps its values.
#include "platform/store/registry_blob.h"

#include <cstdlib>

using namespace ts5;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto values = UnpackValues({data, size});
  if (!values) return 0;
  const auto again = UnpackValues(PackValues(*values));
  if (!again || !(*again == *values)) std::abort();
  return 0;
}
