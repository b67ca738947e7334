// The properties of an audio file: FILEPROPS with the wave page for plain wave and AIFF files, AUDIOPROPS for
// all other kinds.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "audio/audio_properties.h"
#include "frame/ui/hosted_dialog.h"

class QWidget;

namespace ts5 {

// id3Version, here and below: 3 or 4, of a first ID3v2 tag.
[[nodiscard]] std::unique_ptr<HostedDialog> AudioPropertiesDialog(const AudioProperties& properties,
                                                                  const std::string& path, DialogHost& host,
                                                                  QWidget* parent, unsigned id3Version = 3);

// Reads the file and shows the dialog until it is closed, or a message when it is no audio file.
void ShowAudioProperties(const std::string& path, DialogHost& host, QWidget* owner, unsigned id3Version);
// The attributes of several files in one dialog.
void ShowAudioProperties(const std::vector<std::string>& paths, DialogHost& host, QWidget* owner,
                         unsigned id3Version);

}  // namespace ts5
