#include "frame/examples.h"

#include <filesystem>
#include <system_error>

#include "frame/file_types.h"
#include "frame/texts.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"

namespace ts5 {

Result<std::string> PutExamples(const std::string& demo, const std::string& below) {
  std::string folder = JoinPath(below, Text(texts::ExamplesFolder));
  std::error_code error;
  std::filesystem::directory_iterator entry(demo, error);
  if (error) return Failure(Outcome::SourceFailed);
  if (const Outcome made = MakeDirectories(folder); Failed(made)) return Failure(made);
  for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
    const std::string name = entry->path().filename().string();
    const std::string target = JoinPath(folder, name);
    if (!entry->is_regular_file(error) || FileTypeOf(name) == FileTypeId::Unsupported || FileExists(target))
      continue;
    const auto content = ReadFile(entry->path().string());
    if (!content) return Failure(content.error());
    if (const Outcome written = WriteFile(target, *content); Failed(written)) return Failure(written);
  }
  return folder;
}

}  // namespace ts5
