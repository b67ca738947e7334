// Choosing files and directories. The dialogs are the program's own, so that they speak its language, know
// its file types and have the button "Hilfe" on every desktop.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "frame/ui/dialog_host.h"

class QFileDialog;
class QWidget;

namespace ts5 {

struct FileQuestion {
  QString title;
  std::string start;        // the directory, or the file that is preset
  std::string_view filter;  // file types as "label|patterns|"; "" for all files
  QString helpTopic;        // "" shows no help button
};

// The path that was chosen, nothing when the dialog was left without a choice. A file to save that exists is
// asked about first; a name without extension gets that of the chosen file type when there is only one.
[[nodiscard]] std::optional<std::string> AskFileToOpen(const FileQuestion& question, DialogHost& host,
                                                       QWidget* parent);
// Several files; none when the dialog was left.
[[nodiscard]] std::vector<std::string> AskFilesToOpen(const FileQuestion& question, DialogHost& host,
                                                      QWidget* parent);
[[nodiscard]] std::optional<std::string> AskFileToSave(const FileQuestion& question, DialogHost& host,
                                                       QWidget* parent);

// As AskFileToSave without the question whether to overwrite, for destinations whose run asks itself.
[[nodiscard]] std::optional<std::string> AskDestination(const FileQuestion& question, DialogHost& host,
                                                        QWidget* parent);

// The dialog behind these, not yet shown.
enum class FileDialogKind { Open, OpenSeveral, Save, SaveUnasked, Directory };
[[nodiscard]] std::unique_ptr<QFileDialog> MakeFileDialog(const FileQuestion& question, FileDialogKind kind,
                                                          DialogHost* host, QWidget* parent);

// A directory; folder is where it starts and becomes the one that was chosen (the last selected folder of the
// settings).
[[nodiscard]] std::optional<std::string> AskDirectory(const QString& title, std::string& folder,
                                                      QWidget* parent);

// The file types of a dialog, each as "label (patterns)". A label that names its patterns stays as it is.
[[nodiscard]] QStringList DialogFilters(std::string_view filter);

}  // namespace ts5
