// What is remembered of files: any bytes are read without harm, and what was read comes back the same.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "frame/facts_memory.h"
#include "platform/store/registry_salvage.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::size_t kHead = 16;  // the magic
  ts5::Bytes bytes = ts5::FactsMemory().Pack();
  bytes.resize(kHead);
  // As if it were undamaged, so that the reader goes on behind the checksum.
  ts5::ByteWriter file;
  file.Append(ts5::ByteView(bytes));
  file.U64Le(static_cast<std::uint64_t>(ts5::RegistryChecksum({data, size})));
  file.Append(ts5::ByteView{data, size});
  ts5::FactsMemory memory(1000);
  memory.Unpack(file.View());
  ts5::FactsMemory again(1000);
  again.Unpack(memory.Pack());
  if (again.Size() != memory.Size()) std::abort();
  return 0;
}
