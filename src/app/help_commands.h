// The commands of the help menu, and the settings.
#pragma once

#include <QObject>
#include <QString>

class QWidget;

namespace ts5 {

class MainWindow;

class HelpCommands : public QObject {
 public:
  explicit HelpCommands(MainWindow& window);

  // The topic of the area that a widget of the main window lies in; "" elsewhere.
  [[nodiscard]] QString TopicOf(const QWidget* focused) const;

 private:
  void ShowSettings();

  MainWindow& window_;
};

}  // namespace ts5
