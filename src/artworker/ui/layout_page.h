// ARTLAYOUT: the page "Layout festlegen" with the paper and, for each object, ARTOBJECT: its sheet, place and
// size.
#pragma once

#include <QGroupBox>
#include <QWidget>
#include <array>
#include <memory>
#include <string>

#include "artworker/ui/scene.h"

class QSpinBox;

namespace Ui {
class ARTLAYOUT;
class ARTOBJECT;
}  // namespace Ui

namespace ts5::artworker {

class ObjectGroup : public QGroupBox {
  Q_OBJECT

 public:
  // The scene outlives the group.
  ObjectGroup(Scene& scene, ArtworkObjectId id, QWidget* parent = nullptr);
  ~ObjectGroup() override;

  void Refresh();

 signals:
  void Edited();

 private:
  void TakeMeasure(Measure measure, int value);
  void Change(void (*change)(ArtworkObject& object, ArtworkObjectId id));

  Scene& scene_;
  ArtworkObjectId id_;
  std::unique_ptr<Ui::ARTOBJECT> ui_;
};

class LayoutPage : public QWidget {
  Q_OBJECT

 public:
  // The scene outlives the page.
  explicit LayoutPage(Scene& scene, QWidget* parent = nullptr);
  ~LayoutPage() override;

  void Refresh();
  void ShowFile(const std::string& path);  // "" for none

 signals:
  void Edited();
  void TemplateWanted();
  void LoadWanted();
  void SaveWanted();

 private:
  Scene& scene_;
  std::unique_ptr<Ui::ARTLAYOUT> ui_;
  std::array<ObjectGroup*, kObjectCount> groups_{};
};

}  // namespace ts5::artworker
