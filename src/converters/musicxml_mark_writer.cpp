#include "converters/musicxml_mark_writer.h"

#include <algorithm>

#include "converters/xml_signs.h"
#include "platform/base/text.h"

namespace ts5::converters::musicxml {
namespace {

// "type:text" as the reader put it together.
std::pair<std::string_view, std::string_view> TypeAndText(std::string_view words) {
  const std::size_t colon = words.find(':');
  if (colon == std::string_view::npos) return {words, {}};
  return {words.substr(0, colon), words.substr(colon + 1)};
}

void WriteMetronome(XmlOut& out, std::string_view words) {
  std::string_view unit = "quarter";
  if (const std::size_t equal = words.find('='); equal != std::string_view::npos) {
    unit = words.substr(0, equal);
    words.remove_prefix(equal + 1);
  }
  std::size_t dots = 0;
  for (; unit.ends_with('.'); unit.remove_suffix(1)) ++dots;
  out.Open("metronome");
  out.Leaf("beat-unit", unit);
  for (; dots > 0; --dots) out.Empty("beat-unit-dot");
  out.Leaf("per-minute", words);
  out.Close();
}

void WriteNamed(XmlOut& out, std::string_view step, std::string_view stepName, std::string_view alterName) {
  out.Leaf(stepName, step.substr(0, 1));
  if (step.ends_with('#')) out.Leaf(alterName, "1");
  if (step.size() > 1 && step.ends_with('b')) out.Leaf(alterName, "-1");
}

// root:kind:text:bass
void WriteHarmony(XmlOut& out, std::string_view words, unsigned staff) {
  const auto parts = Split(words, ':');
  if (parts.size() < 4 || parts[0].empty()) return;
  out.Open("harmony");
  out.Open("root");
  WriteNamed(out, parts[0], "root-step", "root-alter");
  out.Close();
  out.Leaf("kind", parts[1].empty() ? "major" : parts[1], {{"text", parts[2]}});
  if (!parts[3].empty()) {
    out.Open("bass");
    WriteNamed(out, parts[3], "bass-step", "bass-alter");
    out.Close();
  }
  out.Leaf("staff", staff);
  out.Close();
}

std::string Number(double value) {
  std::string text = Format("%.3f", value);
  text.erase(text.find_last_not_of('0') + 1);
  if (text.ends_with('.')) text.pop_back();
  return text;
}

std::string_view DynamicOf(const Direction& direction) {
  if (direction.drawing == nullptr || !direction.drawing->Is(DrawingKind::Text)) return {};
  const DrawingItem& drawing = *direction.drawing;
  if (drawing.sign == "dynamics") return drawing.words;
  return drawing.sign.empty() ? DynamicOfSymbols(AsText(drawing.text)) : std::string_view();
}

void WriteDynamics(XmlOut& out, std::span<const Direction> directions) {
  out.Open("dynamics");
  for (const Direction& direction : directions) {
    const std::string_view dynamic = DynamicOf(direction);
    if (FindDynamic(dynamic) != nullptr) {
      out.Empty(dynamic);
    } else {
      out.Leaf("other-dynamics", dynamic);
    }
  }
  out.Close();
}

void WriteDirectionType(XmlOut& out, const Direction& direction, const std::string& number) {
  if (direction.drawing == nullptr) return WriteMetronome(out, Number(direction.tempo));
  const DrawingItem& drawing = *direction.drawing;
  if (drawing.Is(DrawingKind::Hairpin)) {
    const char* type = direction.stop ? "stop" : (drawing.value & 0x80) != 0 ? "diminuendo" : "crescendo";
    return out.Empty("wedge", {{"type", type}, {"number", number}});
  }
  const std::string_view sign = drawing.sign;
  const auto [type, text] = TypeAndText(drawing.words);
  if (sign == "octave-shift") {
    return out.Empty("octave-shift",
                     {{"type", direction.stop ? "stop" : type}, {"size", text}, {"number", number}});
  }
  if (sign == "tempo") return WriteMetronome(out, drawing.words);
  if (sign == "segno" || sign == "coda") return out.Empty(sign);
  if (sign == "pedal") return out.Empty("pedal", {{"type", type.empty() ? "start" : type}, {"line", "yes"}});
  if (sign == "string-mute") return out.Empty("string-mute", {{"type", type.empty() ? "on" : type}});
  if (sign == "rehearsal") return out.Leaf("rehearsal", WordsOf(drawing));
  out.Leaf("words", WordsOf(drawing).empty() ? drawing.words : WordsOf(drawing));
}

void WriteSoundOf(XmlOut& out, const Direction& direction) {
  if (direction.drawing == nullptr) return out.Empty("sound", {{"tempo", Number(direction.tempo)}});
  if (const double quarters = TempoOf(*direction.drawing); quarters > 0)
    return out.Empty("sound", {{"tempo", Number(quarters)}});
  struct Jump {
    std::uint8_t jump;
    std::string_view attribute;
    std::string_view value;
  };
  constexpr Jump kJumps[] = {{kJumpSegno, "segno", "segno"},  {kJumpCoda, "coda", "coda"},
                             {kJumpToCoda, "tocoda", "coda"}, {kJumpFine, "fine", "yes"},
                             {kJumpDaCapo, "dacapo", "yes"},  {kJumpDalSegno, "dalsegno", "segno"}};
  const JumpMark mark = JumpOf(*direction.drawing);
  for (const Jump& jump : kJumps) {
    if ((mark.jumps & jump.jump) != 0) out.Empty("sound", {{jump.attribute, jump.value}});
  }
}

// Signs whose words begin with a type or direction of theirs.
std::string_view TypeAttribute(std::string_view name) {
  constexpr std::string_view kTyped[] = {"tremolo", "wavy-line", "glissando", "slide",
                                         "fermata", "heel",      "toe",       "non-arpeggiate"};
  if (name == "arpeggiate") return "direction";
  return std::ranges::find(kTyped, name) == std::end(kTyped) ? std::string_view() : "type";
}

void WriteSign(XmlOut& out, const NotationSign& sign) {
  const std::string_view placement = PlacementName(sign.placement);
  if (sign.name == "hard-beat" || sign.name == "no-articulation")
    return out.Leaf("other-articulation", sign.name, {{"placement", placement}});
  const std::string_view attribute = TypeAttribute(sign.name);
  std::string_view type;
  std::string_view text = sign.words;
  if (!attribute.empty()) std::tie(type, text) = TypeAndText(sign.words);
  if (sign.name == "arpeggiate" || sign.name == "non-arpeggiate" || sign.name == "fermata") {
    if (sign.name == "fermata") return out.Leaf(sign.name, text, {{attribute, type}});
    return out.Empty(sign.name, {{attribute, type}});
  }
  if (text.empty()) return out.Empty(sign.name, {{attribute, type}, {"placement", placement}});
  out.Leaf(sign.name, text, {{attribute, type}, {"placement", placement}});
}

void AddSigns(const std::vector<DrawingItem>& drawings, NotationSigns& signs) {
  for (const DrawingItem& drawing : drawings) {
    AddSigns(drawing.nested, signs);
    if (!drawing.Is(DrawingKind::Text)) continue;
    NotationSign added{drawing.sign, drawing.words, drawing.placement};
    const XmlSign* sign = FindSign(drawing.sign);
    if (sign == nullptr && drawing.sign.empty()) {
      DrawnMarks marks;
      ApplyDrawing(DrawingKind::Text, {0, 0, drawing.text}, marks);
      if (marks.dynamic != 0) continue;
      if (marks.articulation != 0) sign = SignOfArticulation(marks.articulation);
      if (marks.marked) sign = FindSign("fermata");
      if (WordsOf(drawing) == "tr") sign = FindSign("trill-mark");
      if (sign != nullptr) added.name = sign->name;
    }
    if (sign == nullptr) continue;
    if (sign->group == SignGroup::Articulation) signs.articulations.push_back(std::move(added));
    if (sign->group == SignGroup::Ornament) signs.ornaments.push_back(std::move(added));
    if (sign->group == SignGroup::Technical) signs.technical.push_back(std::move(added));
    if (sign->group == SignGroup::Notation) signs.others.push_back(std::move(added));
  }
}

void WriteSignList(XmlOut& out, std::string_view home, const std::vector<NotationSign>& signs) {
  if (signs.empty()) return;
  out.Open(home);
  for (const NotationSign& sign : signs) WriteSign(out, sign);
  out.Close();
}

}  // namespace

std::string_view PlacementName(std::int8_t placement) {
  if (placement == 0) return {};
  return placement > 0 ? "above" : "below";
}

std::size_t Together(std::span<const Direction> directions) {
  const auto beside = [&first = directions[0]](const Direction& direction) {
    return !DynamicOf(direction).empty() && direction.at == first.at && direction.endsBar == first.endsBar &&
           direction.drawing->placement == first.drawing->placement;
  };
  if (!beside(directions[0])) return 1;
  return static_cast<std::size_t>(std::ranges::find_if_not(directions, beside) - directions.begin());
}

void WriteDirections(XmlOut& out, std::span<const Direction> together, std::int64_t offset, unsigned voice,
                     unsigned staff) {
  const Direction& direction = together[0];
  const DrawingItem* drawing = direction.drawing;
  if (drawing != nullptr && drawing->sign == "harmony") return WriteHarmony(out, drawing->words, staff);
  // A tempo that is heard and not shown.
  if (drawing != nullptr && drawing->sign == "tempo" && drawing->words.find('=') == std::string::npos &&
      offset == 0)
    return WriteSoundOf(out, direction);
  out.Open("direction", {{"placement", drawing == nullptr ? "above" : PlacementName(drawing->placement)}});
  out.Open("direction-type");
  if (DynamicOf(direction).empty()) {
    WriteDirectionType(out, direction, std::to_string(direction.number));
  } else {
    WriteDynamics(out, together);
  }
  out.Close();
  if (offset != 0) out.Leaf("offset", offset);
  // An octave line holds for the staff.
  if (drawing == nullptr || drawing->sign != "octave-shift") out.Leaf("voice", voice);
  out.Leaf("staff", staff);
  WriteSoundOf(out, direction);
  out.Close();
}

NotationSigns SignsOf(const ScoreItem& item) {
  NotationSigns signs;
  if (const XmlSign* sign = SignOfArticulation(item.group.articulation); sign != nullptr)
    signs.articulations.push_back({std::string(sign->name), {}, 0});
  AddSigns(item.drawings, signs);
  return signs;
}

NotationSigns SignsOfEachNote(const ScoreItem& item) {
  NotationSigns signs;
  if (item.drawings.empty()) return signs;
  signs.others = SignsOf(item).others;
  std::erase_if(signs.others, [](const NotationSign& sign) { return sign.name != "arpeggiate"; });
  return signs;
}

void WriteSigns(XmlOut& out, const NotationSigns& signs) {
  WriteSignList(out, "ornaments", signs.ornaments);
  WriteSignList(out, "technical", signs.technical);
  WriteSignList(out, "articulations", signs.articulations);
  for (const NotationSign& sign : signs.others) WriteSign(out, sign);
}

}  // namespace ts5::converters::musicxml
