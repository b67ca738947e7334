// The assistant for encoders of the command line, the manager and the editor, driven as a user would.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include "audio/interfaces/ui/interface_assistant.h"
#include "audio/interfaces/ui/interface_editor.h"
#include "audio/interfaces/ui/interface_manager.h"
#include "dialogs_support.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using namespace test;
using testing::ElementsAre;

class InterfaceDialogsTest : public testing::Test {
 protected:
  InterfaceDialogsTest()
      : program_(directory_.Write("enc", "#!/bin/sh\n")), file_(directory_.File("ts5i.cdi")) {
    chmod(program_.c_str(), 0755);
  }
  [[nodiscard]] interfaces::EncoderInterface Known() const {
    return {program_, "Kodierer", "mp3", {{.parameters = "-b 64 {q} {z}", .bitRate = 64}}};
  }

  TemporaryDirectory directory_;
  std::string program_;
  std::string file_;
  RecordingHost host_;
};

TEST_F(InterfaceDialogsTest, TheAssistantChecksEachPage) {
  interfaces::InterfaceAssistant assistant({}, file_, host_, nullptr);
  assistant.show();
  auto& next = Child<QPushButton>(assistant, "okButton");
  const auto page = [&] { return Child<QStackedWidget>(assistant, "pages").currentIndex(); };
  const auto refused = [&] {
    const int before = page();
    const NextMessage message;
    next.click();
    EXPECT_EQ(page(), before);
    return message.Text();
  };
  EXPECT_FALSE(Child<QListWidget>(assistant, "foundList").isVisible());
  next.click();
  EXPECT_EQ(refused(), "Bitte geben Sie den Dateinamen des Encoders ein.");
  auto& encoder = Child<QLineEdit>(assistant, "encoderEdit");
  encoder.setText("/nicht/da");
  EXPECT_EQ(refused(), "Die angegebene Datei ist nicht existent.");
  EXPECT_EQ(encoder.selectedText(), "/nicht/da");
  encoder.setText(QString::fromStdString(program_));
  next.click();
  EXPECT_EQ(refused(), "Geben Sie bitte eine Bezeichnung für den Encoder ein.");
  Child<QLineEdit>(assistant, "nameEdit").setText(" Neu ");
  Child<QLineEdit>(assistant, "extensionEdit").setText("mp3");
  next.click();
  // Without a set there is nothing to finish.
  EXPECT_EQ(next.text(), "&Weiter >");
  EXPECT_FALSE(Child<QCheckBox>(assistant, "anotherCheck").isEnabled());
  next.click();
  Child<QLineEdit>(assistant, "parametersEdit").setText("{q} {z}");
  EXPECT_EQ(refused(), "Geben Sie bitte eine Parameterkette ein.");
  Child<QLineEdit>(assistant, "parametersEdit").setText("-b 320 {q} {z}");
  next.click();
  Child<QComboBox>(assistant, "bitRateCombo").setCurrentText("320");
  Child<QCheckBox>(assistant, "originalCheck").setChecked(true);
  Child<QRadioButton>(assistant, "ccittRadio").setChecked(true);
  next.click();
  EXPECT_EQ(next.text(), "&Fertigstellen");
  EXPECT_FALSE(QFile::exists(QString::fromStdString(file_)));
  next.click();
  EXPECT_EQ(next.text(), "Schließen");
  next.click();
  EXPECT_FALSE(assistant.isVisible());
  EXPECT_THAT(interfaces::LoadInterfaces(file_),
              ElementsAre(interfaces::EncoderInterface{program_,
                                                       "Neu",
                                                       "mp3",
                                                       {{.parameters = "-b 320 {q} {z}",
                                                         .bitRate = 320,
                                                         .original = true,
                                                         .deemphasis = interfaces::Deemphasis::Ccitt}}}));
}

TEST_F(InterfaceDialogsTest, AFoundEncoderNeedsNoTyping) {
  interfaces::InterfaceAssistant assistant({Known()}, file_, host_, nullptr);
  assistant.show();
  Child<QListWidget>(assistant, "foundList").setCurrentRow(1);
  auto& next = Child<QPushButton>(assistant, "okButton");
  for (int i = 0; i < 3; ++i) next.click();
  EXPECT_EQ(Child<QListWidget>(assistant, "setList").count(), 1);
  // Another one, which nobody knows, has nothing of it; chosen again it is all there.
  auto& back = Child<QPushButton>(assistant, "backButton");
  for (int i = 0; i < 3; ++i) back.click();
  Child<QListWidget>(assistant, "foundList").setCurrentRow(0);
  next.click();
  EXPECT_EQ(Child<QLineEdit>(assistant, "encoderEdit").text(), "");
  back.click();
  Child<QListWidget>(assistant, "foundList").setCurrentRow(1);
  for (int i = 0; i < 3; ++i) next.click();
  EXPECT_EQ(Child<QListWidget>(assistant, "setList").count(), 1);
  for (int i = 0; i < 2; ++i) next.click();
  EXPECT_THAT(interfaces::LoadInterfaces(file_), ElementsAre(Known()));
}

TEST_F(InterfaceDialogsTest, TheManagerDeletesAfterAsking) {
  interfaces::EncoderInterface lost = Known();
  lost.encoder = "/nicht/da";
  ASSERT_EQ(interfaces::SaveInterfaces(file_, {Known(), lost}), Outcome::Success);
  interfaces::InterfaceManager manager(file_, host_, nullptr);
  manager.show();
  auto& list = Child<QTreeWidget>(manager, "interfaceList");
  EXPECT_EQ(list.topLevelItem(0)->text(1), "verfügbar");
  EXPECT_EQ(list.topLevelItem(1)->text(1), "nicht verfügbar");
  for (const auto& [answer, left] :
       {std::pair{QMessageBox::No, 2}, {QMessageBox::Yes, 1}, {QMessageBox::Yes, 1}}) {
    const NextMessage message(answer);
    Child<QPushButton>(manager, "deleteButton").click();
    EXPECT_EQ(message.Text(), "Wollen Sie dieses Interface wirklich löschen?");
    EXPECT_EQ(list.topLevelItemCount(), left);
  }
  EXPECT_EQ(list.topLevelItem(0)->text(0), "(kein Interface vorhanden)");
  EXPECT_FALSE(Child<QPushButton>(manager, "deleteButton").isEnabled());
  EXPECT_FALSE(QFile::exists(QString::fromStdString(file_)));
}

TEST_F(InterfaceDialogsTest, TheEditorChangesSetsAndAsksForALostEncoder) {
  interfaces::EncoderInterface interface = Known();
  interface.sets.front().bitRate = 123;  // not in the list
  interfaces::InterfaceEditor editor(interface, host_, nullptr);
  editor.show();
  auto& pages = Child<QTabWidget>(editor, "pages");
  EXPECT_FALSE(Child<QWidget>(editor, "missingLabel").isVisible());
  EXPECT_EQ(pages.tabText(1), "Parameter-Set 1");
  Child<QPushButton>(editor, "newSetButton").click();
  EXPECT_EQ(pages.currentIndex(), 2);
  {
    const NextMessage message;
    Child<QPushButton>(editor, "okButton").click();
    EXPECT_EQ(message.Text(), "Geben Sie bitte eine Parameterkette ein.");
  }
  Child<QLineEdit>(*pages.widget(2), "parametersEdit").setText("-V 2 {q} {z}");
  {
    const NextMessage message;
    Child<QPushButton>(editor, "infoButton").click();
    EXPECT_TRUE(message.Text().contains("Parameter-Set 2 :\nBitrate:\t\t\t128"));
  }
  pages.setCurrentIndex(1);
  {
    const NextMessage message(QMessageBox::Yes);
    Child<QPushButton>(editor, "deleteSetButton").click();
    EXPECT_TRUE(message.Text().startsWith("Wollen Sie das Parameter-Set wirklich löschen?"));
  }
  EXPECT_EQ(pages.tabText(1), "Parameter-Set 1");
  Child<QLineEdit>(editor, "encoderEdit").setText("/nicht/da");
  pages.setCurrentIndex(0);
  EXPECT_TRUE(Child<QWidget>(editor, "missingLabel").isVisible());
  for (const auto answer : {QMessageBox::No, QMessageBox::Yes}) {
    const NextMessage message(answer);
    Child<QPushButton>(editor, "okButton").click();
    EXPECT_EQ(editor.isVisible(), answer == QMessageBox::No);
  }
  EXPECT_EQ(editor.Edited(),
            (interfaces::EncoderInterface{
                "/nicht/da", "Kodierer", "mp3", {{.parameters = "-V 2 {q} {z}", .bitRate = 128}}}));
}

}  // namespace
}  // namespace ts5
