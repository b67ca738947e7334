// The layout of AIFF and AIFF-C files: where the samples lie and what they are, as far as they are
// uncompressed.
//
// Formats: Audio Interchange File Format 1.3 (1989) and AIFF-C (1991), with the uncompressed codings that
// came later (sowt, fl32, fl64, in24, in32).
#pragma once

#include "audio/wave_layout.h"

namespace ts5 {

// The form's type, and whether the file begins as most do: its chunk COMM before all others.
[[nodiscard]] bool IsAiff(ByteView start);
[[nodiscard]] bool BeginsWithComm(ByteView start);

// The format is what the samples are as a wave file (a depth of 12 bits takes 16, as it does in the file);
// its tag is kTagUnknown for a compressed coding, of which the layout says nothing else. The samples end at
// the frames that COMM counts. WrongFormat: no AIFF file, or without a sound COMM; SourceFailed: COMM counts
// frames of which there is not one; ReadFailed.
[[nodiscard]] Result<WaveLayout> ReadAiffLayout(const InputFile& file);

}  // namespace ts5
