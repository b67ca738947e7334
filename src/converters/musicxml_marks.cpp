#include "converters/musicxml_marks.h"

#include <algorithm>
#include <array>

#include "converters/texts.h"
#include "converters/xml_signs.h"
#include "platform/base/text.h"

namespace ts5::musicxml {
namespace {

constexpr unsigned kMostNumbers = 16;

bool IsKind(const DrawingItem& drawing, DrawingKind kind) {
  return drawing.kind == static_cast<std::uint8_t>(kind);
}

// Two that last at once have different numbers. As voices are written one after another, of two voices the
// bars count, not the places.
class Numbers {
 public:
  unsigned Take(std::size_t staff, std::size_t voice, Fraction from, Fraction to, std::uint32_t firstBar,
                std::uint32_t lastBar) {
    std::array<bool, kMostNumbers> used{};
    for (const Line& line : lines_) {
      const bool same = line.staff == staff && line.voice == voice;
      const bool meets =
          same ? line.from <= to && from <= line.to : line.firstBar <= lastBar && firstBar <= line.lastBar;
      if (meets) used[line.number - 1] = true;
    }
    const auto free = std::ranges::find(used, false);
    const unsigned number =
        free == used.end() ? kMostNumbers : static_cast<unsigned>(free - used.begin()) + 1;
    std::erase_if(lines_,
                  [firstBar](const Line& line) { return line.lastBar + 1 < firstBar && firstBar > 0; });
    lines_.push_back({staff, voice, from, to, firstBar, lastBar, number});
    return number;
  }

 private:
  struct Line {
    std::size_t staff = 0;
    std::size_t voice = 0;
    Fraction from;
    Fraction to;
    std::uint32_t firstBar = 0;
    std::uint32_t lastBar = 0;
    unsigned number = 1;
  };
  std::vector<Line> lines_;
};

// One event in its place, to be gone through by bars.
struct EventAt {
  std::size_t staff = 0;
  std::size_t voice = 0;
  std::size_t event = 0;
};

class Collector {
 public:
  Collector(const ScoreMusic& music, std::size_t firstStaff, std::size_t staves, LossReport& losses)
      : music_(music), firstStaff_(firstStaff), losses_(losses), marks_(staves) {}

  PartMarks Collect() {
    std::vector<EventAt> all;
    for (std::size_t staff = 0; staff < marks_.size(); ++staff) {
      const auto& voices = music_.voices[firstStaff_ + staff];
      marks_[staff].resize(voices.size());
      for (std::size_t voice = 0; voice < voices.size(); ++voice) {
        for (std::size_t i = 0; i < voices[voice].size(); ++i) {
          if (!voices[voice][i].item->drawings.empty()) all.push_back({staff, voice, i});
        }
      }
    }
    std::ranges::stable_sort(all, {}, [this](const EventAt& at) { return EventOf(at).start; });
    for (const EventAt& at : all) {
      for (const DrawingItem& drawing : EventOf(at).item->drawings) Take(at, drawing);
    }
    for (auto& staff : marks_) {
      for (VoiceMarks& voice : staff)
        std::ranges::stable_sort(voice.directions, {},
                                 [](const Direction& d) { return std::pair(d.at, !d.stop); });
    }
    return std::move(marks_);
  }

 private:
  [[nodiscard]] const std::vector<ScoreEvent>& EventsOf(const EventAt& at) const {
    return music_.voices[firstStaff_ + at.staff][at.voice];
  }
  [[nodiscard]] const ScoreEvent& EventOf(const EventAt& at) const { return EventsOf(at)[at.event]; }
  VoiceMarks& MarksOf(const EventAt& at) { return marks_[at.staff][at.voice]; }

  void Take(const EventAt& at, const DrawingItem& drawing) {
    for (const DrawingItem& nested : drawing.nested) Take(at, nested);
    const ScoreEvent& event = EventOf(at);
    const Fraction place = event.start + drawing.offset;
    if (IsKind(drawing, DrawingKind::FourPointCurve)) return TakeSlur(at, drawing);
    if (IsKind(drawing, DrawingKind::Hairpin)) return TakeLasting(at, drawing, place, hairpins_);
    if (drawing.sign == "octave-shift") return TakeLasting(at, drawing, place, octaves_);
    if (IsKind(drawing, DrawingKind::Volta) || IsKind(drawing, DrawingKind::Group) ||
        IsKind(drawing, DrawingKind::FlaggedGroup))
      return;
    if (!IsKind(drawing, DrawingKind::Text)) {
      losses_.Add(texts::LossObject, static_cast<int>(event.bar), static_cast<int>(firstStaff_ + at.staff));
      return;
    }
    const XmlSign* sign = FindSign(drawing.sign);
    const bool within = sign != nullptr && sign->group != SignGroup::Direction;
    if (within || IsNotationText(drawing)) return;
    MarksOf(at).directions.push_back({place, &drawing, false, 1, 0});
  }

  // A text that is a sign of the chord, not beside it.
  static bool IsNotationText(const DrawingItem& drawing) {
    if (!drawing.sign.empty()) return false;
    DrawnMarks marks;
    ApplyDrawing(DrawingKind::Text, {0, 0, drawing.text}, marks);
    return marks.articulation != 0 || marks.marked || WordsOf(drawing) == "tr";
  }

  void TakeSlur(const EventAt& at, const DrawingItem& drawing) {
    const auto& events = EventsOf(at);
    const std::size_t end = SpanEnd(events, at.event, drawing.span);
    if (end == at.event) {
      losses_.Add(texts::LossSlur, static_cast<int>(events[at.event].bar),
                  static_cast<int>(firstStaff_ + at.staff));
      return;
    }
    const unsigned number = slurs_.Take(at.staff, at.voice, events[at.event].start, events[end].start,
                                        events[at.event].bar, events[end].bar);
    MarksOf(at).slurs[at.event].push_back({true, number, drawing.placement});
    MarksOf(at).slurs[end].push_back({false, number, 0});
  }

  void TakeLasting(const EventAt& at, const DrawingItem& drawing, Fraction place, Numbers& numbers) {
    const auto& events = EventsOf(at);
    Fraction end = place + drawing.extent;
    if (drawing.extent.IsZero()) {
      const ScoreEvent& last = events[SpanEnd(events, at.event, drawing.span)];
      end = last.start > place ? last.start : last.start + last.length;
    }
    end = std::min(end, music_.length);
    const unsigned number =
        numbers.Take(at.staff, at.voice, place, end, BarAt(music_, place), BarAt(music_, end));
    MarksOf(at).directions.push_back({place, &drawing, false, number, 0});
    MarksOf(at).directions.push_back({end, &drawing, true, number, 0});
  }

  const ScoreMusic& music_;
  std::size_t firstStaff_;
  LossReport& losses_;
  PartMarks marks_;
  Numbers slurs_;
  Numbers hairpins_;
  Numbers octaves_;
};

// "type:text" as the reader put it together.
std::pair<std::string_view, std::string_view> TypeAndText(std::string_view words) {
  const std::size_t colon = words.find(':');
  if (colon == std::string_view::npos) return {words, {}};
  return {words.substr(0, colon), words.substr(colon + 1)};
}

std::string_view Placement(std::int8_t placement) {
  if (placement == 0) return {};
  return placement > 0 ? "above" : "below";
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

void WriteDirectionType(XmlOut& out, const Direction& direction, const std::string& number) {
  if (direction.drawing == nullptr) return WriteMetronome(out, Number(direction.tempo));
  const DrawingItem& drawing = *direction.drawing;
  if (IsKind(drawing, DrawingKind::Hairpin)) {
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
  const std::string_view dynamic =
      sign == "dynamics" ? std::string_view(drawing.words) : DynamicOfSymbols(AsText(drawing.text));
  if (sign == "dynamics" || !dynamic.empty()) {
    out.Open("dynamics");
    if (FindDynamic(dynamic) != nullptr) {
      out.Empty(dynamic);
    } else {
      out.Leaf("other-dynamics", dynamic);
    }
    return out.Close();
  }
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
  const std::string_view placement = Placement(sign.placement);
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
    if (!IsKind(drawing, DrawingKind::Text)) continue;
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

PartMarks CollectMarks(const ScoreMusic& music, std::size_t firstStaff, std::size_t staves,
                       LossReport& losses) {
  return Collector(music, firstStaff, staves, losses).Collect();
}

void WriteDirection(XmlOut& out, const Direction& direction, std::int64_t offset, unsigned voice,
                    unsigned staff) {
  const DrawingItem* drawing = direction.drawing;
  if (drawing != nullptr && drawing->sign == "harmony") return WriteHarmony(out, drawing->words, staff);
  // A tempo that is heard and not shown.
  if (drawing != nullptr && drawing->sign == "tempo" && drawing->words.find('=') == std::string::npos &&
      offset == 0)
    return WriteSoundOf(out, direction);
  out.Open("direction", {{"placement", drawing == nullptr ? "above" : Placement(drawing->placement)}});
  out.Open("direction-type");
  WriteDirectionType(out, direction, std::to_string(direction.number));
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

}  // namespace ts5::musicxml
