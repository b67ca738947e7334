// Any bytes may lie where the registry file lies; what is taken for a key is one.
#include "platform/store/registry_salvage.h"

#include <cstdlib>

using namespace ts5;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  for (const RegistryRow& row : SalvageRegistry({data, size}).rows) {
    if (!NamesAgree(row.path, row.parent, row.name)) std::abort();
  }
  return 0;
}
