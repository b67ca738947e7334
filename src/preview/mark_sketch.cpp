#include "preview/mark_sketch.h"

#include <algorithm>

#include "converters/xml_signs.h"
#include "preview/curve_sketch.h"
#include "preview/lyric_sketch.h"
#include "preview/mark_texts.h"
#include "preview/text_sketch.h"

namespace ts5::preview {
namespace {

// Marks that have a sign of their own here; others are told by a short text.
struct DrawnMark {
  std::string_view name;
  Sign sign;
};
constexpr DrawnMark kMarks[] = {
    {"staccato", Sign::Dot},           {"tenuto", Sign::Tenuto},
    {"accent", Sign::Accent},          {"strong-accent", Sign::StrongAccent},
    {"stress", Sign::StrongAccent},    {"staccatissimo", Sign::Staccatissimo},
    {"spiccato", Sign::Staccatissimo}, {"fermata", Sign::Fermata},
    {"soft-accent", Sign::Accent},
};

// Beside the head or stem, behind what stands there already; dots and strokes may stand within the staff.
double Free(const MarkedStaff& on, bool over, double left, double right, const PlacedSlice& placed,
            double distance) {
  if (over) {
    const double above = on.canvas.Above(left, right);
    return (above < 0 ? std::min(above, placed.top) : std::min(placed.top, 0.0)) - distance;
  }
  const double below = on.canvas.Below(left, right);
  return (below > 4 ? std::max(below, placed.bottom) : std::max(placed.bottom, 4.0)) + distance;
}

void DrawLabel(const MarkedStaff& on, const PlacedSlice& placed, const std::string& text) {
  if (text.empty()) return;
  const double half = TextWidth(text, kSmallSize) / 2 + 0.1;
  const double y =
      std::min(on.canvas.Above(placed.Middle() - half, placed.Middle() + half), placed.top) - 0.5;
  on.canvas.Text({placed.Middle(), y, text, kSmallSize, TextStyle::Italic, TextAlign::Centre});
}

void DrawArpeggio(const MarkedStaff& on, const PlacedSlice& placed) {
  if (placed.steps.empty()) return;
  const auto [low, high] = std::ranges::minmax(placed.steps);
  const bool accidentals = on.engraving.accidentals[on.staff][0].size() > placed.slice->index &&
                           placed.slice->first && placed.steps.size() > 1;
  const double x = placed.x - (accidentals ? 1.5 : 1.0);
  for (double y = 4 - high / 2.0 - 0.5; y < 4 - low / 2.0 + 0.4; y += 1) on.canvas.Put(Sign::Arpeggio, x, y);
}

void DrawMark(const MarkedStaff& on, const PlacedSlice& placed, std::string_view name,
              const std::string& words) {
  if (name == "arpeggiate") return DrawArpeggio(on, placed);
  if (name == "fingering" || name == "pluck" || name == "string") return DrawLabel(on, placed, words);
  const auto* const mark = std::ranges::find(kMarks, name, &DrawnMark::name);
  if (mark == std::end(kMarks)) return DrawLabel(on, placed, std::string(TextOfMark(name).value_or(name)));
  // A fermata stands above, the others at the head.
  const bool over = mark->sign == Sign::Fermata || mark->sign == Sign::StrongAccent || !placed.up;
  const double left = placed.x - 0.2;
  const double right = placed.x + kHeadWidth + 0.2;
  const double place = Free(on, over, left, right, placed, mark->sign == Sign::Fermata ? 1.4 : 0.7);
  on.canvas.Put(mark->sign, placed.Middle(), place, 1, mark->sign == Sign::Fermata && !over);
  on.canvas.Take(left, place - 0.5, right, place + 0.5);
}

void DrawMarksIn(const MarkedStaff& on, const PlacedSlice& placed, const DrawingItem& drawing) {
  for (const DrawingItem& nested : drawing.nested) DrawMarksIn(on, placed, nested);
  if (!drawing.Is(DrawingKind::Text)) return;
  if (const converters::XmlSign* sign = converters::FindSign(drawing.sign); sign != nullptr) {
    if (sign->group != converters::SignGroup::Direction) DrawMark(on, placed, sign->name, drawing.words);
    return;
  }
  DrawnMarks marks;
  ApplyDrawing(DrawingKind::Text, {0, 0, drawing.text}, marks);
  if (marks.dynamic != 0) return;
  if (const converters::XmlSign* sign = converters::SignOfArticulation(marks.articulation); sign != nullptr)
    DrawMark(on, placed, sign->name, {});
  if (marks.marked) DrawMark(on, placed, "fermata", {});
}

void DrawSignsOf(const MarkedStaff& on, const PlacedSlice& placed) {
  const converters::NotationSlice& slice = *placed.slice;
  if (!slice.first) return;
  const ScoreItem& item = *slice.event->item;
  if (const converters::XmlSign* sign = converters::SignOfArticulation(item.group.articulation);
      sign != nullptr)
    DrawMark(on, placed, sign->name, {});
  for (const DrawingItem& drawing : item.drawings) DrawMarksIn(on, placed, drawing);
}

void DrawEndings(const MarkedStaff& on) {
  for (const ScoreEnding& ending : on.engraving.music.endings) {
    if (ending.last < on.places.first || ending.first >= on.places.last) continue;
    const bool begins = ending.first >= on.places.first;
    const bool ends = ending.last < on.places.last;
    const double x1 = begins ? on.places.bars[ending.first - on.places.first] + 0.2 : on.places.bars.front();
    const double x2 = ends ? on.places.bars[ending.last - on.places.first + 1] - 0.3 : on.places.right;
    const double y = std::min(on.canvas.Above(x1, x2) - 1.2, -4.0);
    on.canvas.Line(x1, y, x2, y, 0.13);
    if (begins) on.canvas.Line(x1, y, x1, y + 1.8, 0.13);
    const bool open = ending.drawing != nullptr && ending.drawing->words == "discontinue";
    if (ends && !open) on.canvas.Line(x2, y, x2, y + 1.8, 0.13);
    std::string numbers;
    for (unsigned n = ending.from; n <= ending.to; ++n)
      numbers += (numbers.empty() ? "" : " ") + std::to_string(n) + ".";
    on.canvas.Take(x1, y - 0.2, x2, y + 1.8);
    if (begins) on.canvas.Text({x1 + 0.5, y + 1.8, numbers, kSmallSize});
  }
}

}  // namespace

void SketchMarks(const Engraving& engraving, const SystemPlaces& places, std::size_t staff, bool first,
                 const std::vector<PlacedVoice>& voices, Canvas& canvas) {
  const ScoreBar& last = engraving.music.bars[places.last - 1];
  const MarkedStaff on{engraving,
                       places,
                       staff,
                       voices,
                       canvas,
                       engraving.music.bars[places.first].start,
                       last.start + last.length};
  for (std::size_t v = 0; v < voices.size(); ++v) {
    SketchTies(on, v);
    for (const PlacedSlice& placed : voices[v]) DrawSignsOf(on, placed);
  }
  for (std::size_t v = 0; v < voices.size(); ++v) SketchSlurs(on, v);
  for (std::size_t v = 0; v < voices.size(); ++v) SketchTexts(on, v);
  SketchLyrics(on);
  if (!first) return;
  SketchTempos(on);
  DrawEndings(on);
}

}  // namespace ts5::preview
