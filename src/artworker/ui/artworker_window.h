// ARTWORKERPARAMS: the editor of an Artworker job. It stays open beside the main window; what is changed here
// goes into the job at once.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "artworker/artworker_parameters.h"
#include "artworker/ui/editor_actions.h"
#include "artworker/ui/fit_dialog.h"
#include "artworker/ui/scene.h"
#include "frame/ui/hosted_dialog.h"

namespace Ui {
class ARTWORKERPARAMS;
}

namespace ts5::artworker {

class CanvasPage;
class ElementCommands;
class LayoutCanvas;
class LayoutFiles;
class LayoutPage;
class OptionsPage;
class PlaceBar;

class ArtworkerWindow : public HostedDialog {
  Q_OBJECT

 public:
  struct Subject {
    std::string title;  // of the job
    // Of the job; nullptr once it has gone or has another filter.
    std::function<ArtworkerParameters*()> parameters;
    std::function<bool()> running;
    std::vector<std::string> printers;
    std::string folder;  // of the layouts
    BackgroundList::Links backgrounds;
    FitLinks fits;
    std::function<DiscFacts()> facts;     // of the disc whose fields are filled
    std::function<void()> printerChosen;  // another one is in the parameters
    std::function<void()> print;          // runs the job
    std::function<void()> edited;         // layout or options in the parameters are others now
  };
  // The job is there while the window is made.
  ArtworkerWindow(Subject subject, DialogHost& host, QWidget* parent);
  ~ArtworkerWindow() override;

  [[nodiscard]] QString HelpTopic() const override;
  [[nodiscard]] const LayoutEditor& Editor() const { return scene_.editor; }
  [[nodiscard]] LayoutCanvas& CanvasOf(ArtworkObjectId id);
  [[nodiscard]] EditorActions& Actions() { return *actions_; }

 protected:
  void changeEvent(QEvent* event) override;
  void moveEvent(QMoveEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void hideEvent(QHideEvent* event) override;

 private:
  using Command = EditorCommand;

  void MakeCommands();
  void BuildPages();
  void BuildBars();
  void RestorePlace();
  void StorePlace();

  // The page and the canvas in front; nullptr on the other pages.
  [[nodiscard]] CanvasPage* Page();
  [[nodiscard]] LayoutCanvas* Canvas();
  void Act(Command command);
  void TakeEdit();  // the layout has changed
  void Refresh();
  void UpdateActions();
  void SetTool(Tool tool);
  void ShowMenu(const QPoint& global);

  void TakeOptions();
  void ChooseSheets();
  void FitPrinter();
  void TakeUndoSteps(int steps);

  Subject subject_;
  std::unique_ptr<Ui::ARTWORKERPARAMS> ui_;
  Scene scene_;
  std::unique_ptr<LayoutFiles> files_;
  std::unique_ptr<ElementCommands> elements_;
  std::array<CanvasPage*, kObjectCount> pages_{};
  LayoutPage* layoutPage_ = nullptr;
  OptionsPage* optionsPage_ = nullptr;
  PlaceBar* placeBar_ = nullptr;
  std::unique_ptr<EditorActions> actions_;
};

}  // namespace ts5::artworker
