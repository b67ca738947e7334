#include "preview/text_sketch.h"

#include <algorithm>
#include <cmath>

#include "converters/xml_signs.h"
#include "platform/base/text.h"
#include "preview/mark_texts.h"

namespace ts5::preview {
namespace {

constexpr double kDynamic = 2.4;  // size

// What a tempo mark shows: the note value and the number.
std::string TempoText(std::string_view words) {
  struct Unit {
    std::string_view name;
    std::string_view text;
  };
  constexpr Unit kUnits[] = {{"whole", "Ganze"},   {"half", "Halbe"},       {"quarter", "Viertel"},
                             {"eighth", "Achtel"}, {"16th", "Sechzehntel"}, {"breve", "Brevis"}};
  const std::size_t equal = words.find('=');
  if (equal == std::string_view::npos) return "Viertel = " + std::string(words);
  std::string_view unit = words.substr(0, equal);
  bool dotted = false;
  for (; unit.ends_with('.'); unit.remove_suffix(1)) dotted = true;
  const auto* const found = std::ranges::find(kUnits, unit, &Unit::name);
  const std::string name(found == std::end(kUnits) ? unit : found->text);
  return (dotted ? "punktierte " : "") + name + " = " + std::string(words.substr(equal + 1));
}

void DrawHairpin(const MarkedStaff& on, const std::vector<ScoreEvent>& events, std::size_t i,
                 const DrawingItem& drawing) {
  const Fraction start = events[i].start + drawing.offset;
  Fraction end = start + drawing.extent;
  if (drawing.extent.IsZero()) end = events[SpanEnd(events, i, drawing.span)].start;
  if (end <= start || end <= on.from || start >= on.to) return;
  const double x1 = start < on.from ? on.places.bars.front() + 0.5 : on.places.X(on.engraving, start);
  const double x2 = end >= on.to ? on.places.right - 0.5 : on.places.X(on.engraving, end) - 0.3;
  if (x2 - x1 < 0.5) return;
  const double y = (drawing.placement > 0 ? on.canvas.Above(x1, x2) - 1.4 : on.canvas.Below(x1, x2) + 1.6);
  const bool less = (drawing.value & 0x80) != 0;
  const double open = 0.75;
  on.canvas.Line(x1, y - (less ? open : 0), x2, y - (less ? 0 : open), 0.13);
  on.canvas.Line(x1, y + (less ? open : 0), x2, y + (less ? 0 : open), 0.13);
  on.canvas.Take(x1, y - open, x2, y + open);
}

void DrawDirection(const MarkedStaff& on, double x, const DrawingItem& drawing) {
  std::string text;
  if (drawing.sign == "tempo") {
    // What is heard and not shown stands at the start of the score all the same.
    if (drawing.words.find('=') == std::string::npos) return;
    text = TempoText(drawing.words);
  } else {
    text = drawing.words.starts_with("up") ? "8vb" : "8va";
  }
  const double y = on.canvas.Above(x, x + TextWidth(text, kWordSize, TextStyle::Bold)) - 0.7;
  on.canvas.Text({x, y, text, kWordSize, TextStyle::Bold});
}

// Dynamics stand next to the staff, words beyond them.
enum class Layer : std::uint8_t { Dynamics, Words };

void DrawText(const MarkedStaff& on, const ScoreEvent& event, const DrawingItem& drawing, Layer layer) {
  for (const DrawingItem& nested : drawing.nested) DrawText(on, event, nested, layer);
  if (!drawing.Is(DrawingKind::Text)) return;
  const Fraction at = event.start + drawing.offset;
  const double x = on.places.X(on.engraving, std::min(at, on.to));
  const std::string_view dynamic = drawing.sign == "dynamics"
                                       ? std::string_view(drawing.words)
                                       : converters::DynamicOfSymbols(AsText(drawing.text));
  if (dynamic.empty() != (layer == Layer::Words)) return;
  if (!dynamic.empty()) {
    const double half = TextWidth(std::string(dynamic), kDynamic, TextStyle::BoldItalic) / 2;
    const double middle = x + kHeadWidth / 2;
    const double y = drawing.placement > 0 ? on.canvas.Above(middle - half, middle + half) - 0.6
                                           : on.canvas.Below(middle - half, middle + half) + 2.1;
    return on.canvas.Text(
        {middle, y, std::string(dynamic), kDynamic, TextStyle::BoldItalic, TextAlign::Centre});
  }
  if (drawing.sign == "tempo" || drawing.sign == "octave-shift") return DrawDirection(on, x, drawing);
  std::string text = WordsOf(drawing);
  const converters::XmlSign* sign = converters::FindSign(drawing.sign);
  if (sign != nullptr && sign->group != converters::SignGroup::Direction) return;
  if (text.empty() && sign != nullptr) {
    text = TextOfMark(sign->name).value_or("");
    if (drawing.sign == "pedal" && drawing.words.starts_with("stop")) text = "*";
  }
  if (text.empty() || text == "tr") return;
  std::ranges::replace(text, '\n', ' ');
  const bool below = drawing.placement < 0 || drawing.sign == "pedal";
  const bool loud = drawing.sign == "rehearsal" || drawing.sign == "harmony" || drawing.sign == "segno" ||
                    drawing.sign == "coda";
  const TextStyle style = loud ? TextStyle::Bold : TextStyle::Italic;
  const double width = TextWidth(text, kWordSize, style);
  const double y = below ? on.canvas.Below(x, x + width) + 2.0 : on.canvas.Above(x, x + width) - 0.7;
  on.canvas.Text({.x = x,
                  .y = y,
                  .text = text,
                  .size = kWordSize,
                  .style = style,
                  .framed = drawing.sign == "rehearsal"});
}

bool HasOwnMark(const MarkedStaff& on, Fraction at) {
  for (const auto& staff : on.engraving.music.voices) {
    for (const auto& events : staff) {
      auto event = std::ranges::lower_bound(events, at, {}, &ScoreEvent::start);
      for (; event != events.end() && event->start == at; ++event) {
        for (const DrawingItem& drawing : event->item->drawings) {
          if (drawing.sign == "tempo" && drawing.words.find('=') != std::string::npos) return true;
        }
      }
    }
  }
  return false;
}

}  // namespace

void SketchTexts(const MarkedStaff& on, std::size_t v) {
  const auto& events = on.engraving.music.voices[on.staff][v];
  for (const Layer layer : {Layer::Dynamics, Layer::Words}) {
    for (const std::size_t i : on.engraving.marked[on.staff][v]) {
      const ScoreEvent& event = events[i];
      if (event.start >= on.to) break;
      for (const DrawingItem& drawing : event.item->drawings) {
        if (layer == Layer::Dynamics && drawing.Is(DrawingKind::Hairpin)) DrawHairpin(on, events, i, drawing);
        if (event.start >= on.from) DrawText(on, event, drawing, layer);
      }
    }
  }
}

void SketchTempos(const MarkedStaff& on) {
  double shown = 0;
  for (const ScoreTempo& tempo : on.engraving.music.tempos) {
    const bool here = tempo.at >= on.from && tempo.at < on.to;
    const bool changes = std::abs(tempo.quarters - shown) > 0.5;
    shown = tempo.quarters;
    if (!here || !changes || HasOwnMark(on, tempo.at)) continue;
    const double x = tempo.at == on.from ? on.places.left : on.places.X(on.engraving, tempo.at);
    const std::string text = Format("Viertel = %d", static_cast<int>(std::lround(tempo.quarters)));
    on.canvas.Text({x, on.canvas.Above(x, x + TextWidth(text, kWordSize, TextStyle::Bold)) - 1.0, text,
                    kWordSize, TextStyle::Bold});
  }
}

}  // namespace ts5::preview
