#include "app/source/disc_tray.h"

#include "app/texts.h"
#include "frame/cd_tracks.h"
#include "frame/ui/file_dialogs.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"
#include "platform/disc/virtual_cd.h"
#include "platform/files/paths.h"

namespace ts5 {

bool SourceIsVirtualDrive(const Job& job) {
  return job.Mode() == SourceMode::Directory && job.directory.path == VirtualCdDirectory();
}

bool HasVirtualDisc(Desk& desk) {
  return VirtualDisc() || AskVirtualDisc(desk);
}

bool AskVirtualDisc(Desk& desk) {
  const auto path =
      AskFileToOpen({QtText(texts::DiscCaption), VirtualDisc().value_or(""), Text(texts::DiscFilter), {}},
                    desk, desk.Window());
  return path && PutVirtualDisc(*path, desk);
}

bool PutVirtualDisc(const std::string& cuePath, Desk& desk) {
  const Outcome outcome = InsertVirtualDisc(cuePath);
  if (Failed(outcome)) desk.Tell(DiscFailureText(outcome, cuePath), MessageIcon::Exclamation);
  return Succeeded(outcome);
}

bool IsDiscSheet(const std::vector<std::string>& paths) {
  return paths.size() == 1 && EqualsIgnoringCase(ExtensionOf(paths.front()), "cue");
}

}  // namespace ts5
