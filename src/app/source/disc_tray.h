// The tray of the virtual CD drive, as the window uses it: the drive as a source, and the disc that is put
// in.
#pragma once

#include <string>
#include <vector>

#include "app/shell/desk.h"
#include "frame/job.h"

namespace ts5 {

[[nodiscard]] bool SourceIsVirtualDrive(const Job& job);
// Asks for a disc unless there is one. False: the user has none.
[[nodiscard]] bool HasVirtualDisc(Desk& desk);
// True when a disc was put in; what keeps it out has been told.
[[nodiscard]] bool AskVirtualDisc(Desk& desk);
[[nodiscard]] bool PutVirtualDisc(const std::string& cuePath, Desk& desk);
// Files that were dropped are a disc: one CUE sheet.
[[nodiscard]] bool IsDiscSheet(const std::vector<std::string>& paths);

}  // namespace ts5
