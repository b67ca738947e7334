#include <algorithm>
#include <concepts>
#include <utility>

#include "converters/stvx.h"
#include "converters/stvx_fields.h"
#include "converters/xml_out.h"
#include "platform/base/text.h"

namespace ts5::converters {
namespace {

using Attributes = std::vector<std::pair<std::string_view, std::string>>;

constexpr std::string_view kDigits = "0123456789ABCDEF";

// What no XML file can hold, and the backslash itself, as \xHH.
std::string Escaped(std::string_view text) {
  std::string escaped;
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t length = text[i] == '\\' || text[i] == 0x7F ? 0 : XmlCharacter(text.substr(i));
    if (length == 0) {
      const auto byte = static_cast<unsigned char>(text[i++]);
      escaped.append("\\x").append(1, kDigits[byte >> 4]).append(1, kDigits[byte & 15]);
    } else {
      escaped += text.substr(i, length);
      i += length;
    }
  }
  return escaped;
}

std::string Hex(ByteView bytes) {
  std::string text;
  text.reserve(bytes.size() * 2);
  for (const std::uint8_t byte : bytes) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

// Collects the attributes that do not have their default. What the reader would refuse does not fit.
class FieldWriter {
 public:
  template <std::integral T, typename D>
  void Number(std::string_view name, const T& value, D usual, std::int64_t least, std::int64_t most) {
    fits_ = fits_ && std::cmp_greater_equal(value, least) && std::cmp_less_equal(value, most);
    if (value != static_cast<T>(usual)) attributes_.emplace_back(name, std::to_string(value));
  }
  void Flag(std::string_view name, const bool& value) {
    if (value) attributes_.emplace_back(name, "1");
  }
  void Letter(std::string_view name, const char& value) {
    fits_ = fits_ && static_cast<unsigned char>(value) < 0x80;
    if (value != 0) attributes_.emplace_back(name, std::string(1, value));
  }
  void Text(std::string_view name, const std::string& value) {
    if (!value.empty()) attributes_.emplace_back(name, Escaped(value));
  }
  void Symbols(std::string_view name, const ts5::Bytes& value) {
    if (!value.empty()) attributes_.emplace_back(name, Escaped(Utf8FromWindows1252(AsText(value))));
  }
  void Bytes(std::string_view name, const ts5::Bytes& value) {
    if (!value.empty()) attributes_.emplace_back(name, Hex(value));
  }
  void Length(std::string_view name, const Fraction& value) {
    if (!value.IsZero())
      attributes_.emplace_back(name,
                               std::to_string(value.Numerator()) + "/" + std::to_string(value.Denominator()));
  }
  void Map(std::string_view name, const NoteMap& map) {
    bool plain = true;
    for (std::size_t i = 0; i < map.size(); ++i) plain = plain && map[i] == i;
    if (!plain) attributes_.emplace_back(name, Hex(map));
  }

  [[nodiscard]] const Attributes& Get() const { return attributes_; }
  [[nodiscard]] bool Fits() const { return fits_; }
  void Add(std::string_view name, std::string value) { attributes_.emplace_back(name, std::move(value)); }

 private:
  Attributes attributes_;
  bool fits_ = true;
};

class StvXmlWriter {
 public:
  StvXmlWriter(const ScoreDocument& document, std::uint64_t most)
      : document_(document), most_(most), out_(kHead) {}

  Result<Bytes> Write(const WorkWatch& watch) {
    out_.Open(stvx::kRoot, {{"version", std::to_string(stvx::kVersion)}});
    WriteInfo();
    for (std::size_t i = 0; i < document_.systems.size(); ++i) {
      if (watch.cancelled && watch.cancelled()) return Failure(Outcome::Cancelled);
      WriteSystem(document_.systems[i]);
      if (Failed(outcome_)) return Failure(outcome_);
      if (watch.progress)
        watch.progress(static_cast<double>(i + 1) / static_cast<double>(document_.systems.size()));
    }
    out_.Close();
    if (out_.Size() > most_) Fail(Outcome::XmlNotWritten);
    if (Failed(outcome_)) return Failure(outcome_);
    return out_.Release();
  }

 private:
  static constexpr std::string_view kHead = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

  // The first failure is the one that is told.
  void Fail(Outcome outcome) {
    if (Succeeded(outcome_)) outcome_ = outcome;
  }
  void Require(bool sound) {
    if (!sound) Fail(Outcome::XmlContradiction);
  }

  // refused: what it is called when a value has no place in the element, or the element none in the file.
  void Element(std::string_view name, const FieldWriter& fields, bool empty, Outcome refused) {
    out_.OpenWith(name, fields.Get(), empty);
    if (!fields.Fits() || out_.Size() > most_) Fail(refused);
  }

  void WriteInfo() {
    Require(document_.staves.size() <= kMaxStaves);
    FieldWriter info;
    stvx::InfoFields(info, document_);
    Element("info", info, false, Outcome::XmlInfoNotWritten);
    for (const StaffLayout& staff : document_.staves) {
      FieldWriter fields;
      stvx::LayoutFields(fields, staff);
      Element("layout", fields, true, Outcome::XmlLayoutNotWritten);
    }
    if (document_.page.given) {
      FieldWriter fields;
      stvx::PageFields(fields, document_.page);
      Element("page", fields, true, Outcome::XmlLayoutNotWritten);
    }
    for (const ScorePart& part : document_.parts) {
      FieldWriter fields;
      stvx::PartFields(fields, part);
      Element("part", fields, true, Outcome::XmlInfoNotWritten);
    }
    for (const ScoreBarLabel& label : document_.bars) {
      FieldWriter fields;
      stvx::LabelFields(fields, label);
      Element("label", fields, true, Outcome::XmlInfoNotWritten);
    }
    for (const Bytes& object : document_.gallery) {
      FieldWriter fields;
      fields.Bytes("data", object);
      Element("gallery", fields, true, Outcome::XmlInfoNotWritten);
    }
    out_.Close();
  }

  void WriteSystem(const SystemItems& system) {
    FieldWriter fields;
    stvx::SystemFields(fields, system);
    Element("system", fields, system.staves.empty(), Outcome::XmlSystemNotWritten);
    if (system.staves.empty()) return;
    for (const StaffItems& staff : system.staves) WriteStaff(staff);
    out_.Close();
  }

  void WriteStaff(const StaffItems& staff) {
    Require(staff.layout < document_.staves.size());
    FieldWriter fields;
    stvx::StaffFields(fields, staff);
    Element("staff", fields, staff.voices.empty(), Outcome::XmlSystemNotWritten);
    if (staff.voices.empty()) return;
    for (std::size_t v = 0; v < staff.voices.size(); ++v) {
      FieldWriter voice;
      if (v < staff.voiceRecords.size()) voice.Bytes("record", staff.voiceRecords[v]);
      Element("voice", voice, staff.voices[v].empty(), Outcome::XmlSystemNotWritten);
      if (staff.voices[v].empty()) continue;
      for (const ScoreItem& item : staff.voices[v]) WriteItem(item);
      out_.Close();
    }
    out_.Close();
  }

  void WriteItem(const ScoreItem& item) {
    if (Failed(outcome_)) return;
    const bool chord = item.Is(ObjectKind::Chord) || item.Is(ObjectKind::ChordVariant);
    Require(chord != item.group.notes.empty());
    const bool known = item.kind < std::size(stvx::kItemNames);
    FieldWriter fields;
    if (!known) fields.Number("kind", item.kind, 0, 0, 255);
    stvx::ItemFields(fields, item);
    const bool empty = item.group.notes.empty() && item.drawings.empty() && item.lyrics.empty();
    Element(known ? stvx::kItemNames[item.kind] : stvx::kOtherItem, fields, empty,
            Outcome::XmlElementNotWritten);
    if (empty) return;
    for (std::size_t i = 0; i < item.group.notes.size(); ++i) {
      FieldWriter note;
      stvx::NoteFields(note, item.group.notes[i]);
      if (i < item.noteTies.size()) note.Add("ties", std::to_string(item.noteTies[i]));
      Element("note", note, true, Outcome::XmlElementNotWritten);
    }
    WriteDrawings(item.drawings, 0);
    for (const LyricItem& lyric : item.lyrics) {
      FieldWriter verse;
      stvx::LyricFields(verse, lyric);
      Element("lyric", verse, true, Outcome::XmlElementNotWritten);
    }
    out_.Close();
  }

  void WriteDrawings(const std::vector<DrawingItem>& drawings, int depth) {
    for (const DrawingItem& drawing : drawings) {
      const bool known = drawing.kind < std::size(stvx::kDrawingNames);
      FieldWriter fields;
      if (!known) fields.Number("kind", drawing.kind, 0, 0, 255);
      stvx::DrawingFields(fields, drawing);
      const bool empty = drawing.nested.empty();
      Element(known ? stvx::kDrawingNames[drawing.kind] : stvx::kOtherDrawing, fields, empty,
              Outcome::XmlElementNotWritten);
      if (empty) continue;
      Require(depth + 1 < kMaxDrawingDepth);
      if (Succeeded(outcome_)) WriteDrawings(drawing.nested, depth + 1);
      out_.Close();
    }
  }

  const ScoreDocument& document_;
  std::uint64_t most_;
  XmlOut out_;
  Outcome outcome_ = Outcome::Success;
};

}  // namespace

Result<Bytes> WriteStvXml(const ScoreDocument& document, const WorkWatch& watch, std::uint64_t most) {
  return StvXmlWriter(document, most).Write(watch);
}

}  // namespace ts5::converters
