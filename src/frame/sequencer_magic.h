// Lets sequencer files and score variants pass as Standard MIDI Files: their first four bytes, "RDL3" or
// "STVR", are replaced by "MThd" and put back afterwards.
#pragma once

#include <cstdint>
#include <string>

#include "platform/base/outcome.h"

namespace ts5 {

// What the file was before; the same variable goes into the call before and the call after.
enum class MagicSwap : std::int32_t { None = 0, Sequencer = 1, ScoreVariant = 2 };

// None: patches, and says in swap what the file was. Otherwise puts that magic back and sets None. A missing
// write permission of the owner is given first and stays given. SourceFailed: cannot be opened for reading
// and writing. ReadFailed: fewer than four bytes. WrongFormat: neither magic. WriteFailed: a short write. The
// file and swap are unchanged on all but the last.
[[nodiscard]] Outcome SwapSequencerMagic(const std::string& path, MagicSwap& swap);

}  // namespace ts5
