// The properties of a source file: the window of the first reader that knows the file, or a message.
#pragma once

#include <span>

#include "frame/file_list.h"
#include "frame/ui/dialog_host.h"

class QWidget;

namespace ts5 {

// selected: all files that are selected; where they have attributes like the file, the window is of all of
// them. id3Version: 3 or 4, of a first ID3v2 tag.
void ShowFileProperties(const FileListEntry& file, std::span<const FileListEntry> selected, DialogHost& host,
                        QWidget* owner, unsigned id3Version);

}  // namespace ts5
