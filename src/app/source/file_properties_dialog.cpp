#include "app/source/file_properties_dialog.h"

#include <vector>

#include "audio/audio_properties.h"
#include "audio/media_probe.h"
#include "audio/tags/tag_file.h"
#include "audio/ui/audio_properties_dialog.h"
#include "converters/ui/xml_properties_dialog.h"
#include "converters/xml_properties.h"
#include "disc/texts.h"
#include "disc/ui/disc_dialogs.h"
#include "frame/cd_tracks.h"
#include "frame/file_properties.h"
#include "frame/texts.h"
#include "frame/ui/message_box.h"
#include "midi/midi_file.h"
#include "midi/midi_properties.h"
#include "midi/ui/midi_files_dialog.h"
#include "midi/ui/midi_properties_dialog.h"
#include "score/score_properties.h"
#include "score/ui/score_properties_dialog.h"

namespace ts5 {
namespace {

// The readers of the rooms in the order in which they are tried.
const std::vector<PropertiesStep>& Steps() {
  static const std::vector<PropertiesStep> steps{
      {[](const FileListEntry& file) { return file.cdTrack; },
       [](const FileListEntry&) -> Result<PropertiesWindow> { return PropertiesWindow::CdTrack; }},
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
      {[](const FileListEntry& file) { return converters::IsXmlScoreName(file.path); },
       [](const FileListEntry& file) -> Result<PropertiesWindow> {
         const auto properties = converters::ReadXmlProperties(file.path);
         if (properties) return PropertiesWindow::Xml;
         const bool damaged = properties.error() != Outcome::WrongFormat;
         return Failure(damaged ? Outcome::SourceFailed : Outcome::WrongFormat);
       },
       ReaderFailure::StopAtSource},
      {{},
       [](const FileListEntry& file) -> Result<PropertiesWindow> {
         const MediaKind kind = ProbeMedia(file.path).kind;
         // Some that nothing here plays have attributes.
         if (kind == MediaKind::None && tags::ReadAttributes(file.path).value_or(tags::Attributes()).empty())
           return Failure(Outcome::WrongFormat);
         return IsWaveKind(kind) ? PropertiesWindow::Wave : PropertiesWindow::Audio;
       }},
  };
  return steps;
}

bool HasAttributes(const std::string& path) {
  return tags::ReadAttributes(path).has_value();
}
bool IsMidi(const std::string& path) {
  return ReadMidiFileHeader(path).has_value();
}

// Those of the selected files that are of a kind, if the file is one of several.
std::vector<std::string> AllOf(bool (*kind)(const std::string& path), const FileListEntry& file,
                               std::span<const FileListEntry> selected) {
  std::vector<std::string> paths;
  bool among = false;
  for (const FileListEntry& entry : selected) {
    if (!kind(entry.path)) continue;
    among = among || entry.path == file.path;
    paths.push_back(entry.path);
  }
  if (!among || paths.size() < 2) paths.clear();
  return paths;
}

}  // namespace

void ShowFileProperties(const FileListEntry& file, std::span<const FileListEntry> selected, DialogHost& host,
                        QWidget* owner, unsigned id3Version) {
  const PropertiesChoice choice = ChooseProperties(file, Steps());
  if (choice.window == PropertiesWindow::CdTrack) {
    const auto place = FindCdTrack(file.path);
    if (!place) return ShowWarning(owner, texts::TrackInfoFailed);
    disc::ShowTrackInformation(place->drive.path, place->number, host, owner);
  } else if (choice.window == PropertiesWindow::Midi) {
    if (const auto paths = AllOf(IsMidi, file, selected); !paths.empty()) {
      MidiFilesDialog(paths, host, owner)->exec();
      return;
    }
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
  } else if (choice.window == PropertiesWindow::Xml) {
    if (const auto properties = converters::ReadXmlProperties(file.path)) {
      converters::XmlPropertiesDialog(*properties, host, owner).exec();
      return;
    }
    ShowWarning(owner, texts::FileNotOpened);
  } else if (choice.window == PropertiesWindow::Wave || choice.window == PropertiesWindow::Audio) {
    const auto paths = AllOf(HasAttributes, file, selected);
    if (paths.empty()) {
      ShowAudioProperties(file.path, host, owner, id3Version);
    } else {
      ShowAudioProperties(paths, host, owner, id3Version);
    }
  } else {
    ShowWarning(owner, choice.message);
  }
}

}  // namespace ts5
