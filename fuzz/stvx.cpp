// StvXML: what is read comes back the same, as XML and as a score file.
#include "converters/stvx.h"

#include <cstdint>
#include <cstdlib>

#include "score/score_reader.h"
#include "score/score_writer.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace ts5;
  const auto score = ReadStvXml({data, size});
  if (!score) return 0;
  const auto xml = WriteStvXml(score->document);
  const auto again = xml ? ReadStvXml(*xml) : ScoreResult<ScoreWithLosses>();
  if (!again || WriteStvXml(again->document) != xml) abort();
  const Bytes file = WriteScore(score->document);
  if (const auto read = ReadScore(file); read && WriteScore(*read) != file) abort();
  return 0;
}
