// The windows of the MIDI-to-wave conversion: formats, devices, and the help with the recording sum.
#include <gmock/gmock.h>

#include "audio/midi_recording.h"
#include "audio/ui/midi_to_wave_dialog.h"
#include "audio/ui/mixer_help_dialog.h"
#include "audio/ui/synthesis_format_dialog.h"
#include "audio/ui/wave_format_dialog.h"
#include "dialogs_support.h"
#include "frame/ui/qt_text.h"

namespace ts5 {
namespace {

MidiToWaveDevices Devices() {
  return {{"A", "B"}, {"Mikrofon", "Monitor"}, [](const std::string& input) {
            return input == "Monitor" ? std::vector<WaveNumbers>{{44100, 2, 16}, {48000, 2, 16}}
                                      : std::vector<WaveNumbers>{{8000, 1, 8}};
          }};
}

TEST(MidiToWaveDialogTest, KeepsAFormatForEachInput) {
  RecordingHost host;
  MidiToWaveParameters parameters;
  parameters.method = static_cast<std::int32_t>(MidiWaveMethod::SoundCard);
  parameters.recordingFormats[0] = {8000, 1, 8};
  MidiToWaveDialog dialog(parameters, Devices(), host, nullptr);
  dialog.show();
  auto& shown = Child<QLabel>(dialog, "recordLabel");
  EXPECT_EQ(shown.text(), "8000 Hz (Samples per Sek), 8 Bits per Sample, Mono");
  Child<QListWidget>(dialog, "waveList").setCurrentRow(1);
  EXPECT_EQ(shown.text(), "(noch nicht festgelegt)");
  InNext<WaveFormatDialog>([](WaveFormatDialog& formats) {
    EXPECT_EQ(Child<QListWidget>(formats, "formatList").count(), 2);
    {
      NextMessage message;
      Press(formats, "okButton");
      EXPECT_EQ(message.Text(), "Wählen Sie bitte ein Zielformat aus.");
    }
    Child<QListWidget>(formats, "formatList").setCurrentRow(1);
    Press(formats, "okButton");
  });
  Press(dialog, "recordButton");
  EXPECT_EQ(shown.text(), "48000 Hz (Samples per Sek), 16 Bits per Sample, Stereo");
  Child<QListWidget>(dialog, "midiList").setCurrentRow(1);
  Press(dialog, "okButton");
  EXPECT_EQ(dialog.Parameters().midiDevice, 1);
  EXPECT_EQ(dialog.Parameters().waveDevice, 1);
  EXPECT_EQ(dialog.Parameters().RecordingFormat(), PcmFormat(48000, 16, 2));
  EXPECT_EQ(dialog.Parameters().recordingFormats.size(), 2U);
}

TEST(MidiToWaveDialogTest, AsksForTheRateThatIsMissing) {
  RecordingHost host;
  MidiToWaveParameters parameters;
  parameters.format = {48000, 1, 8};
  parameters.waveDevice = 3;
  MidiToWaveDialog dialog(parameters, {{"A"}, {}, {}}, host, nullptr);
  dialog.show();
  EXPECT_FALSE(Child<QAbstractButton>(dialog, "recordButton").isEnabled());
  {
    NextMessage message;
    Press(dialog, "okButton");
    EXPECT_EQ(message.Text(), "Wählen Sie bitte eine Samplingfrequenz aus.");
  }
  EXPECT_TRUE(dialog.isVisible());
  InNext<SynthesisFormatDialog>([](SynthesisFormatDialog& format) {
    EXPECT_EQ(Child<QComboBox>(format, "rateBox").currentIndex(), -1);
    {
      NextMessage message;
      Press(format, "okButton");
      EXPECT_EQ(message.Text(), "Wählen Sie bitte eine Samplingfrequenz aus.");
    }
    Child<QComboBox>(format, "rateBox").setCurrentIndex(1);
    Child<QRadioButton>(format, "sixteenRadio").setChecked(true);
    Press(format, "okButton");
  });
  Press(dialog, "synthesisButton");
  Child<QRadioButton>(dialog, "normaliseProjectRadio").setChecked(true);
  Press(dialog, "okButton");
  EXPECT_EQ(dialog.result(), QDialog::Accepted);
  EXPECT_EQ(dialog.Parameters().format, (WaveNumbers{22050, 1, 16}));
  EXPECT_EQ(dialog.Parameters().Normalising(), NormaliseMode::Project);
  EXPECT_EQ(dialog.Parameters().waveDevice, 3) << "no input is there to choose: the job's stays";
}

TEST(MixerHelpDialogTest, TakesTheNameAndIsNotShownAgain) {
  RecordingHost host;
  MidiToWaveParameters parameters;
  parameters.method = static_cast<std::int32_t>(MidiWaveMethod::SoundCard);
  parameters.configureMixer = true;
  const std::vector<std::string> inputs{"Mikrofon", "Monitor of Built-in Audio"};
  Settings settings;
  InNext<MixerHelpDialog>([](MixerHelpDialog& dialog) {
    EXPECT_TRUE(Child<QLabel>(dialog, "problemLabel").text().endsWith("Suchen wir nun gemeinsam danach:"));
    Child<QLineEdit>(dialog, "sumEdit").setText("monitor");
    Press(dialog, "okButton");
  });
  EXPECT_TRUE(PrepareMixer(parameters, inputs, settings, host, nullptr));
  EXPECT_EQ(settings.recordMixerName, "Monitor of Built-in Audio");
  EXPECT_EQ(settings.recordMixerPosition, 1);
  EXPECT_TRUE(PrepareMixer(parameters, inputs, settings, host, nullptr)) << "found: nothing is asked";

  settings.recordMixerName = "Stereo-Mix";
  InNext<MixerHelpDialog>([](MixerHelpDialog& dialog) { Press(dialog, "cancelButton"); });
  EXPECT_FALSE(PrepareMixer(parameters, inputs, settings, host, nullptr));
  EXPECT_EQ(settings.recordMixerName, "Stereo-Mix");
  InNext<MixerHelpDialog>([](MixerHelpDialog& dialog) {
    Child<QCheckBox>(dialog, "againCheck").setChecked(true);
    Press(dialog, "okButton");
  });
  EXPECT_TRUE(PrepareMixer(parameters, inputs, settings, host, nullptr));
  EXPECT_TRUE(PrepareMixer(parameters, inputs, settings, host, nullptr)) << "not shown again";
  EXPECT_TRUE(settings.askForDeviceConnectNoMixer);
  InNext<MixerHelpDialog>([](MixerHelpDialog& dialog) {
    EXPECT_TRUE(Child<QLabel>(dialog, "problemLabel").text().startsWith("In Ihrem System ist kein"));
    Child<QCheckBox>(dialog, "againCheck").setChecked(true);
    Press(dialog, "okButton");
  });
  EXPECT_TRUE(PrepareMixer(parameters, {}, settings, host, nullptr));
  EXPECT_TRUE(PrepareMixer(parameters, {}, settings, host, nullptr));
  EXPECT_FALSE(settings.askForDeviceConnectNoMixer);
}

}  // namespace
}  // namespace ts5
