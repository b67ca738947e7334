#include "app/file_properties_dialog.h"

#include <vector>

#include "audio/audio_properties.h"
#include "audio/media_probe.h"
#include "audio/ui/audio_properties_dialog.h"
#include "frame/file_properties.h"
#include "frame/texts.h"
#include "frame/ui/message_box.h"
#include "midi/midi_file.h"
#include "midi/midi_properties.h"
#include "midi/ui/midi_properties_dialog.h"
#include "score/score_properties.h"
#include "score/ui/score_properties_dialog.h"

namespace ts5 {
namespace {

// The readers of the rooms in the order in which they are tried.
const std::vector<PropertiesStep>& Steps() {
  static const std::vector<PropertiesStep> steps{
      {{},
       [](const FileListEntry& file) -> Result<PropertiesWindow> {
         const auto header = ReadMidiFileHeader(file.path);
         if (!header) return Failure(header.error());
         return PropertiesWindow::Midi;
       },
       ReaderFailure::StopAtSource},
      {{},
       [](const FileListEntry& file) -> Result<PropertiesWindow> {
         const auto info = ReadScoreFileInfo(file.path);
         if (!info) return Failure(info.error());
         return PropertiesWindow::Score;
       },
       ReaderFailure::StopAtSource},
      {{},
       [](const FileListEntry& file) -> Result<PropertiesWindow> {
         const MediaKind kind = ProbeMedia(file.path).kind;
         if (kind == MediaKind::None) return Failure(Outcome::WrongFormat);
         return IsWaveKind(kind) ? PropertiesWindow::Wave : PropertiesWindow::Audio;
       }},
  };
  return steps;
}

}  // namespace

void ShowFileProperties(const FileListEntry& file, DialogHost& host, QWidget* owner) {
  const PropertiesChoice choice = ChooseProperties(file, Steps());
  if (choice.window == PropertiesWindow::Midi) {
    if (const auto properties = ReadMidiProperties(file.path)) {
      MidiPropertiesDialog(*properties, host, owner)->exec();
      return;
    }
    ShowWarning(owner, texts::FileNotOpened);  // it went away since
  } else if (choice.window == PropertiesWindow::Score) {
    if (const auto properties = ReadScoreProperties(file.path)) {
      ScorePropertiesDialog(*properties, host, owner).exec();
      return;
    }
    ShowWarning(owner, texts::FileNotOpened);
  } else if (choice.window == PropertiesWindow::Wave || choice.window == PropertiesWindow::Audio) {
    ShowAudioProperties(file.path, host, owner);
  } else {
    ShowWarning(owner, choice.message);
  }
}

}  // namespace ts5
