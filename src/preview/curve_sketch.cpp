#include "preview/curve_sketch.h"

#include <algorithm>

namespace ts5::preview {
namespace {

// The first slice of an event in this system; nullptr where there is none.
const PlacedSlice* Find(const MarkedStaff& on, std::size_t voice, std::size_t event) {
  const auto found = std::ranges::find_if(
      on.voices[voice], [event](const PlacedSlice& placed) { return placed.slice->index == event; });
  return found == on.voices[voice].end() ? nullptr : &*found;
}

// Whether nothing stands before a slice in this system, apart from grace notes.
bool FirstOf(const MarkedStaff& on, std::size_t v, std::size_t index) {
  for (std::size_t i = 0; i < index; ++i) {
    if (!on.voices[v][i].slice->grace) return false;
  }
  return true;
}

double TieEnd(const MarkedStaff& on, std::size_t index, std::size_t v, int step) {
  const PlacedVoice& voice = on.voices[v];
  for (std::size_t i = index + 1; i < voice.size(); ++i) {
    if (std::ranges::find(voice[i].steps, step) != voice[i].steps.end()) return voice[i].x - 0.1;
    if (!voice[i].slice->grace) break;
  }
  return on.places.right - 0.3;
}

void DrawSlur(const MarkedStaff& on, std::size_t v, std::size_t first, std::size_t last, int placement) {
  const PlacedSlice* start = Find(on, v, first);
  const PlacedSlice* end = Find(on, v, last);
  if (start == nullptr && end == nullptr && on.voices[v].empty()) return;
  const PlacedSlice& lead = start != nullptr ? *start : end != nullptr ? *end : on.voices[v].front();
  const bool over = placement != 0 ? placement > 0 : !lead.up;
  const auto edge = [over](const PlacedSlice& placed) {
    return over ? placed.top - 0.5 : placed.bottom + 0.5;
  };
  const double x1 = start != nullptr ? start->Middle() : on.places.bars.front() - 0.5;
  const double x2 = end != nullptr ? end->Middle() : on.places.right - 0.3;
  if (x2 <= x1) return;
  const double y1 = start != nullptr ? edge(*start) : edge(lead);
  const double y2 = end != nullptr ? edge(*end) : edge(lead);
  // High enough for what lies between.
  const double between = over ? on.canvas.Above(x1 + 0.5, x2 - 0.5) : on.canvas.Below(x1 + 0.5, x2 - 0.5);
  const double middle = (y1 + y2) / 2;
  double height = std::clamp((x2 - x1) * 0.1, 1.0, 2.6);
  const double obstacle = over ? middle - between : between - middle;
  height = std::min(std::max(height, obstacle + 0.3), 7.0);
  on.canvas.Curve(x1, y1, x2, y2, over ? -height : height);
  const double peak = middle + (over ? -height : height) * 0.75;
  on.canvas.Take(x1 + 1, std::min(peak, middle), x2 - 1, std::max(peak, middle));
}

}  // namespace

void SketchTies(const MarkedStaff& on, std::size_t v) {
  const PlacedVoice& voice = on.voices[v];
  for (std::size_t i = 0; i < voice.size(); ++i) {
    const PlacedSlice& placed = voice[i];
    for (std::size_t n = 0; n < placed.steps.size(); ++n) {
      const std::uint8_t ties = converters::TiesOf(*placed.slice, n);
      const double y = YOf(placed.steps[n]);
      const bool over = placed.shared             ? placed.up
                        : placed.steps.size() > 1 ? n * 2 >= placed.steps.size()
                                                  : !placed.up;
      const double bow = over ? -1 : 1;
      const double lift = y + bow * 0.75;
      const double from = placed.x + kHeadWidth * placed.size + 0.1;
      if ((ties & kTieOnward) != 0) {
        const double to = TieEnd(on, i, v, placed.steps[n]);
        on.canvas.Curve(from, lift, std::max(to, from + 1), lift,
                        bow * std::clamp((to - from) * 0.12, 0.5, 1.4));
      }
      const bool comesIn = (ties & kTieFromBefore) != 0 && FirstOf(on, v, i);
      if (comesIn) on.canvas.Curve(placed.x - 2.2, lift, placed.x - 0.1, lift, bow * 0.6);
    }
  }
}

void SketchSlurs(const MarkedStaff& on, std::size_t v) {
  const auto& events = on.engraving.music.voices[on.staff][v];
  for (const std::size_t i : on.engraving.marked[on.staff][v]) {
    if (events[i].start >= on.to) break;
    for (const DrawingItem& drawing : events[i].item->drawings) {
      if (!drawing.Is(DrawingKind::FourPointCurve)) continue;
      const std::size_t end = SpanEnd(events, i, drawing.span);
      if (end == i || events[end].start < on.from) continue;
      DrawSlur(on, v, i, end, drawing.placement);
    }
  }
}

}  // namespace ts5::preview
