// The MIDI-to-wave conversion: MIDI files in any container become wave files, by the built-in synthesiser or
// by recording a sound card while a MIDI device plays, and are normalised afterwards.
#pragma once

#include <string>

#include "audio/midi_to_wave_parameters.h"
#include "frame/filter_module.h"
#include "platform/files.h"
#include "platform/outcome.h"
#include "platform/work_watch.h"

namespace ts5 {

// Synthesises the source into a staged wave file of the caller's, with the sound font that the configuration
// file of the folder chooses; that file is made when it is missing. SourceFailed: the source
// cannot be opened; ReadFailed, WrongFormat, DamagedMidi; LibraryNotLoaded: no synthesiser or sound font;
// WriteFailed, Cancelled, OutOfMemory.
[[nodiscard]] Outcome RenderMidi(const std::string& source, StagedFile& target, const WaveFormat& format,
                                 const std::string& folder, const WorkWatch& watch = {});
// The same with the target put in place when all went well; "" is the source's name with the extension "wav".
// Also TargetFailed.
[[nodiscard]] Outcome RenderMidiFile(const std::string& source, const std::string& target,
                                     const WaveFormat& format, const std::string& folder,
                                     const WorkWatch& watch = {});

[[nodiscard]] FilterModule MidiToWaveModule();

}  // namespace ts5
