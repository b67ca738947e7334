#include "score/score_drawings.h"

#include <algorithm>

namespace ts5 {
namespace {

constexpr std::uint16_t kSpanBits = 0x0FFF;
constexpr std::size_t kFormBytes = 11;

struct ArticulationSign {
  std::uint8_t character;
  std::uint8_t code;
};
constexpr ArticulationSign kArticulationSigns[] = {
    {0xC8, 2}, {'Y', 2},  {0xC9, 4}, {0xCE, 4}, {0xCA, 5},
    {'Z', 5},  {0xCB, 6}, {0xCC, 7}, {0xCD, 8}, {0xCF, 8},
};

struct DynamicSign {
  std::string_view text;
  std::int8_t level;
};
constexpr DynamicSign kDynamicSigns[] = {
    {"f", 90},   {"g", 110},  {"h", 127}, {"i", 62},  {"j", 74},  {"p", 44},    {"q", 22},
    {"r", 10},   {"s", -4},   {"z", -3},  {"{", -2},  {"|", -1},  {"fp", -1},   {"ff", 110},
    {"fg", 127}, {"gf", 127}, {"pp", 22}, {"qp", 10}, {"pq", 10}, {"fff", 127}, {"ppp", 10},
};

void ReadPoints(ScoreSource& in) {
  const std::uint32_t count = in.CompactUnsigned();
  for (std::uint32_t i = 0; i < count && in.Ok(); ++i) {
    (void)in.CompactSigned();
    (void)in.CompactSigned();
  }
}

void ReadForm(ScoreSource& in) {
  const std::uint8_t form = in.U8();
  if (form != 1 && form != 2) in.Skip(kFormBytes);
}

void ReadList(ScoreSource& in, DrawnMarks& marks, int depth) {
  in.Require(depth < kMaxDrawingDepth);
  const std::uint32_t count = in.CompactUnsigned();
  for (std::uint32_t i = 0; i < count && in.Ok(); ++i) {
    const std::uint8_t kind = in.U8();
    if (kind >= kDrawingFields.size()) continue;
    DrawingFields fields;
    for (const char field : kDrawingFields[kind]) {
      if (!in.Ok()) return;
      if (field == 'n') {
        ReadList(in, marks, depth + 1);
      } else {
        ReadDrawingField(in, field, fields);
      }
    }
    if (in.Ok()) ApplyDrawing(static_cast<DrawingKind>(kind), fields, marks);
  }
}

}  // namespace

void ReadDrawingField(ScoreSource& in, char field, DrawingFields& fields) {
  switch (field) {
    case 'h':
      in.Skip(4);
      (void)in.CompactSigned();
      fields.span = in.U16() & kSpanBits;
      break;
    case 's':
      (void)in.CompactSigned();
      break;
    case '1':
    case '2':
    case '4':
      in.Skip(static_cast<std::size_t>(field - '0'));
      break;
    case 'c':
      in.Colour();
      break;
    case 'b':
      (void)in.Blob();
      break;
    case 'f':
      in.Frame();
      break;
    case 'v':
      fields.value = in.U8();
      break;
    case 't':
      fields.text = in.Blob();
      break;
    case 'p':
      ReadPoints(in);
      break;
    case 'o':
      ReadForm(in);
      break;
    default:
      in.Invalid();
  }
}

void ApplyDrawing(DrawingKind kind, const DrawingFields& fields, DrawnMarks& marks) {
  switch (kind) {
    case DrawingKind::Text:
      ApplyDrawnText(AsText(fields.text), marks);
      break;
    case DrawingKind::FourPointCurve:
      marks.curveSpan = fields.span;
      break;
    case DrawingKind::Hairpin:
      marks.hairpin = true;
      marks.diminuendo = (fields.value & 0x80) != 0;
      marks.hairpinSpan = fields.span;
      break;
    case DrawingKind::Volta: {
      const std::uint8_t first = fields.value & 15;
      const auto last = static_cast<std::uint8_t>(fields.value >> 4);
      if (first == 0 || last < first) break;
      marks.firstEnding = first;
      marks.lastEnding = last;
      marks.endingSpan = fields.span;
      break;
    }
    default:
      break;
  }
}

void ApplyDrawnText(std::string_view text, DrawnMarks& marks) {
  const JumpWords jump = ReadJumpWords(text);
  marks.jump.words |= jump.words;
  marks.jump.times = std::max(marks.jump.times, jump.times);
  if (text.empty() || text.size() > 3) return;
  if (text.size() == 1) {
    const auto character = static_cast<std::uint8_t>(text[0]);
    const auto sign = std::ranges::find(kArticulationSigns, character, &ArticulationSign::character);
    if (sign != std::end(kArticulationSigns)) marks.articulation = sign->code;
    if (character == 'k' || character == 'u') marks.marked = true;
  }
  auto row = std::ranges::find(kDynamicSigns, text, &DynamicSign::text);
  // Longer signs that begin with an accent are that accent.
  if (row == std::end(kDynamicSigns) && std::string_view("sz{").find(text[0]) != std::string_view::npos)
    row = std::ranges::find(kDynamicSigns, text.substr(0, 1), &DynamicSign::text);
  if (row != std::end(kDynamicSigns)) marks.dynamic = row->level;
}

void ReadDrawings(ScoreSource& in, DrawnMarks& marks) {
  ReadList(in, marks, 0);
}

}  // namespace ts5
