#include <algorithm>
#include <array>

#include "converters/stvx.h"
#include "converters/stvx_fields.h"
#include "converters/xml_out.h"
#include "platform/base/text.h"

namespace ts5 {
namespace {

using Attributes = std::vector<std::pair<std::string_view, std::string>>;

// What no XML file can hold, and the backslash itself, as \xHH.
std::string Escaped(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7F || c == '\\') {
      escaped += Format("\\x%02X", byte);
    } else {
      escaped += c;
    }
  }
  return escaped;
}

std::string Hex(ByteView bytes) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string text;
  text.reserve(bytes.size() * 2);
  for (const std::uint8_t byte : bytes) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

// Collects the attributes that do not have their default.
class FieldWriter {
 public:
  template <typename T, typename D>
  void Number(std::string_view name, const T& value, D usual, std::int64_t /*least*/, std::int64_t /*most*/) {
    if (value != static_cast<T>(usual)) attributes_.emplace_back(name, std::to_string(std::int64_t{value}));
  }
  void Number(std::string_view name, const std::size_t& value, unsigned usual, std::int64_t /*least*/,
              std::int64_t /*most*/) {
    if (value != usual) attributes_.emplace_back(name, std::to_string(value));
  }
  void Flag(std::string_view name, const bool& value) {
    if (value) attributes_.emplace_back(name, "1");
  }
  void Letter(std::string_view name, const char& value) {
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
  void Add(std::string_view name, std::string value) { attributes_.emplace_back(name, std::move(value)); }

 private:
  Attributes attributes_;
};

class StvXmlWriter {
 public:
  explicit StvXmlWriter(const ScoreDocument& document) : document_(document), out_(kHead) {}

  Result<Bytes> Write(const WorkWatch& watch) {
    out_.Open(stvx::kRoot, {{"version", std::to_string(stvx::kVersion)}});
    WriteInfo();
    for (std::size_t i = 0; i < document_.systems.size(); ++i) {
      if (watch.cancelled && watch.cancelled()) return Failure(Outcome::Cancelled);
      WriteSystem(document_.systems[i]);
      if (watch.progress)
        watch.progress(static_cast<double>(i + 1) / static_cast<double>(document_.systems.size()));
    }
    out_.Close();
    return out_.Release();
  }

 private:
  static constexpr std::string_view kHead = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

  void WriteInfo() {
    FieldWriter info;
    stvx::InfoFields(info, document_);
    out_.OpenWith("info", info.Get(), false);
    for (const StaffLayout& staff : document_.staves) {
      FieldWriter fields;
      stvx::LayoutFields(fields, staff);
      out_.OpenWith("layout", fields.Get(), true);
    }
    if (document_.page.given) {
      FieldWriter fields;
      stvx::PageFields(fields, document_.page);
      out_.OpenWith("page", fields.Get(), true);
    }
    for (const ScorePart& part : document_.parts) {
      FieldWriter fields;
      stvx::PartFields(fields, part);
      out_.OpenWith("part", fields.Get(), true);
    }
    for (const ScoreBarLabel& label : document_.bars) {
      FieldWriter fields;
      stvx::LabelFields(fields, label);
      out_.OpenWith("label", fields.Get(), true);
    }
    for (const Bytes& object : document_.gallery) {
      FieldWriter fields;
      fields.Bytes("data", object);
      out_.OpenWith("gallery", fields.Get(), true);
    }
    out_.Close();
  }

  void WriteSystem(const SystemItems& system) {
    FieldWriter fields;
    stvx::SystemFields(fields, system);
    out_.OpenWith("system", fields.Get(), system.staves.empty());
    if (system.staves.empty()) return;
    for (const StaffItems& staff : system.staves) WriteStaff(staff);
    out_.Close();
  }

  void WriteStaff(const StaffItems& staff) {
    FieldWriter fields;
    stvx::StaffFields(fields, staff);
    out_.OpenWith("staff", fields.Get(), staff.voices.empty());
    if (staff.voices.empty()) return;
    for (std::size_t v = 0; v < staff.voices.size(); ++v) {
      FieldWriter voice;
      if (v < staff.voiceRecords.size()) voice.Bytes("record", staff.voiceRecords[v]);
      out_.OpenWith("voice", voice.Get(), staff.voices[v].empty());
      if (staff.voices[v].empty()) continue;
      for (const ScoreItem& item : staff.voices[v]) WriteItem(item);
      out_.Close();
    }
    out_.Close();
  }

  void WriteItem(const ScoreItem& item) {
    const bool known = item.kind < std::size(stvx::kItemNames);
    FieldWriter fields;
    if (!known) fields.Number("kind", item.kind, 0, 0, 255);
    stvx::ItemFields(fields, item);
    const bool empty = item.group.notes.empty() && item.drawings.empty() && item.lyrics.empty();
    out_.OpenWith(known ? stvx::kItemNames[item.kind] : stvx::kOtherItem, fields.Get(), empty);
    if (empty) return;
    for (std::size_t i = 0; i < item.group.notes.size(); ++i) {
      FieldWriter note;
      stvx::NoteFields(note, item.group.notes[i]);
      if (i < item.noteTies.size()) note.Add("ties", std::to_string(item.noteTies[i]));
      out_.OpenWith("note", note.Get(), true);
    }
    WriteDrawings(item.drawings);
    for (const LyricItem& lyric : item.lyrics) {
      FieldWriter verse;
      stvx::LyricFields(verse, lyric);
      out_.OpenWith("lyric", verse.Get(), true);
    }
    out_.Close();
  }

  void WriteDrawings(const std::vector<DrawingItem>& drawings) {
    for (const DrawingItem& drawing : drawings) {
      const bool known = drawing.kind < std::size(stvx::kDrawingNames);
      FieldWriter fields;
      if (!known) fields.Number("kind", drawing.kind, 0, 0, 255);
      stvx::DrawingFields(fields, drawing);
      const bool empty = drawing.nested.empty();
      out_.OpenWith(known ? stvx::kDrawingNames[drawing.kind] : stvx::kOtherDrawing, fields.Get(), empty);
      if (empty) continue;
      WriteDrawings(drawing.nested);
      out_.Close();
    }
  }

  const ScoreDocument& document_;
  XmlOut out_;
};

}  // namespace

Result<Bytes> WriteStvXml(const ScoreDocument& document, const WorkWatch& watch) {
  return StvXmlWriter(document).Write(watch);
}

}  // namespace ts5
