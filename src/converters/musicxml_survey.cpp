#include "converters/musicxml_survey.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "converters/texts.h"

namespace ts5::converters::musicxml {
namespace {

enum class Treatment : std::uint8_t {
  Read,   // and what is inside it
  Whole,  // the reader looks at what is inside by itself, and tells
  File,   // says how the file was made
  Lost,   // with all that is inside
};
struct Element {
  std::string_view name;
  Treatment treatment = Treatment::Read;
  TextId kind = {};
};
constexpr auto kWhole = Treatment::Whole;
constexpr auto kFile = Treatment::File;
constexpr auto kLost = Treatment::Lost;

// In order of their names.
constexpr auto kElements = std::to_array<Element>({
    {"accidental"},
    {"actual-notes"},
    {"alter"},
    {"appearance", kLost, texts::LossEngraving},
    {"articulations", kWhole},
    {"attributes"},
    {"backup"},
    {"bar-style"},
    {"barline"},
    {"beam"},
    {"beat-type"},
    {"beat-unit"},
    {"beat-unit-dot"},
    {"beats"},
    {"cancel", kLost, texts::LossHidden},
    {"chord"},
    {"chromatic"},
    {"clef"},
    {"clef-octave-change"},
    {"coda"},
    {"concert-score", kLost, texts::LossTranspose},
    {"creator"},
    {"credit", kWhole},
    {"cue"},
    {"defaults"},
    {"diatonic"},
    {"direction"},
    {"direction-type"},
    {"directive", kLost, texts::LossCreditText},
    {"display-octave"},
    {"display-step"},
    {"divisions"},
    {"dot"},
    {"duration"},
    {"dynamics", kWhole},
    {"elevation", kLost, texts::LossSound},
    {"elision"},
    {"encoder", kFile},
    {"encoding"},
    {"encoding-date", kFile},
    {"encoding-description", kFile},
    {"end-line", kLost, texts::LossLyric},
    {"end-paragraph", kLost, texts::LossLyric},
    {"ending"},
    {"ensemble", kLost, texts::LossSound},
    {"extend"},
    {"fermata", kWhole},
    {"fifths"},
    {"figured-bass", kWhole},
    {"footnote", kLost, texts::LossCreditText},
    {"for-part", kLost, texts::LossTranspose},
    {"forward"},
    {"grace"},
    {"group", kLost, texts::LossGroup},
    {"group-abbreviation", kLost, texts::LossName},
    {"group-abbreviation-display", kLost, texts::LossName},
    {"group-barline", kLost, texts::LossGroup},
    {"group-name"},
    {"group-name-display", kLost, texts::LossName},
    {"group-symbol"},
    {"group-time", kLost, texts::LossTimeForm},
    {"harmony", kWhole},
    {"humming", kWhole},
    {"identification"},
    {"instrument"},
    {"instrument-abbreviation", kLost, texts::LossName},
    {"instrument-change", kLost, texts::LossInstruments},
    {"instrument-name"},
    {"instrument-sound", kLost, texts::LossSound},
    {"instruments", kLost, texts::LossInstruments},
    {"interchangeable", kLost, texts::LossTimeForm},
    {"key"},
    {"key-accidental", kWhole},
    {"key-alter", kWhole},
    {"key-octave", kLost, texts::LossKey},
    {"key-step", kWhole},
    {"laughing", kWhole},
    {"level", kLost, texts::LossCreditText},
    {"line"},
    {"lyric"},
    {"lyric-font", kLost, texts::LossFonts},
    {"lyric-language", kLost, texts::LossLyric},
    {"measure"},
    {"measure-layout", kLost, texts::LossPage},
    {"measure-numbering", kLost, texts::LossNumbers},
    {"measure-style", kWhole},
    {"metronome", kWhole},
    {"midi-bank", kLost, texts::LossSound},
    {"midi-channel"},
    {"midi-device", kLost, texts::LossSound},
    {"midi-instrument"},
    {"midi-name", kLost, texts::LossSound},
    {"midi-program"},
    {"midi-unpitched"},
    {"miscellaneous"},
    {"miscellaneous-field", kWhole},
    {"mode"},
    {"movement-number", kLost, texts::LossCredits},
    {"movement-title"},
    {"music-font", kLost, texts::LossEngraving},
    {"normal-dot", kLost, texts::LossTuplet},
    {"normal-notes"},
    {"normal-type", kLost, texts::LossTupletLooks},
    {"notations"},
    {"note"},
    {"notehead"},
    {"notehead-text", kLost, texts::LossHead},
    {"octave"},
    {"octave-change"},
    {"octave-shift"},
    {"offset"},
    {"opus", kLost, texts::LossCredits},
    {"ornaments", kWhole},
    {"page-height"},
    {"page-layout"},
    {"page-margins", kLost, texts::LossPage},
    {"page-width"},
    {"pan", kLost, texts::LossSound},
    {"part"},
    {"part-abbreviation"},
    {"part-abbreviation-display", kLost, texts::LossName},
    {"part-clef", kLost, texts::LossClef},
    {"part-group"},
    {"part-list"},
    {"part-name"},
    {"part-name-display", kLost, texts::LossName},
    {"part-symbol", kLost, texts::LossGroup},
    {"part-transpose", kLost, texts::LossTranspose},
    {"pitch"},
    {"play", kLost, texts::LossSound},
    {"player", kLost, texts::LossSound},
    {"print"},
    {"relation", kLost, texts::LossCredits},
    {"repeat"},
    {"rest"},
    {"rights"},
    {"scaling", kWhole},
    {"score-instrument"},
    {"score-part"},
    {"segno"},
    {"senza-misura", kWhole},
    {"sign"},
    {"slash", kLost, texts::LossHidden},
    {"slur"},
    {"software"},
    {"solo", kLost, texts::LossSound},
    {"sound"},
    {"source"},
    {"staff"},
    {"staff-details", kLost, texts::LossStaffForm},
    {"staff-layout", kWhole},
    {"staves"},
    {"stem"},
    {"step"},
    {"supports", kFile},
    {"swing", kLost, texts::LossSound},
    {"syllabic"},
    {"system-layout", kWhole},
    {"technical", kWhole},
    {"text"},
    {"tie"},
    {"tied"},
    {"time"},
    {"time-modification"},
    {"time-relation", kLost, texts::LossTimeForm},
    {"transpose"},
    {"tuplet", kWhole},
    {"type"},
    {"unpitched"},
    {"virtual-instrument", kLost, texts::LossSound},
    {"voice"},
    {"volume"},
    {"word-font", kLost, texts::LossFonts},
    {"words"},
    {"work"},
    {"work-number", kLost, texts::LossCredits},
    {"work-title"},
});
static_assert(std::ranges::is_sorted(kElements, {}, &Element::name));

// Attributes that any element may have.
struct Looks {
  std::string_view name;
  TextId kind;
};
constexpr auto kLooks = std::to_array<Looks>({
    {"attack", texts::LossSound},
    {"bezier-offset", texts::LossPosition},
    {"bezier-offset2", texts::LossPosition},
    {"bezier-x", texts::LossPosition},
    {"bezier-x2", texts::LossPosition},
    {"bezier-y", texts::LossPosition},
    {"bezier-y2", texts::LossPosition},
    {"color", texts::LossColour},
    {"damper-pedal", texts::LossSound},
    {"dash-length", texts::LossLineForm},
    {"default-x", texts::LossPosition},
    {"default-y", texts::LossPosition},
    {"dynamics", texts::LossSound},
    {"elevation", texts::LossSound},
    {"enclosure", texts::LossFonts},
    {"end-dynamics", texts::LossSound},
    {"font-family", texts::LossFonts},
    {"font-size", texts::LossFonts},
    {"font-style", texts::LossFonts},
    {"font-weight", texts::LossFonts},
    {"halign", texts::LossFonts},
    {"justify", texts::LossFonts},
    {"letter-spacing", texts::LossFonts},
    {"line-height", texts::LossFonts},
    {"line-length", texts::LossLineForm},
    {"line-shape", texts::LossLineForm},
    {"line-through", texts::LossFonts},
    {"line-type", texts::LossLineForm},
    {"niente", texts::LossLineForm},
    {"non-controlling", texts::LossNumbers},
    {"overline", texts::LossFonts},
    {"pan", texts::LossSound},
    {"pizzicato", texts::LossSound},
    {"relative-x", texts::LossPosition},
    {"relative-y", texts::LossPosition},
    {"release", texts::LossSound},
    {"rotation", texts::LossFonts},
    {"soft-pedal", texts::LossSound},
    {"sostenuto-pedal", texts::LossSound},
    {"space-length", texts::LossLineForm},
    {"spread", texts::LossLineForm},
    {"steal-time-following", texts::LossSound},
    {"steal-time-previous", texts::LossSound},
    {"time-only", texts::LossSound},
    {"underline", texts::LossFonts},
    {"valign", texts::LossFonts},
    {"width", texts::LossPosition},
    {"xml:lang", texts::LossFonts},
});
static_assert(std::ranges::is_sorted(kLooks, {}, &Looks::name));

template <typename Row, std::size_t N>
const Row* Find(const std::array<Row, N>& table, std::string_view name) {
  const auto* const found = std::ranges::lower_bound(table, name, {}, &Row::name);
  return found == table.end() || found->name != name ? nullptr : &*found;
}

class Surveyor {
 public:
  Surveyor(LossReport& losses, const CancelCheck& cancelled) : losses_(losses), cancelled_(cancelled) {}

  // Goes through all that is below root, without recursion however deep it is.
  bool Survey(pugi::xml_node root) {
    for (pugi::xml_node node = root.first_child(); node && node != root;) {
      if (++asked_ % kNodesBetween == 0 && cancelled_ && cancelled_()) return false;
      const bool descend = node.type() == pugi::node_element && Take(node);
      node = Next(node, root, descend);
    }
    for (std::size_t i = 0; i < looks_.size(); ++i) {
      if (looks_[i] > 0) losses_.Add(kLooks[i].kind, -1, -1, looks_[i]);
    }
    for (std::size_t i = 0; i < elements_.size(); ++i) {
      if (elements_[i] > 0)
        losses_.Add(kElements[i].kind, -1, -1, elements_[i], std::string(kElements[i].name));
    }
    return true;
  }

 private:
  static constexpr unsigned kNodesBetween = 4096;

  static pugi::xml_node Next(pugi::xml_node node, pugi::xml_node root, bool descend) {
    if (descend && node.first_child()) return node.first_child();
    while (node && node != root && !node.next_sibling()) node = node.parent();
    return node == root ? root : node.next_sibling();
  }

  // Whether to look inside.
  bool Take(pugi::xml_node node) {
    const std::string_view name = node.name();
    if (name == "measure") ++bar_;
    if (name == "part" && std::string_view(node.parent().name()) != "measure") bar_ = -1;
    const Element* element = Find(kElements, name);
    if (element == nullptr) {
      // What stands there the reader tells itself.
      const std::string_view parent = node.parent().name();
      if (parent == "direction-type" || parent == "notations") {
        CountLooks(node);
      } else {
        losses_.Add(texts::LossElement, bar_, -1, 1, std::string(name));
      }
      return false;
    }
    if (element->treatment == kLost) ++elements_[static_cast<std::size_t>(element - kElements.data())];
    if (element->treatment == kLost || element->treatment == kFile) return false;
    CountLooks(node);
    if (IsLaterLayout(node, name)) {
      losses_.Add(texts::LossPage);
      return false;
    }
    TakeOwn(node, name);
    return element->treatment == Treatment::Read;
  }

  void CountLooks(pugi::xml_node node) {
    for (const pugi::xml_attribute attribute : node.attributes()) {
      if (const Looks* looks = Find(kLooks, attribute.name()); looks != nullptr)
        ++looks_[static_cast<std::size_t>(looks - kLooks.data())];
    }
  }

  // What changes from page to page, or from staff to staff, is lost.
  static bool IsLaterLayout(pugi::xml_node node, std::string_view name) {
    if (name != "page-layout" && name != "staff-layout" && name != "system-layout") return false;
    return std::string_view(node.parent().name()) != "defaults" || node.parent().child(name.data()) != node ||
           node.child("system-margins");
  }

  // Attributes that mean something at one element alone.
  void TakeOwn(pugi::xml_node node, std::string_view name) {
    const auto is = [node](const char* attribute, std::string_view value) {
      return std::string_view(node.attribute(attribute).value()) == value;
    };
    if (name == "tuplet") {
      const bool plain = !node.first_child() && !node.attribute("show-number") &&
                         !node.attribute("show-type") && !is("bracket", "no") && !node.attribute("placement");
      if (!plain) losses_.Add(texts::LossTupletLooks, bar_);
    } else if (name == "type" || name == "clef") {
      if (node.attribute("size") && !is("size", "full"))
        losses_.Add(texts::LossCue, bar_, -1, 1, node.attribute("size").value());
    } else if (name == "part-group") {
      // Its name is all that is kept of a group.
      if (is("type", "start") && !node.child("group-name")) losses_.Add(texts::LossGroup);
    } else if (name == "group-symbol") {
      const std::string_view symbol = node.text().get();
      if (symbol != "bracket") losses_.Add(texts::LossGroup, -1, -1, 1, std::string(symbol));
    }
    if (name != "note" && is("print-object", "no"))
      losses_.Add(texts::LossHidden, bar_, -1, 1, std::string(name));
    for (const char* part : {"print-dot", "print-lyric", "print-leger", "print-spacing"}) {
      if (name == "note" && is(part, "no")) losses_.Add(texts::LossHidden, bar_, -1, 1, part);
    }
  }

  LossReport& losses_;
  const CancelCheck& cancelled_;
  std::array<unsigned, kLooks.size()> looks_{};
  std::array<unsigned, kElements.size()> elements_{};
  int bar_ = -1;
  unsigned asked_ = 0;
};

}  // namespace

bool SurveyElements(pugi::xml_node root, LossReport& losses, const CancelCheck& cancelled) {
  return Surveyor(losses, cancelled).Survey(root);
}

}  // namespace ts5::converters::musicxml
