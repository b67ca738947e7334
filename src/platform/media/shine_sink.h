// libshine as a sink of samples: MPEG layer III at a constant bit rate. The library knows neither the private
// bit nor checksums nor a header with the length; all of them are added here.
//
// A checksum needs two bytes that the library would fill with music, and it fills its frames to the last bit.
// So with checksums its frames are those of the next lower bit rate, set into frames of the one that is
// wanted.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "platform/base/outcome.h"
#include "platform/files/files.h"
#include "platform/media/lame_sink.h"
#include "platform/media/library_version.h"
#include "platform/media/pcm_stream.h"

namespace ts5 {

struct ShineOptions {
  Mp3Mode mode = Mp3Mode::Stereo;
  int bitRate = 128;  // kbit/s; a lower one where its frames are too long for one channel
  int emphasis = 0;   // 0 none, 1 50/15 us, 3 CCITT J.17
  bool privateBit = false;
  bool crc = false;
  bool copyright = false;
  bool original = true;
};

// Encodes what it gets, rounded to 16 bits, into a staged file of the caller's, which stays with him and is
// not committed here. shape: one or two channels. ConverterNotOpened: the library does not know the rate or
// the bit rate.
[[nodiscard]] Result<std::unique_ptr<PcmSink>> OpenShineSink(StagedFile& target, const PcmShape& shape,
                                                             const ShineOptions& options);

// Its number is that of the library that the program was built with. Nothing when it cannot be found.
[[nodiscard]] std::optional<LibraryVersion> ShineVersion();

}  // namespace ts5
