#include "artworker/ui/layout_files.h"

#include <algorithm>
#include <utility>

#include "artworker/artworker_parameters.h"
#include "artworker/element_notes.h"
#include "artworker/kept_pictures.h"
#include "artworker/layout_file.h"
#include "artworker/templates.h"
#include "artworker/texts.h"
#include "artworker/ui/help_topics.h"
#include "artworker/ui/template_gallery.h"
#include "frame/ui/file_dialogs.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"

namespace ts5::artworker {
namespace {

FileQuestion QuestionFor(TextId command, const std::string& start) {
  return {.title = QtText(command).section(" (", 0, 0),
          .start = start,
          .filter = Text(texts::LayoutFileFilter),
          .helpTopic = kHelpEditor};
}

// A box has room for so many.
QString LacksText(const std::vector<std::string>& lacks) {
  constexpr std::size_t kMost = 12;
  QString text = QtText(texts::LayoutLacks) + '\n';
  for (std::size_t i = 0; i < std::min(kMost, lacks.size()); ++i) text += '\n' + ToQt(lacks[i]);
  if (lacks.size() > kMost) text += '\n' + ToQt(Format(Text(texts::LayoutLacksMore), lacks.size() - kMost));
  return text;
}

}  // namespace

LayoutFiles::LayoutFiles(Scene& scene, DialogHost& host, QWidget* window, std::string folder,
                         std::string file)
    : scene_(scene), host_(host), window_(window), folder_(std::move(folder)), file_(std::move(file)) {}

std::string LayoutFiles::PictureFolder() const {
  return file_.empty() ? WaitingPictures() : std::string(DirectoryOf(file_));
}

void LayoutFiles::Replace(ArtworkLayout layout, std::string file) {
  file_ = std::move(file);
  emit FileChanged();
  const bool changed = scene_.editor.Apply([&layout](ArtworkLayout& all, Selection& selection) {
    all = std::move(layout);
    selection.clear();
  });
  if (changed) emit Edited();
}

void LayoutFiles::BeginFromTemplate() {
  std::vector<Template> templates = LoadTemplates(TemplateDirectory());
  // The user's own layouts follow; they are drawn with the shared backgrounds as they are.
  for (Template& own : LoadTemplates(folder_)) {
    own.backgrounds = scene_.backgrounds.All();
    templates.push_back(std::move(own));
  }
  TemplateGallery gallery(std::move(templates), scene_.facts, host_, window_);
  if (gallery.exec() != QDialog::Accepted || !gallery.Chosen()) return;
  auto layout = AdoptTemplate(*gallery.Chosen(), scene_.backgrounds);
  if (!layout) return ShowWarning(window_, texts::BackgroundsNotSaved);
  Replace(*std::move(layout), {});
  emit Begun();
}

void LayoutFiles::Load() {
  const auto path =
      AskFileToOpen(QuestionFor(texts::CommandLoad, file_.empty() ? folder_ : file_), host_, window_);
  if (!path) return;
  auto layout = LoadLayout(*path);
  if (!layout) return ShowWarning(window_, texts::LayoutInvalid);
  FindPictures(*layout, std::string(DirectoryOf(*path)));
  const std::vector<std::string> lacks = LacksOf(*layout, kAllObjects);
  Replace(*std::move(layout), *path);
  if (!lacks.empty()) ShowNotice(window_, LacksText(lacks));
}

void LayoutFiles::Save() {
  const auto path =
      AskFileToSave(QuestionFor(texts::CommandSave, file_.empty() ? folder_ : file_), host_, window_);
  if (!path) return;
  if (!IsUsablePath(*path)) return ShowWarning(window_, texts::LayoutNameInvalid);
  ArtworkLayout layout = scene_.editor.Layout();
  const std::string folder(DirectoryOf(*path));
  const Outcome settled = SettlePictures(layout, folder);
  const Outcome saved = Succeeded(settled) ? SaveLayout(layout, *path) : settled;
  if (Failed(saved))
    return ShowWarning(window_, IsDirectory(folder) ? texts::LayoutNotSaved : texts::LayoutNameInvalid);
  file_ = *path;
  emit FileChanged();
  // The pictures lie beside the file now: no step that anybody wants to take back.
  scene_.editor.Rewrite([&](ArtworkLayout& kept) { (void)SettlePictures(kept, folder); });
  emit Edited();
}

}  // namespace ts5::artworker
