#include "batch/command_target.h"

#include "batch/command_line.h"
#include "batch/console_question.h"
#include "batch/texts.h"
#include "frame/job.h"
#include "frame/texts.h"
#include "platform/base/text.h"
#include "platform/files/files.h"
#include "platform/files/real_paths.h"

namespace ts5::batch {

void AddOverwrite(Arguments& arguments, std::optional<std::string>& overwrite) {
  arguments.Option("--overwrite", "yes|number|ask", overwrite, texts::BatchHelpOverwriteFile);
}

std::optional<OverwritePolicy> TakeOverwrite(const std::optional<std::string>& overwrite,
                                             std::string_view command, Console& console) {
  const auto policy = ParseOverwrite(overwrite.value_or("ask"));
  if (!policy) (void)WrongUsage(console, command, Format(Text(texts::BatchOverwriteWrong), *overwrite));
  return policy;
}

std::optional<std::string> WriteTarget(Console& console, TargetNaming& naming, const std::string& path,
                                       ByteView bytes, TextId failed) {
  const PlannedTarget target = naming.Chosen(path);
  bool refused = false;
  const auto mayReplace = [&](const std::string& name) {
    refused = !console.readLine;
    if (refused) return false;
    console.err << Printable(name) << '\n';
    return AskOnConsole(console, {.text = std::string(Text(texts::AskOverwriteTarget)),
                                  .icon = MessageIcon::Exclamation}) == Answer::Yes;
  };
  auto file = Succeeded(target.code) ? StagedFile::Create(target.name) : Failure(target.code);
  const auto taken = file && Succeeded(file->Write(bytes)) ? TakeTarget(*file, target, naming, mayReplace)
                                                           : Failure(Outcome::WriteFailed);
  if (taken) return *taken;
  // Who has answered No knows that nothing was written.
  if (refused || taken.error() != Outcome::Cancelled)
    PrintError(console, Format(Text(refused ? texts::BatchFileExists : failed), target.name));
  return std::nullopt;
}

int WriteCommandFile(Console& console, const std::string& path, const std::string& source, ByteView bytes,
                     OverwritePolicy policy) {
  Job job;
  job.sourceDrive = kListModeDrive;
  if (!source.empty()) job.files.Append({.path = FullPath(source)});
  job.files.SelectAll();
  const DestinationFiles files = SystemDestinationFiles();
  TargetNaming naming(job, {.overwrite = policy, .origin = NameOrigin::Command}, files);
  const auto written = WriteTarget(console, naming, FullPath(path), bytes, texts::BatchFileNotWritten);
  if (!written) return kExitFailed;
  if (*written != FullPath(path)) console.out << Printable(*written) << '\n';  // its number
  return kExitSuccess;
}

}  // namespace ts5::batch
