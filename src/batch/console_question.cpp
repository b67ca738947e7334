#include "batch/console_question.h"

#include "batch/command_line.h"
#include "batch/texts.h"
#include "frame/texts.h"
#include "platform/base/text.h"

namespace ts5::batch {

std::string OnOneLine(std::string_view text) {
  std::string line;
  for (const std::string_view part : Split(text, '\n')) {
    const std::string_view words = Trim(part);
    if (!words.empty()) line += (line.empty() ? "" : " ") + std::string(words);
  }
  return line;
}

Answer AskOnConsole(Console& console, const QuestionText& question) {
  const std::string text = OnOneLine(question.text);
  const Answer no = question.buttons == QuestionButtons::OkCancel ? Answer::Cancelled : Answer::No;
  if (!console.readLine) {
    console.err << Format(Text(texts::BatchAnsweredNo), text) << '\n';
    return no;
  }
  const bool presetYes = question.preset == Answer::Yes;
  console.err << Format(Text(presetYes ? texts::BatchQuestionYesNoPreset : texts::BatchQuestionYesNo), text)
              << std::flush;
  const auto reply = console.readLine();
  if (!reply) {
    console.err << '\n';
    return Answer::Cancelled;
  }
  const bool yes = Trim(*reply).empty() ? presetYes : MeansYes(*reply);
  return yes ? Answer::Yes : no;
}

}  // namespace ts5::batch
