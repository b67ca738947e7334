#include "converters/xml_signs.h"

#include <algorithm>
#include <array>

namespace ts5::converters {
namespace {

constexpr auto kArticulation = SignGroup::Articulation;
constexpr auto kOrnament = SignGroup::Ornament;
constexpr auto kTechnical = SignGroup::Technical;
constexpr auto kNotation = SignGroup::Notation;
constexpr auto kDirection = SignGroup::Direction;

constexpr auto kSigns = std::to_array<XmlSign>({
    {"staccato", kArticulation, "", 1},
    {"tenuto", kArticulation, "Y", 2},
    {"staccatissimo", kArticulation, "\xC9", 4},
    {"accent", kArticulation, "Z", 5},
    {"strong-accent", kArticulation, "\xCB", 6},
    {"stress", kArticulation, "\xCC", 7},
    {"hard-beat", kArticulation, "\xCD", 8},    // as other-articulation
    {"no-articulation", kArticulation, "", 3},  // as other-articulation
    {"spiccato", kArticulation, "\xC9"},
    {"soft-accent", kArticulation, "Z"},
    {"detached-legato", kArticulation, "Y"},
    {"unstress", kArticulation},
    {"scoop", kArticulation},
    {"plop", kArticulation},
    {"doit", kArticulation},
    {"falloff", kArticulation},
    {"breath-mark", kArticulation},
    {"caesura", kArticulation},
    {"trill-mark", kOrnament, "tr"},
    {"turn", kOrnament},
    {"delayed-turn", kOrnament},
    {"inverted-turn", kOrnament},
    {"delayed-inverted-turn", kOrnament},
    {"vertical-turn", kOrnament},
    {"inverted-vertical-turn", kOrnament},
    {"shake", kOrnament},
    {"mordent", kOrnament},
    {"inverted-mordent", kOrnament},
    {"schleifer", kOrnament},
    {"tremolo", kOrnament},
    {"haydn", kOrnament},
    {"wavy-line", kOrnament},
    {"up-bow", kTechnical},
    {"down-bow", kTechnical},
    {"open-string", kTechnical},
    {"harmonic", kTechnical},
    {"thumb-position", kTechnical},
    {"fingering", kTechnical},
    {"pluck", kTechnical},
    {"double-tongue", kTechnical},
    {"triple-tongue", kTechnical},
    {"stopped", kTechnical},
    {"snap-pizzicato", kTechnical},
    {"fret", kTechnical},
    {"string", kTechnical},
    {"heel", kTechnical},
    {"toe", kTechnical},
    {"fermata", kNotation, "u"},
    {"arpeggiate", kNotation},
    {"non-arpeggiate", kNotation},
    {"glissando", kNotation},
    {"slide", kNotation},
    {"segno", kDirection, "Segno"},
    {"coda", kDirection, "Coda"},
    {"dacapo", kDirection},
    {"dalsegno", kDirection},
    {"tocoda", kDirection},
    {"fine", kDirection},
    {"tempo", kDirection},
    {"rehearsal", kDirection},
    {"octave-shift", kDirection},
    {"pedal", kDirection},
    {"harmony", kDirection},
    {"string-mute", kDirection},
});

// Those that a reader of score files must find for a level come first.
constexpr auto kDynamics = std::to_array<XmlDynamic>({
    {"fff", "h"},         {"ff", "g"},           {"f", "f"},
    {"mf", "j"},          {"mp", "i"},           {"p", "p"},
    {"pp", "q"},          {"ppp", "r"},          {"fp", "|"},
    {"sf", "s"},          {"sfz", "z"},          {"rfz", "{"},
    {"ffff", "h", false}, {"fffff", "h", false}, {"ffffff", "h", false},
    {"pppp", "r", false}, {"ppppp", "r", false}, {"pppppp", "r", false},
    {"rf", "{", false},   {"fz", "z", false},    {"sffz", "z", false},
    {"sfp", "|", false},  {"sfpp", "|", false},  {"pf", "f", false},
    {"sfzp", "|", false}, {"n", "r", false},
});

}  // namespace

const XmlSign* FindSign(std::string_view name, SignGroup group) {
  const auto* const found = std::ranges::find_if(
      kSigns, [&](const XmlSign& sign) { return sign.group == group && sign.name == name; });
  return found == kSigns.end() ? nullptr : &*found;
}

const XmlSign* FindSign(std::string_view name) {
  const auto* const found = std::ranges::find(kSigns, name, &XmlSign::name);
  return found == kSigns.end() ? nullptr : &*found;
}

const XmlSign* SignOfArticulation(std::uint8_t code) {
  if (code == 0) return nullptr;
  const auto* const found = std::ranges::find(kSigns, code, &XmlSign::articulation);
  return found == kSigns.end() ? nullptr : &*found;
}

const XmlDynamic* FindDynamic(std::string_view name) {
  const auto* const found = std::ranges::find(kDynamics, name, &XmlDynamic::name);
  return found == kDynamics.end() ? nullptr : &*found;
}

std::string_view DynamicOfSymbols(std::string_view symbols) {
  DrawnMarks wanted;
  ApplyDrawnText(symbols, wanted);
  if (wanted.dynamic == 0) return {};
  for (const XmlDynamic& dynamic : kDynamics) {
    DrawnMarks marks;
    ApplyDrawnText(dynamic.symbols, marks);
    if (marks.dynamic == wanted.dynamic) return dynamic.name;
  }
  return {};
}

std::uint32_t MaskBitOf(const DrawingItem& drawing) {
  if (drawing.Is(DrawingKind::Hairpin)) return kMaskHairpins;
  if (drawing.Is(DrawingKind::FourPointCurve)) return kMaskSlurs;
  if (!drawing.Is(DrawingKind::Text)) return 0;
  if (const XmlSign* sign = FindSign(drawing.sign); sign != nullptr) {
    if (sign->group == SignGroup::Articulation) return kMaskArticulations;
    if (sign->group != SignGroup::Direction) return kMaskOrnaments;
    return sign->name == "rehearsal" || sign->name == "harmony" ? kMaskTexts : 0;
  }
  DrawnMarks marks;
  ApplyDrawing(DrawingKind::Text, {0, 0, drawing.text}, marks);
  if (marks.dynamic != 0 || drawing.sign == "dynamics") return kMaskDynamics;
  if (marks.articulation != 0) return kMaskArticulations;
  if (marks.marked) return kMaskOrnaments;
  // Where the music goes on is no mere text.
  if (marks.jump.words != 0 || marks.jump.times != 0) return 0;
  return kMaskTexts;
}

}  // namespace ts5::converters
