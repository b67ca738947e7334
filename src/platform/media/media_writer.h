// The encoders of the system as sinks of samples: MPEG layer II and Windows Media audio.
#pragma once

#include <cstdint>
#include <memory>

#include "platform/base/outcome.h"
#include "platform/files/files.h"
#include "platform/media/pcm_stream.h"

namespace ts5 {

enum class MediaEncoder : std::uint8_t { MpegLayer2, WindowsMedia };

// Whether this machine has the encoder.
[[nodiscard]] bool HasEncoder(MediaEncoder encoder);

// Encodes what it gets into a staged file of the caller's, which stays with him, outlives the sink, and is
// not committed here. shape: rate, and one or two channels, of the samples that will come. bitRate: bits per
// second. ConverterNotOpened: there is no such encoder. FormatRefused: it does not take this shape or bit
// rate.
[[nodiscard]] Result<std::unique_ptr<PcmSink>> OpenMediaWriter(StagedFile& target, MediaEncoder encoder,
                                                               const PcmShape& shape, std::uint32_t bitRate);

}  // namespace ts5
