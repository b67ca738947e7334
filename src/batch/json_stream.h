// JSON in the form of JsonText that is written as it comes, so that what is long is never held whole.
//
//   JsonStream json(out);
//   json.Begin('{');
//   json.Value("Lied.stv", "file");
//   json.Begin('[', "notes");
//   for (...) json.Value(row);
//   json.End();
//   json.End();
#pragma once

#include <ostream>
#include <string>
#include <string_view>

#include "batch/json_text.h"

namespace ts5::batch {

class JsonStream {
 public:
  explicit JsonStream(std::ostream& out) : out_(out) {}

  // An object '{', whose members have keys, or a list '['.
  void Begin(char bracket, std::string_view key = {}) {
    Place(key);
    out_ << bracket;
    ends_ += bracket == '{' ? '}' : ']';
    first_ = true;
  }
  void End() {
    const char bracket = ends_.back();
    ends_.pop_back();
    if (!first_) out_ << '\n' << Indent();
    out_ << bracket;
    first_ = false;
    if (ends_.empty()) out_ << '\n';
  }
  void Value(const Json& value, std::string_view key = {}) {
    Place(key);
    std::string text = JsonText(value);
    text.pop_back();  // its line end
    std::size_t from = 0;
    for (std::size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', from)) {
      out_ << std::string_view(text).substr(from, end + 1 - from) << Indent();
      from = end + 1;
    }
    out_ << std::string_view(text).substr(from);
    if (ends_.empty()) out_ << '\n';
  }

 private:
  [[nodiscard]] std::string Indent() const {
    constexpr std::size_t kWidth = 2;
    return std::string(kWidth * ends_.size(), ' ');
  }
  void Place(std::string_view key) {
    if (!ends_.empty()) out_ << (first_ ? "\n" : ",\n") << Indent();
    first_ = false;
    if (!key.empty()) out_ << '"' << key << "\": ";
  }

  std::ostream& out_;
  std::string ends_;  // the brackets that are open
  bool first_ = true;
};

}  // namespace ts5::batch
