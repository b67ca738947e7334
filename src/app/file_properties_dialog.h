// The properties of a source file: the window of the first reader that knows the file, or a message.
#pragma once

#include "frame/file_list.h"
#include "frame/ui/dialog_host.h"

class QWidget;

namespace ts5 {

void ShowFileProperties(const FileListEntry& file, DialogHost& host, QWidget* owner);

}  // namespace ts5
