// Writes XML as text: elements that open and close, with texts escaped. What no XML file can hold (most
// control characters) is left out.
#pragma once

#include <charconv>
#include <concepts>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/bytes.h"

namespace ts5 {

struct XmlAttribute {
  std::string_view name;
  std::string_view value;  // one that is empty is not written
};

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
    for (const char c : content) {
      switch (c) {
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
          if (static_cast<unsigned char>(c) >= 0x20) text_.push_back(static_cast<std::uint8_t>(c));
      }
    }
  }

  Bytes text_;
  std::vector<std::string_view> open_;
};

}  // namespace ts5
