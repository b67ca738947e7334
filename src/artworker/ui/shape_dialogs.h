// ARTELLIPSE and ARTIMAGE: the properties of an ellipse and of an image.
#pragma once

#include <QImage>
#include <functional>
#include <memory>
#include <string>

#include "artworker/background_list.h"
#include "artworker/layout.h"
#include "frame/ui/hosted_dialog.h"

namespace Ui {
class ARTELLIPSE;
class ARTIMAGE;
}  // namespace Ui

namespace ts5::artworker {

class BorderBox;
class FillBox;

class EllipseDialog : public HostedDialog {
  Q_OBJECT

 public:
  // element: an ellipse. The list outlives the dialog.
  EllipseDialog(ArtworkElement element, BackgroundList& backgrounds, DialogHost& host, QWidget* parent);
  ~EllipseDialog() override;

  [[nodiscard]] ArtworkElement Element() const;
  [[nodiscard]] QString HelpTopic() const override;

 private:
  ArtworkElement element_;
  std::unique_ptr<Ui::ARTELLIPSE> ui_;
  FillBox* fill_ = nullptr;
  BorderBox* border_ = nullptr;
};

class ImageDialog : public HostedDialog {
  Q_OBJECT

 public:
  // Keeps a picture of the clipboard and gives its path.
  using Keeper = std::function<Result<std::string>(const QImage&)>;
  // element: an image. folder: where a file is looked for first. The list outlives the dialog.
  ImageDialog(ArtworkElement element, BackgroundList& backgrounds, std::string folder, Keeper keep,
              DialogHost& host, QWidget* parent);
  ~ImageDialog() override;

  [[nodiscard]] ArtworkElement Element() const;
  [[nodiscard]] QString HelpTopic() const override;

 protected:
  void Commit() override;

 private:
  [[nodiscard]] std::string File() const;  // as it is typed, in full; "" for none
  void Browse();
  void ShowPreview();

  ArtworkElement element_;
  std::string folder_;
  Keeper keep_;
  std::unique_ptr<Ui::ARTIMAGE> ui_;
  FillBox* fill_ = nullptr;
  BorderBox* border_ = nullptr;
};

}  // namespace ts5::artworker
