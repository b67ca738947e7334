// The attribute dialog, driven as a user would: edits in place, marks, undo, the question of OK, and what is
// in the files then.
#include "audio/ui/attributes_dialog.h"

#include <gtest/gtest.h>

#include <QTest>

#include "audio/audio_properties.h"
#include "audio/tags/tag_file.h"
#include "dialogs_support.h"
#include "frame/ui/qt_text.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using namespace test;

QTreeWidgetItem* ItemOf(QTreeWidget& list, const char* name) {
  return list.findItems(QString::fromUtf8(name), Qt::MatchExactly, 0).value(0);
}

// Types into the value of an attribute as its editor takes it.
void TypeValue(QTreeWidget& list, const char* name, const QString& text) {
  list.setCurrentItem(ItemOf(list, name));
  QTest::keyClick(&list, Qt::Key_F2);
  auto* const field = list.findChild<QLineEdit*>();
  ASSERT_NE(field, nullptr);
  field->selectAll();
  QTest::keyClicks(field, text);
  QTest::keyClick(field, Qt::Key_Return);
  EXPECT_TRUE(QTest::qWaitFor([&] { return list.findChild<QLineEdit*>() == nullptr; }, 5000));
}

std::string ValueIn(const std::string& path, std::string_view name) {
  const auto attributes = tags::ReadAttributes(path);
  const tags::Attribute* const found = attributes ? tags::FindAttribute(*attributes, name) : nullptr;
  return found == nullptr ? std::string() : found->value;
}

class AttributesDialogTest : public testing::Test {
 protected:
  AttributesDialogTest() {
    for (const char* name : {"a.mp3", "b.mp3"})
      files_.push_back(directory_.Write(name, Content(DataPath("audio/mpeg1_layer3_cbr128.mp3"))));
    EXPECT_EQ(
        tags::ChangeAttributes(files_[1], {{{tags::AttributeType::String, "Author", "B", false, true}}, {}})
            .value_or(1),
        0U);
  }

  std::unique_ptr<AttributesDialog> Open(const std::vector<std::string>& files) {
    auto dialog =
        std::make_unique<AttributesDialog>(*ReadAudioProperties(files.front()), "", files, host_, nullptr);
    dialog->show();
    Child<QTabWidget>(*dialog, "pages").setCurrentIndex(1);
    return dialog;
  }

  TemporaryDirectory directory_;
  std::vector<std::string> files_;
  RecordingHost host_;
};

TEST_F(AttributesDialogTest, EditsSeveralFilesInPlace) {
  const auto dialog = Open(files_);
  EXPECT_EQ(dialog->windowTitle(), "Eigenschaften von \"a.mp3\"");
  auto& list = Child<QTreeWidget>(*dialog, "attributeList");
  EXPECT_EQ(ItemOf(list, "Author")->text(1), "(verschieden)");
  EXPECT_EQ(ItemOf(list, "Duration"), nullptr);

  TypeValue(list, "Title", "Lied");
  EXPECT_EQ(ItemOf(list, "Title")->checkState(0), Qt::Checked);
  TypeValue(list, "WM/Track", "3");
  {
    const NextMessage message;
    TypeValue(list, "WM/Track", "drei");
    EXPECT_TRUE(message.Text().contains("drei"));
  }
  EXPECT_EQ(ItemOf(list, "WM/Track")->text(1), "3");
  auto& undo = Child<QPushButton>(*dialog, "undoButton");
  undo.click();
  EXPECT_EQ(ItemOf(list, "WM/Track")->text(1), "");
  EXPECT_TRUE(undo.isEnabled());

  Child<QCheckBox>(*dialog, "onlySelectedCheck").click();
  EXPECT_FALSE(ItemOf(list, "Title")->isHidden());
  EXPECT_TRUE(ItemOf(list, "WM/Track")->isHidden());
  Child<QPushButton>(*dialog, "okButton").click();
  EXPECT_EQ(dialog->result(), QDialog::Accepted);
  for (const std::string& file : files_) EXPECT_EQ(ValueIn(file, "Title"), "Lied");
  EXPECT_EQ(ValueIn(files_[0], "Author"), "");
  EXPECT_EQ(ValueIn(files_[1], "Author"), "B");
}

TEST_F(AttributesDialogTest, AsksForValuesWithoutAMark) {
  const auto dialog = Open({files_[1]});
  auto& list = Child<QTreeWidget>(*dialog, "attributeList");
  TypeValue(list, "Title", "Lied");
  Child<QPushButton>(*dialog, "releaseAllButton").click();
  {
    const NextMessage message(QMessageBox::No);
    Child<QPushButton>(*dialog, "okButton").click();
    EXPECT_TRUE(message.Text().endsWith("Trotzdem fortsetzen?"));
  }
  EXPECT_TRUE(dialog->isVisible());
  {
    const NextMessage message(QMessageBox::Yes);
    Child<QPushButton>(*dialog, "okButton").click();
  }
  EXPECT_FALSE(dialog->isVisible());
  EXPECT_EQ(ValueIn(files_[1], "Title"), "");
  EXPECT_EQ(ValueIn(files_[1], "Author"), "B");
}

TEST_F(AttributesDialogTest, TimesHaveAnEditorOfTheirOwn) {
  const auto dialog = Open({files_[0]});
  auto& list = Child<QTreeWidget>(*dialog, "attributeList");
  list.setCurrentItem(ItemOf(list, "WM/EncodingTime"));
  QTest::keyClick(&list, Qt::Key_F2);
  auto* const editor = list.findChild<QDateTimeEdit*>();
  ASSERT_NE(editor, nullptr);
  editor->setDateTime(QDateTime(QDate(2006, 5, 4), QTime(3, 2, 1)));
  QTest::keyClick(editor, Qt::Key_Return);
  EXPECT_TRUE(QTest::qWaitFor([&] { return list.findChild<QDateTimeEdit*>() == nullptr; }, 5000));
  Child<QPushButton>(*dialog, "okButton").click();
  EXPECT_EQ(ItemOf(list, "WM/EncodingTime")->text(1), "4.5.2006 03:02:01");
  EXPECT_FALSE(ValueIn(files_[0], "WM/EncodingTime").empty());
}

TEST_F(AttributesDialogTest, OfAJobAlone) {
  AttributesDialog dialog(tags::Attributes{{tags::AttributeType::String, "Title", "T", false, true}}, host_,
                          nullptr);
  dialog.show();
  EXPECT_EQ(Child<QTabWidget>(dialog, "pages").count(), 1);
  TypeValue(Child<QTreeWidget>(dialog, "attributeList"), "Author", "Wer");
  Child<QPushButton>(dialog, "okButton").click();
  EXPECT_EQ(dialog.JobAttributes().size(), 2U);
  Child<QPushButton>(dialog, "helpButton").click();
  EXPECT_EQ(host_.topics, QStringList("audio-attribute.htm"));
}

}  // namespace
}  // namespace ts5
