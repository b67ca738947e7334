// The MIDI-to-wave conversion: MIDI files in any container become wave files, by the built-in synthesiser or
// by recording a sound card while a MIDI device plays, and are normalised afterwards.
#pragma once

#include <string>

#include "audio/midi_to_wave_parameters.h"
#include "frame/filter_module.h"
#include "platform/base/outcome.h"
#include "platform/base/work_watch.h"
#include "platform/files/files.h"

namespace ts5 {

// Synthesises a MIDI file's bytes into a staged wave file of the caller's, with the sound font that the
// configuration file of the folder chooses; that file is made when it is missing. WrongFormat, DamagedMidi;
// LibraryNotLoaded: no synthesiser or sound font; WriteFailed, Cancelled, OutOfMemory.
[[nodiscard]] Outcome RenderMidi(ByteView midi, StagedFile& target, const WaveFormat& format,
                                 const std::string& folder, const WorkWatch& watch = {});
// The same of a file, with the target put in place when all went well; "" is the source's name with the
// extension "wav". Also SourceFailed, ReadFailed, TargetFailed.
[[nodiscard]] Outcome RenderMidiFile(const std::string& source, const std::string& target,
                                     const WaveFormat& format, const std::string& folder,
                                     const WorkWatch& watch = {});

[[nodiscard]] FilterModule MidiToWaveModule();

}  // namespace ts5
