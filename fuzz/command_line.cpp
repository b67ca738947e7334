// Values of a command line: whatever they hold, they are taken or refused, and what is taken reads back.
#include "batch/command_line.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "frame/filter_catalogue.h"
#include "modules/filter_modules.h"
#include "platform/base/text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace ts5;
  const std::string input(reinterpret_cast<const char*>(data), size);

  std::vector<std::string> words;
  for (const std::string_view word : Split(input, '\n')) words.emplace_back(word);
  for (const FilterModule& module : Modules()) {
    const auto parameters = module.create();
    for (const std::string& word : words) {
      const std::vector<std::string> one{word};
      if (batch::ApplySettings(module.fields, *parameters, one)) continue;
      // What was taken must survive the store.
      RegistryValues values;
      SaveParameters(module, *parameters, values);
      RegistryValues again;
      SaveParameters(module, *LoadParameters(&module, values), again);
      if (!(values == again)) std::abort();
    }
  }
  for (const std::string& word : words) {
    (void)batch::ParseOverwrite(word);
    (void)batch::ParseHexBytes(word);
    (void)batch::MeansYes(word);
    const FilterId filter = FindFilter(word);
    if (filter != FilterId::None && !IsFilter(filter)) std::abort();
  }
  return 0;
}
