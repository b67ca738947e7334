#include "converters/musicxml_barline_writer.h"

namespace ts5::converters::musicxml {

BarlineWriter::BarlineWriter(XmlOut& out, const ScoreMusic& music) : out_(out), music_(music) {
  for (const ScoreEnding& ending : music.endings) {
    starts_.emplace(ending.first, &ending);
    stops_.emplace(ending.last, &ending);
  }
}

void BarlineWriter::WriteEndings(const EndingsByBar& endings, std::size_t bar) {
  for (auto [place, last] = endings.equal_range(bar); place != last; ++place) {
    const ScoreEnding& ending = *place->second;
    std::string numbers;
    for (unsigned n = ending.from; n <= ending.to; ++n)
      numbers += (numbers.empty() ? "" : ",") + std::to_string(n);
    const bool open = ending.drawing != nullptr && ending.drawing->words == "discontinue";
    const char* type = &endings == &starts_ ? "start" : open ? "discontinue" : "stop";
    out_.Empty("ending", {{"number", numbers}, {"type", type}});
  }
}

void BarlineWriter::WriteLeft(std::size_t index) {
  const bool repeat = music_.bars[index].repeatStart;
  if (!repeat && !starts_.contains(index)) return;
  out_.Open("barline", {{"location", "left"}});
  if (repeat) out_.Leaf("bar-style", "heavy-light");
  WriteEndings(starts_, index);
  if (repeat) out_.Empty("repeat", {{"direction", "forward"}});
  out_.Close();
}

void BarlineWriter::WriteRight(std::size_t index) {
  const ScoreBar& bar = music_.bars[index];
  std::string_view style = bar.lineStyle;
  if (style.empty() && (bar.line == kBarLineFinal || bar.repeatEnd)) style = "light-heavy";
  if (style.empty() && bar.line == kBarLineDouble) style = "light-light";
  if (style.empty() && !stops_.contains(index)) return;
  out_.Open("barline", {{"location", "right"}});
  if (!style.empty()) out_.Leaf("bar-style", style);
  WriteEndings(stops_, index);
  if (bar.repeatEnd) {
    const std::string times = bar.passes == 2 ? std::string() : std::to_string(bar.passes);
    out_.Empty("repeat", {{"direction", "backward"}, {"times", times}});
  }
  out_.Close();
}

}  // namespace ts5::converters::musicxml
