// MusicXML: read, written again, and as a score file.
#include <cstdint>
#include <cstdlib>

#include "converters/musicxml_reader.h"
#include "converters/musicxml_writer.h"
#include "score/score_reader.h"
#include "score/score_writer.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace ts5;
  const auto score = ReadMusicXml({data, size});
  if (!score) return 0;
  LossReport losses;
  const auto xml = WriteMusicXml(score->document, losses);
  if (!xml) abort();
  // What is written is well-formed and has the bars that were read.
  const auto again = ReadMusicXml(AsBytes(*xml));
  if (!again || again->document.bars.size() != score->document.bars.size()) abort();
  if (!ReadScore(WriteScore(score->document))) abort();
  return 0;
}
