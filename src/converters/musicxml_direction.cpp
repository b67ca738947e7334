#include "converters/musicxml_direction.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "converters/texts.h"
#include "converters/xml_signs.h"
#include "platform/base/text.h"
#include "score/score_bars.h"

namespace ts5::converters::musicxml {

void DirectionReader::Read(pugi::xml_node node) {
  const std::size_t staff = at_.StaffOf(node);
  Fraction at = at_.now;
  if (const pugi::xml_node offset = node.child("offset")) {
    const auto number = ParseNumber(Trim(offset.text().get()));
    if (number && std::abs(*number) < 1e9) {
      at += Fraction(std::llround(*number)) / (at_.divisions * Fraction(4));
      if (at < Fraction()) at = {};
    }
  }
  const std::string voice = node.child("voice").text().get();
  const std::int8_t placement = PlacementOf(node);
  const std::size_t before = at_.Now().marks.size();
  for (const pugi::xml_node type : node.children("direction-type")) {
    for (const pugi::xml_node child : type.children()) ReadDirectionType(child, at, staff);
  }
  DrawingItem* words = nullptr;
  for (std::size_t i = before; i < at_.Now().marks.size(); ++i) {
    Mark& mark = at_.Now().marks[i];
    mark.voice = voice;
    if (placement != 0) mark.drawing.placement = placement;
    if (mark.drawing.sign.empty() && !WordsOf(mark.drawing).empty()) words = &mark.drawing;
  }
  if (const pugi::xml_node sound = node.child("sound")) ReadSound(sound, at, staff, words);
}

// words: the text that shows what sounds.
void DirectionReader::ReadSound(pugi::xml_node node, Fraction at, std::size_t staff, DrawingItem* words) {
  struct Jump {
    const char* attribute;
    std::string_view sign;
    std::string_view text;
  };
  constexpr Jump kJumps[] = {{"dacapo", "dacapo", "D.C."},
                             {"dalsegno", "dalsegno", "D.S."},
                             {"tocoda", "tocoda", "To Coda"},
                             {"fine", "fine", "Fine"}};
  for (const Jump& jump : kJumps) {
    if (at_.reading.notesAlone) break;
    const std::string_view value = node.attribute(jump.attribute).value();
    if (value.empty() || value == "no") continue;
    if (words != nullptr) {
      words->sign = jump.sign;
      words->words = WordsOf(*words);
      words = nullptr;
      continue;
    }
    DrawingItem drawing = WordsDrawing(jump.text);
    drawing.sign = jump.sign;
    at_.AddMark(std::move(drawing), at, staff);
  }
  if (std::string_view(node.attribute("forward-repeat").value()) == "yes") at_.Now().repeatStart = true;
  const std::string tempo = node.attribute("tempo").value();
  if (tempo.empty()) return;
  DrawingItem drawing = SignDrawing("tempo", Trim(tempo));
  const double quarters = TempoOf(drawing);
  if (quarters <= 0) return;
  // A metronome mark at the same place, right before, says it already.
  constexpr std::size_t kLooked = 32;
  const auto& marks = at_.Now().marks;
  for (std::size_t i = marks.size(); i-- > 0 && marks.size() - i <= kLooked;) {
    if (marks[i].at == at && std::abs(TempoOf(marks[i].drawing) - quarters) < 0.01) return;
  }
  AddTempo(std::move(drawing), at, staff);
}

void DirectionReader::ReadHarmony(pugi::xml_node node) {
  const std::size_t staff = at_.StaffOf(node);
  if (at_.reading.notesAlone) return;
  const pugi::xml_node root = node.child("root");
  const pugi::xml_node kind = node.child("kind");
  if (!root || node.child("root").next_sibling("root")) return at_.Lose(texts::LossHarmony);
  const auto name = [](pugi::xml_node step, pugi::xml_node alter) {
    std::string text = step.text().get();
    const int by = alter.text().as_int();
    if (by != 0) text += by > 0 ? "#" : "b";
    return text;
  };
  const std::string rootName = name(root.child("root-step"), root.child("root-alter"));
  const pugi::xml_node bass = node.child("bass");
  const std::string bassName = bass ? name(bass.child("bass-step"), bass.child("bass-alter")) : std::string();
  const std::string kindName = kind.text().get();
  std::string shown = kind.attribute("text").value();
  if (shown.empty() && kindName.starts_with("minor")) shown = "m";
  if (shown.empty() && kindName.find("seventh") != std::string::npos) shown = "7";
  for (const pugi::xml_node child : node.children()) {
    constexpr std::array<std::string_view, 5> kTaken = {"", "root", "kind", "bass", "staff"};
    if (std::ranges::find(kTaken, child.name()) == kTaken.end())
      at_.Lose(texts::LossHarmony, 0, child.name());
  }
  DrawingItem drawing = WordsDrawing(rootName + shown + (bassName.empty() ? "" : "/" + bassName));
  drawing.sign = "harmony";
  drawing.words = rootName + ":" + kindName + ":" + kind.attribute("text").value() + ":" + bassName;
  at_.AddMark(std::move(drawing), at_.now, staff);
}

void DirectionReader::ReadDirectionType(pugi::xml_node node, Fraction at, std::size_t staff) {
  const std::string_view name = node.name();
  if (name == "metronome") return ReadMetronome(node, at, staff);
  if (at_.reading.notesAlone) return;
  if (name == "words") {
    const std::string_view text = Trim(node.text().get());
    if (!text.empty()) at_.AddMark(WordsDrawing(text), at, staff);
  } else if (name == "dynamics") {
    for (const pugi::xml_node mark : node.children()) at_.AddMark(DynamicDrawing(mark), at, staff);
  } else if (name == "wedge") {
    ReadLasting(node, at, staff, "wedge");
  } else if (name == "octave-shift") {
    ReadLasting(node, at, staff, "octave-shift");
  } else if (name == "rehearsal") {
    DrawingItem drawing = WordsDrawing(Trim(node.text().get()));
    drawing.sign = name;
    at_.AddMark(std::move(drawing), at, staff);
  } else if (name == "segno" || name == "coda" || name == "pedal" || name == "string-mute") {
    at_.AddMark(DrawingOf(name, node), at, staff);
  } else if (!name.empty()) {
    at_.Lose(texts::LossSign, staff, std::string(name));
  }
}

// A hairpin or octave line: begun, or the end of the one with its number.
void DirectionReader::ReadLasting(pugi::xml_node node, Fraction at, std::size_t staff,
                                  std::string_view name) {
  const std::string_view type = node.attribute("type").value();
  const std::string key = std::string(name) + node.attribute("number").as_string("1") + "/" +
                          (name == "wedge" ? std::to_string(staff) : std::string());
  const auto open = lasting_.find(key);
  if (type == "stop") {
    if (open == lasting_.end()) return;
    at_.part.ends[open->second] = {at_.part.measures.size() - 1, at};
    lasting_.erase(open);
    return;
  }
  if (type == "continue") return;
  DrawingItem drawing;
  if (name == "wedge") {
    drawing = HairpinDrawing(0, type == "diminuendo");
  } else {
    drawing = SignDrawing(name, std::string(type) + ":" + node.attribute("size").as_string("8"));
  }
  at_.Now().marks.push_back({std::move(drawing), at, staff, {}, at_.part.ends.size()});
  lasting_[key] = at_.part.ends.size();
  at_.part.ends.emplace_back();
}

void DirectionReader::ReadMetronome(pugi::xml_node node, Fraction at, std::size_t staff) {
  std::string unit = node.child("beat-unit").text().get();
  const std::string_view text = node.child("per-minute").text().get();
  const std::size_t from = text.find_first_of("0123456789");
  if (unit.empty() || from == std::string_view::npos) return at_.Lose(texts::LossSign, staff, "metronome");
  const std::size_t to = text.find_first_not_of("0123456789.", from);
  for (const pugi::xml_node dot : node.children("beat-unit-dot")) {
    (void)dot;
    unit += '.';
  }
  DrawingItem drawing = SignDrawing(
      "tempo", unit + "=" + std::string(text.substr(from, to == std::string_view::npos ? to : to - from)));
  if (TempoOf(drawing) > 0) {
    AddTempo(std::move(drawing), at, staff);
  } else {
    at_.Lose(texts::LossSign, staff, "metronome");
  }
}

void DirectionReader::AddTempo(DrawingItem drawing, Fraction at, std::size_t staff) {
  const double quarters = TempoOf(drawing);
  if (at.IsZero()) at_.Now().tempo = quarters;
  at_.AddMark(std::move(drawing), at, staff);
}

}  // namespace ts5::converters::musicxml
