// What the editor's commands do to elements: drawn, edited in their dialogs, arranged, deleted, and taken
// through the clipboard.
#pragma once

#include <QObject>
#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "artworker/ui/editor_actions.h"
#include "artworker/ui/scene.h"
#include "frame/ui/dialog_host.h"
#include "platform/base/outcome.h"

class QImage;
class QRectF;
class QWidget;

namespace ts5::artworker {

class CanvasPage;

class ElementCommands : public QObject {
  Q_OBJECT

 public:
  struct Ground {
    Scene& scene;
    DialogHost& host;
    QWidget* window;                             // of the dialogs
    std::function<CanvasPage*()> page;           // the one in front; nullptr when it is another page
    std::function<std::string()> pictureFolder;  // where pictures from the clipboard are kept
    std::string folder;                          // where files of pictures are looked for first
  };
  // All that it refers to outlives it.
  explicit ElementCommands(Ground ground) : ground_(std::move(ground)) {}

  // False for a command that is not about elements.
  bool Act(EditorCommand command);
  // A new element of the tool's kind, at a place of the object in front; its dialog may be left without one.
  void Draw(const QRectF& place);
  void Edit(std::size_t index);

 signals:
  void Edited();  // the layout has changed

 private:
  void Change(const LayoutEditor::Change& change);
  std::optional<ArtworkElement> EditedElement(const ArtworkElement& element);
  void EditSelected();
  void AskDelete(bool all);
  void SelectAll();
  void ResizeToPicture();
  void Copy();
  void Paste();
  [[nodiscard]] Result<std::string> Keep(const QImage& picture) const;

  Ground ground_;
};

}  // namespace ts5::artworker
