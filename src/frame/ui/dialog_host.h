// What a dialog needs of the program around it.
#pragma once

#include <QString>

namespace ts5 {

class DialogHost {
 public:
  virtual ~DialogHost() = default;
  // Opens the help window at a topic, e.g. "Befehle-Job-Neu.htm"; "" is the contents.
  virtual void OpenHelp(const QString& topic) = 0;
  // The text of the status bar while the dialog is open; "" gives the bar back its own text.
  virtual void ShowPrompt(const QString& prompt) = 0;
};

}  // namespace ts5
