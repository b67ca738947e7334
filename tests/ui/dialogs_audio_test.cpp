// The dialogs of the audio room, driven as a user would.
#include <gmock/gmock.h>

#include <QTest>

#include "audio/ui/audio_properties_dialog.h"
#include "audio/ui/normalise_box.h"
#include "audio/ui/wave_convert_dialog.h"
#include "dialogs_support.h"
#include "frame/ui/qt_text.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using test::DataPath;

void Choose(WaveConvertDialog& dialog, const char* text) {
  auto& list = Child<QListWidget>(dialog, "formatList");
  const auto found = list.findItems(QString::fromUtf8(text), Qt::MatchExactly);
  ASSERT_EQ(found.size(), 1) << text;
  list.setCurrentItem(found.front());
}

TEST(WaveConvertDialogTest, OffersTheFormatsAndTakesTheChoice) {
  RecordingHost host;
  WaveConvertDialog dialog({}, ProbeMedia(DataPath("audio/pygame_secosmic_lo.wav")), true, host, nullptr);
  dialog.show();
  EXPECT_EQ(dialog.windowTitle(), "Zielformat für die Konvertierung");
  EXPECT_EQ(host.prompts.last(), "Wählen Sie die Werte des Zielformats und klicken Sie OK");
  EXPECT_EQ(Child<QLabel>(dialog, "sourceCodingLabel").text(), "ADPCM");
  EXPECT_EQ(Child<QLabel>(dialog, "sourceFormatLabel").text(),
            "11025 Hz (Samples per Sek), 4 Bits per Sample, Mono");
  auto& list = Child<QListWidget>(dialog, "formatList");
  EXPECT_EQ(list.currentItem()->text(), "44100 Hz (Samples per Sek), 16 Bits per Sample, Stereo");
  Choose(dialog, "96000 Hz (Samples per Sek), 32 Bits per Sample, Mono (PCM float)");
  Press(dialog, "helpButton");
  EXPECT_EQ(host.topics, QStringList("parm_wave-konverter.htm"));
  Press(dialog, "okButton");
  EXPECT_EQ(dialog.result(), QDialog::Accepted);
  EXPECT_EQ(dialog.Parameters().sampleRate, 96000U);
  EXPECT_EQ(dialog.Parameters().bits, 32);
  EXPECT_EQ(dialog.Parameters().channels, 1);
  dialog.hide();
  EXPECT_EQ(host.prompts.last(), "");
}

TEST(WaveConvertDialogTest, RefusesNoChoiceAndTheFormatOfASingleSource) {
  const MediaProbe same = ProbeMedia(DataPath("audio/wav_quiet_minus30db.wav"));
  ASSERT_EQ(same.format, AudioCdFormat());
  struct Case {
    MediaProbe source;
    bool single;
    bool accepted;
  };
  MediaProbe aiff = same;
  aiff.kind = MediaKind::Aiff;
  for (const Case& c : {Case{same, true, false}, Case{same, false, true}, Case{aiff, true, true},
                        Case{MediaProbe(), true, true}}) {
    RecordingHost host;
    WaveConvertDialog dialog({}, c.source, c.single, host, nullptr);
    dialog.show();
    NextMessage message;
    Press(dialog, "okButton");
    EXPECT_EQ(dialog.isVisible(), !c.accepted);
    if (c.accepted) continue;
    EXPECT_EQ(message.Text(), "Quell- und Zielformat sind gleich.\nWählen Sie bitte ein anderes Zielformat.");
    EXPECT_EQ(message.Icon(), QMessageBox::Information);
  }
  // A stored format that is not offered selects none.
  WaveConverterParameters odd;
  odd.sampleRate = 12345;
  RecordingHost host;
  WaveConvertDialog dialog(odd, same, false, host, nullptr);
  dialog.show();
  NextMessage message;
  Press(dialog, "okButton");
  EXPECT_EQ(message.Text(), "Wählen Sie bitte ein Zielformat aus.");
  EXPECT_TRUE(dialog.isVisible());
}

TEST(WaveConvertDialogTest, AJobWithoutAudioIsTold) {
  RecordingHost host;
  const test::TemporaryDirectory place;
  WaveConverterParameters parameters;
  Job job;
  job.sourceDrive = kListModeDrive;
  job.files.Append({.path = place.Write("a.wav", "kein Audio")});
  NextMessage message;
  EXPECT_FALSE(EditWaveConverter(parameters, job, host, nullptr));
  EXPECT_EQ(message.Text(), "Die Konvertierung konnte nicht initialisiert werden.");
}

TEST(NormaliseBoxTest, SaysWhatTheModeDoesAndFallsBack) {
  NormaliseBox box(NormaliseBox::Wording::Burner);
  box.show();
  EXPECT_EQ(box.Mode(), NormaliseMode::None);
  EXPECT_EQ(Child<QLabel>(box, "normaliseHint").text(), "");
  int changes = 0;
  QObject::connect(&box, &NormaliseBox::ModeChanged, [&] { ++changes; });
  Child<QRadioButton>(box, "normaliseProjectRadio").click();
  EXPECT_EQ(box.Mode(), NormaliseMode::Project);
  EXPECT_TRUE(Child<QLabel>(box, "normaliseHint").text().contains("den größten Pegel"));
  box.SetProjectAllowed(false);
  EXPECT_EQ(box.Mode(), NormaliseMode::Each);
  EXPECT_FALSE(Child<QRadioButton>(box, "normaliseProjectRadio").isEnabled());
  EXPECT_EQ(changes, 2);
  NormaliseBox midi(NormaliseBox::Wording::MidiToWave);
  EXPECT_EQ(Child<QRadioButton>(midi, "normaliseProjectRadio").text(), "&Projekt normalisieren");
}

QString ValueOf(const QTreeWidget& list, const char* label) {
  const auto items = list.findItems(QString::fromUtf8(label), Qt::MatchExactly, 0);
  return items.isEmpty() ? QString() : items.front()->text(1);
}

TEST(WavePropertiesTest, ShowsTheFileAndMeasuresIt) {
  const std::string path = DataPath("audio/wav_quiet_minus30db.wav");
  const auto properties = ReadAudioProperties(path);
  ASSERT_TRUE(properties);
  RecordingHost host;
  const auto dialog = AudioPropertiesDialog(*properties, path, host, nullptr);
  dialog->show();
  EXPECT_EQ(dialog->windowTitle(), "Eigenschaften von \"wav_quiet_minus30db.wav\"");
  auto& list = Child<QTreeWidget>(*dialog, "propertyList");
  EXPECT_EQ(ValueOf(list, "Dateiformat"), "Wave (WAV)");
  EXPECT_EQ(ValueOf(list, "Kodierung"), "PCM");
  EXPECT_EQ(ValueOf(list, "Format"), "44100 Hz (Samples per Sek), 16 Bits per Sample, Stereo");
  EXPECT_EQ(ValueOf(list, "Dauer"), "00:00:00,500");
  EXPECT_EQ(ValueOf(list, "Anzahl der Samples"), "22050");
  EXPECT_EQ(ValueOf(list, "Datenlänge"), "88200 Bytes");
  EXPECT_TRUE(
      QTest::qWaitFor([&] { return ValueOf(list, "Spitzenpegel (True Peak)").endsWith("dBTP"); }, 10000));
  EXPECT_EQ(ValueOf(list, "Spitzenpegel (True Peak)"), "-30,0 dBTP");
  EXPECT_TRUE(ValueOf(list, "Lautheit (EBU R 128)").endsWith("LUFS"));
  // Closing while it measures must neither hang nor crash.
  for (int i = 0; i < 5; ++i) AudioPropertiesDialog(*properties, path, host, nullptr)->show();
  QTest::qWait(20);
}

}  // namespace
}  // namespace ts5
