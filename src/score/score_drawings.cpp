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

// What was read of one object.
struct Drawing {
  std::uint16_t span = 0;
  std::uint8_t value = 0;
  ByteView text;
};

void ReadList(ScoreSource& in, DrawnMarks& marks, int depth);

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

void ReadField(ScoreSource& in, char field, Drawing& drawing, DrawnMarks& marks, int depth) {
  switch (field) {
    case 'h':
      in.Skip(4);
      (void)in.CompactSigned();
      drawing.span = in.U16() & kSpanBits;
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
      drawing.value = in.U8();
      break;
    case 't':
      drawing.text = in.Blob();
      break;
    case 'n':
      ReadList(in, marks, depth + 1);
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

void Apply(DrawingKind kind, const Drawing& drawing, DrawnMarks& marks) {
  switch (kind) {
    case DrawingKind::Text:
      ApplyDrawnText(AsText(drawing.text), marks);
      break;
    case DrawingKind::FourPointCurve:
      marks.curveSpan = drawing.span;
      break;
    case DrawingKind::Hairpin:
      marks.hairpin = true;
      marks.diminuendo = (drawing.value & 0x80) != 0;
      marks.hairpinSpan = drawing.span;
      break;
    case DrawingKind::Volta: {
      const int number = drawing.value & 15;
      if ((drawing.value >> 4) >= number && number == 1) marks.firstEnding = true;
      break;
    }
    default:
      break;
  }
}

void ReadList(ScoreSource& in, DrawnMarks& marks, int depth) {
  in.Require(depth < kMaxDrawingDepth);
  const std::uint32_t count = in.CompactUnsigned();
  for (std::uint32_t i = 0; i < count && in.Ok(); ++i) {
    const std::uint8_t kind = in.U8();
    if (kind >= kDrawingFields.size()) continue;
    Drawing drawing;
    for (const char field : kDrawingFields[kind]) {
      if (!in.Ok()) return;
      ReadField(in, field, drawing, marks, depth);
    }
    if (in.Ok()) Apply(static_cast<DrawingKind>(kind), drawing, marks);
  }
}

}  // namespace

void ApplyDrawnText(std::string_view text, DrawnMarks& marks) {
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
