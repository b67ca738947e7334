// File-list files: any bytes give a list or a code, and what was read can be written and read again.
#include <cstdlib>

#include "frame/file_list_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace ts5;
  const auto profile = Profile::Parse({data, size});
  if (!profile) return 0;
  const EntryFinder find = [](const std::string& path) {
    return path.empty() || path.back() == '?' ? std::nullopt : std::optional(path);
  };
  for (const bool burner : {false, true}) {
    auto loaded = ReadFileList(*profile, burner, find);
    if (!loaded) continue;
    if (loaded->entries.size() > size) std::abort();
    FreeFileList list;
    (void)TakeLoadedList(list, std::move(*loaded), false, burner);
    const auto again = Profile::Parse(FileListProfile(list, burner).Serialise());
    if (!again) std::abort();
    const auto reloaded = ReadFileList(*again, burner && !list.Empty(), find);
    if (!reloaded || reloaded->entries.size() + reloaded->missing != list.Size()) std::abort();
  }
  return 0;
}
