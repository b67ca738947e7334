// ARTGALLERY: the shipped layouts in pictures, to begin from one of them.
#pragma once

#include <QTimer>
#include <memory>
#include <vector>

#include "artworker/pictures.h"
#include "artworker/templates.h"
#include "frame/ui/hosted_dialog.h"

namespace Ui {
class ARTGALLERY;
}

namespace ts5::artworker {

class TemplateGallery : public HostedDialog {
  Q_OBJECT

 public:
  // facts: the disc that the pictures show; a sample when nothing is known of one.
  TemplateGallery(std::vector<Template> templates, const DiscFacts& facts, DialogHost& host, QWidget* parent);
  ~TemplateGallery() override;

  [[nodiscard]] const Template* Chosen() const;  // nullptr for none
  [[nodiscard]] QString HelpTopic() const override;

 private:
  void DrawNext();  // one picture at a time, so that the window is there at once

  std::vector<Template> templates_;
  DiscFacts facts_;
  Pictures pictures_;
  int drawn_ = 0;
  QTimer timer_;
  std::unique_ptr<Ui::ARTGALLERY> ui_;
};

}  // namespace ts5::artworker
