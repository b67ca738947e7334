// The bar lines of a part: repeats, endings, forms.
#include <algorithm>

#include "converters/musicxml_cursor.h"
#include "converters/texts.h"
#include "platform/base/text.h"
#include "score/score_bars.h"

namespace ts5::converters::musicxml {
namespace {

class BarLineReader {
 public:
  explicit BarLineReader(PartCursor& at) : at_(at) {}

  void Read(pugi::xml_node node) {
    const std::string_view location = node.attribute("location").as_string("right");
    for (const pugi::xml_node child : node.children()) {
      const std::string_view name = child.name();
      if (name == "repeat") {
        if (std::string_view(child.attribute("direction").value()) == "forward") {
          at_.Now().repeatStart = true;
        } else {
          at_.Now().line = static_cast<std::uint8_t>(BarLineType::RepeatEnd);
          const unsigned times = child.attribute("times").as_uint();
          if (times > 2 && times < 100) at_.Now().times = static_cast<std::uint8_t>(times);
        }
      } else if (name == "ending") {
        ReadEnding(child);
      } else if (name == "segno" || name == "coda") {
        at_.AddMark(DrawingOf(name, child), location == "left" ? Fraction() : at_.now, 0);
      } else if (name == "fermata" || name == "wavy-line") {
        at_.Lose(texts::LossSign, 0, std::string(name));
      }
    }
    const std::string_view style = node.child("bar-style").text().get();
    if (style.empty() || style == "regular") return;
    if (location == "middle") return at_.Lose(texts::LossBarLine, 0, std::string(style));
    if (location == "left" || node.child("repeat")) return;
    if (style == "light-light") {
      at_.Now().line = kBarLineDouble;
    } else if (style == "light-heavy") {
      at_.Now().line = kBarLineFinal;
    } else {
      at_.Now().lineStyle = style;
    }
  }

 private:
  void ReadEnding(pugi::xml_node node) {
    const std::string_view type = node.attribute("type").value();
    const std::size_t measure = at_.part.measures.size() - 1;
    if (type != "start") {
      if (at_.part.endings.empty() || at_.part.endings.back().last != SIZE_MAX) return;
      at_.part.endings.back().last = measure;
      at_.part.endings.back().open = type == "discontinue";
      return;
    }
    std::vector<std::int64_t> numbers;
    std::string digits;
    for (const char c : std::string(node.attribute("number").value()) + ",") {
      if (c >= '0' && c <= '9') {
        digits += c;
      } else if (!digits.empty()) {
        numbers.push_back(ParseInteger(digits).value_or(0));
        digits.clear();
      }
    }
    std::erase_if(numbers, [](std::int64_t number) { return number < 1 || number > 15; });
    if (numbers.empty()) return at_.Lose(texts::LossEnding);
    std::ranges::sort(numbers);
    const auto count = static_cast<std::int64_t>(numbers.size());
    if (numbers.back() - numbers.front() + 1 != count && count > 1) at_.Lose(texts::LossEnding);
    at_.part.endings.push_back({measure, SIZE_MAX, static_cast<std::uint8_t>(numbers.front()),
                                static_cast<std::uint8_t>(numbers.back()), false});
  }

  PartCursor& at_;
};

}  // namespace

void ReadBarLine(PartCursor& at, pugi::xml_node line) {
  BarLineReader(at).Read(line);
}

}  // namespace ts5::converters::musicxml
