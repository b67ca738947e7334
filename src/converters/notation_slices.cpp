#include "converters/notation_slices.h"

#include <algorithm>

namespace ts5::converters {
namespace {

constexpr std::uint8_t kEighth = 3;
constexpr std::uint8_t kShortest = 8;

void AddSlices(const ScoreEvent& event, std::size_t index, const ScoreMusic& music,
               std::vector<NotationSlice>& slices) {
  const ScoreItem& item = *event.item;
  NotationSlice whole;
  whole.event = &event;
  whole.index = index;
  whole.start = event.start;
  whole.length = event.length;
  whole.bar = event.bar;
  whole.value = {item.group.durationCode, item.group.dots, RatioOf(item)};
  if (whole.value.ratio.normal == 0) whole.value.ratio = {};
  whole.grace = event.length.IsZero();
  if (whole.grace && event.IsRest()) return;
  const Fraction end = event.start + event.length;
  const auto barEnd = [&](std::uint32_t bar) { return music.bars[bar].start + music.bars[bar].length; };
  const bool bars = event.IsRest() && item.group.wholeBars > 0;
  if (whole.grace || event.bar >= music.bars.size() || (end <= barEnd(event.bar) && !bars)) {
    slices.push_back(whole);
    return;
  }
  const std::size_t from = slices.size();
  Fraction start = event.start;
  for (std::uint32_t bar = event.bar; bar < music.bars.size() && start < end; ++bar) {
    const Fraction stop = bar + 1 == music.bars.size() ? end : std::min(end, barEnd(bar));
    if (bars && start == music.bars[bar].start && stop == barEnd(bar)) {
      NotationSlice rest = whole;
      rest.start = start;
      rest.length = stop - start;
      rest.bar = bar;
      rest.measureRest = true;
      rest.value = {};
      slices.push_back(rest);
      start = stop;
      continue;
    }
    for (const NoteValue& value : NoteValues(stop - start)) {
      NotationSlice piece = whole;
      piece.start = start;
      piece.value = value;
      piece.length = NotatedLength(value.code, value.dots);
      if (value.ratio.actual != 0)
        piece.length = piece.length * Fraction(value.ratio.normal, value.ratio.actual);
      piece.bar = bar;
      start += piece.length;
      slices.push_back(piece);
    }
    start = stop;
  }
  for (std::size_t i = from; i < slices.size(); ++i) {
    slices[i].first = i == from;
    slices[i].last = i + 1 == slices.size();
  }
}

// A bracket goes over notes of one ratio until they fill halves again, and as many as the ratio says.
void BracketTuplets(std::vector<NotationSlice>& slices) {
  for (std::size_t i = 0; i < slices.size();) {
    const TupletRatio ratio = slices[i].value.ratio;
    if (ratio.actual == 0) {
      ++i;
      continue;
    }
    Fraction filled;
    Fraction least(2);
    std::size_t last = i;
    std::size_t k = i;
    for (; k < slices.size() && slices[k].bar == slices[i].bar; ++k) {
      if (slices[k].grace) continue;
      if (!(slices[k].value.ratio == ratio)) break;
      last = k;
      filled += slices[k].length;
      least = std::min(least, NotatedLength(slices[k].value.code, 0));
      const bool halves = (filled.Denominator() & (filled.Denominator() - 1)) == 0;
      if (halves && filled >= least * Fraction(ratio.normal)) {
        ++k;
        break;
      }
    }
    slices[i].tupletStart = true;
    slices[last].tupletStop = true;
    i = std::max(k, i + 1);
  }
}

std::size_t Flags(const NotationSlice& slice) {
  if (slice.event->IsRest() || slice.grace) return 0;
  const std::uint8_t code = slice.value.code;
  return code >= kEighth && code <= kShortest ? static_cast<std::size_t>(code - kEighth + 1) : 0;
}

// The place within a bar up to which flags are beamed: the beat, of compound times three units of it.
Fraction BeamUnit(ScoreTimeSignature time) {
  if (!time.Usable()) return Fraction(1, 4);
  const Fraction unit(1, std::int64_t{1} << time.power);
  if (time.power >= 3 && time.numerator % 3 == 0) return unit * Fraction(3);
  return time.power >= 3 ? Fraction(1, 4) : unit;
}

// The beams of a run of flags, level by level.
void BeamRun(std::vector<NotationSlice*>& run) {
  if (run.size() < 2) return run.clear();
  for (std::size_t i = 0; i < run.size(); ++i) {
    const std::size_t own = Flags(*run[i]);
    const std::size_t before = i > 0 ? Flags(*run[i - 1]) : 0;
    const std::size_t after = i + 1 < run.size() ? Flags(*run[i + 1]) : 0;
    for (std::size_t level = 1; level <= own; ++level) {
      const bool left = before >= level;
      const bool right = after >= level;
      run[i]->beams += left ? (right ? 'c' : 'e') : right ? 'b' : (i == 0 ? 'f' : 'h');
    }
  }
  run.clear();
}

void BeamVoice(std::vector<NotationSlice>& slices, const ScoreMusic& music) {
  std::vector<NotationSlice*> run;
  for (NotationSlice& slice : slices) {
    if (slice.grace || slice.bar >= music.bars.size()) continue;
    const ScoreBar& bar = music.bars[slice.bar];
    // An upbeat fills the end of its bar.
    const Fraction nominal = BarLength(bar.time);
    const Fraction shift = slice.bar == 0 && bar.length < nominal ? nominal - bar.length : Fraction();
    const Fraction unit = BeamUnit(bar.time);
    const Fraction within = (slice.start - bar.start + shift) / unit;
    const bool onBeat = within.Denominator() == 1;
    const bool sameUnit = !run.empty() && run.back()->bar == slice.bar && !onBeat &&
                          run.back()->start + run.back()->length == slice.start;
    const bool crosses =
        !run.empty() && within.Numerator() / within.Denominator() !=
                            ((run.back()->start - bar.start + shift) / unit).Numerator() /
                                ((run.back()->start - bar.start + shift) / unit).Denominator();
    if (!sameUnit || crosses || Flags(slice) == 0) BeamRun(run);
    if (Flags(slice) > 0) run.push_back(&slice);
  }
  BeamRun(run);
}

}  // namespace

std::vector<NotationSlice> SliceVoice(const std::vector<ScoreEvent>& events, const ScoreMusic& music,
                                      bool beam) {
  std::vector<NotationSlice> slices;
  slices.reserve(events.size());
  for (std::size_t i = 0; i < events.size(); ++i) AddSlices(events[i], i, music, slices);
  BracketTuplets(slices);
  if (beam) {
    BeamVoice(slices, music);
  } else {
    for (NotationSlice& slice : slices) slice.beams = slice.event->item->beams;
  }
  return slices;
}

std::uint8_t TiesOf(const NotationSlice& slice, std::size_t note) {
  const ScoreItem& item = *slice.event->item;
  if (item.group.isRest) return 0;
  std::uint8_t ties = static_cast<std::uint8_t>((item.group.tieFromBefore ? kTieFromBefore : 0) |
                                                (item.group.tieOnward ? kTieOnward : 0));
  if (note < item.noteTies.size()) ties = item.noteTies[note];
  if (!slice.first) ties |= kTieFromBefore;
  if (!slice.last) ties |= kTieOnward;
  return ties;
}

}  // namespace ts5::converters
