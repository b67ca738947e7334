// Writes XML as text: elements that open and close, with texts escaped. What no XML file can hold (most
// control characters) is left out.
#pragma once

#include <charconv>
#include <concepts>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace ts5 {

struct XmlAttribute {
  std::string_view name;
  std::string_view value;  // one that is empty is not written
};

class XmlOut {
 public:
  using Attributes = std::initializer_list<XmlAttribute>;

  explicit XmlOut(std::string_view head) : text_(head) {}

  void Open(std::string_view name, Attributes attributes = {}) {
    Start(name, attributes);
    text_ += ">\n";
    open_.push_back(name);
  }
  void Close() {
    const std::string_view name = open_.back();
    open_.pop_back();
    Indent();
    text_ += "</";
    text_ += name;
    text_ += ">\n";
  }
  void Empty(std::string_view name, Attributes attributes = {}) {
    Start(name, attributes);
    text_ += "/>\n";
  }
  void Leaf(std::string_view name, std::string_view content, Attributes attributes = {}) {
    Start(name, attributes);
    text_ += '>';
    Escape(content);
    text_ += "</";
    text_ += name;
    text_ += ">\n";
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
    text_ += '<';
    text_ += name;
    for (const auto& [key, value] : attributes) Attribute(key, value);
    text_ += empty ? "/>\n" : ">\n";
    if (!empty) open_.push_back(name);
  }

  [[nodiscard]] std::string Release() { return std::move(text_); }

 private:
  void Indent() { text_.append(open_.size(), ' '); }
  void Start(std::string_view name, Attributes attributes) {
    Indent();
    text_ += '<';
    text_ += name;
    for (const XmlAttribute& attribute : attributes) {
      if (!attribute.value.empty()) Attribute(attribute.name, attribute.value);
    }
  }
  void Attribute(std::string_view name, std::string_view value) {
    text_ += ' ';
    text_ += name;
    text_ += "=\"";
    Escape(value);
    text_ += '"';
  }
  void Escape(std::string_view content) {
    for (const char c : content) {
      switch (c) {
        case '&':
          text_ += "&amp;";
          break;
        case '<':
          text_ += "&lt;";
          break;
        case '>':
          text_ += "&gt;";
          break;
        case '"':
          text_ += "&quot;";
          break;
        case '\n':
          text_ += "&#10;";
          break;
        case '\r':
          text_ += "&#13;";
          break;
        case '\t':
          text_ += "&#9;";
          break;
        default:
          if (static_cast<unsigned char>(c) >= 0x20) text_ += c;
      }
    }
  }

  std::string text_;
  std::vector<std::string_view> open_;
};

}  // namespace ts5
