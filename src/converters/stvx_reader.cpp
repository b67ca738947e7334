#include <algorithm>
#include <array>
#include <numeric>

#include "converters/stvx.h"
#include "converters/stvx_fields.h"
#include "converters/xml_encoding.h"
#include "converters/xml_tree.h"
#include "platform/base/text.h"

namespace ts5::converters {
namespace {

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

// Takes the attributes of one element; a value that cannot be makes ok false.
class FieldReader {
 public:
  FieldReader(pugi::xml_node node, bool& ok) : node_(node), ok_(ok) {}

  template <typename T, typename D>
  void Number(const char* name, T& value, D usual, std::int64_t least, std::int64_t most) {
    value = static_cast<T>(usual);
    const pugi::xml_attribute attribute = node_.attribute(name);
    if (!attribute) return;
    const auto number = ParseInteger(attribute.value());
    if (!number || *number < least || *number > most) return Fail();
    value = static_cast<T>(*number);
  }
  void Flag(const char* name, bool& value) {
    const std::string_view text = node_.attribute(name).value();
    value = text == "1";
    if (!text.empty() && text != "1" && text != "0") Fail();
  }
  void Letter(const char* name, char& value) {
    const std::string_view text = node_.attribute(name).value();
    if (text.size() > 1) return Fail();
    if (!text.empty()) value = text[0];
  }
  void Text(const char* name, std::string& value) { value = Unescaped(node_.attribute(name).value()); }
  void Symbols(const char* name, ts5::Bytes& value) {
    const std::string text = Windows1252FromUtf8(Unescaped(node_.attribute(name).value()));
    value.assign(text.begin(), text.end());
  }
  void Bytes(const char* name, ts5::Bytes& value) { value = Hex(node_.attribute(name).value()); }
  void Length(const char* name, Fraction& value) {
    const std::string_view text = node_.attribute(name).value();
    if (text.empty()) return;
    const auto parts = Split(text, '/');
    const auto numerator = ParseInteger(parts[0]);
    const auto denominator = parts.size() == 2 ? ParseInteger(parts[1]) : std::nullopt;
    if (!numerator || !denominator || *denominator < 1) return Fail();
    value = Fraction(*numerator, *denominator);
  }
  void Map(const char* name, NoteMap& map) {
    std::iota(map.begin(), map.end(), std::uint8_t{0});
    const std::string_view text = node_.attribute(name).value();
    if (text.empty()) return;
    const ts5::Bytes bytes = Hex(text);
    if (bytes.size() != map.size()) return Fail();
    std::ranges::copy(bytes, map.begin());
  }

 private:
  void Fail() { ok_ = false; }

  ts5::Bytes Hex(std::string_view text) {
    ts5::Bytes bytes;
    if (text.size() % 2 != 0) Fail();
    bytes.reserve(text.size() / 2);
    for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
      const int high = HexDigit(text[i]);
      const int low = HexDigit(text[i + 1]);
      if (high < 0 || low < 0) {
        Fail();
        return {};
      }
      bytes.push_back(static_cast<std::uint8_t>(high << 4 | low));
    }
    return bytes;
  }

  // \xHH stands for the byte HH.
  std::string Unescaped(std::string_view text) {
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
      if (text[i] != '\\') {
        plain += text[i];
        continue;
      }
      const int high = i + 3 < text.size() && text[i + 1] == 'x' ? HexDigit(text[i + 2]) : -1;
      const int low = high >= 0 ? HexDigit(text[i + 3]) : -1;
      if (low < 0) {
        Fail();
        return {};
      }
      plain += static_cast<char>(high << 4 | low);
      i += 3;
    }
    return plain;
  }

  pugi::xml_node node_;
  bool& ok_;
};

template <std::size_t N>
std::optional<std::uint8_t> KindOf(std::string_view name, const std::string_view (&names)[N]) {
  const auto* const found = std::ranges::find(names, name);
  if (found == std::end(names)) return std::nullopt;
  return static_cast<std::uint8_t>(found - std::begin(names));
}

class StvXmlReader {
 public:
  StvXmlReader(pugi::xml_node root, const CancelCheck& cancelled) : root_(root), cancelled_(cancelled) {}

  ScoreResult<ScoreWithLosses> Read() {
    const auto fail = [](ScoreFault fault) { return tl::unexpected<ScoreFault>(fault); };
    if (root_.attribute("version").as_int() != stvx::kVersion) return fail({Outcome::WrongFormat});
    ReadInfo(root_.child("info"));
    for (pugi::xml_node system = root_.child("system"); system && ok_;) {
      if (stopped_ || (cancelled_ && cancelled_())) return fail({Outcome::Cancelled});
      ReadSystem(system);
      // The document grows as the tree shrinks.
      const pugi::xml_node read = system;
      system = system.next_sibling("system");
      root_.remove_child(read);
    }
    if (stopped_) return fail({Outcome::Cancelled});
    if (!ok_) return fail({Outcome::SourceFailed, bar_, staff_});
    return std::move(result_);
  }

 private:
  static constexpr std::size_t kItemsBetween = 1024;

  ScoreDocument& Document() { return result_.document; }

  void ReadInfo(pugi::xml_node info) {
    FieldReader fields(info, ok_);
    stvx::InfoFields(fields, Document());
    for (const pugi::xml_node child : info.children()) {
      const std::string_view name = child.name();
      FieldReader own(child, ok_);
      if (name == "layout") stvx::LayoutFields(own, Document().staves.emplace_back());
      if (name == "page") {
        stvx::PageFields(own, Document().page);
        Document().page.given = true;
      }
      if (name == "part") stvx::PartFields(own, Document().parts.emplace_back());
      if (name == "label") stvx::LabelFields(own, Document().bars.emplace_back());
      if (name == "gallery") own.Bytes("data", Document().gallery.emplace_back());
    }
    if (Document().staves.size() > kMaxStaves) ok_ = false;
  }

  void ReadSystem(pugi::xml_node node) {
    SystemItems& system = Document().systems.emplace_back();
    FieldReader fields(node, ok_);
    stvx::SystemFields(fields, system);
    const int firstBar = bar_;
    int bars = 0;
    for (const pugi::xml_node child : node.children("staff")) {
      bar_ = firstBar;
      StaffItems& staff = system.staves.emplace_back();
      FieldReader own(child, ok_);
      stvx::StaffFields(own, staff);
      staff_ = staff.layout;
      if (staff.layout >= Document().staves.size()) ok_ = false;
      for (const pugi::xml_node voice : child.children("voice")) {
        bar_ = firstBar;
        if (ok_ && !stopped_) ReadVoice(voice, staff);
        bars = std::max(bars, bar_ - firstBar);
      }
      if (!ok_) return;
    }
    bar_ = firstBar + bars;
    staff_ = -1;
  }

  void ReadVoice(pugi::xml_node node, StaffItems& staff) {
    VoiceItems& items = staff.voices.emplace_back();
    if (node.attribute("record")) {
      staff.voiceRecords.resize(staff.voices.size());
      FieldReader(node, ok_).Bytes("record", staff.voiceRecords.back());
    }
    items.reserve(static_cast<std::size_t>(std::distance(node.begin(), node.end())));
    for (const pugi::xml_node child : node.children()) {
      ReadItem(child, items.emplace_back());
      if (items.size() % kItemsBetween == 0 && cancelled_ && cancelled_()) stopped_ = true;
      if (!ok_ || stopped_) return;
      if (items.back().Is(ObjectKind::BarLine)) ++bar_;
    }
  }

  void ReadItem(pugi::xml_node node, ScoreItem& item) {
    FieldReader fields(node, ok_);
    if (const auto kind = KindOf(node.name(), stvx::kItemNames)) {
      item.kind = *kind;
    } else {
      fields.Number("kind", item.kind, 0, 8, 255);
      if (std::string_view(node.name()) != stvx::kOtherItem || item.kind < 8) ok_ = false;
    }
    item.group.isRest = item.Is(ObjectKind::Rest);
    stvx::ItemFields(fields, item);
    for (const pugi::xml_node child : node.children()) ReadPartOf(child, item, 0);
    const bool chord = item.Is(ObjectKind::Chord) || item.Is(ObjectKind::ChordVariant);
    if (chord == item.group.notes.empty()) ok_ = false;
    item.group.noteCount = static_cast<std::uint32_t>(item.group.notes.size());
    if (!item.noteTies.empty()) item.noteTies.resize(item.group.notes.size());
  }

  void ReadPartOf(pugi::xml_node node, ScoreItem& item, int depth) {
    const std::string_view name = node.name();
    FieldReader fields(node, ok_);
    if (name == "note") {
      stvx::NoteFields(fields, item.group.notes.emplace_back());
      if (!node.attribute("ties")) return;
      item.noteTies.resize(item.group.notes.size());
      fields.Number("ties", item.noteTies.back(), 0, 0, 3);
    } else if (name == "lyric") {
      stvx::LyricFields(fields, item.lyrics.emplace_back());
    } else {
      ReadDrawing(node, item.drawings.emplace_back(), depth);
    }
  }

  void ReadDrawing(pugi::xml_node node, DrawingItem& drawing, int depth) {
    FieldReader fields(node, ok_);
    if (const auto kind = KindOf(node.name(), stvx::kDrawingNames)) {
      drawing.kind = *kind;
    } else {
      fields.Number("kind", drawing.kind, 0, 16, 255);
      if (std::string_view(node.name()) != stvx::kOtherDrawing || drawing.kind < 16) ok_ = false;
    }
    stvx::DrawingFields(fields, drawing);
    if (depth + 1 >= kMaxDrawingDepth && node.first_child()) ok_ = false;
    for (const pugi::xml_node child : node.children()) {
      if (!ok_) return;
      ReadDrawing(child, drawing.nested.emplace_back(), depth + 1);
    }
  }

  pugi::xml_node root_;
  const CancelCheck& cancelled_;
  ScoreWithLosses result_;
  bool ok_ = true;
  bool stopped_ = false;
  int bar_ = 0;  // where it reads
  int staff_ = -1;
};

}  // namespace

ScoreResult<ScoreWithLosses> ReadStvXml(ByteView file, const CancelCheck& cancelled) {
  const auto fail = [](Outcome code) { return tl::unexpected<ScoreFault>(ScoreFault{code}); };
  auto text = XmlText(file, cancelled);
  if (!text) return fail(text.error());
  pugi::xml_document tree;
  const Outcome parsed = ParseXml(tree, *text, cancelled).code;
  if (Failed(parsed) && parsed != Outcome::SourceFailed) return fail(parsed);
  const pugi::xml_node root = tree.child(std::string(stvx::kRoot).c_str());
  if (!root && !Failed(parsed) && tree.first_child()) return fail(Outcome::WrongFormat);
  if (!root || Failed(parsed)) return fail(Outcome::SourceFailed);
  return StvXmlReader(root, cancelled).Read();
}

}  // namespace ts5::converters
