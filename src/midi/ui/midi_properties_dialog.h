// The properties of a MIDI file: FILEPROPS with the MIDI page.
#pragma once

#include <memory>

#include "frame/ui/dialog_host.h"
#include "frame/ui/properties_dialog.h"
#include "midi/midi_properties.h"

namespace ts5 {

// The page alone, with the list of the RIFF attributes when the file is a RIFF file.
[[nodiscard]] std::unique_ptr<QWidget> MidiPropertiesPage(const MidiProperties& properties);

[[nodiscard]] std::unique_ptr<PropertiesDialog> MidiPropertiesDialog(const MidiProperties& properties,
                                                                     DialogHost& host, QWidget* parent);

}  // namespace ts5
