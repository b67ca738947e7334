// StvXML: what is read comes back the same, as XML and as a score file.
#include "converters/stvx.h"

#include <cstdint>
#include <cstdlib>

#include "score/score_reader.h"
#include "score/score_writer.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace ts5;
  const auto score = converters::ReadStvXml({data, size});
  if (!score) return 0;
  const auto xml = converters::WriteStvXml(score->document);
  const auto again =
      xml ? converters::ReadStvXml(*xml) : converters::ScoreResult<converters::ScoreWithLosses>();
  if (!again || converters::WriteStvXml(again->document) != xml) abort();
  const Bytes file = WriteScore(score->document);
  if (const auto read = ReadScore(file); read && WriteScore(*read) != file) abort();
  return 0;
}
