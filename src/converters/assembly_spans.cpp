#include "converters/assembly_spans.h"

#include "converters/texts.h"

namespace ts5::converters::musicxml {
namespace {

std::uint16_t AsSpan(std::size_t chords) {
  return static_cast<std::uint16_t>(std::min<std::size_t>(chords, kMostSpan));
}

// From a chord to the last of those before a number.
std::uint16_t SpanBefore(std::size_t chord, std::ptrdiff_t end) {
  const auto last = static_cast<std::size_t>(end);
  return AsSpan(last > chord + 1 ? last - chord - 1 : 0);
}

}  // namespace

void ResolveSlurs(const PartToPlace& place, const PartVoices& voices) {
  Part& part = place.part;
  for (const Slur& slur : part.slurs) {
    Group& start = part.groups[slur.start];
    DrawingItem& drawing = start.item.drawings[slur.drawing];
    if (slur.stop == SIZE_MAX || !start.placed) continue;
    const Group& stop = part.groups[slur.stop];
    if (stop.staff == start.staff && stop.slot == start.slot && stop.chord >= start.chord) {
      drawing.span = AsSpan(stop.chord - start.chord);
      continue;
    }
    const auto& chords = voices.Chords(start.staff, start.slot);
    const auto after = std::ranges::upper_bound(chords, place.PlaceOf(slur.stop), {}, &ChordAt::at);
    drawing.span = SpanBefore(start.chord, after - chords.begin());
    place.Lose(texts::LossSlurVoice, place.MeasureOf(slur.start), start.staff);
  }
  // What never ends is no slur.
  for (auto slur = part.slurs.rbegin(); slur != part.slurs.rend(); ++slur) {
    if (slur->stop != SIZE_MAX) continue;
    auto& drawings = part.groups[slur->start].item.drawings;
    drawings.erase(drawings.begin() + static_cast<std::ptrdiff_t>(slur->drawing));
  }
}

void PlaceEndings(const PartToPlace& place, const PartVoices& voices) {
  const auto& chords = voices.Chords(0, 0);
  for (Ending& ending : place.part.endings) {
    if (ending.last == SIZE_MAX) ending.last = ending.first;
    const auto groups = voices.Groups(ending.first, 0, 0);
    if (groups.empty()) continue;
    Group& group = place.part.groups[groups.front()];
    const auto after = std::ranges::lower_bound(chords, place.bars.End(ending.last), {}, &ChordAt::at);
    DrawingItem volta = VoltaDrawing(ending.from, ending.to, SpanBefore(group.chord, after - chords.begin()));
    if (ending.open) volta.words = "discontinue";
    group.item.drawings.push_back(std::move(volta));
  }
}

void ExtendMark(const PartToPlace& place, const PartVoices& voices, std::size_t measure, const MarkHome& home,
                Mark& mark) {
  const MarkEnd& end = place.part.ends[mark.end];
  const Fraction from = place.bars.starts[measure] + mark.at;
  const Fraction to =
      end.measure == SIZE_MAX ? place.bars.End(measure) : place.bars.starts[end.measure] + end.at;
  if (to <= from) return;
  mark.drawing.extent = to - from;
  // The chords of this voice up to there, from the one it hangs on.
  const auto& chords = voices.Chords(mark.staff, home.slot);
  auto first = std::ranges::lower_bound(chords, home.start, {}, &ChordAt::at);
  const auto isGrace = [&place](const ChordAt& chord) {
    return place.part.groups[chord.group].length.IsZero();
  };
  while (first != chords.end() && first->at == home.start && isGrace(*first)) ++first;
  const auto after = std::ranges::upper_bound(chords, to, {}, &ChordAt::at);
  const std::ptrdiff_t span = (after - first) - (home.isRest ? 0 : 1);
  mark.drawing.span = static_cast<std::uint16_t>(std::clamp<std::ptrdiff_t>(span, 1, kMostSpan));
}

}  // namespace ts5::converters::musicxml
