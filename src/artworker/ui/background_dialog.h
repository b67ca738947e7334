// ARTBACKGROUND: a new background for the shared list. Small pictures of backgrounds for lists.
#pragma once

#include <QIcon>
#include <QSize>
#include <memory>

#include "artworker/background_list.h"
#include "frame/ui/hosted_dialog.h"

namespace Ui {
class ARTBACKGROUND;
}

namespace ts5::artworker {

inline constexpr QSize kBackgroundSwatch{40, 16};
[[nodiscard]] QIcon BackgroundIcon(const ArtworkBackground& background);

class BackgroundDialog : public HostedDialog {
  Q_OBJECT

 public:
  // The list outlives the dialog.
  BackgroundDialog(const BackgroundList& backgrounds, DialogHost& host, QWidget* parent);
  ~BackgroundDialog() override;

  [[nodiscard]] ArtworkBackground Chosen() const;
  [[nodiscard]] QString HelpTopic() const override;

 protected:
  void Commit() override;

 private:
  void ShowPreview();

  const BackgroundList& backgrounds_;
  std::unique_ptr<Ui::ARTBACKGROUND> ui_;
};

}  // namespace ts5::artworker
