#include "converters/musicxml_note.h"

#include <algorithm>
#include <array>

#include "converters/texts.h"
#include "converters/xml_signs.h"
#include "platform/base/text.h"

namespace ts5::converters::musicxml {
namespace {

constexpr std::size_t kMostVerses = kMaxVerses;
constexpr std::array<std::string_view, 7> kHeads = {"normal", "x",     "diamond",     "triangle",
                                                    "slash",  "cross", "back slashed"};

struct SignHome {
  std::string_view element;
  SignGroup group;
};
constexpr SignHome kHomes[] = {
    {"articulations", SignGroup::Articulation},
    {"ornaments", SignGroup::Ornament},
    {"technical", SignGroup::Technical},
};

void Lose(Reading& reading, NotePlace place, std::string_view name) {
  reading.score.losses.Add(texts::LossSign, place.bar, place.staff, 1, std::string(name));
}

// A sign that the chord has already through another of its notes is no second one.
void AddDrawing(Group& group, DrawingItem drawing) {
  if (std::ranges::find(group.item.drawings, drawing) == group.item.drawings.end())
    group.item.drawings.push_back(std::move(drawing));
}

void AddSign(Reading& reading, Group& group, SignGroup home, pugi::xml_node element, NotePlace place) {
  std::string_view name = element.name();
  if (name == "other-articulation") name = element.child_value();
  const XmlSign* sign = FindSign(name, home);
  if (sign == nullptr) return Lose(reading, place, element.name());
  if (sign->articulation != 0 && !group.item.group.isRest) {
    std::uint8_t& code = group.item.group.articulation;
    if (code == 0 || code == sign->articulation) {
      code = sign->articulation;
      return;
    }
  }
  AddDrawing(group, DrawingOf(sign->name, element));
}

void ReadSlur(Reading& reading, Part& part, OpenMarks& open, std::size_t group, pugi::xml_node slur,
              NotePlace place) {
  const std::string_view type = slur.attribute("type").value();
  const std::string number = slur.attribute("number").as_string("1");
  const auto found = open.slurs.find(number);
  if (type == "start") {
    if (found != open.slurs.end()) reading.score.losses.Add(texts::LossSlur, place.bar, place.staff);
    auto& drawings = part.groups[group].item.drawings;
    DrawingItem curve = CurveDrawing(0);
    curve.placement = PlacementOf(slur);
    part.slurs.push_back({group, drawings.size(), SIZE_MAX});
    drawings.push_back(std::move(curve));
    open.slurs[number] = part.slurs.size() - 1;
  } else if (type == "stop") {
    if (found == open.slurs.end()) return reading.score.losses.Add(texts::LossSlur, place.bar, place.staff);
    part.slurs[found->second].stop = group;
    open.slurs.erase(found);
  }
}

std::string LyricText(pugi::xml_node lyric) {
  std::string text;
  for (const pugi::xml_node child : lyric.children()) {
    const std::string_view name = child.name();
    if (name == "text") text += child.text().get();
    if (name == "elision") text += child.text().empty() ? " " : child.text().get();
  }
  return text;
}

}  // namespace

std::string_view HeadName(std::uint8_t value) {
  return kHeads[std::min<std::size_t>(value, kHeads.size() - 1)];
}

std::int8_t PlacementOf(pugi::xml_node element) {
  std::string_view placement = element.attribute("placement").value();
  if (placement.empty()) placement = element.attribute("orientation").value();
  if (placement == "above" || placement == "over") return 1;
  return placement == "below" || placement == "under" ? -1 : 0;
}

DrawingItem DrawingOf(std::string_view name, pugi::xml_node element) {
  std::string words = element.text().get();
  std::string_view type = element.attribute("type").value();
  if (type.empty()) type = element.attribute("direction").value();
  if (!type.empty()) words = std::string(type) + (words.empty() ? "" : ":") + words;
  if (std::string_view(element.name()) == "other-articulation") words.clear();
  DrawingItem drawing = SignDrawing(name, words);
  if (const XmlSign* sign = FindSign(name); sign != nullptr) {
    const ByteView symbols = AsBytes(sign->symbols);
    drawing.text.assign(symbols.begin(), symbols.end());
  }
  drawing.placement = PlacementOf(element);
  return drawing;
}

DrawingItem DynamicDrawing(pugi::xml_node mark) {
  std::string_view name = mark.name();
  if (name == "other-dynamics") name = Trim(mark.text().get());
  const XmlDynamic* dynamic = FindDynamic(name);
  if (dynamic == nullptr) {
    DrawingItem drawing = WordsDrawing(name);
    drawing.sign = "dynamics";
    drawing.words = name;
    return drawing;
  }
  DrawingItem drawing = TextDrawing(dynamic->symbols);
  if (!dynamic->exact) {
    drawing.sign = "dynamics";
    drawing.words = name;
  }
  return drawing;
}

void ReadNotations(Reading& reading, Part& part, OpenMarks& open, std::size_t group, pugi::xml_node note,
                   NotePlace place) {
  for (const pugi::xml_node notations : note.children("notations")) {
    for (const pugi::xml_node child : notations.children()) {
      const std::string_view name = child.name();
      Group& chord = part.groups[group];
      if (name == "slur") {
        ReadSlur(reading, part, open, group, child, place);
      } else if (const auto* const home = std::ranges::find(kHomes, name, &SignHome::element);
                 home != std::end(kHomes)) {
        for (const pugi::xml_node sign : child.children()) AddSign(reading, chord, home->group, sign, place);
      } else if (name == "dynamics") {
        for (const pugi::xml_node mark : child.children()) AddDrawing(chord, DynamicDrawing(mark));
      } else if (FindSign(name, SignGroup::Notation) != nullptr) {
        AddDrawing(chord, DrawingOf(name, child));
      } else if (name != "tied" && name != "tuplet" && name != "footnote" && name != "level") {
        Lose(reading, place, name);
      }
    }
  }
}

void ReadLyrics(Reading& reading, Part& part, OpenMarks& open, std::size_t group, pugi::xml_node note,
                NotePlace place) {
  for (const pugi::xml_node lyric : note.children("lyric")) {
    std::string number = lyric.attribute("number").value();
    if (number.empty()) number = lyric.attribute("name").as_string("1");
    const std::size_t next = open.verses.size();
    const std::size_t verse = open.verses.try_emplace(number, next).first->second;
    if (verse >= kMostVerses) {
      reading.score.losses.Add(texts::LossLyric, place.bar, place.staff);
      continue;
    }
    LyricItem item;
    item.syllable = LyricText(lyric);
    const std::string_view syllabic = lyric.child("syllabic").text().get();
    if (syllabic == "begin" || syllabic == "middle") item.flags |= kLyricHyphen;
    if (lyric.child("extend")) item.flags |= kLyricExtender;
    for (const char* other : {"laughing", "humming"}) {
      if (lyric.child(other)) reading.score.losses.Add(texts::LossLyric, place.bar, place.staff, 1, other);
    }
    auto& lyrics = part.groups[group].item.lyrics;
    if (lyrics.size() <= verse) lyrics.resize(verse + 1);
    // Two of one number under one note are one text.
    if (!lyrics[verse].syllable.empty() && !item.syllable.empty())
      item.syllable = lyrics[verse].syllable + " " + item.syllable;
    if (item.syllable.empty()) item.syllable = std::move(lyrics[verse].syllable);
    lyrics[verse] = std::move(item);
  }
}

void ReadLooks(Reading& reading, Group& group, pugi::xml_node note, NotePlace place) {
  const std::string_view stem = note.child("stem").text().get();
  if (!stem.empty() && group.item.stem == 0) {
    if (stem == "up") group.item.stem = 'u';
    if (stem == "down") group.item.stem = 'd';
    if (stem == "none") group.item.stem = 'n';
  }
  if (group.item.beams.empty()) {
    for (const pugi::xml_node beam : note.children("beam")) {
      const std::string_view kind = beam.text().get();
      const std::size_t level = beam.attribute("number").as_uint(1);
      if (level == 0 || level > 8) continue;
      if (group.item.beams.size() < level) group.item.beams.resize(level, '-');
      group.item.beams[level - 1] = kind == "forward hook"    ? 'f'
                                    : kind == "backward hook" ? 'h'
                                    : kind.empty()            ? '-'
                                                              : kind[0];
    }
  }
  const std::string_view head = note.child("notehead").text().get();
  if (head.empty() || head == "normal" || group.item.group.notes.empty()) return;
  const auto* const found = std::ranges::find(kHeads, head);
  if (found == kHeads.end())
    return reading.score.losses.Add(texts::LossHead, place.bar, place.staff, 1, std::string(head));
  group.item.group.notes.back().value = static_cast<std::uint8_t>(found - kHeads.begin());
}

}  // namespace ts5::converters::musicxml
