// The keyboard's way from area to area of the main window, and the choice of a destination file.
#pragma once

#include <QObject>

class QWidget;

namespace ts5 {

class MainWindow;

class AreaCommands : public QObject {
 public:
  explicit AreaCommands(MainWindow& window);

 private:
  enum class Direction { Forward, Backward };
  // Puts the focus on the first control of the next area that has one.
  void Move(Direction direction);
  void BrowseDestination();

  MainWindow& window_;
};

}  // namespace ts5
