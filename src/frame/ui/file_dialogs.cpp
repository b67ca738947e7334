#include "frame/ui/file_dialogs.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLineEdit>
#include <QPushButton>
#include <QStringList>
#include <QTreeView>
#include <utility>

#include "frame/filter_catalogue.h"
#include "frame/texts.h"
#include "frame/ui/qt_text.h"

namespace ts5 {
namespace {

using Kind = FileDialogKind;

// Paths are byte strings; a name that is not UTF-8 goes through the toolkit's own decoding unharmed.
QString PathText(const std::string& path) {
  return QFile::decodeName(QByteArray::fromStdString(path));
}

std::string PathBytes(const QString& path) {
  return QFile::encodeName(QDir::cleanPath(path)).toStdString();
}

// Starts at the nearest directory that exists, with the file name of the preset.
void StartAt(QFileDialog& dialog, const std::string& start, Kind kind) {
  QString directory = PathText(start);
  QString name;
  if (!QFileInfo(directory).isDir()) {
    name = QFileInfo(directory).fileName();
    directory = QFileInfo(directory).path();
    if (start.find('/') == std::string::npos) directory = QDir::homePath();
  }
  while (!QFileInfo(directory).isDir() && directory != QFileInfo(directory).path()) {
    directory = QFileInfo(directory).path();
  }
  dialog.setDirectory(directory);
  if (kind != Kind::Directory && !name.isEmpty() && !name.contains('*')) dialog.selectFile(name);
}

// Names to be saved get the extension of the type that is chosen; the type at first is that of the name.
void FollowTypes(QFileDialog& dialog, std::string_view filter) {
  QStringList suffixes;
  for (const FileFilter& row : ParseFileFilter(filter)) {
    const bool single = row.patterns.size() == 1;
    suffixes << (single ? QFileInfo(ToQt(row.patterns.front())).suffix().toLower() : QString());
  }
  const QStringList types = dialog.nameFilters();
  if (suffixes.isEmpty() || suffixes.size() != types.size()) return;
  auto* const name = dialog.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
  if (name != nullptr) {
    const auto at = suffixes.indexOf(QFileInfo(name->text()).suffix().toLower());
    if (at > 0) dialog.selectNameFilter(types[at]);
  }
  const auto follow = [&dialog, name, suffixes, types](const QString& type) {
    const auto at = types.indexOf(type);
    const QString suffix = at < 0 ? QString() : suffixes[at];
    dialog.setDefaultSuffix(suffix);
    if (name == nullptr || suffix.isEmpty()) return;
    const QFileInfo typed(name->text());
    if (!typed.suffix().isEmpty() && suffixes.contains(typed.suffix().toLower()))
      name->setText(name->text().chopped(typed.suffix().size()) + suffix);
  };
  follow(dialog.selectedNameFilter());
  QObject::connect(&dialog, &QFileDialog::filterSelected, &dialog, follow);
}

// While a path is typed, the toolkit marks each directory on the way to it, leaves it marked, and takes what
// is marked instead of what stands in the field.
void TakeWhatIsTyped(const QFileDialog& dialog) {
  const auto* const field = dialog.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
  auto* const list = dialog.findChild<QAbstractItemView*>(QStringLiteral("listView"));
  if (field == nullptr || list == nullptr) return;
  QObject::connect(field, &QLineEdit::textChanged, list, [list](const QString& text) {
    if (text.contains('/')) list->selectionModel()->clearSelection();
  });
}

// Names get the room that is there, instead of dates and sizes that are cut.
void ShowWhole(QFileDialog& dialog) {
  constexpr QSize kUsual(760, 480);
  constexpr QSize kLeast(600, 340);
  dialog.resize(kUsual);
  dialog.setMinimumSize(kLeast);
  auto* const list = dialog.findChild<QTreeView*>(QStringLiteral("treeView"));
  if (list == nullptr) return;
  list->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
  list->header()->setSectionResizeMode(0, QHeaderView::Stretch);
}

// Empty when the dialog was left.
std::vector<std::string> Ask(const FileQuestion& question, Kind kind, DialogHost* host, QWidget* parent) {
  std::vector<std::string> chosen;
  const auto dialog = MakeFileDialog(question, kind, host, parent);
  if (dialog->exec() != QDialog::Accepted) return chosen;
  for (const QString& path : dialog->selectedFiles()) chosen.push_back(PathBytes(path));
  return chosen;
}

std::optional<std::string> AskForOne(const FileQuestion& question, Kind kind, DialogHost* host,
                                     QWidget* parent) {
  std::vector<std::string> chosen = Ask(question, kind, host, parent);
  return chosen.empty() ? std::nullopt : std::optional(std::move(chosen.front()));
}

}  // namespace

std::unique_ptr<QFileDialog> MakeFileDialog(const FileQuestion& question, Kind kind, DialogHost* host,
                                            QWidget* parent) {
  auto made = std::make_unique<QFileDialog>(parent, question.title);
  QFileDialog& dialog = *made;
  dialog.setOption(QFileDialog::DontUseNativeDialog);
  dialog.setObjectName(QStringLiteral("fileDialog"));
  dialog.setAcceptMode(kind == Kind::Save || kind == Kind::SaveUnasked ? QFileDialog::AcceptSave
                                                                       : QFileDialog::AcceptOpen);
  dialog.setFileMode(kind == Kind::Directory     ? QFileDialog::Directory
                     : kind == Kind::Open        ? QFileDialog::ExistingFile
                     : kind == Kind::OpenSeveral ? QFileDialog::ExistingFiles
                                                 : QFileDialog::AnyFile);
  dialog.setOption(QFileDialog::ShowDirsOnly, kind == Kind::Directory);
  dialog.setOption(QFileDialog::DontConfirmOverwrite, kind == Kind::SaveUnasked);
  if (kind != Kind::Directory) dialog.setNameFilters(DialogFilters(question.filter));

  dialog.setLabelText(QFileDialog::LookIn, QtText(texts::DialogLookIn));
  dialog.setLabelText(QFileDialog::FileName,
                      QtText(kind == Kind::Directory ? texts::DialogDirectory : texts::DialogFileName));
  dialog.setLabelText(QFileDialog::FileType, QtText(texts::DialogFileType));
  const bool saves = kind == Kind::Save || kind == Kind::SaveUnasked;
  dialog.setLabelText(QFileDialog::Accept, QtText(kind == Kind::Directory ? texts::DialogChoose
                                                  : saves                 ? texts::DialogSave
                                                                          : texts::DialogOpen));
  dialog.setLabelText(QFileDialog::Reject, QtText(texts::ButtonCancel));
  ShowWhole(dialog);
  TakeWhatIsTyped(dialog);
  StartAt(dialog, question.start, kind);

  if (saves) FollowTypes(dialog, question.filter);
  if (auto* box = dialog.findChild<QDialogButtonBox*>(); box != nullptr && host != nullptr) {
    if (!question.helpTopic.isEmpty()) {
      const auto* help = box->addButton(QtText(texts::ButtonHelp), QDialogButtonBox::HelpRole);
      QObject::connect(help, &QAbstractButton::clicked, &dialog,
                       [host, topic = question.helpTopic] { host->OpenHelp(topic); });
    }
  }
  return made;
}

QStringList DialogFilters(std::string_view filter) {
  QStringList filters;
  for (const FileFilter& row : ParseFileFilter(filter)) {
    QStringList patterns;
    // The file names of this system tell case apart, the file types do not.
    for (const std::string& pattern : row.patterns) {
      const QString lower = ToQt(pattern).toLower();
      patterns << lower << lower.toUpper();
    }
    patterns.removeDuplicates();
    const QString label = ToQt(row.label).section(QStringLiteral(" ("), 0, 0);
    filters << QStringLiteral("%1 (%2)").arg(
        label, patterns.contains(QStringLiteral("*.*")) ? QStringLiteral("*") : patterns.join(' '));
  }
  return filters;
}

std::optional<std::string> AskFileToOpen(const FileQuestion& question, DialogHost& host, QWidget* parent) {
  return AskForOne(question, Kind::Open, &host, parent);
}

std::vector<std::string> AskFilesToOpen(const FileQuestion& question, DialogHost& host, QWidget* parent) {
  return Ask(question, Kind::OpenSeveral, &host, parent);
}

std::optional<std::string> AskFileToSave(const FileQuestion& question, DialogHost& host, QWidget* parent) {
  return AskForOne(question, Kind::Save, &host, parent);
}

std::optional<std::string> AskDestination(const FileQuestion& question, DialogHost& host, QWidget* parent) {
  return AskForOne(question, Kind::SaveUnasked, &host, parent);
}

std::optional<std::string> AskDirectory(const QString& title, std::string& folder, QWidget* parent) {
  auto chosen = AskForOne({.title = title, .start = folder, .filter = {}, .helpTopic = {}}, Kind::Directory,
                          nullptr, parent);
  if (chosen) folder = *chosen;
  return chosen;
}

}  // namespace ts5
