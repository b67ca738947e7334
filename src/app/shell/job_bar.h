// The job bar at the top: one button per job, the default job first, "(Neuer Job)" last, arrows where not all
// of them have room, and a menu with what can be done with the active job, and all jobs. Left and Right move
// between the buttons.
#pragma once

#include <QMenu>
#include <QScrollArea>
#include <QToolButton>
#include <QWidget>
#include <vector>

#include "platform/base/strings.h"

namespace ts5 {

class JobBar : public QWidget {
  Q_OBJECT

 public:
  struct Button {
    QString title;
    QString description;
    bool running = false;
    QString progress = {};  // of the run, in a few words
  };

  explicit JobBar(QWidget* parent = nullptr);

  // jobs: the default job and the saved jobs; active: an index of it.
  void Show(const std::vector<Button>& jobs, int active, bool switchable, bool newJobAllowed);
  [[nodiscard]] QToolButton* JobButton(int index) const {
    return buttons_.at(static_cast<std::size_t>(index));
  }
  [[nodiscard]] int JobCount() const { return static_cast<int>(buttons_.size()); }
  [[nodiscard]] QToolButton* NewJobButton() const { return newJob_; }
  // The menu of the bar; the owner fills it.
  [[nodiscard]] QMenu* Menu() const { return menu_; }

 signals:
  void JobChosen(int index);
  void NewJobChosen();
  // What can be done with a job, at a place of the screen.
  void MenuWanted(int index, const QPoint& place);
  void Hint(const QString& text);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QToolButton* MakeButton();
  [[nodiscard]] QToolButton* MakeArrow(const char* name, const char* icon, TextId text, int direction);
  void ShowArrows();
  void ListJobs(const std::vector<Button>& jobs, int active, bool switchable);
  void MoveFocus(QWidget* from, int step);

  std::vector<QToolButton*> buttons_;
  QToolButton* newJob_;
  QToolButton* menuButton_;
  QMenu* menu_;
  std::vector<QAction*> listed_;  // the jobs in the menu
  QWidget* row_;
  QScrollArea* scroll_;
  QToolButton* back_;
  QToolButton* forward_;
};

}  // namespace ts5
