// Any bytes may be offered for import; what was taken in comes back from an export.
#include "platform/store/reg_file.h"

#include <cstdlib>

using namespace ts5;

namespace {

Registry Fresh() {
  return std::move(*Registry::Open(kRegistryInMemory));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static Registry registry = Fresh();
  static Registry copy = Fresh();
  for (Registry* const used : {&registry, &copy}) {
    for (const std::string_view root : {kLocalMachine, kCurrentUser}) {
      if (Failed(used->DeleteKey(root))) std::abort();
    }
  }
  if (!ImportRegText({data, size}, registry)) return 0;
  for (const std::string_view root : {kLocalMachine, kCurrentUser}) {
    const auto text = ExportRegText(registry, root);
    if (!text) std::abort();
    const auto report = ImportRegText(*text, copy);
    if (!report || report->errorCount != 0) std::abort();
    if (ExportRegText(copy, root) != text) std::abort();
  }
  return 0;
}
