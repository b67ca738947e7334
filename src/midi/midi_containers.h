// Changes between the three containers of MIDI files. The functions take the bytes of a whole file and give
// those of another.
//
// Codes: WrongFormat (the source is not of the expected container, or another chunk stands where a track
// should), ReadFailed (the source ends before its last track), ChunkNotWritten.
//
// From a plain file everything behind the header is taken over, whatever it is. From the other two, the
// header and as many tracks as it counts: a RIFF file's INFO list and a sequencer file's settings stay
// behind.
#pragma once

#include <string>

#include "midi/midi_file.h"
#include "midi/riff_info.h"
#include "platform/base/bytes.h"
#include "platform/base/outcome.h"

namespace ts5 {

// What the RIFF writers need beside the music.
struct RiffFileInfo {
  RiffAttributes attributes;
  CalendarDate created;
};

[[nodiscard]] Result<Bytes> SmfToRiff(ByteView smf, const RiffFileInfo& info);
[[nodiscard]] Result<Bytes> SmfToSequencer(ByteView smf);
[[nodiscard]] Result<Bytes> RiffToSmf(ByteView riff);
[[nodiscard]] Result<Bytes> RiffToSequencer(ByteView riff);
[[nodiscard]] Result<Bytes> SequencerToRiff(ByteView sequencer, const RiffFileInfo& info);
[[nodiscard]] Result<Bytes> SequencerToSmf(ByteView sequencer);

// The MIDI data of a RIFF file: its form must be RMID and have a data chunk. What is given reaches to the end
// of the file, not of the chunk: where the two disagree, the tracks decide. WrongFormat.
[[nodiscard]] Result<ByteView> RiffMidiData(ByteView riff);

// A form RMID with its data chunk and nothing else. ChunkNotWritten.
[[nodiscard]] Result<Bytes> WrapInRiff(ByteView smf);

// The block at the end of every sequencer file that is written here: the sequencer's settings, at their
// defaults.
inline constexpr std::size_t kSequencerSettingsSize = 8696;
[[nodiscard]] Bytes DefaultSequencerSettings();

}  // namespace ts5
