#include "frame/file_rename.h"

#include "platform/base/text.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"

namespace ts5 {

RenamePlan PlanRename(std::string_view path, std::string_view newName) {
  using enum RenamePlan::Kind;
  if (newName.empty() || IsCdTrackText(path)) return {};
  std::string newPath = JoinPath(DirectoryOf(path), newName);
  if (EqualsIgnoringCase(newPath, path)) return {};
  const bool isName =
      newName != "." && newName != ".." && newName.find_first_of("/\\\0", 0, 3) == std::string_view::npos;
  if (!isName || !IsUsablePath(newPath)) return {Refused, {}};
  const FileTypeId type = FileTypeOf(newName);
  const bool unusual = type == FileTypeId::Unsupported || type == FileTypeId::CdTrack;
  return {unusual ? Ask : Rename, std::move(newPath)};
}

Outcome RenameEntry(FreeFileList& list, std::size_t index, const std::string& newPath) {
  if (index >= list.Size()) return Outcome::SourceFailed;
  const Outcome outcome = RenameFile(list[index].path, newPath);
  if (Succeeded(outcome)) list.SetPath(index, newPath);
  return outcome;
}

}  // namespace ts5
