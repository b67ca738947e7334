// ARTTEXT: the text of a text field, how it looks and how it fills its field.
#pragma once

#include <memory>

#include "artworker/background_list.h"
#include "artworker/layout.h"
#include "frame/ui/hosted_dialog.h"

namespace Ui {
class ARTTEXT;
}

namespace ts5::artworker {

class BorderBox;
class FillBox;

class TextDialog : public HostedDialog {
  Q_OBJECT

 public:
  // element: a text field. The list outlives the dialog.
  TextDialog(ArtworkElement element, BackgroundList& backgrounds, DialogHost& host, QWidget* parent);
  ~TextDialog() override;

  [[nodiscard]] ArtworkElement Element() const;
  [[nodiscard]] QString HelpTopic() const override;

 protected:
  void Commit() override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void ShowField();
  void UpdateNotes();
  void PickSymbols();
  void OfferFields();

  ArtworkElement element_;
  std::unique_ptr<Ui::ARTTEXT> ui_;
  FillBox* fill_ = nullptr;
  BorderBox* border_ = nullptr;
};

}  // namespace ts5::artworker
