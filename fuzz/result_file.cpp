// Any text can be a path or a melody's name in a result file: the lines keep their shape. Any bytes can be
// offered as keys or numbers of a melody.
#include <cstdlib>
#include <string>

#include "platform/base/text.h"
#include "search/hit_texts.h"
#include "search/melody_text.h"

using namespace ts5;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(AsText({data, size}));
  SearchHit hit;
  hit.file = text;
  hit.track = hit.bar = hit.time = static_cast<std::int32_t>(size) * 1000;
  for (const SearchKind kind : {SearchKind::Midi, SearchKind::Score}) {
    const std::string line = HitLine(kind, hit);
    const std::size_t place = kind == SearchKind::Midi ? 48 : 49;
    if (line.substr(place, 3) != (kind == SearchKind::Midi ? "Spu" : "Zei")) std::abort();
    if (line.find('\n') != line.size() - 1 || line.find('\r') != line.size() - 2) std::abort();
  }
  if (ShortenedPath(text).size() > kMaxShortPath) std::abort();
  for (const auto& melody : {MelodyFromKeys(text), MelodyFromNumbers(text)}) {
    if (melody &&
        (melody->elements.empty() || IsRest(melody->elements.front()) || IsRest(melody->elements.back()))) {
      std::abort();
    }
  }
  if (const auto elements = MelodyFromStored({data, size});
      elements && StoredMelody(*elements).size() != size / 4 * 4) {
    std::abort();
  }
  return 0;
}
