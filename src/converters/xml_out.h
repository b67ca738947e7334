// Writes XML as text: elements that open and close, with texts escaped. What no XML file can hold (most
// control characters, halves of characters) is left out.
#pragma once

#include <charconv>
#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/bytes.h"

namespace ts5::converters {

struct XmlAttribute {
  std::string_view name;
  std::string_view value;  // one that is empty is not written
};

// The length of the character with which a text begins; 0: no XML file can hold it.
[[nodiscard]] inline std::size_t XmlCharacter(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text[0]);
  if (lead < 0x80) return lead >= 0x20 ? 1 : 0;
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return 0;
  std::uint32_t code = lead & (0x7FU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    const auto next = static_cast<unsigned char>(text[i]);
    if ((next & 0xC0) != 0x80) return 0;
    code = code << 6 | (next & 0x3FU);
  }
  constexpr std::uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
  const bool half = code >= 0xD800 && code < 0xE000;
  return code < kLeast[length] || half || code == 0xFFFE || code == 0xFFFF || code > 0x10FFFF ? 0 : length;
}

class XmlOut {
 public:
  using Attributes = std::initializer_list<XmlAttribute>;

  explicit XmlOut(std::string_view head) { Put(head); }

  void Open(std::string_view name, Attributes attributes = {}) {
    Start(name, attributes);
    Put(">\n");
    open_.push_back(name);
  }
  void Close() {
    const std::string_view name = open_.back();
    open_.pop_back();
    Indent();
    Put("</");
    Put(name);
    Put(">\n");
  }
  void Empty(std::string_view name, Attributes attributes = {}) {
    Start(name, attributes);
    Put("/>\n");
  }
  void Leaf(std::string_view name, std::string_view content, Attributes attributes = {}) {
    Start(name, attributes);
    Put(">");
    Escape(content);
    Put("</");
    Put(name);
    Put(">\n");
  }
  template <std::integral T>
  void Leaf(std::string_view name, T number) {
    char digits[24];
    const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    Leaf(name, std::string_view(digits, static_cast<std::size_t>(end - digits)));
  }
  // An element whose attributes are not known beforehand.
  void OpenWith(std::string_view name,
                const std::vector<std::pair<std::string_view, std::string>>& attributes, bool empty) {
    Indent();
    Put("<");
    Put(name);
    for (const auto& [key, value] : attributes) Attribute(key, value);
    Put(empty ? "/>\n" : ">\n");
    if (!empty) open_.push_back(name);
  }

  [[nodiscard]] std::size_t Size() const { return text_.size(); }
  [[nodiscard]] Bytes Release() { return std::move(text_); }

 private:
  void Put(std::string_view text) { text_.insert(text_.end(), text.begin(), text.end()); }
  void Indent() { text_.insert(text_.end(), open_.size(), ' '); }
  void Start(std::string_view name, Attributes attributes) {
    Indent();
    Put("<");
    Put(name);
    for (const XmlAttribute& attribute : attributes) {
      if (!attribute.value.empty()) Attribute(attribute.name, attribute.value);
    }
  }
  void Attribute(std::string_view name, std::string_view value) {
    Put(" ");
    Put(name);
    Put("=\"");
    Escape(value);
    Put("\"");
  }
  void Escape(std::string_view content) {
    for (std::size_t i = 0; i < content.size(); ++i) {
      switch (content[i]) {
        case '&':
          Put("&amp;");
          break;
        case '<':
          Put("&lt;");
          break;
        case '>':
          Put("&gt;");
          break;
        case '"':
          Put("&quot;");
          break;
        case '\n':
          Put("&#10;");
          break;
        case '\r':
          Put("&#13;");
          break;
        case '\t':
          Put("&#9;");
          break;
        default:
          const std::size_t length = XmlCharacter(content.substr(i));
          Put(content.substr(i, length));
          if (length > 1) i += length - 1;
      }
    }
  }

  Bytes text_;
  std::vector<std::string_view> open_;
};

}  // namespace ts5::converters
