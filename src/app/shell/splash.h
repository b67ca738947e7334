// TITELBILD: the window of the start, which names each step while it runs.
#pragma once

#include <QWidget>
#include <memory>
#include <string_view>

namespace Ui {
class TITELBILD;
}

namespace ts5 {

class Splash : public QWidget {
  Q_OBJECT

 public:
  // steps: how many texts will be shown until the start is done.
  explicit Splash(int steps, QWidget* parent = nullptr);
  ~Splash() override;

  // Shows the text of the next step at once, before the step itself begins; the progress moves one step on.
  void ShowStep(std::string_view text);

 private:
  std::unique_ptr<Ui::TITELBILD> ui_;
};

}  // namespace ts5
