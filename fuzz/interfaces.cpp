// The definitions of command-line encoders, and their lines of parameters.
#include <cstdint>
#include <cstdlib>

#include "audio/interfaces/command_line.h"
#include "audio/interfaces/encoder_interface.h"
#include "platform/files/files.h"

namespace {

using namespace ts5;
using namespace ts5::interfaces;

void ReadDefinitions(ByteView bytes) {
  static const auto temporary = TemporaryFile::Create();
  if (!temporary || Failed(WriteFile(temporary->Path(), bytes))) return;
  const EncoderInterfaces interfaces = LoadInterfaces(temporary->Path());
  for (const EncoderInterface& interface : interfaces) {
    for (std::size_t set = 0; set < interface.sets.size(); ++set) (void)DescribeSet(interface, set);
  }
}

// A name is one argument or a part of one, whatever the line and the name look like.
void FillLine(std::string_view line) {
  (void)ParametersFault(line);
  const std::size_t words = SplitCommandLine(line).size();
  const auto arguments = EncoderArguments(line, line, "/z {q}");
  if (arguments && arguments->size() != words) abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const ByteView bytes(data, size);
  ReadDefinitions(bytes);
  FillLine(AsText(bytes));
  return 0;
}
