#include "app/shell/session_end.h"

#include <QAbstractButton>
#include <QDateTime>
#include <QDir>
#include <QPushButton>
#include <array>
#include <cstdint>
#include <iostream>
#include <vector>

#include "app/shell/application.h"
#include "app/texts.h"
#include "frame/texts.h"
#include "frame/ui/file_dialogs.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"
#include "platform/files/directories.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"

namespace ts5 {
namespace {

// What the user can do when the session cannot be saved.
enum class SaveChoice : std::uint8_t {
  Again,
  Elsewhere,  // into a file of the user's choice
  Discard,
  Stay,  // the program does not end
};
struct ChoiceButton {
  SaveChoice choice;
  TextId text;
  QMessageBox::ButtonRole role;
};
const std::array kButtons{
    ChoiceButton{SaveChoice::Again, texts::ButtonSaveAgain, QMessageBox::AcceptRole},
    ChoiceButton{SaveChoice::Elsewhere, texts::ButtonSaveElsewhere, QMessageBox::ActionRole},
    ChoiceButton{SaveChoice::Discard, texts::ButtonDiscardSession, QMessageBox::DestructiveRole},
    ChoiceButton{SaveChoice::Stay, texts::ButtonCancel, QMessageBox::RejectRole},
};

SaveChoice AskAfterFailedSave(QWidget* owner, const std::string& failure) {
  MessageBox box(owner, QMessageBox::Warning, ToQt(failure) + "\n\n" + QtText(texts::SessionNotSaved));
  std::array<QPushButton*, kButtons.size()> buttons{};
  for (std::size_t i = 0; i < kButtons.size(); ++i)
    buttons.at(i) = box.addButton(QtText(kButtons.at(i).text), kButtons.at(i).role);
  box.setDefaultButton(buttons.front());
  box.setEscapeButton(buttons.back());
  box.exec();
  for (std::size_t i = 0; i < kButtons.size(); ++i) {
    if (box.clickedButton() == buttons.at(i)) return kButtons.at(i).choice;
  }
  return SaveChoice::Stay;
}

// Where a session is saved that cannot be asked about: a name that is free, in the configuration directory
// or, where that cannot be written, the temporary one; their order is that of the tries.
std::string RescueFile(bool temporary) {
  const std::string directory = temporary ? FromQt(QDir::tempPath()) : ConfigurationDirectory();
  const std::string stem =
      "stavora-ts5-" + FromQt(QDateTime::currentDateTime().toString("yyyy-MM-dd-HH-mm-ss"));
  std::string path = JoinPath(directory, stem + ".reg");
  for (int number = 2; FileExists(path); ++number)
    path = JoinPath(directory, stem + "-" + std::to_string(number) + ".reg");
  return path;
}

void SaveUnattended(Application& application, const std::string& failure) {
  std::string file = RescueFile(false);
  bool saved = Succeeded(application.SaveElsewhere(file));
  if (!saved) saved = Succeeded(application.SaveElsewhere(file = RescueFile(true)));
  std::cerr << failure << '\n';
  std::cerr << Format(Text(saved ? texts::SessionSavedElsewhere : texts::SessionNotSavedElsewhere), file)
            << '\n';
}

bool SaveElsewhere(Application& application, Desk& desk) {
  const auto path = AskFileToSave({QtText(texts::SaveSessionCaption),
                                   HomeDirectory() + "/stavora-ts5.reg",
                                   Text(texts::SaveSessionFilter),
                                   {}},
                                  desk, desk.Window());
  if (!path) return false;
  const bool saved = Succeeded(application.SaveElsewhere(*path));
  desk.Tell(Format(Text(saved ? texts::SessionSavedElsewhere : texts::SessionNotSavedElsewhere), *path),
            saved ? MessageIcon::Information : MessageIcon::Exclamation);
  return saved;
}

}  // namespace

std::string QuitQuestion(const Jobs& jobs) {
  std::string question(Text(texts::AskQuit));
  std::string titles;
  int running = 0;
  for (std::size_t i = 0; i <= jobs.Count(); ++i) {
    if (jobs[i].State() == RunState::Idle) continue;
    titles += (running++ == 0 ? "" : "\n") + jobs[i].title;
  }
  if (running == 0) return question;
  return question + "\n\n" + Format(Text(running == 1 ? texts::QuitStopsJob : texts::QuitStopsJobs), titles);
}

bool SaveSession(Application& application, Desk& desk, bool attended) {
  for (auto failure = application.Save(); failure; failure = application.Save()) {
    if (!attended) {
      SaveUnattended(application, *failure);
      return true;
    }
    const SaveChoice choice = AskAfterFailedSave(desk.Window(), *failure);
    if (choice == SaveChoice::Stay) return false;
    if (choice == SaveChoice::Discard ||
        (choice == SaveChoice::Elsewhere && SaveElsewhere(application, desk)))
      return true;
  }
  return true;
}

}  // namespace ts5
