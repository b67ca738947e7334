// Any bytes are a profile file; what is written comes back, and nothing else changes.
#include "platform/store/profile.h"

#include <cstdlib>

using namespace ts5;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  auto profile = Profile::Parse({data, size});
  if (!profile) return 0;
  for (const std::string& section : profile->Sections()) {
    for (const std::string& key : profile->Keys(section)) (void)profile->ReadInteger(section, key, -1);
  }
  profile->Write("sts5 Filelist", "Files", "17");
  auto again = Profile::Parse(profile->Serialise());
  if (!again || again->ReadInteger("sts5 filelist", "FILES", -1) != 17) std::abort();
  if (again->Sections() != profile->Sections() || again->Serialise() != profile->Serialise()) std::abort();
  while (again->Erase("sts5 Filelist", "Files")) {
  }
  if (again->Find("sts5 Filelist", "Files")) std::abort();
  return 0;
}
