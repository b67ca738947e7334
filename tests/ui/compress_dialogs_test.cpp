// The windows of the audio compressor: what they offer, what they refuse, and what they give back.
#include <gtest/gtest.h>

#include <QTest>

#include "audio/encode/encoder.h"
#include "audio/encode/ui/ape_dialog.h"
#include "audio/encode/ui/compress_dialog.h"
#include "audio/encode/ui/decoder_dialog.h"
#include "audio/encode/ui/engine_dialog.h"
#include "audio/encode/ui/ogg_dialog.h"
#include "audio/encode/ui/target_names_dialog.h"
#include "dialogs_support.h"

namespace ts5 {
namespace {

TEST(CompressDialogTest, ACodecNeedsAFormat) {
  RecordingHost host;
  encode::CompressDialog dialog({}, {}, host, nullptr);
  dialog.show();
  auto& codecs = Child<QComboBox>(dialog, "codecBox");
  auto& formats = Child<QListWidget>(dialog, "formatList");
  auto& ok = Child<QAbstractButton>(dialog, "okButton");
  EXPECT_EQ(codecs.currentText(), "Lame Encoder Engine");
  EXPECT_TRUE(ok.isEnabled());
  EXPECT_TRUE(Child<QAbstractButton>(dialog, "configureButton").isEnabled());
  EXPECT_EQ(formats.item(0)->text(), "Wählen Sie \"Konfigurieren\", um die");
  codecs.setCurrentIndex(encode::CodecIndexOf(encode::EncoderId::WmaCodec));
  EXPECT_FALSE(ok.isEnabled());
  EXPECT_FALSE(Child<QAbstractButton>(dialog, "configureButton").isEnabled());
  formats.setCurrentRow(2);
  Press(dialog, "okButton");
  EXPECT_EQ(dialog.result(), QDialog::Accepted);
  EXPECT_EQ(dialog.Settings().method, 1);
  EXPECT_EQ(dialog.Settings().object, encode::CodecIndexOf(encode::EncoderId::WmaCodec));
  EXPECT_EQ(dialog.Settings().format, 2);
  // Opened again it shows what was chosen.
  encode::CompressDialog again(dialog.Settings(), {}, host, nullptr);
  EXPECT_EQ(Child<QListWidget>(again, "formatList").currentRow(), 2);
}

TEST(CompressDialogTest, OggAsksOnceAndTheProofFollowsTheMethod) {
  RecordingHost host;
  encode::CompressDialog dialog({}, {}, host, nullptr);
  dialog.show();
  auto& proof = Child<QAbstractButton>(dialog, "verifyCheck");
  EXPECT_FALSE(proof.isChecked());
  Child<QRadioButton>(dialog, "apeRadio").setChecked(true);
  EXPECT_TRUE(proof.isChecked());
  Child<QRadioButton>(dialog, "oggRadio").setChecked(true);
  EXPECT_FALSE(proof.isChecked());
  {
    NextMessage message(QMessageBox::No);
    Press(dialog, "okButton");
    EXPECT_TRUE(message.Text().startsWith("Der Ogg Codec wurde noch nicht konfiguriert."));
  }
  EXPECT_TRUE(dialog.isVisible());
  InNext<encode::OggDialog>([](encode::OggDialog& ogg) {
    Child<QSlider>(ogg, "minSlider").setValue(8);
    EXPECT_EQ(Child<QLabel>(ogg, "nominalValueLabel").text(), "160 KBit/s");
    Child<QSlider>(ogg, "nominalSlider").setValue(14);
    EXPECT_EQ(Child<QLabel>(ogg, "maxValueLabel").text(), "448 KBit/s");
    Press(ogg, "okButton");
  });
  Press(dialog, "oggButton");
  Press(dialog, "okButton");
  EXPECT_EQ(dialog.Settings().ogg,
            (encode::OggSettings{
                .maxBitRate = 448 * 1024, .nominalBitRate = 448 * 1024, .minBitRate = 160 * 1024}));
  EXPECT_FALSE(dialog.Settings().verify);
}

TEST(CompressDialogTest, AnInterfaceThatIsGoneIsRefused) {
  RecordingHost host;
  encode::EncodeSettings settings;
  settings.method = 4;
  settings.object = 1;
  settings.format = 1;
  encode::CompressDialog dialog(settings, {.interfaces = {{"weg", false, {"a"}}, {"da", true, {"b", "c"}}}},
                                host, nullptr);
  dialog.show();
  auto& tree = Child<QTreeWidget>(dialog, "interfaceTree");
  ASSERT_NE(tree.currentItem(), nullptr);
  EXPECT_EQ(tree.currentItem()->text(0), "c");
  tree.setCurrentItem(tree.topLevelItem(0)->child(0));
  {
    NextMessage message;
    Press(dialog, "okButton");
    EXPECT_EQ(message.Text(), "Dieses Interface ist z. Z. nicht verfügbar. Wählen Sie bitte ein anderes.");
  }
  tree.setCurrentItem(tree.topLevelItem(0));
  EXPECT_FALSE(Child<QAbstractButton>(dialog, "okButton").isEnabled());
  tree.setCurrentItem(tree.topLevelItem(1)->child(0));
  Press(dialog, "okButton");
  EXPECT_EQ(dialog.Settings().object, 1);
  EXPECT_EQ(dialog.Settings().format, 0);
  encode::CompressDialog none({}, {}, host, nullptr);
  EXPECT_EQ(Child<QTreeWidget>(none, "interfaceTree").topLevelItem(0)->text(0),
            "Keine MP3-Interfaces vorhanden!");
}

// Names are made with what is chosen now, and shown once typing rests; a pattern with a fault is not taken.
TEST(TargetNamesTest, ShowsAllNamesAndRefusesFaults) {
  RecordingHost host;
  std::vector<std::string> asked;
  const auto preview = [&](const std::string& pattern) {
    asked.push_back(pattern);
    return std::vector<NamedItem>{{"/m/a.wav", {.name = "/m/01 - " + pattern + ".mp3"}, true},
                                  {"/m/b.wav", {.code = Outcome::TargetFailed}, false}};
  };
  encode::TargetNamesDialog dialog("%title%", preview, host, nullptr);
  dialog.show();
  auto& names = Child<QTreeWidget>(dialog, "nameList");
  EXPECT_EQ(names.topLevelItem(0)->text(1), "01 - %title%.mp3 (vorhanden)");
  EXPECT_EQ(names.topLevelItem(1)->text(1), "(kein möglicher Name)");
  auto& pattern = Child<QLineEdit>(dialog, "patternEdit");
  pattern.setText(QStringLiteral("%titel%"));
  EXPECT_TRUE(QTest::qWaitFor([&] { return Child<QLabel>(dialog, "faultLabel").isVisible(); }));
  {
    NextMessage message;
    Press(dialog, "okButton");
    EXPECT_TRUE(message.Text().contains("%albumartist%"));
  }
  EXPECT_TRUE(dialog.isVisible());
  pattern.setText(QStringLiteral(" %track% "));
  EXPECT_TRUE(QTest::qWaitFor([&] { return asked.back() == "%track%"; }));
  Press(dialog, "okButton");
  EXPECT_EQ(dialog.Pattern(), "%track%");

  encode::EncodeSettings chosen;
  encode::CompressChoices choices;
  choices.editNames = [&](QWidget*, const encode::EncodeSettings& settings) { chosen = settings; };
  choices.replayGain = true;
  encode::CompressDialog compress({}, choices, host, nullptr);
  compress.show();
  Child<QRadioButton>(compress, "apeRadio").setChecked(true);
  Press(compress, "namesButton");
  EXPECT_EQ(chosen.Method(), encode::EncodeMethod::MonkeysAudio);
  Child<QAbstractButton>(compress, "gainCheck").setChecked(false);
  EXPECT_FALSE(compress.ReplayGain());
}

TEST(DecoderDialogTest, GivesBackWhatItShows) {
  RecordingHost host;
  const encode::DecodeOptions options{.rateDivisor = 4, .mono = true, .bits = 24};
  bool names = false;
  encode::DecoderDialog dialog(
      options, "a.mp3", {"MP3", 44100}, [&](QWidget*) { names = true; }, host, nullptr);
  dialog.show();
  EXPECT_EQ(Child<QComboBox>(dialog, "rateBox").currentText(), "11025 Hz");
  EXPECT_EQ(dialog.Options(), options);
  Press(dialog, "namesButton");
  EXPECT_TRUE(names);
  for (const char* box : {"rateBox", "channelBox", "bitsBox"})
    Child<QComboBox>(dialog, box).setCurrentIndex(0);
  EXPECT_EQ(dialog.Options(), encode::DecodeOptions());
}

TEST(EngineDialogTest, KeepsWhatItDoesNotShow) {
  RecordingHost host;
  encode::BeConfig config = encode::BeConfig::Defaults(encode::Mp3Engine::Lame);
  config.Set(encode::lame::dwPsyModel, 0x12345678);
  encode::EngineDialog dialog(config, encode::Mp3Engine::Lame, host, nullptr);
  dialog.show();
  EXPECT_FALSE(Child<QComboBox>(dialog, "bitRateBox").isEnabled());
  Child<QSlider>(dialog, "minSlider").setValue(9);
  EXPECT_EQ(Child<QLabel>(dialog, "hintLabel").text(),
            "144 kbits gibt es in MPEG Layer 3 nicht, verwendet wird 160.");
  Child<QSlider>(dialog, "maxSlider").setValue(2);
  EXPECT_EQ(Child<QSlider>(dialog, "minSlider").value(), 2);
  Press(dialog, "okButton");
  EXPECT_EQ(dialog.Config().Get(encode::lame::dwBitrate), 48U);
  EXPECT_EQ(dialog.Config().Get(encode::lame::dwMaxBitrate), 48U);
  EXPECT_EQ(dialog.Config().Get(encode::lame::dwPsyModel), 0x12345678U);
  EXPECT_EQ(dialog.Config().GetSigned(encode::lame::nPreset), 0);

  encode::EngineDialog blade(dialog.Config(), encode::Mp3Engine::Blade, host, nullptr);
  EXPECT_EQ(Child<QComboBox>(blade, "modeBox").count(), 3);
  for (const char* name : {"qualityBox", "vbrGroup", "reservoirCheck", "emphasisGroup"})
    EXPECT_FALSE(Child<QWidget>(blade, name).isEnabled()) << name;
  EXPECT_EQ(Child<QComboBox>(blade, "bitRateBox").currentText(), "48");
}

TEST(ApeDialogTest, LevelsAndWhatIsNone) {
  RecordingHost host;
  for (const auto& [level, shown] :
       {std::pair{1000, 1000}, {5000, 5000}, {2500, 2000}, {0, 3000}, {9000, 3000}})
    EXPECT_EQ(encode::ApeDialog(level, host, nullptr).Level(), shown);
}

}  // namespace
}  // namespace ts5
