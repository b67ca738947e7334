// MusicXML: read, written again, as a score file, and as the search reads it.
#include <cstdint>
#include <cstdlib>

#include "converters/musicxml_reader.h"
#include "converters/musicxml_writer.h"
#include "score/score_reader.h"
#include "score/score_writer.h"
#include "search/score_items.h"

namespace ts5 {
namespace {

// The search finds the same in the notes alone as in the score file, where it can be read as one.
bool SearchesAlike(ByteView source, ByteView file) {
  const auto notes = converters::ReadMusicXml(source, {}, converters::ScoreDetail::Notes);
  const auto info = ReadScoreInfo(file);
  if (!notes || !info) return false;
  const auto items = ReadScoreItems(file, *info);
  const auto own = ReadScoreItems(notes->document);
  return items && own && *items == *own;
}

}  // namespace
}  // namespace ts5

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace ts5;
  const auto score = converters::ReadMusicXml({data, size});
  if (!score) return 0;
  converters::LossReport losses;
  const auto xml = converters::WriteMusicXml(score->document, losses);
  if (!xml) abort();
  // What is written is well-formed and has the bars that were read.
  const auto again = converters::ReadMusicXml(*xml);
  if (!again || again->document.bars.size() != score->document.bars.size()) abort();
  const Bytes file = WriteScore(score->document);
  if (!ReadScore(file)) abort();
  if (!SearchesAlike({data, size}, file)) abort();
  return 0;
}
