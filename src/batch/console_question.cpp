#include "batch/console_question.h"

#include <cstdint>
#include <filesystem>
#include <system_error>

#include "batch/command_line.h"
#include "batch/texts.h"
#include "frame/target_naming.h"
#include "frame/texts.h"
#include "platform/base/text.h"
#include "platform/files/files.h"

namespace ts5::batch {
namespace {

constexpr std::uint32_t kMostNumber = 999;

// Under the first number that is free, without replacing what another program makes at this moment.
int WriteNumbered(Console& console, const std::string& path, ByteView content) {
  const TargetName family = TargetName::Of(path);
  auto file = StagedFile::Create(path);
  if (file && Succeeded(file->Write(content))) {
    for (std::uint32_t number = 0; number <= kMostNumber; ++number) {
      const std::string name = number == 0 ? path : family.Numbered(number);
      const auto taken = file->CommitNew(name);
      if (!taken) break;
      if (!*taken) continue;
      if (number > 0) console.out << name << '\n';
      return kExitSuccess;
    }
  }
  PrintError(console, Format(Text(texts::BatchFileUnwritable), path));
  return kExitFailed;
}

}  // namespace

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

int WriteOnConsole(Console& console, const std::string& path, ByteView content, OverwritePolicy policy) {
  if (policy == OverwritePolicy::Number) return WriteNumbered(console, path, content);
  // In an empty file there is nothing to lose.
  std::error_code unknown;
  const bool holds = FileExists(path) && std::filesystem::file_size(path, unknown) > 0;
  if (policy == OverwritePolicy::Ask && holds) {
    if (!console.readLine) {
      PrintError(console, Format(Text(texts::BatchPictureExists), path));
      return kExitFailed;
    }
    const QuestionText question{.text = std::string(Text(texts::AskOverwriteTarget)), .preset = Answer::No};
    const Answer answer = AskOnConsole(console, question);
    if (answer == Answer::Cancelled) return kExitCancelled;
    if (answer != Answer::Yes) return kExitFailed;
  }
  if (Succeeded(WriteFile(path, content))) return kExitSuccess;
  PrintError(console, Format(Text(texts::BatchFileUnwritable), path));
  return kExitFailed;
}

}  // namespace ts5::batch
