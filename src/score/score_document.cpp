#include "score/score_document.h"

#include <algorithm>
#include <cstdlib>

#include "platform/base/casts.h"
#include "platform/base/text.h"

namespace ts5 {
namespace {

constexpr std::uint8_t kShortestCode = 8;
constexpr std::uint8_t kBreve = 9;
constexpr std::uint8_t kGreatestTuplet = 15;

ScoreItem Item(ObjectKind kind) {
  ScoreItem item;
  item.kind = static_cast<std::uint8_t>(kind);
  return item;
}

DrawingItem Drawing(DrawingKind kind) {
  DrawingItem item;
  item.kind = static_cast<std::uint8_t>(kind);
  return item;
}

// Whether a text sounds: as a dynamic, an articulation or a mark.
bool IsSymbol(std::string_view text) {
  DrawnMarks marks;
  ApplyDrawnText(text, marks);
  return marks.articulation != 0 || marks.marked || marks.dynamic != 0;
}

TupletRatio RatioOfForm(const ScoreTuplet& tuplet) {
  if (tuplet.number == 0) return {};
  const TupletCount count = CountOf(tuplet);
  return {static_cast<std::uint16_t>(count.number), static_cast<std::uint16_t>(count.played)};
}

// Base lengths by halves: -1 the breve, 0 the whole note ... 8 the shortest.
Fraction PowerLength(int power) {
  return power < 0 ? Fraction(2) : Fraction(1, std::int64_t{1} << power);
}

std::uint8_t CodeOfPower(int power) {
  return power < 0 ? kBreve : static_cast<std::uint8_t>(std::min<int>(power, kShortestCode));
}

void AddMarks(const std::vector<DrawingItem>& drawings, DrawnMarks& marks) {
  for (const DrawingItem& drawing : drawings) {
    AddMarks(drawing.nested, marks);
    ApplyDrawing(static_cast<DrawingKind>(drawing.kind), {drawing.span, drawing.value, drawing.text}, marks);
  }
}

}  // namespace

DrawnMarks MarksOf(const ScoreItem& item) {
  DrawnMarks marks;
  AddMarks(item.drawings, marks);
  return marks;
}

bool IsBeyondScoreFile(const DrawingItem& drawing) {
  return drawing.Is(DrawingKind::Text) && drawing.text.empty() && !drawing.sign.empty();
}

DrawingItem TextDrawing(std::string_view symbols) {
  DrawingItem item = Drawing(DrawingKind::Text);
  const ByteView bytes = AsBytes(symbols);
  item.text.assign(bytes.begin(), bytes.end());
  return item;
}

DrawingItem WordsDrawing(std::string_view words) {
  std::string text = Windows1252FromUtf8(words);
  while (IsSymbol(text)) text += ' ';
  return TextDrawing(text);
}

DrawingItem SignDrawing(std::string_view sign, std::string_view words) {
  DrawingItem item = Drawing(DrawingKind::Text);
  item.sign = sign;
  item.words = words;
  return item;
}

DrawingItem HairpinDrawing(std::uint16_t span, bool diminuendo) {
  DrawingItem item = Drawing(DrawingKind::Hairpin);
  item.span = span;
  item.value = diminuendo ? 0x80 : 0;
  return item;
}

DrawingItem VoltaDrawing(std::uint8_t number) {
  return VoltaDrawing(number, number, 0);
}

DrawingItem VoltaDrawing(std::uint8_t first, std::uint8_t last, std::uint16_t span) {
  DrawingItem item = Drawing(DrawingKind::Volta);
  item.span = span;
  item.value = static_cast<std::uint8_t>((last & 15) << 4 | (first & 15));
  return item;
}

DrawingItem CurveDrawing(std::uint16_t span) {
  DrawingItem item = Drawing(DrawingKind::FourPointCurve);
  item.span = span;
  return item;
}

std::string WordsOf(const DrawingItem& drawing) {
  if (!drawing.Is(DrawingKind::Text) || drawing.text.empty()) return {};
  std::string_view text = AsText(drawing.text);
  text = text.substr(0, text.find('\0'));
  if (IsSymbol(text)) return {};
  const std::size_t end = text.find_last_not_of(' ');
  return end == std::string_view::npos ? std::string() : Utf8FromWindows1252(text.substr(0, end + 1));
}

ScoreItem ClefItem(std::uint8_t form, std::uint8_t octave) {
  constexpr std::array<std::uint8_t, 5> kUsualLines = {1, 2, 3, 2, 1};
  ScoreItem item = Item(ObjectKind::Clef);
  item.clef = {form, kUsualLines[std::min<std::size_t>(form, kUsualLines.size() - 1)], octave};
  return item;
}

ScoreItem KeyItem(int sharps) {
  ScoreItem item = Item(ObjectKind::Key);
  item.key = sharps;
  return item;
}

ScoreItem TimeItem(std::uint16_t numerator, std::int16_t power) {
  ScoreItem item = Item(ObjectKind::Time);
  item.time = {numerator, power};
  return item;
}

ScoreItem BarItem(std::uint8_t type) {
  ScoreItem item = Item(ObjectKind::BarLine);
  item.barLine = type;
  return item;
}

ScoreItem RestItem(std::uint8_t durationCode, std::uint8_t dots) {
  ScoreItem item = Item(ObjectKind::Rest);
  item.group.isRest = true;
  item.group.durationCode = durationCode;
  item.group.dots = dots;
  return item;
}

ScoreItem WholeBarRest(std::uint32_t bars) {
  ScoreItem item = RestItem(0);
  item.group.wholeBars = bars;
  return item;
}

ScoreItem ChordItem(std::uint8_t durationCode, const std::vector<ScoreNote>& notes, std::uint8_t dots) {
  ScoreItem item = Item(ObjectKind::Chord);
  item.group.durationCode = durationCode;
  item.group.dots = dots;
  item.group.notes = notes;
  return item;
}

std::vector<NoteValue> NoteValues(Fraction length) {
  constexpr std::size_t kMostValues = 4096;
  std::vector<NoteValue> values;
  int power = -1;
  while (length > Fraction() && values.size() < kMostValues) {
    while (power <= kShortestCode && PowerLength(power) > length) ++power;
    const std::uint8_t code = CodeOfPower(power);
    for (std::uint8_t dots = 0; dots <= 2 && power <= kShortestCode; ++dots) {
      if (NotatedLength(code, dots) != length) continue;
      values.push_back({code, dots, {}});
      return values;
    }
    // Of lengths that halves do not make up, the end is the part of a tuplet.
    const bool halves = (length.Denominator() & (length.Denominator() - 1)) == 0;
    if (power > kShortestCode || (!halves && power >= 0)) {
      const Fraction part = length / PowerLength(power - 1);
      const TupletRatio ratio{ClampTo<std::uint16_t>(part.Denominator()),
                              ClampTo<std::uint16_t>(part.Numerator())};
      ScoreItem trial;
      SetTuplet(trial, ratio);
      if (power > kShortestCode || trial.ratio == TupletRatio{}) {
        values.push_back({CodeOfPower(power - 1), 0, ratio});
        break;
      }
    }
    values.push_back({code, 0, {}});
    length -= PowerLength(power);
  }
  return values;
}

std::vector<ScoreItem> GapItems(Fraction length) {
  std::vector<ScoreItem> items;
  for (const NoteValue& value : NoteValues(length)) {
    ScoreItem& rest = items.emplace_back(RestItem(value.code, value.dots));
    rest.group.flags = kGroupGap;
    SetTuplet(rest, value.ratio);
  }
  return items;
}

TupletRatio RatioOf(const ScoreItem& item) {
  return item.ratio.actual != 0 ? item.ratio : RatioOfForm(item.group.tuplet);
}

void SetTuplet(ScoreItem& item, TupletRatio ratio) {
  item.group.tuplet = {};
  item.ratio = {};
  if (ratio.actual == 0 || ratio.normal == 0 || ratio.actual == ratio.normal) return;
  const double wanted = static_cast<double>(ratio.normal) / ratio.actual;
  double best = 0;
  for (const bool doubled : {false, true}) {
    for (const bool compound : {false, true}) {
      for (std::uint8_t number = 2; number <= kGreatestTuplet; ++number) {
        const ScoreTuplet form{number, compound, doubled};
        const TupletRatio found = RatioOfForm(form);
        if (found == ratio) {
          item.group.tuplet = form;
          return;
        }
        const double distance = std::abs(static_cast<double>(found.normal) / found.actual - wanted);
        if (item.group.tuplet.number != 0 && distance >= best) continue;
        best = distance;
        item.group.tuplet = form;
      }
    }
  }
  item.ratio = ratio;
}

Fraction NotatedLength(std::uint8_t durationCode, std::uint8_t dots) {
  const Fraction base =
      durationCode == kBreve ? Fraction(2) : PowerLength(std::min<int>(durationCode, kShortestCode));
  if (dots == 0) return base;
  const std::int64_t parts = std::int64_t{1} << std::min<int>(dots, 3);
  return base * Fraction(2 * parts - 1, parts);
}

Fraction BarLength(ScoreTimeSignature time) {
  return time.Usable() ? Fraction(time.numerator, std::int64_t{1} << time.power) : Fraction(1);
}

Fraction LengthOf(const ScoreItem& item, ScoreTimeSignature time) {
  if (!item.IsGroup() || item.IsGrace()) return {};
  const ScoreGroup& group = item.group;
  const Fraction length = group.isRest && group.wholeBars > 0 ? BarLength(time) * Fraction(group.wholeBars)
                                                              : NotatedLength(group.durationCode, group.dots);
  const TupletRatio ratio = RatioOf(item);
  return ratio.actual == 0 ? length : length * Fraction(ratio.normal, ratio.actual);
}

}  // namespace ts5
