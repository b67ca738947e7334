#include "preview/group_sketch.h"

#include <algorithm>
#include <string>

namespace ts5::preview {
namespace {

constexpr double kStemWidth = 0.13;
constexpr double kBeam = 0.5;
constexpr double kBeamStep = 0.75;

void DrawLevel(Canvas& canvas, const std::vector<PlacedSlice*>& notes, std::size_t level, double size) {
  const double inward = (notes.front()->up ? 1 : -1) * kBeamStep * static_cast<double>(level) * size;
  const auto beam = [&](double x1, double y1, double x2, double y2) {
    canvas.Beam(x1 - kStemWidth / 2, y1 + inward, x2 + kStemWidth / 2, y2 + inward, kBeam * size);
  };
  const double slope = (notes.back()->tip - notes.front()->tip) /
                       std::max(notes.back()->StemX() - notes.front()->StemX(), 0.1);
  const PlacedSlice* open = nullptr;
  for (PlacedSlice* note : notes) {
    const std::string& beams = note->slice->beams;
    const char letter = level < beams.size() ? beams[level] : '-';
    constexpr double kHook = 1.1;
    if (letter == 'b') open = note;
    if (letter == 'e' && open != nullptr) {
      beam(open->StemX(), open->tip, note->StemX(), note->tip);
      open = nullptr;
    }
    if (letter == 'f') beam(note->StemX(), note->tip, note->StemX() + kHook, note->tip + slope * kHook);
    if (letter == 'h') beam(note->StemX() - kHook, note->tip - slope * kHook, note->StemX(), note->tip);
  }
}

void DrawTuplet(Canvas& canvas, const PlacedVoice& voice, std::size_t first, std::size_t last) {
  const PlacedSlice& start = voice[first];
  const PlacedSlice& end = voice[last];
  const bool up = start.up;
  const double left = start.x;
  const double right = end.x + kHeadWidth;
  const bool beamed =
      std::ranges::all_of(voice.begin() + static_cast<std::ptrdiff_t>(first),
                          voice.begin() + static_cast<std::ptrdiff_t>(last) + 1, &PlacedSlice::beamed);
  const double edge = up ? canvas.Above(left, right) - 0.5 : canvas.Below(left, right) + 0.5;
  const std::string number = std::to_string(start.slice->value.ratio.actual);
  const double middle = (left + right) / 2;
  const double base = up ? edge : edge + 1.1;
  canvas.Text({middle, base, number, 1.7, TextStyle::BoldItalic, TextAlign::Centre});
  if (beamed) return;
  const double y = base - 0.45;
  const double hook = up ? 0.7 : -0.7;
  const double gap = 0.8 + 0.4 * static_cast<double>(number.size());
  canvas.Line(left, y + hook, left, y, 0.1);
  canvas.Line(left, y, middle - gap, y, 0.1);
  canvas.Line(middle + gap, y, right, y, 0.1);
  canvas.Line(right, y, right, y + hook, 0.1);
  canvas.Take(left, y - 0.2, right, y + 0.2);
}

}  // namespace

void SketchStem(Canvas& canvas, const PlacedSlice& placed, int flags) {
  const auto [low, high] = std::ranges::minmax(placed.steps);
  const double base = placed.up ? YOf(low) - 0.15 : YOf(high) + 0.15;
  canvas.Line(placed.StemX(), base, placed.StemX(), placed.tip, kStemWidth);
  for (int flag = 0; flag < flags; ++flag) {
    const double y = placed.tip + (placed.up ? 1 : -1) * kBeamStep * flag * placed.size;
    canvas.Put(placed.up ? Sign::FlagUp : Sign::FlagDown, placed.StemX(), y, placed.size);
  }
  if (placed.slice->event->item->group.graceForm == kGraceSlashed && placed.slice->grace)
    canvas.Line(placed.x, placed.tip + 1.9, placed.x + 1.7, placed.tip + 0.3, 0.1);
}

void SketchBeams(Canvas& canvas, std::span<PlacedSlice> run) {
  std::vector<PlacedSlice*> notes;
  for (PlacedSlice& placed : run) {
    if (placed.beamed) notes.push_back(&placed);
  }
  if (notes.size() < 2) return;
  const bool up = notes.front()->up;
  const double from = notes.front()->StemX();
  const double width = std::max(notes.back()->StemX() - from, 0.1);
  double rise = notes.back()->tip - notes.front()->tip;
  const double most = std::min(1.5, width * 0.2);
  rise = std::clamp(rise * 0.5, -most, most);
  // The line lies so that no stem is too short.
  double shift = up ? 1e9 : -1e9;
  for (const PlacedSlice* note : notes) {
    const double line = rise * (note->StemX() - from) / width;
    shift = up ? std::min(shift, note->tip - line) : std::max(shift, note->tip - line);
  }
  std::size_t levels = 1;
  for (PlacedSlice* note : notes) {
    levels = std::max(levels, note->slice->beams.size());
    note->tip = shift + rise * (note->StemX() - from) / width;
    note->top = std::min(note->top, note->tip);
    note->bottom = std::max(note->bottom, note->tip);
    SketchStem(canvas, *note, 0);
    canvas.Take(note->x, note->top, note->x + kHeadWidth, note->bottom);
  }
  const double size = notes.front()->size;
  for (std::size_t level = 0; level < levels; ++level) DrawLevel(canvas, notes, level, size);
}

void SketchTuplets(Canvas& canvas, const PlacedVoice& voice) {
  std::size_t from = SIZE_MAX;
  for (std::size_t i = 0; i < voice.size(); ++i) {
    const converters::NotationSlice& slice = *voice[i].slice;
    if (slice.tupletStart) from = i;
    if (!slice.tupletStop || from == SIZE_MAX || from == i) continue;
    DrawTuplet(canvas, voice, from, i);
    from = SIZE_MAX;
  }
}

}  // namespace ts5::preview
