#include "converters/musicxml_reader.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "converters/musicxml_page.h"
#include "converters/musicxml_raw.h"
#include "converters/musicxml_survey.h"
#include "converters/mxl_container.h"
#include "converters/score_assembly.h"
#include "converters/texts.h"
#include "converters/xml_encoding.h"
#include "converters/xml_tree.h"
#include "platform/base/text.h"

namespace ts5::converters {
namespace {

using namespace musicxml;

constexpr std::size_t kMostParts = 256;        // and staves
constexpr std::size_t kMostInstruments = 128;  // of a part

// Of a file that breaks off or contradicts itself, the measure and part at the place where reading ended.
ScoreFault FaultAt(std::string_view text, std::size_t offset) {
  ScoreFault fault;
  text = text.substr(0, offset);
  std::size_t part = 0;
  std::size_t begin = 0;
  for (std::size_t at = text.find("<part "); at != std::string_view::npos; at = text.find("<part ", at + 1)) {
    ++part;
    begin = at;
  }
  if (part == 0) return fault;
  fault.staff = static_cast<int>(part) - 1;
  for (std::size_t at = text.find("<measure", begin); at != std::string_view::npos;
       at = text.find("<measure", at + 1))
    ++fault.bar;
  return fault;
}

std::string TextOf(pugi::xml_node node) {
  return std::string(Trim(node.text().get()));
}

void Append(std::string& field, const std::string& text) {
  if (!text.empty()) field += (field.empty() ? "" : ", ") + text;
}

void ReadIdentification(pugi::xml_node identification, Score& score) {
  ScoreDocument& document = score.document;
  ScoreCredits& credits = document.credits;
  for (const pugi::xml_node creator : identification.children("creator")) {
    const std::string_view type = creator.attribute("type").value();
    if (type.empty() || type == "composer") {
      Append(document.author, TextOf(creator));
    } else if (type == "lyricist" || type == "poet") {
      Append(credits.lyricist, TextOf(creator));
    } else if (type == "arranger") {
      Append(credits.arranger, TextOf(creator));
    } else {
      score.losses.Add(texts::LossCredits, -1, -1, 1, std::string(type) + ": " + TextOf(creator));
    }
  }
  for (const pugi::xml_node rights : identification.children("rights"))
    Append(credits.rights, TextOf(rights));
  credits.source = TextOf(identification.child("source"));
  for (const pugi::xml_node supports : identification.child("encoding").children("supports")) {
    if (std::string_view(supports.attribute("element").value()) == "beam")
      score.hasBeams = std::string_view(supports.attribute("type").value()) == "yes";
  }
  credits.software = TextOf(identification.child("encoding").child("software"));
  for (const pugi::xml_node field : identification.child("miscellaneous").children("miscellaneous-field")) {
    const std::string name = field.attribute("name").value();
    if (name == "keywords") {
      document.keywords = TextOf(field);
    } else if (name == "comment") {
      document.comment = TextOf(field);
    } else {
      score.losses.Add(texts::LossCredits, -1, -1, 1, name);
    }
  }
}

// A text on the page that says what is known anyway is no loss.
void ReadPageText(pugi::xml_node credit, Score& score) {
  constexpr std::size_t kShown = 40;  // characters
  ScoreDocument& document = score.document;
  ScoreCredits& credits = document.credits;
  const std::string type = TextOf(credit.child("credit-type"));
  std::string words;
  for (const pugi::xml_node part : credit.children("credit-words")) words += part.text().get();
  words = Trim(words);
  if (type == "title" && credits.title.empty() && credits.movement.empty()) credits.title = words;
  if (type == "composer" && document.author.empty()) document.author = words;
  if (type == "lyricist" && credits.lyricist.empty()) credits.lyricist = words;
  if (type == "arranger" && credits.arranger.empty()) credits.arranger = words;
  if (type == "rights" && credits.rights.empty()) credits.rights = words;
  for (const std::string* known : {&credits.title, &credits.movement, &document.author, &credits.lyricist,
                                   &credits.arranger, &credits.rights}) {
    if (*known == words) return score.losses.Add(texts::LossPosition);
  }
  if (words.empty()) words = type;
  std::ranges::replace(words, '\n', ' ');
  score.losses.Add(texts::LossCreditText, -1, -1, 1, std::string(FirstCharacters(words, kShown)));
}

void ReadCredits(pugi::xml_node root, Score& score) {
  ScoreDocument& document = score.document;
  document.credits.title = TextOf(root.child("work").child("work-title"));
  document.credits.movement = TextOf(root.child("movement-title"));
  ReadIdentification(root.child("identification"), score);
  for (const pugi::xml_node credit : root.children("credit")) ReadPageText(credit, score);
  ReadPage(root, document);
}

void ReadInstruments(pugi::xml_node node, Part& part) {
  for (const pugi::xml_node instrument : node.children("score-instrument")) {
    if (part.instruments.size() == kMostInstruments) break;
    part.instruments.emplace_back(instrument.attribute("id").value(),
                                  Instrument{TextOf(instrument.child("instrument-name"))});
  }
  std::size_t midis = 0;
  for (const pugi::xml_node midi : node.children("midi-instrument")) {
    if (++midis > kMostInstruments) break;
    const std::string_view id = midi.attribute("id").value();
    for (auto& [name, instrument] : part.instruments) {
      if (name != id) continue;
      const int program = midi.child("midi-program").text().as_int();
      const int key = midi.child("midi-unpitched").text().as_int();
      if (program >= 1 && program <= 128) instrument.program = program - 1;
      if (key >= 1 && key <= 128) instrument.unpitched = key - 1;
      instrument.channel = midi.child("midi-channel").text().as_int();
      if (const pugi::xml_node volume = midi.child("volume"))
        instrument.volume =
            static_cast<int>(std::lround(std::clamp(volume.text().as_double(), 0.0, 100.0) * 1.27));
    }
  }
}

// A name with line ends is one line here.
std::string NameOf(pugi::xml_node node) {
  std::string name = TextOf(node);
  std::ranges::replace(name, '\n', ' ');
  return name;
}

// The instrument of a part, where that is not its name once more. Those of a drum set are known by their
// keys.
void NameInstrument(Part& part, LossReport& losses) {
  const bool drums = std::ranges::any_of(
      part.instruments, [](const auto& instrument) { return instrument.second.unpitched >= 0; });
  for (const auto& [id, instrument] : part.instruments) {
    (void)id;
    if (instrument.name.empty() || instrument.name == part.names.name) continue;
    if (!drums && part.names.instrument.empty()) {
      part.names.instrument = instrument.name;
    } else {
      losses.Add(texts::LossInstrument, -1, -1, 1, instrument.name);
    }
  }
}

void ReadPartList(pugi::xml_node list, std::vector<Part>& parts, LossReport& losses) {
  std::vector<std::pair<std::string, std::string>> groups;  // open ones: number, name
  for (const pugi::xml_node child : list.children()) {
    const std::string_view name = child.name();
    if (name == "part-group") {
      const std::string number = child.attribute("number").as_string("1");
      std::erase_if(groups, [&](const auto& group) { return group.first == number; });
      if (std::string_view(child.attribute("type").value()) == "start")
        groups.emplace_back(number, NameOf(child.child("group-name")));
    }
    if (name != "score-part") continue;
    if (parts.size() > kMostParts) return;
    Part& part = parts.emplace_back();
    part.id = child.attribute("id").value();
    part.names.name = NameOf(child.child("part-name"));
    part.names.abbreviation = NameOf(child.child("part-abbreviation"));
    if (!groups.empty()) part.names.group = groups.back().second;
    ReadInstruments(child, part);
    NameInstrument(part, losses);
  }
}

using MeasureNodes = std::vector<std::vector<pugi::xml_node>>;  // of each part

std::size_t PartOf(const std::string& id, std::vector<Part>& parts, MeasureNodes& nodes) {
  const auto found = std::ranges::find(parts, id, &Part::id);
  const auto index = static_cast<std::size_t>(found - parts.begin());
  if (found == parts.end()) parts.emplace_back().id = id;
  nodes.resize(parts.size());
  return index;
}

ScoreBarLabel LabelOf(pugi::xml_node measure) {
  return {measure.attribute("number").value(),
          std::string_view(measure.attribute("implicit").value()) == "yes", false};
}

// The measures of each part; a timewise score has the parts inside its measures.
MeasureNodes CollectMeasures(pugi::xml_node root, Score& score, bool timewise) {
  MeasureNodes nodes(score.parts.size());
  if (timewise) {
    for (const pugi::xml_node measure : root.children("measure")) {
      score.labels.push_back(LabelOf(measure));
      for (const pugi::xml_node part : measure.children("part")) {
        if (score.parts.size() > kMostParts) return nodes;
        auto& own = nodes[PartOf(part.attribute("id").value(), score.parts, nodes)];
        own.resize(std::max(own.size(), score.labels.size() - 1));
        own.push_back(part);
      }
    }
    return nodes;
  }
  for (const pugi::xml_node part : root.children("part")) {
    if (score.parts.size() > kMostParts) return nodes;
    auto& own = nodes[PartOf(part.attribute("id").value(), score.parts, nodes)];
    for (const pugi::xml_node measure : part.children("measure")) {
      own.push_back(measure);
      if (own.size() > score.labels.size()) score.labels.push_back(LabelOf(measure));
    }
  }
  return nodes;
}

}  // namespace

ScoreResult<ScoreWithLosses> ReadMusicXml(ByteView file, const CancelCheck& cancelled, ScoreDetail detail) {
  const auto fail = [](ScoreFault fault) { return tl::unexpected<ScoreFault>(fault); };
  Bytes unpacked;
  if (LooksLikeZip(file)) {
    auto content = ReadMxl(file, cancelled);
    if (!content) return fail({content.error()});
    unpacked = std::move(*content);
    file = unpacked;
  }
  auto text = XmlText(file, cancelled);
  if (!text) return fail({text.error()});
  if (text->find('<') == std::string::npos) return fail({Outcome::WrongFormat});
  const std::size_t size = text->size();

  pugi::xml_document tree;
  const XmlParse parsed = ParseXml(tree, *text, cancelled);
  if (Failed(parsed.code) && parsed.code != Outcome::SourceFailed) return fail({parsed.code});
  const bool timewise = static_cast<bool>(tree.child("score-timewise"));
  const pugi::xml_node root = tree.child(timewise ? "score-timewise" : "score-partwise");
  if (!root && !Failed(parsed.code) && tree.first_child()) return fail({Outcome::WrongFormat});
  if (!root) return fail({Outcome::SourceFailed});
  if (Failed(parsed.code)) {
    tree.reset();
    text = XmlText(file, cancelled);
    return fail(text ? FaultAt(*text, parsed.offset) : ScoreFault{text.error()});
  }

  Score score;
  const bool notesAlone = detail == ScoreDetail::Notes;
  if (!notesAlone) ReadCredits(root, score);
  if (detail == ScoreDetail::Whole && !SurveyElements(root, score.losses, cancelled))
    return fail({Outcome::Cancelled});
  ReadPartList(root.child("part-list"), score.parts, score.losses);
  const MeasureNodes nodes = CollectMeasures(root, score, timewise);
  if (score.parts.size() > kMostParts) return fail({Outcome::SourceFailed});
  // A few bytes must not claim bars for hundreds of staves.
  const auto tooMany = [&](std::size_t staves) {
    constexpr std::size_t kBytesPerCell = 40;
    constexpr std::size_t kFreeCells = 4096;
    return score.labels.size() * staves > kFreeCells + size / kBytesPerCell;
  };
  if (tooMany(1)) return fail({Outcome::SourceFailed});
  Reading reading{score, cancelled, {}, notesAlone};
  std::size_t staves = 0;
  for (std::size_t i = 0; i < score.parts.size() && !reading.fault; ++i) {
    score.parts[i].firstStaff = staves;
    if (i < nodes.size()) ReadPart(reading, score.parts[i], nodes[i]);
    staves += score.parts[i].staves;
  }
  if (reading.fault) return fail(*reading.fault);
  if (score.labels.empty() || staves > kMostParts || tooMany(staves)) return fail({Outcome::SourceFailed});
  tree.reset();
  text = std::string();
  unpacked = {};
  return AssembleScore(std::move(score), notesAlone, cancelled);
}

}  // namespace ts5::converters
